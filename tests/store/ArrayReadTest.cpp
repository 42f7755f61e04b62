#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "core/main/store/TemporaryRawDataAccess.h"
#include "lum/core/store/ArrayAdapter.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/KeySets.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using test::ColumnOf;
using test::TextOf;

constexpr lumsize_t kMax = std::numeric_limits<lumsize_t>::max();
constexpr char kRange[] =
    "((std::numeric_limits<lumsize_t>::max() - startIndex >= length) && "
    "(startIndex + length <= GetCount()))";
constexpr char kStored[] = "(static_cast<size_t>(index) < m_values.GetSize())";
constexpr char kIndexed[] = "(static_cast<size_t>(index) < m_indices.GetSize())";
constexpr char kOut[] = "(outView.GetSize() >= length)";

// Each form reports the condition that it looks at.
TEST(ArrayReadTest, PositionsAreChecked) {
    const Type* const type = IntType::Get32();
    const SV stored = ColumnOf("i: 7 7 7");
    const char kRun[] = "(startIndex < m_count)";
    const struct {
        SV column;
        const char* position;
        const char* first;  // Of two positions.
        const char* second;
        const char* run;
    } cases[] = {
        {stored, kStored, kStored, kStored, kRun},
        {stored->AsArray().WithIndices(std::vector<unsigned>{0, 1, 2}, SortSpecOrder::UNKNOWN),
         kIndexed, kIndexed, kIndexed, kRun},
        {factory::MakeConstantArray<unsigned>(type, 7u, 3), "(index < m_size)", "(idx1 < m_size)",
         "(idx2 < m_size)", "(startIndex < m_size)"},
        {test::MakeRuns(stored), "(index < m_sizeAndHasSpecials.first)",
         "(idx1 < m_sizeAndHasSpecials.first)", "(idx2 < m_sizeAndHasSpecials.first)",
         "(startIndex < m_sizeAndHasSpecials.first)"},
    };
    for (const auto& c : cases) {
        const ITypedArray<unsigned>& array = c.column->AsTypedArray<unsigned>();
        for (const lumsize_t index : {3u, kMax}) {
            EXPECT_LUM_REPORT(OutOfBounds, "", c.position, array.GetValue(index));
            EXPECT_LUM_REPORT(OutOfBounds, "", c.position, array.GetSpecialKind(index));
            EXPECT_LUM_REPORT(OutOfBounds, "", c.position, array.GetElement(index));
            EXPECT_LUM_REPORT(OutOfBounds, "", c.first, array.ElementsEqual(index, 0));
            EXPECT_LUM_REPORT(OutOfBounds, "", c.second, array.ElementsEqual(0, index));
            EXPECT_LUM_REPORT(OutOfBounds, "", c.run, array.FindRunEnd(index));
        }
        EXPECT_LUM_REPORT(OutOfBounds, "", c.position, c.column->AsCollection().GetValue(L"3"));
        EXPECT_LUM_ERROR(OutOfBounds, "", array.IsSpecial(3));
        EXPECT_LUM_ERROR(OutOfBounds, "Illegal range step value", array.GetRange(0, 2, 0));
    }
}

TEST(ArrayReadTest, KeysAreDecimalIndices) {
    const std::pair<const wchar_t*, const char*> cases[] = {
        {L"0", "10"},     {L"2", "30"},     {L"+1", "20"},         {L" 1 ", "20"}, {L"01", "20"},
        {L"1x", "null"},  {L"", "null"},    {L"x", "null"},        {L"3", "null"}, {L"-1", "null"},
        {L"1.0", "null"}, {L"1 2", "null"}, {L"4294967297", "20"},  // The low 32 bits.
    };
    test::ForEachForm(ColumnOf("i: 10 20!Null 30"), [&](const SV& column) {
        const IStoreCollection& collection = column->AsCollection();
        for (const auto& [key, expected] : cases) {
            SCOPED_TRACE(TStringCore(key).toStdString());
            EXPECT_EQ(TextOf(collection.TryGetValue(key)), expected);
            EXPECT_EQ(collection.HasKey(key), expected != std::string("null"));
        }
        // The placeholder, where the element is special.
        EXPECT_EQ(TextOf(collection.GetValue(L"1")), "20");
        EXPECT_EQ(TextOf(column->AsArray().GetElement(1)), "!Null");
        EXPECT_LUM_ERROR(CannotParseInt32, "", collection.GetValue(L"x"));
        EXPECT_LUM_ERROR(OutOfBounds, "", collection.GetValue(L"-1"));
    });
}

