// Constant and composite arrays: what they are made of, and what they cost.
#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "core/main/store/ValueCompositeArray.h"
#include "core/main/store/ValueConstantArray.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using factory::MakeArray;
using factory::MakeConstantArray;
using test::TextOf;
using Indices = std::vector<unsigned>;

constexpr lumsize_t kMax = std::numeric_limits<lumsize_t>::max();
constexpr SortSpecOrder kOrder = SortSpecOrder::DESC;

template <typename T>
using Runs = std::vector<ValueCompositeArrayRange<T>>;

template <typename T>
SV MakeOfRuns(const Type* elementType, Runs<T> runs, std::unique_ptr<Indices> indices = nullptr) {
    return MakeCompositeArray<T>(elementType, std::move(runs), std::move(indices), kOrder);
}

template <typename T>
SV Compose(const std::vector<SV>& arrays, std::unique_ptr<Indices> indices = nullptr) {
    return MakeCompositeArray<T>(arrays, std::move(indices), kOrder);
}

SV Constant(unsigned value, lumsize_t count) {
    return MakeConstantArray<unsigned>(IntType::Get32(), value, count);
}

SV ConstantSpecial(lumsize_t count, SpecialKind kind) {
    return MakeConstantArray<unsigned>(IntType::Get32(), count, kind);
}

const ITypedArray<unsigned>& Ints(const SV& column) {
    return column->AsTypedArray<unsigned>();
}

using Counts = std::vector<lumsize_t>;

Counts CountsOf(const SV& column) {
    Counts counts;
    for (const auto& run : Ints(column).GetCompositeRanges()) {
        counts.push_back(run.count);
    }
    return counts;
}

constexpr char kMatching[] =
    "(StorageTypeTraits<StorageT>::IsMatchingType(m_type->GetElementType()))";

TEST(ArrayOfRunsTest, ConstantsHoldPrimitivesAndRows) {
    const Type* const arrays = ArrayType::Get(IntType::Get32());
    const char kFitting[] =
        "(IsPrimitiveStoreType(elementStoreType) || elementStoreType == StoreType::Tuple)";
    EXPECT_LUM_REPORT(NullArgument, "", "(m_type) != nullptr",
                      ValueConstantArray<unsigned>(nullptr, 1u, SpecialKind::Normal, 1u));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kFitting,
                      MakeConstantArray<SV>(arrays, Constant(5, 3), 1));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kFitting,
                      MakeConstantArray<SV>(arrays, 1, SpecialKind::Null));
    // Before the storage is looked at.
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kFitting,
                      MakeConstantArray<unsigned>(KeyMapType::Get({}), 1u, 1));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kMatching,
                      MakeConstantArray<unsigned>(IntType::Get64(), 1u, 1));
    EXPECT_NO_THROW(MakeConstantArray<LumTuple>(test::TypeOf("P{i}"), 2, SpecialKind::All));
    EXPECT_NO_THROW(MakeConstantArray<SV>(ExternalType::Get(7), SV(), 1));
}

TEST(ArrayOfRunsTest, RunsHoldPrimitives) {
    const Type* const rows = test::TypeOf("P{i}");
    const char kFitting[] = "(IsPrimitiveStoreType(elementStoreType))";
    const PackagedArrayView<ValueCompositeArrayRange<unsigned>> noRuns(Runs<unsigned>{});
    EXPECT_LUM_REPORT(
        NullArgument, "", "(m_type) != nullptr",
        ValueCompositeArray<unsigned>(nullptr, noRuns, PackagedArrayView<unsigned>(), kOrder));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kFitting, MakeOfRuns<LumTuple>(rows, {}));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kMatching,
                      MakeOfRuns<unsigned>(IntType::Get64(), {}));
    EXPECT_NO_THROW(MakeOfRuns<SV>(IntType::Get32(), {}));
}

