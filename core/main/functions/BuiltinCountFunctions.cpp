#include "core/main/functions/Arithmetic.h"
#include "core/main/functions/BuiltinFamilies.h"
#include "core/main/functions/BuiltinTypes.h"
#include "lum/core/functions/FunctionNames.h"
#include "lum/core/functions/RegisterFunction.h"

namespace lum::core {
namespace {

template <FunctionElement T>
int CountAll(const int& accumulator, const T& /*element*/) {
    return Add(accumulator, 1);
}

// Counts the elements of which kCondition(element, kind) holds; the accumulator's own kind has no
// say and stays.
template <FunctionElement T, auto kCondition>
ElementWithKind<int> CountIf(const int& accumulator, SpecialKind accumulatorKind, const T& element,
                             SpecialKind kind) {
    return {Add(accumulator, static_cast<int>(kCondition(element, kind))), accumulatorKind};
}

template <FunctionElement T>
bool IsNormal(const T& /*element*/, SpecialKind kind) {
    return kind == SpecialKind::Normal;
}

template <FunctionElement T>
bool IsSpecial(const T& /*element*/, SpecialKind kind) {
    return kind != SpecialKind::Normal;
}

template <FunctionElement T>
bool IsNull(const T& /*element*/, SpecialKind kind) {
    return kind == SpecialKind::Null;
}

template <FunctionElement T>
bool IsNegative(const T& element, SpecialKind kind) {
    return static_cast<bool>(static_cast<int>(kind == SpecialKind::Normal) &
                             static_cast<int>(element < 0));
}

template <FunctionElement T, auto kCondition>
void RegisterCount(RegistryOfBinaryFunctions& registry, const wchar_t* name) {
    RegisterFunction<CountIf<T, kCondition>>(registry, KeyOf<int, T>(name), TypeOf<int>());
}

}  // namespace

void RegisterCountFunctions(RegistryOfBinaryFunctions& registry) {
    ForEachType<int, long long, float, double, RIndirectString, LumDateTime, bool, SV>(
        [&]<typename T>() {
            RegisterFunction<CountAll<T>>(registry, KeyOf<int, T>(FunctionNames::COUNT_ALL),
                                          TypeOf<int>());
        });
    ForEachType<int, long long, float, double>([&]<typename T>() {
        RegisterCount<T, &IsNormal<T>>(registry, FunctionNames::COUNT);
        RegisterCount<T, &IsNegative<T>>(registry, FunctionNames::COUNT_NEGATIVES);
    });
    ForEachType<int, long long, float, double, RIndirectString, LumDateTime, bool>(
        [&]<typename T>() {
            RegisterCount<T, &IsSpecial<T>>(registry, FunctionNames::COUNT_SPECIALS);
            RegisterCount<T, &IsNull<T>>(registry, FunctionNames::COUNT_NULLS);
        });
}

}  // namespace lum::core
