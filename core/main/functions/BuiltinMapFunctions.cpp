#include <cmath>

#include "core/main/functions/Arithmetic.h"
#include "core/main/functions/BuiltinFamilies.h"
#include "core/main/functions/BuiltinTypes.h"
#include "core/main/functions/CreatorInput.h"
#include "core/main/functions/NullOutOfDomain.h"
#include "lum/core/functions/FunctionNames.h"
#include "lum/core/functions/RegisterFunction.h"
#include "lum/core/functions/SpecialRules.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core {
namespace {

template <typename T>
T Absolute(const T& element) {
    return std::abs(element);
}

template <typename T>
T Increase(const T& element) {
    return Add(element, T{1});
}

template <typename T>
T Decrease(const T& element) {
    return Subtract(element, T{1});
}

template <FunctionElement T>
T Assign(const T& element) {
    return element;
}

template <FunctionElement T>
ElementWithKind<T> Normalize(const T& element, SpecialKind kind) {
    return {Choose(kind == SpecialKind::Normal, element, ZeroOf<T>()), SpecialKind::Normal};
}

// kOperation(element, constant)
template <FunctionElement T, auto kOperation>
class WithConstant {
public:
    explicit WithConstant(const std::vector<SV>& values)
        : m_constant(GetCreatorConstant<T>(values)) {}
    auto operator()(const T& element) const { return kOperation(element, m_constant); }

private:
    T m_constant;
};

template <FunctionElement T>
using AddFunctor = WithConstant<T, &Add<T>>;

template <typename T>
class DivideByConstant {
public:
    explicit DivideByConstant(const std::vector<SV>& values)
        : m_constant(GetCreatorConstant<T>(values)) {
        LUM_CHECK(m_constant != static_cast<T>(0), LumError::DivideByZero);
    }
    T operator()(const T& element) const { return static_cast<T>(element / m_constant); }

private:
    T m_constant;
};

template <typename T>
bool IsLess(const T& a, const T& b) {
    return a < b;
}

template <typename T>
bool IsGreater(const T& a, const T& b) {
    return a > b;
}

template <typename T>
bool IsGreaterOrEqual(const T& a, const T& b) {
    return a >= b;
}

template <typename T>
bool IsEqual(const T& a, const T& b) {
    return a == b;
}

// kOperation(element, constant), a Bool; a special element gives false, of the kind Null or of its
// own.
template <FunctionElement T, auto kOperation, bool kKeepsKind>
class CompareWithConstant {
public:
    explicit CompareWithConstant(const std::vector<SV>& values)
        : m_constant(GetCreatorConstant<T>(values)) {}

