#include <gtest/gtest.h>

#include <functional>

#include "tests/functions/BuiltinTables.h"

namespace lum::core::functions_test {

using enum SpecialKind;
using namespace FunctionNames;

namespace {

// A special element leaves the accumulator as it is, and the first normal one takes the place of a
// special accumulator.
template <typename T, typename Function>
auto Skipping(Function function) {
    return [=](T a, SpecialKind kindOfA, T x, SpecialKind kindOfX) {
        if (kindOfX != Normal) {
            return ElementWithKind<T>(a, kindOfA);
        }
        return ElementWithKind<T>(kindOfA != Normal ? x : function(a, x), Normal);
    };
}

}  // namespace

void AddBest(FunctionTable& table) {
    ForTypes<int, long long, float, double>([&]<typename T>() {
        table.Add(MIN, [](T a, T x) { return a < x ? a : x; });
        table.Add(MAX, [](T a, T x) { return a > x ? a : x; });
    });
    const auto addSpecial = [&]<typename T>(const Options& options) {
        table.Add(MIN, Skipping<T>([](T a, T x) { return a > x ? x : a; }), options);
        table.Add(MAX, Skipping<T>([](T a, T x) { return x > a ? x : a; }), options);
    };
    ForTypes<int, long long, float, double, LumDateTime>(
        [&]<typename T>() { addSpecial.template operator()<T>(Options()); });
    addSpecial.template operator()<LumDateTime>(Options{.dateType = DateType::Get()});
}

void AddSums(FunctionTable& table) {
    ForTypes<int, long long, float, double>([&]<typename T>() {
        const auto add = [](T a, T x) { return Wrapping(a, x, std::plus<>()); };
        const Options options{.isAnyNaN = true};
        table.Add(SUM, add, options);
        table.Add(SUM, Skipping<T>(add), options);
    });
    table.Add(AND, [](bool a, bool x) { return a && x; });
    table.Add(OR, [](bool a, bool x) { return a || x; });
    table.Add(XOR, [](bool a, bool x) { return a != x; });
}

namespace {

// A sum of negative zeros and specials alone is still a negative zero.
TEST(BuiltinFolds, SkippedElementsDoNotChangeTheSignOfAZero) {
    const auto registry = MakeBuiltinRegistry();
    const auto functor = MakeBinary(*registry, SUM, RealType::Get64(), /*isSpecial=*/true);
    const std::vector<double> cells(100, -0.0);
    std::vector<SpecialKind> kinds(100, Normal);
    for (std::size_t i = 0; i < kinds.size(); i += 3) {
        kinds[i] = Missing;
    }
    for (const FoldDirection direction : {FoldDirection::Forward, FoldDirection::Backward}) {
        double sum = -0.0;
        SpecialKind kind = Normal;
        As<IBinarySpecialFunctor<double, double, double>>(functor).Fold(sum, kind, cells, kinds, {},
                                                                        {}, direction);
        EXPECT_TRUE(std::signbit(sum));
    }
}

}  // namespace
}  // namespace lum::core::functions_test
