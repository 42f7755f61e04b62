// Collections that are read for the first time on many threads at once.
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <numeric>
#include <string>
#include <utility>
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
#include "lum/core/types/StringType.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/RandomColumns.h"
#include "tests/support/RunTogether.h"

namespace lum::core {
namespace {

using test::TextOf;

constexpr std::size_t kThreadCount = 4;

/// What is read on all threads at once, which must be one answer.
template <typename F>
auto OneAnswer(const F& read) {
    std::vector<decltype(read())> answers(kThreadCount);
    test::RunTogether(kThreadCount, [&](std::size_t thread) { answers[thread] = read(); });
    EXPECT_EQ(answers, std::vector(kThreadCount, answers[0]));
    return answers[0];
}

TEST(StoreThreadsTest, FirstReadsAtOnce) {
    const test::CollatorPoolGuard pool;
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (const Type* const type : test::GetElementTypes()) {
        const SV column = test::MakeRandomColumn(random, type, 50);
        const std::string expected = TextOf(column->Clone());
        test::ForEachForm(column, [&](const SV& form) {
            DispatchStorage(type->GetStoreType(), [&]<typename T>(StorageTag<T>) {
                const ITypedArray<T>& array = form->AsTypedArray<T>();
                const auto answer = OneAnswer([&] {
                    const void* const iterable = &array.GetStoreValueIterable();
                    std::vector<T> values(array.GetCount());
                    array.CopyValues(values, 0, array.GetCount());
                    return std::pair(iterable, TextOf(array.Materialize()));
                });
                EXPECT_EQ(answer.second, expected);
            });
        });
    }
}

TEST(StoreThreadsTest, RowsOfATableCutAtOnce) {
    const SV column = test::ColumnOf("i: 1 2 3 4");
    const SV table = factory::MakeTable({{L"a", column}, {L"b", column}}, {});
    const SV window = table->AsTable().GetRowRange(1, 2, 1);
    EXPECT_EQ(TextOf(*OneAnswer([&] { return window->AsTable().GetColumn(L"b").get(); })),
              "i: 2 3");
}

TEST(StoreThreadsTest, ElementsOfAConstantAreOneObject) {
    const Type* const type = test::TypeOf("i");
    for (const SV& column : {factory::MakeConstantArray<unsigned>(type, 7u, 3),
                             factory::MakeConstantArray<unsigned>(type, 3, SpecialKind::Null)}) {
        const IStoreArray& array = column->AsArray();
        const auto [element, walked] = OneAnswer([&] {
            return std::pair(array.GetElement(1),
                             array.GetStoreValueIterable().begin()->Dereference());
        });
        EXPECT_EQ(element, walked);
    }
}

TEST(StoreThreadsTest, UntouchedRows) {
    const test::CollatorPoolGuard pool;
    const auto* const type = &test::TypeOf("P{i,s}")->As<TupleType>();
    // None of these rows was touched before the collections took them over.
    const SV column =
        factory::MakeArray(type, std::vector<LumTuple>(20, LumTuple(type)), SortSpecOrder::ASC);
    OneAnswer([&] { return TextOf(column); });

    auto values = std::make_unique<MapContainer<unsigned, LumTuple>>();
    for (unsigned key = 0; key < 20; ++key) {
        values->emplace(key, LumTuple(type));
    }
    auto specials = std::make_unique<MapContainer<SpecialKind, LumTuple>>();
    specials->emplace(SpecialKind::Null, LumTuple(type));
    const SV keySet = factory::MakeKeySet<unsigned, LumTuple>(
        IntType::Get32(), type, std::move(values), std::move(specials));
    OneAnswer([&] { return TextOf(keySet); });
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
    const int found = OneAnswer([&] {
        int count = 0;
        std::vector<unsigned char> out(kCount);
        for (int round = 0; round < 4; ++round) {
            set.ContainsEach(wanted, out);
            count += std::accumulate(out.begin(), out.end(), 0);
        }
        return count;
    });
    EXPECT_EQ(found, 4 * kCount / 2);
}

TEST(StoreThreadsTest, SetsLookStringsUp) {
    const test::CollatorPoolGuard pool;
    auto values = std::make_unique<SetContainer<RIndirectString>>();
    for (unsigned value = 0; value < 600; value += 2) {
        values->insert(TStringCore::number(value));
    }
    const SV value =
        factory::MakeSet<RIndirectString>(StringType::Get(), std::move(values), nullptr);
    const auto& set = value->AsTypedSet<RIndirectString>();
    const int found = OneAnswer([&] {
        int count = 0;
        for (unsigned wanted = 0; wanted < 3000; ++wanted) {
            count += set.Contains(TStringCore::number(wanted % 1000)) ? 1 : 0;
        }
        return count;
    });
    EXPECT_EQ(found, 3 * 300);
}

}  // namespace
}  // namespace lum::core
