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

TEST(BuiltinFolds, MinimaAndMaxima) {
    FunctionTable table;
    AddBest(table);
    table.Check(*MakeBuiltinRegistry());
}

TEST(BuiltinFolds, Sums) {
    FunctionTable table;
    AddSums(table);
    table.Check(*MakeBuiltinRegistry());
}

// Blocks of minima are found without regard to order; where the best is a zero, or a NaN stands
// before or behind it, the order decides after all.
template <typename T>
void CheckBestAcrossBlocks(const FunctionRegistry& registry, test::Random& random) {
    constexpr T kNaN = std::numeric_limits<T>::quiet_NaN();
    const T specks[] = {0, -T{0}, 0, -T{0}, kNaN, 1};
    for (int round = 0; round < 300; ++round) {
        // A sign that one of the two functions finds best, and a few cells that change it.
        const T filling = random.Below(2) == 0 ? T{2} : T{-2};
        std::vector<T> cells(random.Below(3000) + 1, filling);
        std::vector<SpecialKind> kinds(cells.size(), Normal);
        for (std::size_t count = random.Below(6); count > 0; --count) {
            const std::size_t index = random.Below(cells.size());
            cells[index] = random.OneOf(specks);
            kinds[index] = random.Below(4) == 0 ? Missing : Normal;
        }
        const T initials[] = {filling, filling, 0, -T{0}, kNaN};
        const T initial = random.OneOf(initials);
        for (const wchar_t* const name : {MIN, MAX}) {
            const Type* const type = TypeFor<T>().Get();
            const bool isMin = name == MIN;
            T regular = initial;
            T special = initial;
            for (std::size_t i = 0; i < cells.size(); ++i) {
                const T x = cells[i];
                regular = (isMin ? regular < x : regular > x) ? regular : x;
                if (kinds[i] == Normal) {
                    special = (isMin ? special > x : x > special) ? x : special;
                }
            }
            T accumulator = initial;
            const auto regularFunctor = MakeBinary(registry, name, type, /*isSpecial=*/false);
            As<IBinaryFunctor<T, T, T>>(regularFunctor)
                .Fold(accumulator, cells, {}, FoldDirection::Forward);
            EXPECT_TRUE(Column<T>::AreSame(accumulator, regular))
                << Column<T>::Show(accumulator) << ", expected " << Column<T>::Show(regular);
            accumulator = initial;
            SpecialKind kind = Normal;
            const auto specialFunctor = MakeBinary(registry, name, type, /*isSpecial=*/true);
            As<IBinarySpecialFunctor<T, T, T>>(specialFunctor)
                .Fold(accumulator, kind, cells, kinds, {}, {}, FoldDirection::Forward);
            EXPECT_TRUE(Column<T>::AreSame(accumulator, special))
                << Column<T>::Show(accumulator) << ", expected " << Column<T>::Show(special);
        }
    }
}

TEST(BuiltinFolds, MinimaAndMaximaAcrossBlocks) {
    const auto registry = MakeBuiltinRegistry();
    test::Random random;
    SCOPED_TRACE(random.Trace());
    CheckBestAcrossBlocks<float>(*registry, random);
    CheckBestAcrossBlocks<double>(*registry, random);
}

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