TEST(ArrayOfRunsTest, ConstantsOfOneTypeAreComposed) {
    const SV three = Constant(5, 3);
    const Type* const real = RealType::Get32();
    const Type* const rows = test::TypeOf("P{i}");
    const char kSameType[] = "(ca->GetType() == type)";
    const char kTypedArray[] = "(typedArray) != nullptr";
    EXPECT_LUM_REPORT(EmptyComposition, "", "(constantArrays).size() >= (1)",
                      Compose<unsigned>({}));
    EXPECT_LUM_REPORT(NullArgument, "", "(value) != nullptr", Compose<unsigned>({three, nullptr}));
    for (const SV& other : {MakeConstantArray<unsigned>(real, 1u, 0),  // Even without elements.
                            MakeConstantArray<unsigned long long>(IntType::Get64(), 1ull, 1)}) {
        EXPECT_LUM_REPORT(CompositionTypeMismatch, "", kSameType,
                          Compose<unsigned>({three, other}));
    }
    for (const SV& other : {test::ColumnOf("i: 5"), factory::MakeInt32(1),
                            MakeConstantArray<SV>(IntType::Get32(), factory::MakeInt32(1), 1)}) {
        EXPECT_LUM_REPORT(TypeMismatchExpected, "", kTypedArray, Compose<unsigned>({other, three}));
    }
    EXPECT_LUM_REPORT(
        TypeMismatchExpected, "", "(IsPrimitiveStoreType(elementStoreType))",
        Compose<LumTuple>({MakeConstantArray<LumTuple>(rows, test::RowOf("P{i}: 1"), 1)}));
}

// Otherwise the forms of an array answer alike, or as the model of ArrayFormsTest says.
TEST(ArrayOfRunsTest, WhatIsStoredDiffersByForm) {
    const SV plain = test::ColumnOf("i: 7 7");
    const SV constant = Constant(7, 2);
    const SV runs = test::MakeRuns(plain);
    EXPECT_EQ(Ints(constant).GetValues().GetSize(), 1u);
    EXPECT_EQ(Ints(ConstantSpecial(2, SpecialKind::Null)).GetSpecials().GetSize(), 1u);
    for (const SV& column : {plain, constant}) {
        EXPECT_LUM_REPORT(ArrayLacksSpecials, "", "(HasSpecialValues())",
                          Ints(column).GetSpecials());
        EXPECT_LUM_REPORT(NotImplemented, "", "", Ints(column).GetCompositeRanges());
    }
    EXPECT_LUM_ERROR(NotImplemented, "", Ints(runs).GetValues());
    EXPECT_LUM_ERROR(NotImplemented, "", Ints(runs).GetSpecials());
    EXPECT_LUM_REPORT(IllegalOperation, "", "!(IsNull())",
                      dynamic_cast<const ArrayWithIndices&>(*runs).GetIndices());

    // A constant needs no indices, and is in its set whatever its count.
    EXPECT_EQ(TextOf(constant->AsArray().WithIndices(Indices{9, 0}, kOrder)), "i: 7 7");
    EXPECT_EQ(Ints(constant).GetValueUnchecked(kMax), 7u);
    EXPECT_EQ(TextOf(Constant(7, 0)->AsArray().ToSet(/*includeSpecials=*/true)), "S i: 7");
    EXPECT_EQ(TextOf(Compose<unsigned>({Constant(7, 0)})->AsArray().ToSet(true)), "S i:");

    // Its elements are one object where they are tried by key, and not where they are read so.
    const IStoreCollection& byKey = constant->AsCollection();
    EXPECT_EQ(byKey.TryGetValue(L"0"), byKey.TryGetValue(L"1"));
    EXPECT_NE(byKey.GetValue(L"0"), byKey.GetValue(L"1"));
}

TEST(ArrayOfRunsTest, HandlesInRunsAreEqualByTheirObjects) {
    const Type* const type = IntType::Get32();
    const SV one = factory::MakeInt32(7);
    const SV other = factory::MakeInt32(7);
    const SV plain = MakeArray<SV>(type, {one, other}, kOrder);
    const SV runs =
        MakeOfRuns<SV>(type, {{one, SpecialKind::Normal, 1}, {other, SpecialKind::Normal, 1}});
    EXPECT_TRUE(plain->AsArray().ElementsEqual(0, 1));
    EXPECT_EQ(plain->AsArray().FindRunEnd(0), 1u);
    EXPECT_FALSE(runs->AsArray().ElementsEqual(0, 1));
    EXPECT_TRUE(runs->AsArray().ElementsEqual(1, 1));
    EXPECT_EQ(runs->AsArray().FindRunEnd(0), 0u);
}

TEST(ArrayOfRunsTest, SpecialConstantsStandOverDefaults) {
    EXPECT_EQ(TextOf(ConstantSpecial(2, SpecialKind::All)), "i: !All !All");
    EXPECT_EQ(TextOf(ConstantSpecial(2, SpecialKind::Normal)), "i: 0 0");
    EXPECT_EQ(TextOf(ConstantSpecial(0, SpecialKind::Null)), "i!:");
    EXPECT_EQ(TextOf(MakeConstantArray<RIndirectString>(test::TypeOf("s"), 1, SpecialKind::Null)),
              "s: -");
}

