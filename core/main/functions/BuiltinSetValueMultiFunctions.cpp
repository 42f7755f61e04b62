#include "core/main/functions/Arithmetic.h"
#include "core/main/functions/BuiltinFamilies.h"
#include "core/main/functions/BuiltinTypes.h"
#include "lum/core/functions/FunctionNames.h"
#include "lum/core/functions/RegisterFunction.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueUtil.h"

namespace lum::core {
namespace {

using Values = std::vector<SV>;
using Comparison = bool (*)(const StoreValue&, const StoreValue&);

// Each function is given its name, for the message about a wrong number of values.
using Name = const wchar_t* const&;

void CheckTwoValues(const Values& values, const wchar_t* name) {
    LUM_CHECK(values.size() == 2, LumError::FunctionNeedsTwoInputs, name);
}

void CheckOneValue(const Values& values, const wchar_t* name) {
    LUM_CHECK(values.size() == 1, LumError::OneInputNeeded, name);
}

const StoreValue& Checked(const SV& value) {
    LUM_CHECK_NOT_NULL(value, LumError::NullArgument);
    return *value;
}

template <typename T>
T Fetch(const SV& value) {
    Checked(value);
    return FetchStoreValue<T>(value);
}

// kOperation of two numbers.
template <Name kName, typename T, auto kOperation>
T Calculate(const Values& values) {
    CheckTwoValues(values, kName);
    return kOperation(Fetch<T>(values[0]), Fetch<T>(values[1]));
}

// Does not test the divisor, unlike the division of columns.
template <typename T>
T DivideUnchecked(const T& dividend, const T& divisor) {
    return static_cast<T>(dividend / divisor);
}

template <Name kName>
bool And(const Values& values) {
    CheckTwoValues(values, kName);
    return Fetch<bool>(values[0]) && Fetch<bool>(values[1]);
}

// The first number where kIsBetter(first, second), else the second.
template <Name kName, typename T, Comparison kIsBetter>
T Select(const Values& values) {
    CheckTwoValues(values, kName);
    return FetchStoreValue<T>(kIsBetter(Checked(values[0]), Checked(values[1])) ? values[0]
                                                                                : values[1]);
}

template <Name kName, Comparison kCompare>
bool Compare(const Values& values) {
    CheckTwoValues(values, kName);
    return kCompare(Checked(values[0]), Checked(values[1]));
}

template <Name kName, bool kExpected>
bool Is(const Values& values) {
    CheckOneValue(values, kName);
    return Fetch<bool>(values[0]) == kExpected;
}

bool IsEqual(const StoreValue& a, const StoreValue& b) {
    return a.FuzzyIsEqual(b);
}
bool IsNotEqual(const StoreValue& a, const StoreValue& b) {
    return !a.FuzzyIsEqual(b);
}
bool IsLess(const StoreValue& a, const StoreValue& b) {
    return a.FuzzyIsLessThan(b);
}
bool IsGreater(const StoreValue& a, const StoreValue& b) {
    return a.FuzzyIsGreaterThan(b);
}
bool IsLessOrEqual(const StoreValue& a, const StoreValue& b) {
    return a.FuzzyIsLessThan(b) || a.FuzzyIsEqual(b);
}
bool IsGreaterOrEqual(const StoreValue& a, const StoreValue& b) {
    return a.FuzzyIsGreaterThan(b) || a.FuzzyIsEqual(b);
}

template <Name kName, Comparison kCompare>
void RegisterComparison(RegistryOfMultinaryFunctions& registry) {
    RegisterFunction<Compare<kName, kCompare>>(registry, KeyOf<SV, SV>(kName), TypeOf<bool>());
}

template <Name kName, bool kExpected>
void RegisterIs(RegistryOfMultinaryFunctions& registry) {
    RegisterFunction<Is<kName, kExpected>>(registry, KeyOf<SV>(kName), TypeOf<bool>());
}

}  // namespace

void RegisterSetValueMultiFunctions(RegistryOfMultinaryFunctions& registry) {
    ForEachType<int, long long, float, double>([&]<typename T>() {
        RegisterFunction<Calculate<FunctionNames::ADD, T, &Add<T>>>(
            registry, KeyOf<T, T>(FunctionNames::ADD), TypeOf<T>());
        RegisterFunction<Calculate<FunctionNames::SUBTRACT, T, &Subtract<T>>>(
            registry, KeyOf<T, T>(FunctionNames::SUBTRACT), TypeOf<T>());
    });
    ForEachType<int, long long, double>([&]<typename T>() {
        RegisterFunction<Calculate<FunctionNames::MULTIPLY, T, &Multiply<T>>>(
            registry, KeyOf<T, T>(FunctionNames::MULTIPLY), TypeOf<T>());
        RegisterFunction<Calculate<FunctionNames::DIVIDE, T, &DivideUnchecked<T>>>(
            registry, KeyOf<T, T>(FunctionNames::DIVIDE), TypeOf<T>());
    });
    RegisterFunction<And<FunctionNames::AND>>(registry, KeyOf<bool, bool>(FunctionNames::AND),
                                              TypeOf<bool>());
    ForEachType<long long, double>([&]<typename T>() {
        RegisterFunction<Select<FunctionNames::MIN, T, &IsLess>>(
            registry, KeyOf<T, T>(FunctionNames::MIN), TypeOf<T>());
        RegisterFunction<Select<FunctionNames::MAX, T, &IsGreater>>(
            registry, KeyOf<T, T>(FunctionNames::MAX), TypeOf<T>());
    });
    RegisterComparison<FunctionNames::EQUAL_TO, &IsEqual>(registry);
    RegisterComparison<FunctionNames::NOT_EQUAL_TO, &IsNotEqual>(registry);
    RegisterComparison<FunctionNames::LESS_THAN, &IsLess>(registry);
    RegisterComparison<FunctionNames::LESS_THAN_OR_EQUAL, &IsLessOrEqual>(registry);
    RegisterComparison<FunctionNames::GREATER_THAN, &IsGreater>(registry);
    RegisterComparison<FunctionNames::GREATER_THAN_OR_EQUAL, &IsGreaterOrEqual>(registry);
    RegisterIs<FunctionNames::IS_TRUE, true>(registry);
    RegisterIs<FunctionNames::IS_FALSE, false>(registry);
}

}  // namespace lum::core
