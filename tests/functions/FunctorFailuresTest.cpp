#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "lum/core/utility/LumTuple.h"
#include "tests/functions/FunctionTable.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core::functions_test {
namespace {

using namespace FunctionNames;
using Ints = VectorRawData<unsigned>;
using Longs = VectorRawData<unsigned long long>;
using Kinds = VectorRawData<SpecialKind>;

class FunctorFailuresTest : public testing::Test {
protected:
    LumRawUnaryFunctions Find(const wchar_t* name, const Type* type) {
        return m_registry->GetUnaryFunctions().GetRawFunctions(FunctionKey(name, type));
    }
    LumRawBinaryFunctions FindBinary(const wchar_t* name, const Type* type) {
        return m_registry->GetBinaryFunctions().GetRawFunctions(
            FunctionKey(name, type, type, FunctionKey::ArgContainer::Separate));
    }

    const test::CollatorPoolGuard m_pool{std::make_shared<test::FoldingCollatorPool>()};
    const std::unique_ptr<FunctionRegistry> m_registry = MakeBuiltinRegistry();
    const Type* const m_int = IntType::Get32();
    const std::unique_ptr<IRawUnaryFunctor> m_unary = Find(INC, m_int).GetRegularFactory()();
    const std::unique_ptr<IRawUnaryFunctor> m_unarySpecial =
        Find(NORMALIZE, m_int).GetSpecialFactory()();
    const std::unique_ptr<IRawBinaryFunctor> m_binary =
        FindBinary(ADD, m_int).GetRegularFactory()();
    const std::unique_ptr<IRawBinaryFunctor> m_binarySpecial =
        FindBinary(ADD, m_int).GetSpecialFactory()();
};

template <typename T>
bool AreAll(VectorRawData<T>& block, T expected) {
    const ArrayView<T> view = block.GetView();
    return std::count(view.begin(), view.end(), expected) ==
           std::distance(view.begin(), view.end());
}

/// Sizes of the views in the order of the arguments, accumulators left out.
struct SizeCase {
    const char* condition;
    std::vector<lumsize_t> sizes;
};

/// Calls `apply` with views of cells and with views of kinds, of which it takes one a place: it
/// must fail, and leave all of them alone.
void ExpectRefusals(const std::vector<SizeCase>& cases,
                    const std::function<void(const std::vector<RawDataView>&,
                                             const std::vector<RawDataView>&)>& apply) {
    for (const SizeCase& row : cases) {
        std::vector<Ints> cells;
        std::vector<Kinds> kinds;
        for (const lumsize_t size : row.sizes) {
            cells.emplace_back(size, 7U);
            kinds.emplace_back(size, SpecialKind::Error);
        }
        const std::vector<RawDataView> cellViews(cells.begin(), cells.end());
        const std::vector<RawDataView> kindViews(kinds.begin(), kinds.end());
        EXPECT_LUM_REPORT(VectorFunctionSize, "", row.condition, apply(cellViews, kindViews));
        for (std::size_t i = 0; i < cells.size(); ++i) {
            EXPECT_TRUE(AreAll(cells[i], 7U)) << row.condition;
            EXPECT_TRUE(AreAll(kinds[i], SpecialKind::Error)) << row.condition;
        }
    }
}

TEST_F(FunctorFailuresTest, SizesAreComparedInThisOrder) {
    constexpr char kPairs[] = "(inputs.GetSize() == specialInputs.GetSize())";
    constexpr char kOutputPairs[] = "(outputs.GetSize() == specialOutputs.GetSize())";
    constexpr char kOutputs[] = "(inputs.GetSize() == outputs.GetSize())";
    ExpectRefusals({{kOutputs, {3, 2}}, {kOutputs, {3, 0}}, {kOutputs, {0, 3}}},
                   [&](const auto& c, const auto&) { m_unary->ApplyRaw(c[0], c[1]); });
    ExpectRefusals(
        {{kPairs, {1, 2, 3, 4}}, {kOutputPairs, {2, 2, 3, 4}}, {kOutputs, {2, 2, 3, 3}}},
        [&](const auto& c, const auto& k) { m_unarySpecial->ApplyRaw(c[0], k[1], c[2], k[3]); });

    constexpr char kFirst[] = "(inputs1.GetSize() == outputs.GetSize())";
    constexpr char kSecond[] = "(inputs2.GetSize() == outputs.GetSize())";
    ExpectRefusals({{kFirst, {1, 2, 3}}, {kSecond, {3, 2, 3}}, {kSecond, {0, 2, 0}}},
                   [&](const auto& c, const auto&) { m_binary->ApplyRaw(c[0], c[1], c[2]); });
    ExpectRefusals({{"(inputs1.GetSize() == specialInputs1.GetSize())", {1, 2, 3, 4, 5, 6}},
                    {"(inputs2.GetSize() == specialInputs2.GetSize())", {2, 2, 3, 4, 5, 6}},
                    {kOutputPairs, {2, 2, 4, 4, 5, 6}},
                    {kFirst, {2, 2, 4, 4, 5, 5}},
                    {kSecond, {5, 5, 4, 4, 5, 5}}},
                   [&](const auto& c, const auto& k) {
                       m_binarySpecial->ApplyRaw(c[0], k[1], c[2], k[3], c[4], k[5]);
                   });

    constexpr char kFold[] = "(inputs.GetSize() == outputs.GetSize() || outputs.IsEmpty())";
    Ints accumulator(1, 7U);
    Kinds accumulatorKind(1, SpecialKind::Normal);
    const RawDataView a(accumulator);
    const RawDataView ak(accumulatorKind);
    ExpectRefusals({{kFold, {3, 2}}, {kFold, {0, 2}}}, [&](const auto& c, const auto&) {
        m_binary->FoldRaw(a, c[0], c[1], FoldDirection::Forward);
    });
    ExpectRefusals({{kPairs, {1, 2, 1, 1}},
                    {kOutputPairs, {2, 2, 0, 2}},
                    {kOutputPairs, {2, 2, 2, 0}},
                    {kFold, {2, 2, 3, 3}}},
                   [&](const auto& c, const auto& k) {
                       m_binarySpecial->FoldRaw(a, ak, c[0], k[1], c[2], k[3],
                                                FoldDirection::Forward);
                   });
    EXPECT_EQ(accumulator.GetView()[0], 7U);
}

TEST_F(FunctorFailuresTest, TheFormThatIsNotThere) {
    Ints cells(2, 7U);
    Kinds kinds(2, SpecialKind::Normal);
    const RawDataView c(cells);
    const RawDataView k(kinds);
    constexpr FoldDirection kForward = FoldDirection::Forward;
    EXPECT_LUM_ERROR(NotImplemented, "", m_unary->ApplyRaw(c, k, c, k));
    EXPECT_LUM_ERROR(NotImplemented, "", m_unarySpecial->ApplyRaw(c, c));
    EXPECT_LUM_ERROR(NotImplemented, "", m_binary->ApplyRaw(c, k, c, k, c, k));
    EXPECT_LUM_ERROR(NotImplemented, "", m_binarySpecial->ApplyRaw(c, c, c));
    EXPECT_LUM_ERROR(NotImplemented, "", m_binary->FoldRaw(c, k, c, k, c, k, kForward));
    EXPECT_LUM_ERROR(NotImplemented, "", m_binarySpecial->FoldRaw(c, c, c, kForward));
    EXPECT_EQ(cells.GetView()[0], 7U);
}

// Each view in turn is of another width, or of handles of the same width, or read-only where it is
// written; empty ones are no better.
TEST_F(FunctorFailuresTest, ViewsOfOtherElementsAndReadOnlyViews) {
    for (const lumsize_t count : {0U, 3U}) {
        Ints cells(count, 7U);
        Longs longs(count, 7U);
        Kinds kinds(count, SpecialKind::Normal);
        Ints one(1, 7U);
        Kinds oneKind(1, SpecialKind::Normal);
        const std::vector<unsigned> cellsInPayload(count, 7U);
        const std::vector<SpecialKind> kindsInPayload(count, SpecialKind::Normal);
        UnmanagedRawData<unsigned> payload(nullptr, cellsInPayload);
        UnmanagedRawData<SpecialKind> kindPayload(nullptr, kindsInPayload);
        const RawDataView c(cells);
        const RawDataView k(kinds);
        const RawDataView wide(longs);
        const RawDataView fixed(payload);
        const RawDataView fixedKinds(kindPayload);
        const RawDataView a(one);
        const RawDataView ak(oneKind);
        constexpr FoldDirection kBackward = FoldDirection::Backward;
        const char* const width = "(sizeof(T) == m_typeSize)";

        EXPECT_LUM_REPORT(IllegalCast, "", width, m_unary->ApplyRaw(wide, c));
        EXPECT_LUM_REPORT(IllegalCast, "", width, m_unary->ApplyRaw(c, wide));
        EXPECT_LUM_REPORT(IllegalCast, "", width, m_unarySpecial->ApplyRaw(c, c, c, k));
        EXPECT_LUM_REPORT(IllegalCast, "", width, m_unarySpecial->ApplyRaw(c, k, c, c));
        EXPECT_LUM_REPORT(IllegalCast, "", width, m_binary->ApplyRaw(c, wide, c));
        EXPECT_LUM_REPORT(IllegalCast, "", width, m_binary->FoldRaw(wide, c, c, kBackward));
        EXPECT_LUM_REPORT(IllegalCast, "", width, m_binary->FoldRaw(a, c, k, kBackward));
        EXPECT_LUM_REPORT(IllegalCast, "", width,
                          m_binarySpecial->FoldRaw(a, a, c, k, c, k, kBackward));

        EXPECT_LUM_ERROR(ImmutableValue, "", m_unary->ApplyRaw(c, fixed));
        EXPECT_LUM_ERROR(ImmutableValue, "", m_unarySpecial->ApplyRaw(c, k, fixed, k));
        EXPECT_LUM_ERROR(ImmutableValue, "", m_unarySpecial->ApplyRaw(c, k, c, fixedKinds));
        EXPECT_LUM_ERROR(ImmutableValue, "", m_binary->ApplyRaw(c, c, fixed));
        EXPECT_LUM_ERROR(ImmutableValue, "", m_binarySpecial->ApplyRaw(c, k, c, k, c, fixedKinds));
        EXPECT_LUM_ERROR(ImmutableValue, "", m_binary->FoldRaw(fixed, c, c, kBackward));
        EXPECT_LUM_ERROR(ImmutableValue, "", m_binary->FoldRaw(a, c, fixed, kBackward));
        EXPECT_LUM_ERROR(ImmutableValue, "",
                         m_binarySpecial->FoldRaw(a, fixedKinds, c, k, c, k, kBackward));
        EXPECT_TRUE(AreAll(cells, 7U));
        EXPECT_EQ(one.GetView()[0], 7U);
    }
    Ints none(0, 0U);
    EXPECT_LUM_ERROR(OutOfBounds, "",
                     m_binary->FoldRaw(RawDataView(none), RawDataView(none), RawDataView(none),
                                       FoldDirection::Forward));

    static_assert(sizeof(RIndirectString) == sizeof(LumTuple));
    VectorRawData<LumTuple> rows(2, LumTuple(TupleType::Get({m_int})));
    VectorRawData<unsigned char> bools(2, 0);
    const auto first = Find(KEEP_ONLY_FIRST, StringType::Get()).GetRegularCreatorFactory()({});
    EXPECT_LUM_ERROR(IllegalCast, "", first->ApplyRaw(RawDataView(rows), RawDataView(bools)));
}

TEST_F(FunctorFailuresTest, ValuesOfCreators) {
    const SV number = MakeStoreValue(m_int, 5);
    ForTypes<int, long long, float, double>([&]<typename T>() {
        const Type* const type = TypeFor<T>().Get();
        for (const T zero : {T{0}, -T{0}}) {
            EXPECT_LUM_REPORT(DivideByZero, "", "(m_constant != static_cast<T>(0))",
                              Find(DIVIDE_CONSTANT, type)
                                  .GetRegularCreatorFactory()({MakeStoreValue<T>(type, zero)}));
        }
    });

    // Elements of other types can share their storage.
    const struct {
        const char* set;
        const Type* type;
    } cases[] = {{"r: 1", m_int},          {"c: 00ff00", m_int},
                 {"l: 1", m_int},          {"i: 1", RealType::Get32()},
                 {"t:", IntType::Get64()}, {"i: 1", StringType::Get()},
                 {"s: x", BoolType::Get()}};
    for (const auto& row : cases) {
        const std::vector<SV> values = {test::SetOf(row.set)};
        EXPECT_LUM_ERROR(TypeMismatchExpected, "",
                         Find(KEEP_ONLY, row.type).GetRegularCreatorFactory()(values))
            << row.set;
        if (row.type != BoolType::Get()) {
            EXPECT_LUM_ERROR(TypeMismatchExpected, "",
                             Find(IS_NOT_IN_SET, row.type).GetRegularCreatorFactory()(values));
        }
    }
    const auto isInSet = Find(IS_IN_SET, m_int).GetRegularCreatorFactory();
    EXPECT_LUM_ERROR(NotTypedSet, "", isInSet({number}));
    EXPECT_LUM_ERROR(NotTypedSet, "", isInSet({test::ColumnOf("i: 1")}));

    const auto less = Find(LESS_THAN, m_int);
    for (const auto& make :
         {less.GetRegularCreatorFactory(), less.GetSpecialCreatorFactory(), isInSet}) {
        EXPECT_LUM_ERROR(OneInputNeeded, "", make({}));
        EXPECT_LUM_ERROR(OneInputNeeded, "", make({number, number}));
        EXPECT_LUM_ERROR(OneInputNeeded, "", make({SV()}));
    }
    EXPECT_LUM_ERROR(ExpectedInt32, "Int64",
                     less.GetRegularCreatorFactory()({MakeStoreValue(IntType::Get64(), 1LL)}));
}

// Membership is by the collation of the set, whatever that of the column; equality to a value is by
// text.
TEST_F(FunctorFailuresTest, StringsAreMembersByTheCollationOfTheSet) {
    const Type* const folding = StringType::Get(Collation(RInternString(L"fold")));
    auto values = MakeSetContainer<RIndirectString>(folding, 0);
    values->insert(L"abc");
    const SV set = factory::MakeSet<RIndirectString>(folding, std::move(values), nullptr);
    const auto isInSet = Find(IS_IN_SET, StringType::Get()).GetRegularCreatorFactory()({set});
    auto& typed = As<IUnaryFunctor<RIndirectString, bool>>(isInSet);
    EXPECT_TRUE(typed.Apply(L"ABC"));
    EXPECT_FALSE(typed.Apply(L"abcd"));
    const auto equals =
        Find(EQUAL_TO_VALUE, StringType::Get())
            .GetRegularCreatorFactory()({MakeStoreValue<RIndirectString>(folding, L"abc")});
    EXPECT_FALSE((As<IUnaryFunctor<RIndirectString, bool>>(equals).Apply(L"ABC")));
}

}  // namespace
}  // namespace lum::core::functions_test
