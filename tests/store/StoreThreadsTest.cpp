// Collections that are read for the first time on many threads at once.
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/KeySetFactory.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/RandomColumns.h"
#include "tests/support/RunTogether.h"

namespace lum::core {
namespace {

constexpr std::size_t kThreadCount = 4;

/// Reads on all threads at once give one text.
void ExpectOneText(const std::function<std::string()>& read) {
    std::vector<std::string> texts(kThreadCount);
    test::RunTogether(kThreadCount, [&](std::size_t thread) { texts[thread] = read(); });
    EXPECT_EQ(texts, std::vector<std::string>(kThreadCount, texts[0]));
}

TEST(StoreThreadsTest, FirstReadsAtOnce) {
    const test::CollatorPoolGuard pool;
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (const Type* const type : test::GetElementTypes()) {
        const SV column = test::MakeRandomColumn(random, type, 50);
        const std::string expected = test::TextOf(column->Clone());
        test::ForEachForm(column, [&](const SV& form) {
            DispatchStorage(type->GetStoreType(), [&]<typename T>(StorageTag<T>) {
                const ITypedArray<T>& array = form->AsTypedArray<T>();
                std::vector<const void*> iterables(kThreadCount);
                std::vector<std::string> texts(kThreadCount);
                test::RunTogether(kThreadCount, [&](std::size_t thread) {
                    iterables[thread] = &array.GetStoreValueIterable();
                    std::vector<T> values(array.GetCount());
                    array.CopyValues(values, 0, array.GetCount());
                    texts[thread] = test::TextOf(*array.Materialize());
                });
                EXPECT_EQ(std::set<const void*>(iterables.begin(), iterables.end()).size(), 1u);
                EXPECT_EQ(texts, std::vector<std::string>(kThreadCount, expected));
            });
        });
    }
}

TEST(StoreThreadsTest, RowsOfATableCutAtOnce) {
    const SV column = factory::MakeArray<unsigned>(
        IntType::Get32(), std::vector<unsigned>{1, 2, 3, 4}, SortSpecOrder::UNKNOWN);
    const SV table = factory::MakeTable({{L"a", column}, {L"b", column}}, {});
    const SV window = table->AsTable().GetRowRange(1, 2, 1);
    std::vector<const StoreValue*> columns(kThreadCount);
    test::RunTogether(kThreadCount, [&](std::size_t thread) {
        columns[thread] = window->AsTable().GetColumn(L"b").get();
    });
    EXPECT_EQ(columns, std::vector<const StoreValue*>(kThreadCount, columns[0]));
    EXPECT_EQ(test::TextOf(*columns[0]), "i: 2 3");
}

TEST(StoreThreadsTest, ElementsOfAConstantAreOneObject) {
    const Type* const type = test::TypeOf("i");
    for (const SV& column : {factory::MakeConstantArray<unsigned>(type, 7u, 3),
                             factory::MakeConstantArray<unsigned>(type, 3, SpecialKind::Null)}) {
        std::vector<SV> elements(2 * kThreadCount);
        test::RunTogether(kThreadCount, [&](std::size_t thread) {
            const IStoreArray& array = column->AsArray();
            elements[2 * thread] = array.GetElement(1);
            elements[2 * thread + 1] = array.GetStoreValueIterable().begin()->Dereference();
        });
        EXPECT_EQ(std::set<SV>(elements.begin(), elements.end()).size(), 1u);
    }
}

TEST(StoreThreadsTest, UntouchedRows) {
    const test::CollatorPoolGuard pool;
    const auto* const type = &test::TypeOf("P{i,s}")->As<TupleType>();
    // None of these rows was touched before the collections took them over.
    const SV column =
        factory::MakeArray(type, std::vector<LumTuple>(20, LumTuple(type)), SortSpecOrder::ASC);
    ExpectOneText([&] { return test::TextOf(column); });

    auto values = std::make_unique<MapContainer<unsigned, LumTuple>>();
    for (unsigned key = 0; key < 20; ++key) {
        values->emplace(key, LumTuple(type));
    }
    auto specials = std::make_unique<MapContainer<SpecialKind, LumTuple>>();
    specials->emplace(SpecialKind::Null, LumTuple(type));
    const SV keySet = factory::MakeKeySet<unsigned, LumTuple>(
        IntType::Get32(), type, std::move(values), std::move(specials));
    ExpectOneText([&] { return test::TextOf(keySet); });
}

TEST(StoreThreadsTest, SetsLookColumnsUp) {
    constexpr unsigned kCount = 1000;
    auto values = std::make_unique<SetContainer<unsigned>>();
    for (unsigned value = 0; value < kCount; value += 2) {
        values->insert(value);
    }
    const SV value = factory::MakeSet<unsigned>(IntType::Get32(), std::move(values), nullptr);
    const auto& set = value->AsTypedSet<unsigned>();
    std::vector<unsigned> wanted(kCount);
    std::iota(wanted.begin(), wanted.end(), 0u);
    std::vector<int> counts(kThreadCount);
    test::RunTogether(kThreadCount, [&](std::size_t thread) {
        std::vector<unsigned char> out(kCount);
        for (int round = 0; round < 4; ++round) {
            set.ContainsEach(wanted, out);
            counts[thread] += std::accumulate(out.begin(), out.end(), 0);
        }
    });
    EXPECT_EQ(counts, std::vector<int>(kThreadCount, 4 * kCount / 2));
}

}  // namespace
}  // namespace lum::core
