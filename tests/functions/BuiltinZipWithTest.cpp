#include <gtest/gtest.h>

#include <functional>

#include "tests/functions/BuiltinTables.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core::functions_test {

using enum SpecialKind;
using namespace FunctionNames;

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
                               ? ElementWithKind<T>(function(a, b), Normal)
                               : ElementWithKind<T>(T(), Null);
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

namespace {

TEST(BuiltinZipWith, Models) {
    FunctionTable table;
    AddZipWith(table);
    table.Check(*MakeBuiltinRegistry());
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

TEST(BuiltinZipWith, DivisionByZero) {
    const auto registry = MakeBuiltinRegistry();
    ForTypes<int, long long, float, double>([&]<typename T>() {
        const Type* const type = TypeFor<T>().Get();
        CheckDivisionByZero<T>(*MakeBinary(*registry, DIVIDE, type, /*isSpecial=*/false),
                               *MakeBinary(*registry, DIVIDE, type, /*isSpecial=*/true));
    });
}

}  // namespace
}  // namespace lum::core::functions_test