TEST(ArrayOfRunsTest, ComposedArraysBecomeRuns) {
    const SV array = Compose<unsigned>(
        {Constant(5, 2), Constant(6, 0), Constant(5, 3), ConstantSpecial(2, SpecialKind::All)});
    EXPECT_EQ(TextOf(array), "i: 5 5 5 5 5 !All !All");
    EXPECT_EQ(array->AsArray().GetSortOrder(), kOrder);
    EXPECT_EQ(CountsOf(array), (Counts{2, 3, 2}));  // Equal neighbours stay apart.
    EXPECT_EQ(array->AsArray().FindRunEnd(1), 4u);

    const SV indexed = Compose<unsigned>({Constant(5, 2), ConstantSpecial(1, SpecialKind::Null)},
                                         std::make_unique<Indices>(Indices{2, 0, 2}));
    EXPECT_EQ(TextOf(indexed), "i: - 5 -");
    EXPECT_EQ(dynamic_cast<const ArrayWithIndices&>(*indexed).GetIndices()[0], 2u);
    // A run counts though no index reaches it.
    const SV normal = indexed->AsArray().WithIndices(Indices{1}, kOrder);
    EXPECT_TRUE(normal->AsArray().HasSpecialValues());
    EXPECT_FALSE(normal->AsArray().Materialize()->AsArray().HasSpecialValues());
}

TEST(ArrayOfRunsTest, RangesAndMaterializedIndicesKeepRuns) {
    const SV array = MakeOfRuns<unsigned>(
        IntType::Get32(),
        {{1, SpecialKind::Normal, 2}, {2, SpecialKind::Null, 3}, {3, SpecialKind::Normal, 4}});
    const SV indexed = array->AsArray().WithIndices(Indices{0, 1, 0, 8, 2, 3, 7}, kOrder);
    const std::pair<SV, Counts> cases[] = {
        {array->AsArray().GetRange(1, 3, 2), {1, 1, 1}},
        {array->AsArray().GetRange(2, 3, 1), {3}},
        {array->AsArray().GetRange(0, 4, 1), {2, 2}},
        {array->AsArray().GetRange(0, kMax, 5), {1, 1}},
        {array->AsArray().GetRange(9, 1, 1), {}},
        {indexed->AsArray().Materialize(), {3, 1, 2, 1}},
    };
    for (const auto& [column, counts] : cases) {
        EXPECT_EQ(CountsOf(column), counts) << TextOf(column);
        EXPECT_FALSE(column->AsArray().HasIndices());
    }
    // No elements are a choice of none.
    EXPECT_TRUE(array->AsArray().GetRange(3, 0, 1)->AsArray().HasIndices());
}

// Counts come from outside: their sum may not wrap round.
TEST(ArrayOfRunsTest, SumsOfCountsAreNotCut) {
    constexpr char kTooLarge[] = "Value exceeds maximum legal value for lumsize_t";
    const SV longest = Constant(5, kMax);
    const SV one = Constant(6, 1);
    EXPECT_LUM_PLAIN_ERROR(OutOfRange, kTooLarge, Compose<unsigned>({longest, one}));
    EXPECT_LUM_PLAIN_ERROR(
        OutOfRange, kTooLarge,
        Compose<unsigned>({longest, longest}, std::make_unique<Indices>(Indices{0})));

    // As many as there can be, with strides whose sum passes 32 bits.
    const SV full = Compose<unsigned>({Constant(5, kMax - 1), one});
    const IStoreArray& array = full->AsArray();
    EXPECT_EQ(array.GetCount(), kMax);
    EXPECT_EQ(TextOf(array.GetElement(kMax - 1)), "6");
    EXPECT_EQ(array.FindRunEnd(3), kMax - 2);
    EXPECT_EQ(TextOf(array.GetRange(kMax - 2, kMax, 1)), "i: 5 6");
    EXPECT_EQ(TextOf(array.GetRange(1, kMax, 0x80000000)), "i: 5 5");
    EXPECT_EQ(TextOf(array.GetRange(2, kMax, 0xFFFFFFFC)), "i: 5 6");
    EXPECT_EQ(TextOf(array.GetRange(kMax - 1, kMax, kMax)), "i: 6");
    EXPECT_EQ(TextOf(array.ToSet(/*includeSpecials=*/false)), "S i: 5 6");
}

