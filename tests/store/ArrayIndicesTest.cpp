#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

#include "core/main/store/TemporaryRawDataAccess.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/ITypedArray.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/RandomColumns.h"

namespace lum::core {
namespace {

using test::TextOf;
using Indices = std::vector<unsigned>;

constexpr SortSpecOrder kOrder = SortSpecOrder::DESC;

std::shared_ptr<const RawData> Raw(Indices indices) {
    return VectorRawData<unsigned>::Make(std::move(indices));
}

/// Where element 0 stands.
const void* AddressOf(const SV& column) {
    return &column->AsTypedArray<unsigned>().GetValueUnchecked(0);
}

TEST(ArrayIndicesTest, WithReplacesAndComposeChains) {
    const SV column = test::ColumnOf("i: 10 11!All 12 -");
    const IStoreArray& plain = column->AsArray();
    const SV indexedValue = plain.WithIndices(Indices{3, 2, 1}, kOrder);
    const IStoreArray& indexed = indexedValue->AsArray();
    const std::pair<SV, const char*> cases[] = {
        {indexedValue, "i: - 12 11!All"},
        {plain.WithIndices(Raw({3, 2, 1}), kOrder), "i: - 12 11!All"},
        {plain.WithIndices(Indices(), kOrder), "i!:"},
        {indexed.WithIndices(Indices{0, 0}, kOrder), "i!: 10 10"},
        {indexed.ComposeIndices(Raw({2, 0, 2}), kOrder), "i: 11!All - 11!All"},
        {indexed.ComposeIndices(Indices(), kOrder), "i!:"},
    };
    for (const auto& [array, expected] : cases) {
        EXPECT_EQ(TextOf(array), expected);
        EXPECT_TRUE(array->AsArray().HasIndices());
        EXPECT_EQ(array->AsArray().GetSortOrder(), kOrder);
    }
    EXPECT_EQ(TextOf(indexed.WithIndices(nullptr, kOrder)), TextOf(column));
}

TEST(ArrayIndicesTest, StorageIsSharedAndNothingGrowsWithIt) {
    struct Operation {
        const char* name;
        std::function<SV(const SV&)> make;
        std::size_t offset;       // Of the first element in the storage.
        std::size_t allocations;  // At most.
    };
    auto raw = Raw({5, 4});
    const Operation operations[] = {
        {"slice", [](const SV& c) { return c->AsArray().GetRange(3, 90, 1); }, 3, 1},
        {"slice of a slice",
         [](const SV& c) { return c->AsArray().GetRange(3, 90, 1)->AsArray().GetRange(2, 50, 1); },
         5, 2},
        {"indices", [&](const SV& c) { return c->AsArray().WithIndices(raw, kOrder); }, 5, 1},
        {"composed", [&](const SV& c) { return c->AsArray().ComposeIndices(raw, kOrder); }, 5, 1},
        {"few indices",
         [](const SV& c) {
             return c->AsArray().ComposeIndices(Indices{7, 3}, kOrder);
         },
         7, 3},
        {"clone", [](const SV& c) { return SV(c->Clone()); }, 0, 2},
        {"materialized", [](const SV& c) { return c->AsArray().Materialize(); }, 0, 1},
    };
    const SV column =
        factory::MakeArray(test::TypeOf("i"), std::vector<unsigned>(1000000), SortSpecOrder::ASC);
    const auto* const first = static_cast<const unsigned*>(AddressOf(column));
    for (const Operation& operation : operations) {
        SCOPED_TRACE(operation.name);
        const test::AllocationCounter counter;
        const SV made = operation.make(column);
        EXPECT_LE(counter.GetCount(), operation.allocations);
        EXPECT_EQ(AddressOf(made), first + operation.offset);
    }
}

struct Read {
    const char* name;
    std::function<void(const SV&)> run;
};

/// Every way to read element 1, which is not there, of four.
template <typename T>
std::vector<Read> ReadsOfElement1() {
    const auto typed = [](const SV& c) -> const ITypedArray<T>& { return c->AsTypedArray<T>(); };
    const auto cursorAt1 = [=](const SV& c) {
        ArrayCursor<T> cursor = typed(c).GetAdapterWithSpecials();
        ++cursor;
        return cursor;
    };
    return {
        {"GetValue", [=](const SV& c) { typed(c).GetValue(1); }},
        {"GetValueUnchecked", [=](const SV& c) { typed(c).GetValueUnchecked(1); }},
        {"GetSpecialKind", [=](const SV& c) { typed(c).GetSpecialKind(1); }},
        {"IsSpecial", [=](const SV& c) { typed(c).IsSpecial(1); }},
        {"GetElement", [](const SV& c) { c->AsArray().GetElement(1); }},
        {"by key", [](const SV& c) { c->AsCollection().GetValue(L"1"); }},
        {"boxed walk",
         [](const SV& c) {
             const auto it = c->AsArray().GetStoreValueIterable().begin()->Clone();
             it->Advance();
             it->Dereference();
         }},
        {"cursor", [=](const SV& c) { *cursorAt1(c); }},
        {"cursor's kind", [=](const SV& c) { cursorAt1(c).GetSpecialKind(); }},
        {"GetValuesView",
         [](const SV& c) {
             TemporaryRawData scratch;
             c->AsArray().GetValuesView(scratch, 0, 4);
         }},
        {"Materialize", [](const SV& c) { c->AsArray().Materialize(); }},
        {"ToSet", [](const SV& c) { c->AsArray().ToSet(/*includeSpecials=*/false); }},
        {"ToSet with kinds", [](const SV& c) { c->AsArray().ToSet(/*includeSpecials=*/true); }},
        {"ElementsEqual", [](const SV& c) { c->AsArray().ElementsEqual(0, 1); }},
        {"FindRunEnd", [](const SV& c) { c->AsArray().FindRunEnd(1); }},
        {"FindRunEnd on the way", [](const SV& c) { c->AsArray().FindRunEnd(0); }},
        {"of a range",
         [](const SV& c) { c->AsArray().GetRange(1, 2, 1)->AsArray().GetElement(0); }},
    };
}

template <typename T>
void CheckReadsFail(const SV& column) {
    for (const Read& read : ReadsOfElement1<T>()) {
        SCOPED_TRACE(read.name);
        EXPECT_LUM_ERROR(OutOfBounds, "", read.run(column));
    }
    EXPECT_EQ(column->AsCollection().TryGetValue(L"1"), nullptr);
    EXPECT_TRUE(column->AsCollection().HasKey(L"1"));

    // Copies write nothing before they fail, and the elements that are there can be read.
    const ITypedArray<T>& array = column->AsTypedArray<T>();
    std::vector<T> values(2, array.GetValue(3));
    EXPECT_LUM_ERROR(OutOfBounds, "", array.CopyValues(values, 0, 2));
    EXPECT_EQ(values[0], array.GetValue(3));
    array.CopyValues(values, 2, 2);
    EXPECT_EQ(values[0], array.GetValue(2));

    // Where there is no room for kinds, none are looked up.
    if (array.HasSpecialValues()) {
        TemporaryRawData scratch;
        EXPECT_LUM_ERROR(OutOfBounds, "", array.GetSpecialsView(scratch, 1, 1));
        std::vector<SpecialKind> kinds(2, SpecialKind::Error);
        EXPECT_LUM_REPORT(OutOfBounds, "",
                          array.IsComposite()
                              ? "(index < m_size)"
                              : "(static_cast<size_t>(realIndex) < m_values.GetSize())",
                          array.CopySpecials(kinds, 0, 2));
        EXPECT_EQ(kinds[0], SpecialKind::Error);
        array.CopySpecials(kinds, 2, 2);
        EXPECT_EQ(kinds[0], array.GetSpecialKind(2));
    }
    if constexpr (!std::is_same_v<T, LumTuple> && !std::is_same_v<T, SV>) {
        std::vector<LumTuple> rows(2, LumTuple(TupleType::Get({array.GetElementType()})));
        const LumTuple fresh = rows[0];
        EXPECT_LUM_ERROR(OutOfBounds, "", array.CopyToTuples(rows, 0, 2, 0));
        EXPECT_EQ(TextOf(rows[0]), TextOf(fresh));
        array.CopyToTuples(rows, 2, 2, 0);
        EXPECT_EQ(rows[0].GetNthSpecial(0), array.GetSpecialKind(2));
    }
}

TEST(ArrayIndicesTest, IndicesOutsideTheStorageAreNeverRead) {
    const test::CollatorPoolGuard pool;
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (const Type* const type : test::GetElementTypes()) {
        const SV stored = test::MakeRandomColumn(random, type, 3);
        SCOPED_TRACE(TextOf(stored));
        for (const SV& storage : {stored, test::MakeRuns(stored)}) {
            if (storage == nullptr) {
                continue;
            }
            for (const unsigned outside : {3u, 0xFFFFFFFFu}) {
                const SV column = storage->AsArray().WithIndices(Indices{0, outside, 1, 2}, kOrder);
                DispatchStorage(type->GetStoreType(), [&]<typename T>(StorageTag<T>) {
                    CheckReadsFail<T>(column);
                    // Once more, now that the array knows its indices, and for a copy that knows.
                    CheckReadsFail<T>(column);
                    CheckReadsFail<T>(SV(column->Clone()));
                });
            }
        }
    }
}

TEST(ArrayIndicesTest, RefusedWhereTheyAreGiven) {
    const std::shared_ptr<const RawData> narrow = VectorRawData<unsigned char>::Make({1});
    test::ForEachForm(test::ColumnOf("i: 7 7 7"), [&](const SV& column) {
        const IStoreArray& array = column->AsArray();
        EXPECT_LUM_ERROR(IllegalCast, "", array.WithIndices(narrow, kOrder));
        EXPECT_LUM_ERROR(IllegalCast, "", array.ComposeIndices(narrow, kOrder));
        const SV value = array.WithIndices(Indices{2, 1}, kOrder);
        const IStoreArray& indexed = value->AsArray();
        if (!array.IsConstant()) {  // A count alone needs no indices.
            EXPECT_LUM_REPORT(IllegalOperation, "", "!(IsNull())",
                              indexed.ComposeIndices(nullptr, kOrder));
            EXPECT_LUM_REPORT(OutOfBounds, "", "(index < m_size)",
                              indexed.ComposeIndices(Indices{0, 2}, kOrder));
            EXPECT_LUM_REPORT(OutOfBounds, "", "(index < m_size)",
                              indexed.ComposeIndices(Raw({0xFFFFFFFF}), kOrder));
        }
    });
    // Without indices nothing is looked at before it is read.
    EXPECT_NO_THROW(test::ColumnOf("i: 1")->AsArray().ComposeIndices(Indices{9}, kOrder));
}

}  // namespace
}  // namespace lum::core
