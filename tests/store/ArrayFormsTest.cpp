// Every operation of an array, over random columns of every element type, in every physical form:
// all must answer as plain vectors of the elements do.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "core/main/store/TemporaryRawDataAccess.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/RandomColumns.h"

namespace lum::core {
namespace {

using test::Cells;
using test::TextOf;

/// The boxed element of the model.
template <typename T>
std::string ElementText(const Type* type, const Cells<T>& cells, std::size_t index) {
    return cells.GetKind(index) != SpecialKind::Normal
               ? TextOf(cells.GetKind(index))
               : TextOf(MakeStoreValueFromStorageType<T>(type, cells.values[index]));
}

/// Whether the array stands over stored values, and not over runs.
template <typename T>
bool IsFlat(const ITypedArray<T>& array) {
    return !array.IsComposite() && !array.IsConstant();
}

template <typename T>
bool HasSpecialCell(const Cells<T>& cells) {
    return cells.kinds && std::any_of(cells.kinds->begin(), cells.kinds->end(),
                                      [](SpecialKind kind) { return kind != SpecialKind::Normal; });
}

template <typename T>
void CheckElements(const StoreValue& value, const Cells<T>& cells) {
    const ITypedArray<T>& array = value.AsTypedArray<T>();
    const Type* const type = array.GetElementType();
    ASSERT_EQ(array.GetCount(), cells.values.size());
    // Runs have no room for kinds but in a special run.
    EXPECT_TRUE(array.HasSpecialValues() == cells.kinds.has_value() ||
                (!IsFlat(array) && !HasSpecialCell(cells)));
    EXPECT_EQ(value.GetType(), ArrayType::Get(type));
    for (lumsize_t i = 0; i < array.GetCount(); ++i) {
        SCOPED_TRACE(i);
        ASSERT_EQ(array.GetValue(i), cells.values[i]);
        ASSERT_EQ(&array.GetValueUnchecked(i), &array.GetValue(i));
        ASSERT_EQ(array.GetSpecialKind(i), cells.GetKind(i));
        ASSERT_EQ(array.IsSpecial(i), cells.GetKind(i) != SpecialKind::Normal);
        ASSERT_EQ(TextOf(array.GetElement(i)), ElementText(type, cells, i));

        // A key finds the stored value, whatever its kind.
        const RInternString key(TStringCore::number(i));
        const std::string stored = TextOf(MakeStoreValueFromStorageType<T>(type, cells.values[i]));
        ASSERT_EQ(TextOf(value.AsCollection().GetValue(key)), stored);
        ASSERT_EQ(TextOf(value.AsCollection().TryGetValue(key)), stored);
        ASSERT_TRUE(value.AsCollection().HasKey(key));
    }
}

template <typename T>
void CheckWalks(const ITypedArray<T>& array, const Cells<T>& cells) {
    const auto& iterable = array.GetStoreValueIterable();
    std::size_t position = 0;
    for (auto it = iterable.begin()->Clone(); *it != iterable.end(); it->Advance(), ++position) {
        ASSERT_EQ(TextOf(it->Dereference()), ElementText(array.GetElementType(), cells, position));
    }
    ASSERT_EQ(position, cells.values.size());

    ArrayCursor<T> plain = array.GetAdapter();
    for (ArrayCursor<T> cursor = array.GetAdapterWithSpecials(); !cursor.IsAtEnd(); ++cursor) {
        const lumsize_t i = cursor.GetPosition();
        ASSERT_EQ(*cursor, cells.values[i]);
        ASSERT_EQ(*plain, cells.values[i]);
        ASSERT_EQ(cursor.GetSpecialKind(), cells.GetKind(i));
        ASSERT_FALSE(plain.IsSpecial());
        ++plain;
    }
    ASSERT_TRUE(plain.IsAtEnd());
}

template <typename T>
void CheckBulkReads(const ITypedArray<T>& array, const Cells<T>& cells, lumsize_t start,
                    lumsize_t length) {
    std::vector<T> values(length + 1);
    std::vector<SpecialKind> kinds(length + 1, SpecialKind::Error);
    array.CopyValues(values, start, length);
    array.CopySpecials(kinds, start, length);
    TemporaryRawData scratch;
    TemporaryRawData kindScratch;
    const auto valuesView = array.GetValuesView(scratch, start, length).template ViewAs<T>();
    const auto kindsView =
        array.GetSpecialsView(kindScratch, start, length).template ViewAs<SpecialKind>();
    ASSERT_EQ(valuesView.GetSize(), length);
    ASSERT_EQ(kindsView.GetSize(), length);
    for (lumsize_t i = 0; i < length; ++i) {
        ASSERT_EQ(values[i], cells.values[start + i]);
        ASSERT_EQ(valuesView[i], cells.values[start + i]);
        ASSERT_EQ(kinds[i], cells.GetKind(start + i));
        ASSERT_EQ(kindsView[i], cells.GetKind(start + i));
    }
    // Stored values without room for kinds fill all of the target.
    const bool fillsAll = IsFlat(array) && !cells.kinds;
    ASSERT_EQ(kinds[length], fillsAll ? SpecialKind::Normal : SpecialKind::Error);
    if (length > 0 && IsFlat(array) && !array.HasIndices()) {
        ASSERT_EQ(valuesView.GetData(), &array.GetValue(start));  // A view of the storage itself.
    }
    if constexpr (!std::is_same_v<T, LumTuple> && !std::is_same_v<T, SV>) {
        const auto* const type = TupleType::Get({IntType::Get32(), array.GetElementType()});
        std::vector<LumTuple> rows(length, LumTuple(type));
        if (length > 0) {
            array.CopyToTuples(rows, start, length, 1);
        }
        for (lumsize_t i = 0; i < length; ++i) {
            ASSERT_EQ(rows[i].GetNthSpecial(1), cells.GetKind(start + i));
            ASSERT_EQ(rows[i].template GetNthValue<T>(1), cells.values[start + i]);
            ASSERT_EQ(rows[i].GetNthInt32(0), 0);
        }
    }
}

/// The range as it is told of stored values and of runs, with indices and without.
template <typename T>
std::vector<unsigned> PickRange(const ITypedArray<T>& array, lumsize_t start, lumsize_t length,
                                unsigned step) {
    const lumsize_t count = array.GetCount();
    if (array.IsConstant()) {
        // A count alone, of equal elements; a start beyond the end wraps round and cuts nothing.
        const uint64 reached = std::min(count - start, length);
        return std::vector<unsigned>((reached + step - 1) / step, 0u);
    }
    if (!array.IsComposite()) {
        if (start >= count) {
            start = 0;
            length = 0;
        }
        if (length == 0 && (step != 1 || array.HasIndices())) {
            length = count;
        }
    }
    const bool isDownward = step >> 31 != 0 && (!array.IsComposite() || array.HasIndices());
    const uint64 down = (uint64{1} << 32) - step;
    std::vector<unsigned> picked;
    for (uint64 i = start; i < count && picked.size() < length;) {
        picked.push_back(static_cast<unsigned>(i));
        if (isDownward && i < down) {
            break;
        }
        i = isDownward ? i - down : i + step;
    }
    return picked;
}

template <typename T>
void CheckDerived(const SV& column, const Cells<T>& cells, test::Random& random) {
    const ITypedArray<T>& array = column->AsTypedArray<T>();
    const lumsize_t count = array.GetCount();
    CheckElements<T>(*array.Materialize(), cells);
    EXPECT_FALSE(array.Materialize()->AsArray().HasIndices());
    EXPECT_EQ(array.Materialize()->AsArray().GetSortOrder(), array.GetSortOrder());
    CheckElements<T>(*column->Clone(), cells);
    EXPECT_EQ(column->Clone()->AsArray().GetSortOrder(),
              IsFlat(array) ? SortSpecOrder::UNKNOWN : array.GetSortOrder());

    std::vector<unsigned> indices(count == 0 ? 0 : random.Below(2 * count));
    for (unsigned& index : indices) {
        index = static_cast<unsigned>(random.Below(count));
    }
    const SV composed = array.ComposeIndices(std::vector<unsigned>(indices), SortSpecOrder::DESC);
    CheckElements<T>(*composed, cells.Picked(indices));
    EXPECT_EQ(composed->AsArray().GetSortOrder(),
              array.IsConstant() ? SortSpecOrder::ASC : SortSpecOrder::DESC);
    EXPECT_EQ(composed->AsArray().HasIndices(), !array.IsConstant());
    const std::shared_ptr<const RawData> raw =
        VectorRawData<unsigned>::Make(std::vector<unsigned>(indices));
    CheckElements<T>(*array.ComposeIndices(raw, SortSpecOrder::ASC), cells.Picked(indices));

    const unsigned steps[] = {1, 1, 2, 3, 100, ~0u, ~0u - 1, 1u << 31};
    const auto anyPosition = [&] {
        return random.Below(10) == 0 ? ~0u : static_cast<lumsize_t>(random.Below(count + 2));
    };
    for (int round = 0; round < 8; ++round) {
        const lumsize_t start = anyPosition();
        // A constant array read from beyond its end gives as many elements as are asked for.
        const lumsize_t length = array.IsConstant() && start > count ? 3 : anyPosition();
        const unsigned step = random.OneOf(steps);
        SCOPED_TRACE("range from " + std::to_string(start) + " of " + std::to_string(length) +
                     " by " + std::to_string(step));
        const SV range = array.GetRange(start, length, step);
        const auto picked = PickRange(array, start, length, step);
        CheckElements<T>(*range, cells.Picked(picked));
        EXPECT_EQ(range->AsArray().GetSortOrder(), array.GetSortOrder());
    }
}

/// Elements are equal by kind and, below Normal, by value; the run ends of stored values compare
/// placeholders as well.
template <typename T>
void CheckRuns(const ITypedArray<T>& array, const Cells<T>& cells) {
    // Arrays do not compare, so elements of that type have no runs.
    if constexpr (!std::is_same_v<T, SV>) {
        const auto isSameCell = [&](lumsize_t a, lumsize_t b) {
            return cells.GetKind(a) == cells.GetKind(b) && cells.values[a] == cells.values[b];
        };
        const auto isEqual = [&](lumsize_t a, lumsize_t b) {
            const bool areSpecial =
                cells.GetKind(a) != SpecialKind::Normal && cells.GetKind(a) == cells.GetKind(b);
            return areSpecial || isSameCell(a, b);
        };
        for (lumsize_t i = 0; i < array.GetCount(); ++i) {
            lumsize_t end = i;
            while (end + 1 < array.GetCount() &&
                   (IsFlat(array) ? isSameCell(i, end + 1) : isEqual(i, end + 1))) {
                ++end;
            }
            ASSERT_EQ(array.FindRunEnd(i), end);
            ASSERT_EQ(array.ElementsEqual(0, i), isEqual(0, i));
        }
    }
}

/// What lies below a special cell is a member like any other. Arrays do not compare, and are none.
template <typename T>
void CheckSets(const ITypedArray<T>& array, const Cells<T>& cells) {
    const Type* const type = array.GetElementType();
    std::set<std::string> members;
    for (const bool includesSpecials : {false, true}) {
        std::string expected = ":";
        for (std::size_t i = 0; i < cells.values.size(); ++i) {
            members.insert(TextOf(MakeStoreValueFromStorageType<T>(type, cells.values[i])));
            if (includesSpecials) {
                members.insert(ElementText(type, cells, i));
            }
        }
        for (const std::string& member : members) {
            expected += " " + member;
        }
        if constexpr (!std::is_same_v<T, SV>) {
            EXPECT_TRUE(TextOf(array.ToSet(includesSpecials)).ends_with(expected)) << expected;
        }
    }
}

template <typename T>
void CheckForm(const SV& column, const SV& form, test::Random& random) {
    const Cells<T> cells = test::CellsOf<T>(*column);
    const ITypedArray<T>& array = form->AsTypedArray<T>();
    const lumsize_t count = array.GetCount();
    EXPECT_EQ(array.GetSortOrder(),
              array.IsConstant() ? SortSpecOrder::ASC : column->AsArray().GetSortOrder());
    CheckElements(*form, cells);
    CheckWalks(array, cells);
    CheckRuns(array, cells);
    CheckSets(array, cells);
    CheckDerived(form, cells, random);
    for (int round = 0; round < 4; ++round) {
        const auto start = static_cast<lumsize_t>(random.Below(count + 1));
        const auto length = static_cast<lumsize_t>(random.Below(count - start + 1));
        CheckBulkReads(array, cells, start, length);
    }
}

TEST(ArrayFormsTest, AnswerAsTheirElements) {
    const test::CollatorPoolGuard pool;
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (const Type* const type : test::GetElementTypes()) {
        for (const lumsize_t count : {0u, 1u, 7u, 40u}) {
            const SV column = test::MakeRandomColumn(random, type, count);
            // The last element over and over, which is what a constant array can hold.
            const SV same =
                column->AsArray()
                    .WithIndices(std::vector<unsigned>(count, count - 1), SortSpecOrder::DESC)
                    ->AsArray()
                    .Materialize();
            for (const SV& cells : {column, same}) {
                SCOPED_TRACE(TextOf(cells));
                test::ForEachForm(cells, [&](const SV& form) {
                    DispatchStorage(type->GetStoreType(), [&]<typename T>(StorageTag<T>) {
                        CheckForm<T>(cells, form, random);
                    });
                });
            }
        }
    }
}

}  // namespace
}  // namespace lum::core
