#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using test::ColumnOf;
using test::TextOf;
using Columns = IStoreTable::Columns;
using SortColumns = IStoreTable::SortColumns;

/// Two columns of five rows, sorted by n.
SV MakeTable() {
    return factory::MakeTable({{L"n", ColumnOf("i: 0 1 2 3 4")}, {L"s", ColumnOf("s: a b c d e")}},
                              {{L"n", SortSpecOrder::ASC}});
}

/// "{n = ..., s = ...}".
std::string TextOfColumns(const SV& table) {
    const auto& columns = table->AsTable().GetColumns();
    return TextOf(factory::MakeKeyMap(Columns(columns.begin(), columns.end())));
}

TEST(TableTest, ReadsAsTableKeyMapAndCollection) {
    const SV value = MakeTable();
    const IStoreTable& table = value->AsTable();
    const IStoreKeyMap& keyMap = value->AsKeyMap();
    const IStoreCollection& collection = value->AsCollection();
    EXPECT_EQ(value->GetType(), TableType::Get({{L"n", ArrayType::Get(IntType::Get32())},
                                                {L"s", ArrayType::Get(StringType::Get())}}));
    EXPECT_EQ(keyMap.GetType(), value->GetType());
    EXPECT_EQ(value->GetCount(), 2u);
    EXPECT_EQ(keyMap.GetCount(), 2u);
    EXPECT_EQ(table.GetColumnCount(), 2u);
    EXPECT_EQ(table.GetRowCount(), 5u);
    EXPECT_EQ(TextOfColumns(value), "{n = i: 0 1 2 3 4, s = s: a b c d e}");
    EXPECT_EQ(table.GetSortColumns(), (SortColumns{{L"n", SortSpecOrder::ASC}}));

    const SV& column = table.GetColumn(L"n");
    EXPECT_EQ(&keyMap.GetValue(L"n"), &column);
    EXPECT_EQ(collection.GetValue(L"n"), column);
    EXPECT_EQ(collection.TryGetValue(L"n"), column);
    EXPECT_TRUE(table.HasColumn(L"n") && keyMap.HasKey(L"n") && collection.HasKey(L"n"));
    EXPECT_FALSE(table.HasColumn(L"N") || keyMap.HasKey(L"N") || collection.HasKey(L"N"));
    EXPECT_EQ(collection.TryGetValue(L"N"), nullptr);
    EXPECT_NO_SUCH_KEY(table.GetColumn(L"N"));
    EXPECT_NO_SUCH_KEY(keyMap.GetValue(L"N"));
    EXPECT_NO_SUCH_KEY(collection.GetValue(L"N"));

    const std::unique_ptr<Columns> copy = table.CopyColumns();
    EXPECT_EQ(copy->size(), 2u);
    EXPECT_EQ(copy->at(L"n"), column);
    auto entries = keyMap.GetEntries();
    ++entries;
    EXPECT_TRUE((++entries).IsAtEnd());
}

TEST(TableTest, OfNoColumns) {
    const SV value = factory::MakeTable(nullptr, nullptr);
    EXPECT_EQ(value->AsTable().GetRowCount(), 0u);
    EXPECT_EQ(value->GetType(), TableType::Get({}));
    for (const unsigned step : {0u, 1u, 2u}) {
        const SV range = value->AsTable().GetRowRange(3, 4, step);
        EXPECT_EQ(range->GetCount() + range->AsTable().GetRowCount(), 0u);
    }
}

TEST(TableTest, RefusesColumns) {
    const auto makeUneven = [] {
        factory::MakeTable({{L"n", ColumnOf("i: 1 2 3")}, {L"s", ColumnOf("i: 1 2")}}, {});
    };
    EXPECT_LUM_REPORT(ColumnSizeMismatch, "", "", makeUneven());
    test::LogCapture log;
    EXPECT_THROW(makeUneven(), LumRuntimeException);
    ASSERT_FALSE(log.GetLines().empty());
    EXPECT_EQ(log.GetLines()[0].level, LumLogLevel::Diagnostic);
    const std::string& text = log.GetLines()[0].text;
    EXPECT_TRUE(text.starts_with("Found mismatch in table column sizes. Columns and sizes:\n\t"));
    EXPECT_NE(text.find("\n\tn: 3"), std::string::npos);
    EXPECT_NE(text.find("\n\ts: 2"), std::string::npos);

    EXPECT_LUM_REPORT(NullArgument, "", "(value) != nullptr",
                      factory::MakeTable({{L"n", nullptr}}, {}));
    EXPECT_LUM_ERROR(TableColumnNotArray, "",
                     factory::MakeTable({{L"n", factory::MakeInt32(1)}}, {}));
    // The type alone tells an array from another value, and a special has one.
    const SV special = factory::MakeTable(
        {{L"n", factory::MakeSpecial(ArrayType::Get(IntType::Get32()), SpecialKind::Null)}}, {});
    EXPECT_LUM_ERROR(ExpectedArray, "Array (special kind: Null)",
                     special->AsTable().GetRowRange(0, 1, 1));
}

