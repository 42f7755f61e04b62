// Arrays that are read for the first time on many threads at once.
#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/ITypedArray.h"
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

TEST(ArrayThreadsTest, FirstReadsAtOnce) {
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

TEST(ArrayThreadsTest, RowsOfATableCutAtOnce) {
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

TEST(ArrayThreadsTest, ElementsOfAConstantAreOneObject) {
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

TEST(ArrayThreadsTest, RowsMadeByTheColumnItself) {
    const test::CollatorPoolGuard pool;
    const auto* const type = &test::TypeOf("P{i,s}")->As<TupleType>();
    // None of these rows was touched before the column took them over.
    const SV column =
        factory::MakeArray(type, std::vector<LumTuple>(20, LumTuple(type)), SortSpecOrder::ASC);
    std::vector<std::string> texts(kThreadCount);
    test::RunTogether(kThreadCount,
                      [&](std::size_t thread) { texts[thread] = test::TextOf(column); });
    EXPECT_EQ(texts, std::vector<std::string>(kThreadCount, texts[0]));
}

}  // namespace
}  // namespace lum::core
