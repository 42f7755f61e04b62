// A window over a table of 100 columns, and a window over that one: at most 1.3 of 100 make_shared
// of a view. A table cuts its columns when somebody looks at one; the cases with that are shown
// beside it.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/types/ScalarTypes.h"

namespace lum::core {
namespace {

constexpr int kColumns = 100;
constexpr lumsize_t kRows = 1 << 16;

SV MakeTable() {
    IStoreTable::Columns columns;
    for (int column = 0; column < kColumns; ++column) {
        columns.emplace(
            RInternString(TStringCore::fromUtf8("column" + std::to_string(column))),
            factory::MakeArray<unsigned long long>(
                RealType::Get64(), std::vector<unsigned long long>(kRows), SortSpecOrder::UNKNOWN));
    }
    return factory::MakeTable(std::move(columns), {});
}

struct SharedView {
    std::shared_ptr<const std::vector<unsigned long long>> owner;
    const unsigned long long* data;
    std::size_t size;
};

void BM_MakeSharedViews(benchmark::State& state) {
    const auto storage = std::make_shared<const std::vector<unsigned long long>>(kRows);
    std::vector<std::shared_ptr<SharedView>> views(kColumns);
    for (auto _ : state) {
        for (std::shared_ptr<SharedView>& view : views) {
            view = std::make_shared<SharedView>(
                SharedView{storage, storage->data() + 10, storage->size() - 20});
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_MakeSharedViews)->Name("BM_TableWindow/MakeSharedViews");

void RunWindow(benchmark::State& state, const IStoreTable& table, bool looksAtColumns) {
    const RInternString name(L"column7");
    for (auto _ : state) {
        const SV window = table.GetRowRange(10, table.GetRowCount() - 20, 1);
        if (looksAtColumns &&
            window->AsTable().GetColumn(name)->GetCount() != table.GetRowCount() - 20) {
            return state.SkipWithError("wrong window");
        }
        benchmark::DoNotOptimize(window);
    }
}

void BM_Window(benchmark::State& state, bool looksAtColumns) {
    const SV table = MakeTable();
    RunWindow(state, table->AsTable(), looksAtColumns);
}
BENCHMARK_CAPTURE(BM_Window, Lum, false)->Name("BM_TableWindow/Lum");
BENCHMARK_CAPTURE(BM_Window, LumWithColumns, true)->Name("BM_TableWindow/LumWithColumns");

void BM_WindowOfWindow(benchmark::State& state) {
    const SV table = MakeTable();
    const SV window = table->AsTable().GetRowRange(10, kRows - 20, 1);
    RunWindow(state, window->AsTable(), false);
}
BENCHMARK(BM_WindowOfWindow)->Name("BM_TableWindow/LumOfWindow");

}  // namespace
}  // namespace lum::core