TEST(ArrayReadTest, BulkReadsCheckTheirRange) {
    const auto check = [](const SV& column) {
        const ITypedArray<unsigned>& array = column->AsTypedArray<unsigned>();
        TemporaryRawData scratch;
        std::vector<unsigned> values(8);
        std::vector<SpecialKind> kinds(8);
        std::vector<LumTuple> rows(3, LumTuple(&test::TypeOf("P{i}")->As<TupleType>()));
        const std::pair<lumsize_t, lumsize_t> ranges[] = {
            {0, 4}, {3, 1}, {4, 0}, {kMax, 2}, {2, kMax}};
        for (const auto& range : ranges) {
            const lumsize_t start = range.first;
            const lumsize_t length = range.second;
            EXPECT_LUM_REPORT(OutOfBounds, "", kRange, array.CopyValues(values, start, length));
            EXPECT_LUM_REPORT(OutOfBounds, "", kRange, array.CopySpecials(kinds, start, length));
            EXPECT_LUM_REPORT(OutOfBounds, "", kRange, array.GetValuesView(scratch, start, length));
            EXPECT_LUM_REPORT(OutOfBounds, "", kRange,
                              array.GetSpecialsView(scratch, start, length));
            EXPECT_LUM_REPORT(OutOfBounds, "", kRange, array.CopyToTuples(rows, start, length, 0));
        }
        values.resize(1);
        kinds.resize(1);
        EXPECT_LUM_REPORT(OutOfBounds, "", kOut, array.CopyValues(values, 0, 2));
        EXPECT_LUM_REPORT(OutOfBounds, "", kOut, array.CopySpecials(kinds, 0, 2));
    };
    test::ForEachForm(ColumnOf("i: 1 - 3"), check);
    test::ForEachForm(ColumnOf("i: 7 7 7"), check);  // The constant form as well.
}

TEST(ArrayReadTest, StoredValuesAreOfferedWithoutIndicesAlone) {
    constexpr char kNoIndices[] = "!(HasIndices())";
    test::ForEachFlatForm(ColumnOf("i: 1 - 3"), [&](const SV& column) {
        const ITypedArray<unsigned>& array = column->AsTypedArray<unsigned>();
        if (array.HasIndices()) {
            EXPECT_LUM_REPORT(ArrayHasIndices, "", kNoIndices, array.GetValues());
            EXPECT_LUM_REPORT(ArrayHasIndices, "", kNoIndices, array.GetSpecials());
        } else {
            EXPECT_EQ(array.GetValues().GetSize(), 3u);
            EXPECT_EQ(array.GetValues()[2], 3u);
            EXPECT_EQ(array.GetSpecials()[1], SpecialKind::Null);
        }
    });
}

TEST(ArrayReadTest, RowsTakeValuesAndKinds) {
    test::ForEachForm(ColumnOf("i: 1 2!All 3"), [](const SV& column) {
        const IStoreArray& array = column->AsArray();
        const LumTuple row = test::RowOf("P{s,i}: x 9!Error");
        std::vector<LumTuple> rows(2, row);
        array.CopyToTuples(rows, 1, 2, 1);
        EXPECT_EQ(TextOf(rows[0]), "(x 2!All)");
        EXPECT_EQ(TextOf(rows[1]), "(x 3)");

        constexpr char kType[] = "(outView[0].GetNthType(tupleIndex) == m_type->GetElementType())";
        std::vector<LumTuple> tooMany(4, row);
        std::vector<LumTuple> mixed{row, test::RowOf("P{s,s}: x y")};
        EXPECT_LUM_REPORT(OutOfBounds, "", "(arrayLength <= GetCount())",
                          array.CopyToTuples(tooMany, 0, 3, 1));
        EXPECT_LUM_REPORT(OutOfBounds, "", "(arrayLength == length)",
                          array.CopyToTuples(rows, 0, 1, 1));
        EXPECT_LUM_REPORT(OutOfBounds, "", "(index < m_size)", array.CopyToTuples({}, 0, 0, 1));
        EXPECT_LUM_REPORT(OutOfBounds, "", "(index < members.size())",
                          array.CopyToTuples(rows, 0, 2, 2));
        EXPECT_LUM_REPORT(TypeMismatch, "", kType, array.CopyToTuples(rows, 0, 2, 0));
        EXPECT_LUM_REPORT(TypeMismatch, "", kType, array.CopyToTuples(mixed, 0, 2, 1));
        EXPECT_EQ(TextOf(mixed[0]), TextOf(row));
    });
    // Without kinds the members keep theirs.
    std::vector<LumTuple> rows{test::RowOf("P{i}: 9!Error")};
    ColumnOf("i: 1")->AsArray().CopyToTuples(rows, 0, 1, 0);
    EXPECT_EQ(TextOf(rows[0]), "(1!Error)");
}

