#include <gtest/gtest.h>

#include <functional>

#include "tests/functions/FunctionTable.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core::functions_test {
namespace {

using enum SpecialKind;
using namespace FunctionNames;
template <typename T>
using Result = ElementWithKind<T>;

// A special element leaves the accumulator as it is, and the first normal one takes the place of a
// special accumulator.
template <typename T, typename Function>
auto Skipping(Function function) {
    return [=](T a, SpecialKind kindOfA, T x, SpecialKind kindOfX) {
        if (kindOfX != Normal) {
            return Result<T>(a, kindOfA);
        }
        return Result<T>(kindOfA != Normal ? x : function(a, x), Normal);
    };
}

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

template <typename T, typename Condition>
void AddCount(FunctionTable& table, const wchar_t* name, Condition counts) {
    table.Add(name, [=](int a, SpecialKind kindOfA, T x, SpecialKind kindOfX) {
        return Result<int>(counts(x, kindOfX) ? Wrapping(a, 1, std::plus<>()) : a, kindOfA);
    });
}

void AddCounts(FunctionTable& table) {
    ForTypes<int, long long, float, double, RIndirectString, LumDateTime, bool, SV>(
        [&]<typename T>() {
            table.Add(COUNT_ALL, [](int a, T) { return Wrapping(a, 1, std::plus<>()); });
        });
    ForTypes<int, long long, float, double>([&]<typename T>() {
        AddCount<T>(table, COUNT, [](T, SpecialKind kind) { return kind == Normal; });
        AddCount<T>(table, COUNT_NEGATIVES,
                    [](T x, SpecialKind kind) { return kind == Normal && x < 0; });
    });
    ForTypes<int, long long, float, double, RIndirectString, LumDateTime, bool>([&]<typename T>() {
        AddCount<T>(table, COUNT_SPECIALS,
                    [](const T&, SpecialKind kind) { return kind != Normal; });
        AddCount<T>(table, COUNT_NULLS, [](const T&, SpecialKind kind) { return kind == Null; });
    });
}

void AddZipWith(FunctionTable& table) {
    ForTypes<int, long long, float, double>([&]<typename T>() {
        const auto addBoth = [&](const wchar_t* name, auto function, Domain domain) {
            const Options options{.domain = domain, .isAnyNaN = true};
            table.Add(
                name, [=](T a, T b) { return function(a, b); }, options);
            table.Add(
                name,
                [=](T a, SpecialKind kindOfA, T b, SpecialKind kindOfB) {
                    return kindOfA == Normal && kindOfB == Normal
                               ? Result<T>(function(a, b), Normal)
                               : Result<T>(T(), Null);
                },
                options);
        };
        addBoth(
            ADD, [](T a, T b) { return Wrapping(a, b, std::plus<>()); }, Domain::All);
        addBoth(
            SUBTRACT, [](T a, T b) { return Wrapping(a, b, std::minus<>()); }, Domain::All);
        addBoth(
            MULTIPLY, [](T a, T b) { return Wrapping(a, b, std::multiplies<>()); }, Domain::All);
        addBoth(
            DIVIDE, [](T a, T b) { return T(a / b); }, Domain::Divisors);
    });
    ForTypes<int, long long>(
        [&]<typename T>() { table.Add(BITOR, [](T a, T b) { return T(a | b); }); });
}

class BuiltinBinaryTest : public testing::Test {
protected:
    std::unique_ptr<IRawBinaryFunctor> Make(const wchar_t* name, const Type* type, bool isSpecial) {
        const auto functions = m_registry->GetBinaryFunctions().GetRawFunctions(
            FunctionKey(name, type, type, FunctionKey::ArgContainer::Separate));
        return (isSpecial ? functions.GetSpecialFactory() : functions.GetRegularFactory())();
    }

