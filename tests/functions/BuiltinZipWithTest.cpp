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

using Numbers = std::vector<double>;
using Kinds = std::vector<SpecialKind>;

/// Blocks of an element type, from numbers and back.
struct Blocks {
    std::function<std::unique_ptr<RawData>(const Numbers&)> make;
    std::function<Numbers(const RawData&)> read;
};

template <typename T>
Blocks BlocksOf() {
    using Storage = typename TypeTraits<T>::Storage;
    return {[](const Numbers& numbers) {
                std::vector<Storage> cells;
                for (const double number : numbers) {
                    cells.push_back(std::bit_cast<Storage>(static_cast<T>(number)));
                }
                return std::make_unique<VectorRawData<Storage>>(std::move(cells));
            },
            [](const RawData& block) {
                const ArrayView<const T> cells = block.ViewAs<T>();
                return Numbers(cells.begin(), cells.end());
            }};
}

// Division stops at the first zero: what is before it stands, the rest is as it was.
void CheckDivisionByZero(IRawBinaryFunctor& divide, IRawBinaryFunctor& divideSpecial,
                         const Blocks& blocks, double zero) {
    const auto dividends = blocks.make({-8, 9, 6, 8});
    const auto divisors = blocks.make({2, zero, 2, 4});
    const auto quotients = blocks.make({99, 99, 99, 99});
    const auto accumulator = blocks.make({64});
    VectorRawData<SpecialKind> noKinds(4, Normal);
    VectorRawData<SpecialKind> kinds(Kinds{Normal, Null, Normal, Normal});
    VectorRawData<SpecialKind> quotientKinds(4, Error);
    const auto kindsOfQuotients = [&] {
        const ArrayView<SpecialKind> view = quotientKinds.GetView();
        return Kinds(view.begin(), view.end());
    };
    const RawDataView to(*quotients);
    const RawDataView toKinds(quotientKinds);
    const ConstRawDataView by(*divisors);
    const ConstRawDataView byKinds(noKinds);

    EXPECT_LUM_ERROR(DivideByZero, "", divide.ApplyRaw(ConstRawDataView(*dividends), by, to));
    EXPECT_EQ(blocks.read(*quotients), (Numbers{-4, 99, 99, 99}));
    EXPECT_LUM_ERROR(
        DivideByZero, "",
        divideSpecial.ApplyRaw(ConstRawDataView(*dividends), byKinds, by, byKinds, to, toKinds));
    EXPECT_EQ(blocks.read(*quotients), (Numbers{-4, 99, 99, 99}));
    EXPECT_EQ(kindsOfQuotients(), (Kinds{Normal, Error, Error, Error}));
    EXPECT_LUM_ERROR(DivideByZero, "",
                     divide.FoldRaw(RawDataView(*accumulator), by, RawDataView(*quotients, 0, 0),
                                    FoldDirection::Backward));
    EXPECT_EQ(blocks.read(*accumulator), Numbers{8});
    VectorRawData<SpecialKind> kind(1, Normal);
    EXPECT_LUM_ERROR(DivideByZero, "",
                     divideSpecial.FoldRaw(RawDataView(*accumulator), RawDataView(kind), by,
                                           byKinds, to, toKinds, FoldDirection::Forward));
    EXPECT_EQ(blocks.read(*accumulator), Numbers{4});
    EXPECT_EQ(blocks.read(*quotients), (Numbers{4, 99, 99, 99}));

    // Below a special there may be a zero.
    divideSpecial.ApplyRaw(ConstRawDataView(*dividends), ConstRawDataView(kinds), by, byKinds, to,
                           toKinds);
    EXPECT_EQ(blocks.read(*quotients), (Numbers{-4, 0, 3, 2}));
    EXPECT_EQ(kindsOfQuotients(), (Kinds{Normal, Null, Normal, Normal}));
}

TEST(BuiltinZipWith, DivisionByZero) {
    const auto registry = MakeBuiltinRegistry();
    ForTypes<int, long long, float, double>([&]<typename T>() {
        const Type* const type = TypeFor<T>().Get();
        for (const double zero : {0.0, -0.0}) {
            CheckDivisionByZero(*MakeBinary(*registry, DIVIDE, type, /*isSpecial=*/false),
                                *MakeBinary(*registry, DIVIDE, type, /*isSpecial=*/true),
                                BlocksOf<T>(), zero);
        }
    });
}

}  // namespace
}  // namespace lum::core::functions_test