// A table over plain columns cuts its rows when somebody looks, one over indexed columns at once;
// where the two kinds of columns agree, so do the tables.
TEST(TableTest, RowRanges) {
    const SV plain = MakeTable();
    const SV indexed = plain->AsTable().ComposeRowIndices(
        std::vector<unsigned>{0, 1, 2, 3, 4},
        std::make_unique<SortColumns>(SortColumns{{L"s", SortSpecOrder::DESC}}));
    EXPECT_EQ(indexed->AsTable().GetSortColumns(), (SortColumns{{L"s", SortSpecOrder::DESC}}));
    const struct {
        lumsize_t start;
        lumsize_t length;
        unsigned step;
        const char* expected;
    } cases[] = {
        {3, 9, 1, "{n = i: 3 4, s = s: d e}"},
        {0, 2, 3, "{n = i: 0 3, s = s: a d}"},
        {2, 5, ~0u, "{n = i: 2 1 0, s = s: c b a}"},
    };
    for (const auto& c : cases) {
        for (const SV& table : {plain, indexed}) {
            const SV range = table->AsTable().GetRowRange(c.start, c.length, c.step);
            EXPECT_EQ(TextOfColumns(range), c.expected);
            EXPECT_EQ(range->GetType(), table->GetType());
            EXPECT_TRUE(range->AsTable().GetSortColumns().empty());
            EXPECT_EQ(range->AsTable().GetRowCount(), range->AsTable().GetColumn(L"n")->GetCount());
        }
    }
    EXPECT_EQ(TextOfColumns(plain->AsTable().GetRowRange(5, 2, 1)), "{n = i:, s = s:}");
    EXPECT_LUM_REPORT(OutOfBounds, "Illegal range step value", "",
                      plain->AsTable().GetRowRange(0, 1, 0));
    // Columns that differ in what a start beyond the end means have no common range.
    const SV mixed = factory::MakeTable(
        {{L"n", plain->AsTable().GetColumn(L"n")}, {L"s", indexed->AsTable().GetColumn(L"s")}}, {});
    EXPECT_LUM_ERROR(ColumnSizeMismatch, "", mixed->AsTable().GetRowRange(7, 1, 1));
}

TEST(TableTest, RangesOfRangesShareStorage) {
    const SV table = MakeTable();
    const auto valueAddress = [](const SV& of) {
        return of->AsTable().GetColumn(L"n")->AsTypedArray<unsigned>().GetValues().GetData();
    };
    const SV outer = table->AsTable().GetRowRange(1, 4, 1);
    SV inner = outer->AsTable().GetRowRange(1, 2, 1);
    const SV innermost = inner->AsTable().GetRowRange(1, 5, 1);
    EXPECT_EQ(TextOfColumns(innermost), "{n = i: 3, s = s: d}");
    EXPECT_EQ(TextOfColumns(inner), "{n = i: 2 3, s = s: c d}");
    EXPECT_EQ(valueAddress(innermost), valueAddress(table) + 3);
    // A copy has an iterable of its own, and what one table has cut out the other sees.
    const SV copy = inner->Clone();
    EXPECT_EQ(&copy->AsTable().GetColumn(L"n"), &inner->AsTable().GetColumn(L"n"));
    inner.reset();
    EXPECT_EQ(TextOfColumns(copy), "{n = i: 2 3, s = s: c d}");
    const SV strided = outer->AsTable().GetRowRange(0, 2, 2);
    EXPECT_EQ(TextOfColumns(strided), "{n = i: 1 3, s = s: b d}");
}

TEST(TableTest, ComposedRowsShareOneIndexBlock) {
    const SV table = MakeTable();
    const auto indices =
        std::make_shared<const VectorRawData<unsigned>>(std::vector<unsigned>{4, 4, 0});
    const SV composed = table->AsTable().ComposeRowIndices(indices, nullptr);
    EXPECT_EQ(TextOfColumns(composed), "{n = i: 4 4 0, s = s: e e a}");
    EXPECT_TRUE(composed->AsTable().GetSortColumns().empty());
    EXPECT_EQ(indices.use_count(), 3);
    const SV range = composed->AsTable().GetRowRange(1, 2, 1);
    EXPECT_EQ(TextOfColumns(range), "{n = i: 4 0, s = s: e a}");
}

}  // namespace
}  // namespace lum::core