    const std::unique_ptr<FunctionRegistry> m_registry = MakeBuiltinRegistry();
};

TEST_F(BuiltinBinaryTest, HasTheseFunctionsAndNoOthers) {
    FunctionTable table;
    AddBest(table);
    AddSums(table);
    AddCounts(table);
    AddZipWith(table);
    table.ExpectToBe(m_registry->GetBinaryFunctions(), *m_registry);
}

TEST_F(BuiltinBinaryTest, MinimaAndMaxima) {
    FunctionTable table;
    AddBest(table);
    table.Check(*m_registry);
}

TEST_F(BuiltinBinaryTest, Sums) {
    FunctionTable table;
    AddSums(table);
    table.Check(*m_registry);
}

TEST_F(BuiltinBinaryTest, Counts) {
    FunctionTable table;
    AddCounts(table);
    table.Check(*m_registry);
}

TEST_F(BuiltinBinaryTest, OfTwoColumns) {
    FunctionTable table;
    AddZipWith(table);
    table.Check(*m_registry);
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
            const auto functions = registry.GetBinaryFunctions().GetRawFunctions(
                FunctionKey(name, type, type, FunctionKey::ArgContainer::Separate));
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
            const auto regularFunctor = functions.GetRegularFactory()();
            As<IBinaryFunctor<T, T, T>>(regularFunctor)
                .Fold(accumulator, cells, {}, FoldDirection::Forward);
            EXPECT_TRUE(Column<T>::AreSame(accumulator, regular))
                << Column<T>::Show(accumulator) << ", expected " << Column<T>::Show(regular);
            accumulator = initial;
            SpecialKind kind = Normal;
            const auto specialFunctor = functions.GetSpecialFactory()();
            As<IBinarySpecialFunctor<T, T, T>>(specialFunctor)
                .Fold(accumulator, kind, cells, kinds, {}, {}, FoldDirection::Forward);
            EXPECT_TRUE(Column<T>::AreSame(accumulator, special))
                << Column<T>::Show(accumulator) << ", expected " << Column<T>::Show(special);
        }
    }
}

TEST_F(BuiltinBinaryTest, MinimaAndMaximaAcrossBlocks) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    CheckBestAcrossBlocks<float>(*m_registry, random);
    CheckBestAcrossBlocks<double>(*m_registry, random);
}

// A sum of negative zeros and specials alone is still a negative zero.
TEST_F(BuiltinBinaryTest, SkippedElementsDoNotChangeTheSignOfAZero) {
    const auto functor = Make(SUM, RealType::Get64(), /*isSpecial=*/true);
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

// Division stops at the first zero: what is before it stands, the rest is as it was.
template <typename T>
void CheckDivisionByZero(IRawBinaryFunctor& regular, IRawBinaryFunctor& special) {
    auto& divide = dynamic_cast<IBinaryFunctor<T, T, T>&>(regular);
    auto& divideSpecial = dynamic_cast<IBinarySpecialFunctor<T, T, T>&>(special);
    const std::vector<T> dividends = {-7, 9, 5, 8};
    const std::vector<SpecialKind> noKinds(4, Normal);
    const std::vector<SpecialKind> kinds = {Normal, Null, Normal, Normal};
    const T minusSevenHalves = static_cast<T>(-7 / T{2});
    for (const T zero : {T{0}, -T{0}}) {
        const std::vector<T> divisors = {2, zero, 2, 4};
        std::vector<T> quotients(4, 99);
        EXPECT_LUM_ERROR(DivideByZero, "", divide.ApplyVector(dividends, divisors, quotients));
        EXPECT_EQ(quotients, (std::vector<T>{minusSevenHalves, 99, 99, 99}));
        EXPECT_LUM_ERROR(DivideByZero, "", divide.Apply(1, zero));

        // Below a special there may be a zero.
        std::vector<SpecialKind> quotientKinds(4, Error);
        divideSpecial.ApplyVector(dividends, kinds, divisors, noKinds, quotients, quotientKinds);
        EXPECT_EQ(quotients, (std::vector<T>{minusSevenHalves, 0, T(5 / T{2}), 2}));
        EXPECT_EQ(quotientKinds, kinds);
        quotients.assign(4, 99);
        quotientKinds.assign(4, Error);
        EXPECT_LUM_ERROR(DivideByZero, "",
                         divideSpecial.ApplyVector(dividends, noKinds, divisors, noKinds, quotients,
                                                   quotientKinds));
        EXPECT_EQ(quotients, (std::vector<T>{minusSevenHalves, 99, 99, 99}));
        EXPECT_EQ(quotientKinds, (std::vector<SpecialKind>{Normal, Error, Error, Error}));

        T accumulator = 64;
        EXPECT_LUM_ERROR(DivideByZero, "",
                         divide.Fold(accumulator, divisors, {}, FoldDirection::Backward));
        EXPECT_EQ(accumulator, 8);
        SpecialKind kind = Normal;
        quotients.assign(4, 99);
        EXPECT_LUM_ERROR(DivideByZero, "",
                         divideSpecial.Fold(accumulator, kind, divisors, noKinds, quotients,
                                            quotientKinds, FoldDirection::Forward));
        EXPECT_EQ(accumulator, 4);
        EXPECT_EQ(kind, Normal);
        EXPECT_EQ(quotients, (std::vector<T>{4, 99, 99, 99}));
    }
}

TEST_F(BuiltinBinaryTest, DivisionByZero) {
    ForTypes<int, long long, float, double>([&]<typename T>() {
        const Type* const type = TypeFor<T>().Get();
        CheckDivisionByZero<T>(*Make(DIVIDE, type, /*isSpecial=*/false),
                               *Make(DIVIDE, type, /*isSpecial=*/true));
    });
}

}  // namespace
}  // namespace lum::core::functions_test
