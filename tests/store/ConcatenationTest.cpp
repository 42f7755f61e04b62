#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using test::ColumnOf;
using test::TextOf;
using Columns = IStoreTable::Columns;
using Indices = std::vector<unsigned>;

constexpr SortSpecOrder kOrder = SortSpecOrder::DESC;

SV Concatenate(const std::vector<SV>& arrays, std::unique_ptr<Indices> indices = nullptr) {
    return ConcatenateArrays(arrays, std::move(indices), kOrder);
}

SV ConstantOf(unsigned value, unsigned count) {
    return factory::MakeConstantArray<unsigned>(IntType::Get32(), value, count);
}

uint64 CountRuns(const SV& array) {
    return array->AsTypedArray<unsigned>().GetCompositeRanges().GetSize();
}

// Every form of the first column beside every form of the second.
TEST(ConcatenateArraysTest, KeepsElementsAndKindsInOrder) {
    const struct {
        const char* first;
        const char* second;
        const char* expected;
    } cases[] = {
        {"b: true false", "b: true", "b: true false true"},
        {"i: 1 7!Null 2", "i: 3 4", "i: 1 7!Null 2 3 4"},
        {"l: 1 2", "l: 9!All 3", "l: 1 2 9!All 3"},
        {"i: 1 2", "c: 00000003 00000004", "i: 1 2 3 4"},  // Of one storage.
        {"i:", "i: 5", "i: 5"},
        {"s: x", "s:", "s: x"},
        {"s: a b", "s: 'longer than the handle' -", "s: a b 'longer than the handle' -"},
        {"P{i,s}: (1 x) (2 y)", "P{i,s}: (3 -)", "P{i,s}: (1 x) (2 y) (3 -)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        test::ForEachForm(ColumnOf(c.first), [&](const SV& first) {
            test::ForEachForm(ColumnOf(c.second), [&](const SV& second) {
                const SV result = Concatenate({first, second});
                EXPECT_EQ(TextOf(result), c.expected);
                EXPECT_FALSE(result->AsArray().HasIndices());
                EXPECT_EQ(result->AsArray().GetSortOrder(), kOrder);
                if (!first->AsArray().IsConstant() || !second->AsArray().IsConstant()) {
                    EXPECT_EQ(result->AsArray().HasSpecialValues(),
                              first->AsArray().HasSpecialValues() ||
                                  second->AsArray().HasSpecialValues());
                }
            });
        });
    }
}

TEST(ConcatenateArraysTest, ConstantArraysBecomeRuns) {
    const SV one = Concatenate({ConstantOf(4, 3)});
    EXPECT_EQ(CountRuns(one), 1u);
    EXPECT_EQ(TextOf(one), "i: 4 4 4");
    const SV several = Concatenate({ConstantOf(4, 2), ConstantOf(4, 1), ConstantOf(9, 0)},
                                   std::make_unique<Indices>(Indices{2, 0, 1, 2}));
    EXPECT_EQ(CountRuns(several), 2u);
    EXPECT_EQ(TextOf(several), "i: 4 4 4 4");
    EXPECT_EQ(several->AsArray().GetSortOrder(), kOrder);

    // However many elements there are; one by one they would take 16 GiB.
    const unsigned most = std::numeric_limits<unsigned>::max();
    EXPECT_EQ(Concatenate({ConstantOf(1, most - 1), ConstantOf(2, 1)})->GetCount(), most);
}

TEST(ConcatenateArraysTest, OneArrayThatIsNotConstantMakesAllFlat) {
    const SV nulls = factory::MakeConstantArray<unsigned>(IntType::Get32(), 1, SpecialKind::Null);
    const SV result = Concatenate({ConstantOf(4, 2), nulls, ColumnOf("i: 1 2")},
                                  std::make_unique<Indices>(Indices{4, 0, 2}));
    EXPECT_FALSE(result->AsTypedArray<unsigned>().IsComposite());
    EXPECT_EQ(TextOf(result), "i: 2 4 -");
    // The indices are those of the result, which has no storage but its own.
    EXPECT_EQ(result->AsArray().WithIndices(std::shared_ptr<const RawData>(), kOrder)->GetCount(),
              5u);
}

TEST(ConcatenateArraysTest, RoomForKindsIsKept) {
    EXPECT_EQ(TextOf(Concatenate({ColumnOf("r: 1.5"), ColumnOf("r!: 0.5")})), "r!: 1.5 0.5");
}

TEST(ConcatenateArraysTest, HandlesOfAnyTypeStandSideBySide) {
    const Type* const type = ArrayType::Get(IntType::Get32());
    const SV cell = ColumnOf("i: 1 2");
    const auto columnOf = [&](std::vector<SV> cells) {
        return factory::MakeArray<SV>(type, std::move(cells), kOrder);
    };
    const SV result = Concatenate({columnOf({cell, nullptr}), columnOf({cell})});
    const ArrayView<const SV> cells = result->AsTypedArray<SV>().GetValues();
    EXPECT_EQ(std::vector<SV>(cells.begin(), cells.end()), (std::vector<SV>{cell, nullptr, cell}));
    EXPECT_EQ(result->AsArray().GetElementType(), type);
}

