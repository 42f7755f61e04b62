#include <cmath>
#include <functional>

#include "tests/functions/BuiltinTables.h"

namespace lum::core::functions_test {

using enum SpecialKind;
using namespace FunctionNames;

void AddArithmetic(FunctionTable& table) {
    ForTypes<float, double>([&]<typename T>() {
        table.Add(ABS, [](T x) { return std::copysign(x, T{1}); });
        // A NaN comes out quiet, as of any sum.
        table.Add(FLOOR, [](T x) { return std::isnan(x) ? x + x : std::floor(x); });
    });
    ForTypes<int, long long, float, double>([&]<typename T>() {
        table.Add(INC, [](T x) { return Wrapping(x, T{1}, std::plus<>()); });
        table.Add(DEC, [](T x) { return Wrapping(x, T{1}, std::minus<>()); });
        table.Add(NEGATE, [](T x) {
            if constexpr (std::is_integral_v<T>) {
                return Wrapping(T{0}, x, std::minus<>());
            } else {
                return std::copysign(x, std::signbit(x) ? T{1} : T{-1});
            }
        });
        table.AddWithConstant<T(T), T>(ADD_CONSTANT, Constants<T>(), [](T x, T constant) {
            return Wrapping(x, constant, std::plus<>());
        });
        table.AddWithConstant<T(T), T>(MULTIPLY_CONSTANT, Constants<T>(), [](T x, T constant) {
            return Wrapping(x, constant, std::multiplies<>());
        });
        table.AddWithConstant<T(T), T>(DIVIDE_CONSTANT, {1, 2, -7, std::numeric_limits<T>::max()},
                                       [](T x, T constant) { return T(x / constant); });
    });
}

void AddMaps(FunctionTable& table) {
    ForTypes<int, long long, float, double, RIndirectString>([&]<typename T>() {
        table.Add(NORMALIZE, [](T x, SpecialKind kind) {
            return ElementWithKind<T>(kind == Normal ? x : T(), Normal);
        });
    });
    ForTypes<bool, int, long long, float, double, LumDateTime>(
        [&]<typename T>() { table.Add(ASSIGN, [](T x) { return x; }); });
    table.Add(
        ASSIGN, [](LumDateTime x) { return x; }, Options{.dateType = DateType::Get()});

    const auto addReal = [&]<typename In, typename Out>(const wchar_t* name, auto accepts,
                                                        auto function) {
        table.Add(name, [=](In x, SpecialKind kind) {
            return NullUnless(kind == Normal && accepts(x),
                              static_cast<Out>(function(static_cast<Out>(x))));
        });
    };
    const auto isAny = [](auto) { return true; };
    const auto isPositive = [](auto x) { return x > 0; };
    const auto isNotNegative = [](auto x) { return !(x < 0); };
    ForTypes<double, long long>([&]<typename T>() {
        addReal.template operator()<T, double>(LN, isPositive,
                                               [](double x) { return std::log(x); });
        addReal.template operator()<T, double>(SYMLOG, isAny,
                                               [](double x) { return std::asinh(x); });
        addReal.template operator()<T, double>(SQRT, isNotNegative,
                                               [](double x) { return std::sqrt(x); });
    });
    ForTypes<float, int>([&]<typename T>() {
        addReal.template operator()<T, float>(SQRT, isNotNegative,
                                              [](float x) { return std::sqrt(x); });
    });
    addReal.template operator()<double, double>(EXP, isAny, [](double x) { return std::exp(x); });
    addReal.template operator()<double, double>(SYMLOGINV, isAny,
                                                [](double x) { return std::sinh(x); });
}

}  // namespace lum::core::functions_test