// Handles may be stored for elements of any type, but only an external member has room for one.
TEST(ArrayReadTest, RowsTakeHandlesWhereTheyHaveRoom) {
    const Type* const external = ExternalType::Get(7);
    const SV cell = factory::MakeInt32(5);
    std::vector<LumTuple> rows(2, LumTuple(TupleType::Get({IntType::Get32(), external})));
    factory::MakeArray<SV>(external, {cell, nullptr}, SortSpecOrder::UNKNOWN)
        ->AsArray()
        .CopyToTuples(rows, 0, 2, 1);
    EXPECT_EQ(rows[0].GetNthExternal(1), cell);
    EXPECT_EQ(rows[1].GetNthExternal(1), nullptr);

    const SV boxed = factory::MakeArray<SV>(IntType::Get32(), {cell, cell}, SortSpecOrder::UNKNOWN);
    EXPECT_LUM_REPORT(TypeMismatch, "", "(m_type->GetElementType()->Is(StoreType::External))",
                      boxed->AsArray().CopyToTuples(rows, 0, 2, 0));
    EXPECT_EQ(rows[0].GetNthInt32(0), 0);
}

TEST(ArrayReadTest, RowsAreWrittenAllOrNone) {
    const LumTuple row = test::RowOf("P{i}: 9");
    const LumTuple fresh(row.GetType());
    std::vector<LumTuple> rows;
    rows.push_back(row);
    rows.emplace_back(fresh.GetTupleData());  // A reference to a row that has no block.
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "", "(m_ownsData)",
                            ColumnOf("i: 1 2")->AsArray().CopyToTuples(rows, 0, 2, 0));
    EXPECT_EQ(TextOf(rows[0]), "(9)");
}

TEST(ArrayReadTest, ArraysInArraysHaveNoRuns) {
    const SV nested = factory::MakeArray<SV>(
        ArrayType::Get(IntType::Get32()), {ColumnOf("i:"), ColumnOf("i:")}, SortSpecOrder::UNKNOWN);
    EXPECT_LUM_ERROR(IllegalComparison, "", nested->AsArray().FindRunEnd(0));
}

// Not of arrays alone: sets and key sets are walked under the same contract.
void CheckBoxedWalk(const SV& value, const char* condition) {
    const IUniformCollection& collection = value->AsUniformCollection();
    const auto& iterable = collection.GetStoreValueIterable();
    EXPECT_EQ(&iterable, &collection.GetStoreValueIterable());
    const auto it = iterable.begin()->Clone();
    EXPECT_FALSE(*it != nullptr);  // A loop against nothing ends at once.
    EXPECT_FALSE(*it != ColumnOf("r: 1")->AsArray().GetStoreValueIterable().end());
    for (lumsize_t i = 0; i < value->GetCount(); ++i) {
        EXPECT_TRUE((*it != iterable.begin()) == (i != 0) && *it != iterable.end());
        const auto here = it->Clone();
        it->Advance();
        EXPECT_TRUE(*here != it);
    }
    EXPECT_FALSE(*it != iterable.end());
    for (const IStoreValueIterator* const end : {it.get(), iterable.end().get()}) {
        EXPECT_LUM_REPORT(IteratorOutOfBounds, "", condition, end->Dereference());
        EXPECT_LUM_REPORT(IteratorOutOfBounds, "", condition, end->Clone()->Advance());
    }
}