TEST(ConcatenateArraysTest, TakesMemoryOncePerBlock) {
    const SV chunk = factory::MakeArray<unsigned long long>(
        RealType::Get64(), std::vector<unsigned long long>(1000, 5), kOrder);
    const std::vector<SV> few(2, chunk);
    const std::vector<SV> many(100, chunk);
    const auto countFor = [](const std::vector<SV>& chunks) {
        const test::AllocationCounter counter;
        const SV result = Concatenate(chunks);
        return counter.GetCount();
    };
    EXPECT_EQ(countFor(few), countFor(many));
}

TEST(ConcatenateArraysTest, Failures) {
    const Type* const int32 = IntType::Get32();
    const SV column = ColumnOf("i: 1 2");
    EXPECT_LUM_REPORT(EmptyComposition, "", "(arrays).size() >= (1)", Concatenate({}));
    EXPECT_LUM_REPORT(NullArgument, "", "(value) != nullptr", Concatenate({column, nullptr}));
    EXPECT_LUM_ERROR(ExpectedArray, "Int32", Concatenate({factory::MakeInt32(1)}));
    EXPECT_LUM_ERROR(ExpectedArray, "Int32", Concatenate({column, factory::MakeInt32(1)}));
    EXPECT_LUM_ERROR(ExpectedArray, "Array (special kind: Null)",
                     Concatenate({factory::MakeSpecial(ArrayType::Get(int32), SpecialKind::Null)}));

    // Constant arrays fail as those that are composed.
    const SV longs = factory::MakeConstantArray<unsigned long long>(IntType::Get64(), 0ull, 2);
    EXPECT_LUM_REPORT(CompositionTypeMismatch, "", "(ca->GetType() == type)",
                      Concatenate({ConstantOf(1, 1), longs}));
    EXPECT_LUM_REPORT(NotTypedArray, "", "(p) != nullptr", Concatenate({column, longs}));

    // Before anything is taken for the elements.
    const char kTooMany[] = "Value exceeds maximum legal value for lumsize_t";
    const unsigned most = std::numeric_limits<unsigned>::max();
    EXPECT_LUM_PLAIN_ERROR(OutOfRange, kTooMany, Concatenate({ConstantOf(1, most - 1), column}));

    const SV outside = column->AsArray().WithIndices(Indices{0, 2}, kOrder);
    EXPECT_LUM_ERROR(OutOfBounds, "", Concatenate({column, outside}));
}

SV MakeTable(Columns columns) {
    return factory::MakeTable(std::move(columns), {{L"a", SortSpecOrder::ASC}});
}

TEST(ConcatenateTablesTest, JoinsColumnsByName) {
    const SV first = MakeTable({{L"a", ColumnOf("i: 1 2")}, {L"b", ColumnOf("s: x y")}});
    const SV second = MakeTable({{L"b", ColumnOf("s: - z")}, {L"a", ColumnOf("i: 3 4")}});
    EXPECT_EQ(ConcatenateTables({first}), first);

    const SV window = second->AsTable().GetRowRange(1, 1, 1);
    const SV result = ConcatenateTables({first, second, window, first});
    const IStoreTable& table = result->AsTable();
    EXPECT_EQ(table.GetRowCount(), 7u);
    EXPECT_EQ(TextOf(table.GetColumn(L"a")), "i: 1 2 3 4 4 1 2");
    EXPECT_EQ(TextOf(table.GetColumn(L"b")), "s: x y - z z x y");
    EXPECT_TRUE(table.GetSortColumns().empty());
    EXPECT_EQ(table.GetColumn(L"a")->AsArray().GetSortOrder(), SortSpecOrder::UNKNOWN);

    EXPECT_EQ(ConcatenateTables({MakeTable({}), MakeTable({})})->GetCount(), 0u);
    // Constant columns stay runs.
    const SV constant = MakeTable({{L"a", ConstantOf(1, 4)}});
    EXPECT_EQ(CountRuns(ConcatenateTables({constant, constant})->AsTable().GetColumn(L"a")), 2u);
}

TEST(ConcatenateTablesTest, Failures) {
    const SV column = ColumnOf("i: 1 2");
    const SV one = MakeTable({{L"a", column}});
    const char kCount[] = "(table->GetCount() == colCount)";
    EXPECT_LUM_REPORT(EmptyConcatenation, "", "!(tables.empty())", ConcatenateTables({}));
    EXPECT_LUM_REPORT(NullArgument, "", "(value) != nullptr", ConcatenateTables({one, nullptr}));
    EXPECT_LUM_REPORT(ConcatenatedColumnsDiffer, "", kCount,
                      ConcatenateTables({one, MakeTable({{L"a", column}, {L"b", column}})}));
    EXPECT_LUM_REPORT(ConcatenatedColumnsDiffer, "", "(table.HasColumn(columnName))",
                      ConcatenateTables({one, MakeTable({{L"b", column}})}));
    EXPECT_LUM_ERROR(ExpectedTable, "Int32", ConcatenateTables({one, factory::MakeInt32(1)}));
    EXPECT_LUM_ERROR(NotTypedArray, "",
                     ConcatenateTables({one, MakeTable({{L"a", ColumnOf("l: 1")}})}));
}

}  // namespace
}  // namespace lum::core