TEST(ArrayOfRunsTest, ConstantsCostOneElementWhateverTheirCount) {
    const test::CollatorPoolGuard pool;
    const auto allocationsOf = [](lumsize_t count) {
        const Type* const type = test::TypeOf("s");
        const test::AllocationCounter counter;
        const SV column =
            MakeConstantArray<RIndirectString>(type, L"longer than the handle", count);
        const IStoreArray& array = column->AsArray();
        const SV made[] = {SV(column->Clone()),
                           array.Materialize(),
                           array.GetRange(0, kMax, 1),
                           array.WithIndices(nullptr, kOrder),
                           array.ToSet(/*includeSpecials=*/true),
                           array.GetElement(count - 1),
                           Compose<RIndirectString>({column})};
        EXPECT_EQ(made[3]->GetCount(), count);
        EXPECT_EQ(array.FindRunEnd(0), count - 1);
        array.GetStoreValueIterable().begin()->Clone()->Advance();
        EXPECT_EQ(*column->AsTypedArray<RIndirectString>().GetAdapter(), L"longer than the handle");
        return counter.GetCount();
    };
    const std::size_t withTypes = allocationsOf(1);  // The first time makes the types as well.
    const std::size_t ofOne = allocationsOf(1);
    EXPECT_LE(ofOne, withTypes);
    EXPECT_EQ(allocationsOf(kMax), ofOne);

    // A boxed walk makes nothing a step.
    const SV column = ConstantSpecial(1000, SpecialKind::Null);
    const auto& iterable = column->AsArray().GetStoreValueIterable();
    const auto it = iterable.begin()->Clone();
    const test::AllocationCounter counter;
    for (; *it != iterable.end(); it->Advance()) {
        it->Dereference();
    }
    EXPECT_EQ(counter.GetCount(), 0u);
}

TEST(ArrayOfRunsTest, StorageIsShared) {
    const SV array = MakeOfRuns<unsigned>(IntType::Get32(), {{5, SpecialKind::Normal, 3}});
    const auto addressOf = [](const SV& column) {
        return Ints(column).GetCompositeRanges().GetData();
    };
    const IStoreArray& typed = array->AsArray();
    const SV indexed = typed.WithIndices(Indices{2, 1}, kOrder);
    for (const SV& made : {SV(array->Clone()), typed.Materialize(), indexed, SV(indexed->Clone()),
                           indexed->AsArray().ComposeIndices(Indices{0}, kOrder)}) {
        EXPECT_EQ(addressOf(made), addressOf(array));
    }
    EXPECT_EQ(TextOf(indexed->AsArray().WithIndices(nullptr, kOrder)), "i: 5 5 5");
}

// Reads in order go along the runs. Were each element looked up from the first run on, this would
// take 10^11 steps. What they read is the concern of ArrayFormsTest.
TEST(ArrayOfRunsTest, ReadsInOrderCostTheSameAnElement) {
    constexpr lumsize_t kCount = 300000;
    const auto start = std::chrono::steady_clock::now();
    Runs<unsigned> runs;
    Runs<unsigned> equalRuns;
    Indices indices;
    for (unsigned i = 0; i < kCount; ++i) {
        runs.push_back({i, i % 3 == 0 ? SpecialKind::Null : SpecialKind::Normal, 1});
        equalRuns.push_back({i, SpecialKind::Error, 1});
        indices.push_back(static_cast<unsigned>(i * 7919ull % kCount));  // Each of them once.
    }
    const SV along = MakeOfRuns<unsigned>(IntType::Get32(), runs);
    const SV same = MakeOfRuns<unsigned>(IntType::Get32(), equalRuns);
    for (const bool isIndexed : {false, true}) {
        const auto formOf = [&](const SV& column) {
            return isIndexed ? column->AsArray().WithIndices(Indices(indices), kOrder) : column;
        };
        const SV column = formOf(along);
        const ITypedArray<unsigned>& array = Ints(column);
        std::vector<unsigned> values(kCount);
        std::vector<SpecialKind> kinds(kCount);
        std::vector<LumTuple> rows(kCount, LumTuple(&test::TypeOf("P{i}")->As<TupleType>()));
        array.CopyValues(values, 0, kCount);
        array.CopySpecials(kinds, 0, kCount);
        array.CopyToTuples(rows, 0, kCount, 0);
        const auto boxed = array.GetStoreValueIterable().begin()->Clone();
        for (auto cursor = array.GetAdapterWithSpecials(); !cursor.IsAtEnd(); ++cursor) {
            static_cast<void>(*cursor + boxed->Dereference()->GetCount());
            boxed->Advance();
        }
        EXPECT_EQ(array.ToSet(/*includeSpecials=*/true)->GetCount(), kCount + 1);
        EXPECT_EQ(array.Materialize()->GetCount(), kCount);
        EXPECT_EQ(formOf(same)->AsArray().FindRunEnd(0), kCount - 1);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

}  // namespace
}  // namespace lum::core