TEST(ArrayWalkTest, IteratorsCompareByPlaceAndStopAtTheEnd) {
    const test::CollatorPoolGuard pool;
    for (const char* const text : {"i: 1 2 - !All", "i: - !All", "s: a -", "i: 7 7", "i:"}) {
        SCOPED_TRACE(text);
        test::ForEachForm(ColumnOf(text),
                          [](const SV& column) { CheckBoxedWalk(column, "(m_pos < m_size)"); });
        CheckBoxedWalk(test::SetOf(text), "(m_stage != Stage::End)");
        CheckBoxedWalk(test::KeySetOf(text, "i: 6 7 8 9"), "");
    }
}

template <typename T>
std::vector<T> ElementsAs(const char* text) {
    std::vector<T> elements;
    for (const auto& value : ArrayAdapter<T>(ColumnOf(text))) {
        elements.push_back(value);
    }
    return elements;
}

TEST(ArrayWalkTest, CursorsReadElementsAsNativeTypes) {
    EXPECT_EQ(ElementsAs<int>("i: 1 -2"), (std::vector<int>{1, -2}));
    EXPECT_EQ(ElementsAs<long long>("l: -1"), (std::vector<long long>{-1}));
    EXPECT_EQ(ElementsAs<float>("f: 1.5"), (std::vector<float>{1.5f}));
    EXPECT_EQ(ElementsAs<double>("r: -2.5"), (std::vector<double>{-2.5}));
    EXPECT_EQ(ElementsAs<bool>("b: true false"), (std::vector<bool>{true, false}));
    EXPECT_EQ(ElementsAs<RIndirectString>("s: a"), (std::vector<RIndirectString>{L"a"}));
    EXPECT_EQ(ElementsAs<LumDateTime>("t: 2024-03-01T09:05:00")[0].ToString(),
              L"2024-03-01T09:05:00");
    EXPECT_EQ(ElementsAs<LumColor>("c: ff000001")[0].AsInt32(), -16777215);
    EXPECT_EQ(ElementsAs<unsigned>("f: 1"), (std::vector<unsigned>{0x3F800000}));
    // Any byte but 0 is true.
    const SV bytes = factory::MakeArray<unsigned char>(BoolType::Get(), {2}, SortSpecOrder::ASC);
    EXPECT_TRUE(*ArrayAdapter<bool>(bytes).begin());
}

TEST(ArrayWalkTest, CursorsCheckTypeAndPlace) {
    const SV column = ColumnOf("i: 1 2");
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", "(TypeTraits<T>::IsMatchingType(elementType))",
                      ArrayAdapter<float>(column));
    EXPECT_LUM_ERROR(NotTypedArray, "", ArrayAdapter<double>(column));
    EXPECT_LUM_ERROR(NotTypedArray, "", ArrayAdapter<int>(factory::MakeInt32(1)));
    ArrayCursor<unsigned> cursor = column->AsTypedArray<unsigned>().GetAdapter();
    EXPECT_LUM_REPORT(TypeMismatchExpected, "",
                      "(TypeTraits<NewCastType>::IsMatchingType(m_type->GetElementType()))",
                      cursor.CastTo<LumColor>());
    ++cursor;
    EXPECT_EQ(*cursor.CastTo<int>(), 2);  // At the same place.
    ++cursor;
    EXPECT_LUM_REPORT(IteratorOutOfBounds, "", "(m_pos < m_size)", *cursor);
    EXPECT_LUM_REPORT(IteratorOutOfBounds, "", "(m_pos < m_size)", ++cursor);
    EXPECT_LUM_REPORT(IteratorOutOfBounds, "", "(m_pos < m_size)", cursor.GetSpecialKind());
}

TEST(ArrayWalkTest, AdaptersKeepTheColumnAlive) {
    SV column = ColumnOf("s: 'longer than the handle'");
    const ArrayAdapter<RIndirectString> adapter(column);
    column.reset();
    EXPECT_EQ(*adapter.begin(), L"longer than the handle");
}

}  // namespace
}  // namespace lum::core
