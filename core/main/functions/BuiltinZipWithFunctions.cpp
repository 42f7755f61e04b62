#include "core/main/functions/Arithmetic.h"
#include "core/main/functions/BuiltinFamilies.h"
#include "core/main/functions/BuiltinTypes.h"
#include "lum/core/functions/FunctionNames.h"
#include "lum/core/functions/RegisterFunction.h"
#include "lum/core/functions/SpecialRules.h"

namespace lum::core {
namespace {

bool AreNormal(SpecialKind kind1, SpecialKind kind2) {
    return (static_cast<unsigned char>(kind1) | static_cast<unsigned char>(kind2)) == 0;
}

// kOperation(input1, input2), or Null out where one of them is special.
template <typename T, auto kOperation>
ElementWithKind<T> NullOut(const T& input1, SpecialKind kind1, const T& input2, SpecialKind kind2) {
    return OrNull(kOperation(input1, input2), AreNormal(kind1, kind2));
}

// Unlike the division of single values this one refuses 0 for reals as well.
template <typename T>
T Divide(const T& dividend, const T& divisor) {
    LUM_CHECK(divisor != static_cast<T>(0), LumError::DivideByZero);
    return static_cast<T>(dividend / divisor);
}

// What stands below a special is not divided by.
template <typename T>
ElementWithKind<T> DivideOrNull(const T& dividend, SpecialKind dividendKind, const T& divisor,
                                SpecialKind divisorKind) {
    if (!AreNormal(dividendKind, divisorKind)) {
        return {T{0}, SpecialKind::Null};
    }
    return {Divide(dividend, divisor), SpecialKind::Normal};
}

template <typename T>
T BitOr(const T& input1, const T& input2) {
    return input1 | input2;
}

template <typename T, auto kOperation>
void RegisterBothForms(RegistryOfBinaryFunctions& registry, const wchar_t* name) {
    RegisterFunction<kOperation>(registry, KeyOf<T, T>(name), TypeOf<T>());
    RegisterFunction<NullOut<T, kOperation>>(registry, KeyOf<T, T>(name), TypeOf<T>());
}

}  // namespace

void RegisterZipWithFunctions(RegistryOfBinaryFunctions& registry) {
    ForEachType<int, long long, float, double>([&]<typename T>() {
        RegisterBothForms<T, &Add<T>>(registry, FunctionNames::ADD);
        RegisterBothForms<T, &Subtract<T>>(registry, FunctionNames::SUBTRACT);
        RegisterBothForms<T, &Multiply<T>>(registry, FunctionNames::MULTIPLY);
        RegisterFunction<Divide<T>>(registry, KeyOf<T, T>(FunctionNames::DIVIDE), TypeOf<T>());
        RegisterFunction<DivideOrNull<T>>(registry, KeyOf<T, T>(FunctionNames::DIVIDE),
                                          TypeOf<T>());
    });
    ForEachType<int, long long>([&]<typename T>() {
        RegisterFunction<BitOr<T>>(registry, KeyOf<T, T>(FunctionNames::BITOR), TypeOf<T>());
    });
}

}  // namespace lum::core