    ElementWithKind<bool> operator()(const T& element, SpecialKind kind) const {
        const bool isNormal = kind == SpecialKind::Normal;
        const bool value = static_cast<bool>(static_cast<int>(kOperation(element, m_constant)) &
                                             static_cast<int>(isNormal));
        return {value, kKeepsKind ? kind : static_cast<SpecialKind>(!isNormal)};
    }

private:
    T m_constant;
};

template <FunctionElement T, bool kIsMember>
class IsInSet {
public:
    explicit IsInSet(const std::vector<SV>& values) : m_set(values) {}
    bool operator()(const T& element) const { return m_set.Contains(element) == kIsMember; }
    // Looking up a string may fail, and then what was computed before it has to stand.
    void ApplyColumn(const CellT<T>* cells, unsigned char* out, uint64 count) const
        requires(!std::is_same_v<T, RIndirectString>) {
        m_set.ContainsEach(cells, out, count);
        if constexpr (!kIsMember) {
            for (uint64 index = 0; index < count; ++index) {
                out[index] ^= 1;
            }
        }
    }

private:
    CreatorSet<T> m_set;
};

void RegisterArithmetic(RegistryOfUnaryFunctions& registry) {
    ForEachType<float, double>([&]<typename T>() {
        RegisterFunction<Absolute<T>>(registry, KeyOf<T>(FunctionNames::ABS), TypeOf<T>());
        RegisterFunction<Floor<T>>(registry, KeyOf<T>(FunctionNames::FLOOR), TypeOf<T>());
    });
    ForEachType<int, long long, float, double>([&]<typename T>() {
        const Type* const type = TypeOf<T>();
        RegisterFunction<Increase<T>>(registry, KeyOf<T>(FunctionNames::INC), type);
        RegisterFunction<Decrease<T>>(registry, KeyOf<T>(FunctionNames::DEC), type);
        RegisterFunction<Negate<T>>(registry, KeyOf<T>(FunctionNames::NEGATE), type);
        RegisterFunction<AddFunctor<T>>(registry, KeyOf<T>(FunctionNames::ADD_CONSTANT), type,
                                        {type});
        RegisterFunction<WithConstant<T, &Multiply<T>>>(
            registry, KeyOf<T>(FunctionNames::MULTIPLY_CONSTANT), type, {type});
        RegisterFunction<DivideByConstant<T>>(registry, KeyOf<T>(FunctionNames::DIVIDE_CONSTANT),
                                              type, {type});
    });
    ForEachType<int, long long, float, double, RIndirectString>([&]<typename T>() {
        RegisterFunction<Normalize<T>>(registry, KeyOf<T>(FunctionNames::NORMALIZE), TypeOf<T>());
    });
    ForEachType<bool, int, long long, float, double, LumDateTime>([&]<typename T>() {
        RegisterFunction<Assign<T>>(registry, KeyOf<T>(FunctionNames::ASSIGN), TypeOf<T>());
    });
    RegisterFunction<Assign<LumDateTime>>(
        registry, FunctionKey(FunctionNames::ASSIGN, DateType::Get()), DateType::Get());
}

template <typename In, typename Out, typename Function>
void RegisterNullOut(RegistryOfUnaryFunctions& registry, const wchar_t* name) {
    RegisterFunction<NullOutOfDomain<In, Out, Function>>(registry, KeyOf<In>(name), TypeOf<Out>());
}

void RegisterRealFunctions(RegistryOfUnaryFunctions& registry) {
    RegisterNullOut<double, double, NaturalLogarithm>(registry, FunctionNames::LN);
    RegisterNullOut<long long, double, NaturalLogarithm>(registry, FunctionNames::LN);
    RegisterNullOut<double, double, InverseHyperbolicSine>(registry, FunctionNames::SYMLOG);
    RegisterNullOut<long long, double, InverseHyperbolicSine>(registry, FunctionNames::SYMLOG);
    RegisterNullOut<double, double, Exponential>(registry, FunctionNames::EXP);
    RegisterNullOut<double, double, HyperbolicSine>(registry, FunctionNames::SYMLOGINV);
    RegisterNullOut<float, float, SquareRoot>(registry, FunctionNames::SQRT);
    RegisterNullOut<double, double, SquareRoot>(registry, FunctionNames::SQRT);
    RegisterNullOut<int, float, SquareRoot>(registry, FunctionNames::SQRT);
    RegisterNullOut<long long, double, SquareRoot>(registry, FunctionNames::SQRT);
}

void RegisterComparisons(RegistryOfUnaryFunctions& registry) {
    const Type* const output = BoolType::Get();
    ForEachType<int, long long, float, double>([&]<typename T>() {
        const Type* const type = TypeOf<T>();
        RegisterFunction<WithConstant<T, &IsLess<T>>>(registry, KeyOf<T>(FunctionNames::LESS_THAN),
                                                      output, {type});
        RegisterFunction<CompareWithConstant<T, &IsLess<T>, false>>(
            registry, KeyOf<T>(FunctionNames::LESS_THAN), output, {type});
        RegisterFunction<WithConstant<T, &IsGreater<T>>>(
            registry, KeyOf<T>(FunctionNames::GREATER_THAN), output, {type});
        RegisterFunction<CompareWithConstant<T, &IsGreater<T>, false>>(
            registry, KeyOf<T>(FunctionNames::GREATER_THAN), output, {type});
    });
    ForEachType<int, long long, float, double, LumDateTime>([&]<typename T>() {
        RegisterFunction<CompareWithConstant<T, &IsGreaterOrEqual<T>, true>>(
            registry, KeyOf<T>(FunctionNames::GREATER_THAN_OR_EQUAL), output, {TypeOf<T>()});
    });
    ForEachType<int, long long, RIndirectString>([&]<typename T>() {
        RegisterFunction<WithConstant<T, &IsEqual<T>>>(
            registry, KeyOf<T>(FunctionNames::EQUAL_TO_VALUE), output, {TypeOf<T>()});
    });
    RegisterFunction<CompareWithConstant<int, &IsEqual<int>, false>>(
        registry, KeyOf<int>(FunctionNames::EQUAL_TO_VALUE), output, {TypeOf<int>()});
    ForEachType<int, long long, float, double, RIndirectString>([&]<typename T>() {
        const Type* const setType = SetType::Get(TypeOf<T>());
        RegisterFunction<IsInSet<T, true>>(registry, KeyOf<T>(FunctionNames::IS_IN_SET), output,
                                           {setType});
        RegisterFunction<IsInSet<T, false>>(registry, KeyOf<T>(FunctionNames::IS_NOT_IN_SET),
                                            output, {setType});
    });
}

}  // namespace

void RegisterMapFunctions(RegistryOfUnaryFunctions& registry) {
    RegisterArithmetic(registry);
    RegisterRealFunctions(registry);
    RegisterComparisons(registry);
}

}  // namespace lum::core
