// Slices and indexed forms of an array: at most 1.3 of one make_shared of a view, whatever the
// array's length. Gathers through random indices: at most 1.05 of the hand-written loop.
#include <benchmark/benchmark.h>

#include <memory>
#include <numeric>
#include <random>
#include <vector>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/ScalarTypes.h"

namespace lum::core {
namespace {

constexpr lumsize_t kCount = 1 << 20;

SV MakeColumn() {
    std::vector<unsigned long long> values(kCount);
    std::iota(values.begin(), values.end(), 0ULL);
    return factory::MakeArray<unsigned long long>(IntType::Get64(), std::move(values),
                                                  SortSpecOrder::ASC);
}

std::vector<unsigned> RandomIndices() {
    std::vector<unsigned> indices(kCount);
    std::mt19937 random(7);
    for (unsigned& index : indices) {
        index = static_cast<unsigned>(random() % kCount);
    }
    return indices;
}

/// What a slice has to be made of at least: a view that keeps its storage alive.
struct SharedView {
    std::shared_ptr<const std::vector<unsigned long long>> owner;
    const unsigned long long* data;
    std::size_t size;
};

void BM_MakeSharedView(benchmark::State& state) {
    const auto storage = std::make_shared<const std::vector<unsigned long long>>(kCount);
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::make_shared<SharedView>(
            SharedView{storage, storage->data() + 10, storage->size() - 20}));
    }
}
BENCHMARK(BM_MakeSharedView)->Name("BM_Slice/MakeSharedView");

void BM_Slice(benchmark::State& state) {
    const SV column = MakeColumn();
    const IStoreArray& array = column->AsArray();
    if (array.GetRange(10, kCount - 20, 1)->AsTypedArray<unsigned long long>().GetValue(0) != 10) {
        return state.SkipWithError("wrong slice");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(array.GetRange(10, kCount - 20, 1));
    }
}
BENCHMARK(BM_Slice)->Name("BM_Slice/Lum");

void BM_SliceOfSlice(benchmark::State& state) {
    const SV column = MakeColumn()->AsArray().GetRange(5, kCount - 10, 1);
    const IStoreArray& array = column->AsArray();
    for (auto _ : state) {
        benchmark::DoNotOptimize(array.GetRange(5, kCount - 20, 1));
    }
}
BENCHMARK(BM_SliceOfSlice)->Name("BM_Slice/LumOfSlice");

/// And an indexed form: a view that keeps its indices alive as well.
struct SharedIndexedView {
    SharedView values;
    std::shared_ptr<const std::vector<unsigned>> owner;
    const unsigned* indices;
    std::size_t count;
};

void BM_MakeSharedIndexedView(benchmark::State& state) {
    const auto storage = std::make_shared<const std::vector<unsigned long long>>(kCount);
    const auto indices = std::make_shared<const std::vector<unsigned>>(kCount);
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::make_shared<SharedIndexedView>(
            SharedIndexedView{{storage, storage->data(), storage->size()},
                              indices,
                              indices->data(),
                              indices->size()}));
    }
}
BENCHMARK(BM_MakeSharedIndexedView)->Name("BM_Slice/MakeSharedIndexedView");

void BM_WithIndices(benchmark::State& state) {
    const SV column = MakeColumn();
    const IStoreArray& array = column->AsArray();
    const std::shared_ptr<const RawData> indices = VectorRawData<unsigned>::Make(RandomIndices());
    for (auto _ : state) {
        benchmark::DoNotOptimize(array.WithIndices(indices, SortSpecOrder::UNKNOWN));
    }
}
BENCHMARK(BM_WithIndices)->Name("BM_Slice/LumWithIndices");

void BM_GatherByHand(benchmark::State& state) {
    std::vector<unsigned long long> values(kCount);
    std::iota(values.begin(), values.end(), 0ULL);
    const std::vector<unsigned> indices = RandomIndices();
    std::vector<unsigned long long> out(kCount);
    for (auto _ : state) {
        for (std::size_t i = 0; i < kCount; ++i) {
            out[i] = values[indices[i]];
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_GatherByHand)->Name("BM_CopyValues/ByHand");

void BM_CopyValues(benchmark::State& state) {
    const SV column = MakeColumn()->AsArray().WithIndices(RandomIndices(), SortSpecOrder::UNKNOWN);
    const auto& array = column->AsTypedArray<unsigned long long>();
    std::vector<unsigned long long> out(kCount);
    array.CopyValues(out, 0, kCount);
    const std::vector<unsigned> indices = RandomIndices();
    for (std::size_t i = 0; i < kCount; ++i) {
        if (out[i] != indices[i]) {
            return state.SkipWithError("result differs from the peer");
        }
    }
    for (auto _ : state) {
        array.CopyValues(out, 0, kCount);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_CopyValues)->Name("BM_CopyValues/Lum");

void BM_MaterializeByHand(benchmark::State& state) {
    std::vector<unsigned long long> values(kCount);
    std::iota(values.begin(), values.end(), 0ULL);
    const std::vector<unsigned> indices = RandomIndices();
    for (auto _ : state) {
        const std::unique_ptr<unsigned long long[]> out(new unsigned long long[kCount]);
        for (std::size_t i = 0; i < kCount; ++i) {
            out[i] = values[indices[i]];
        }
        benchmark::DoNotOptimize(out.get());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_MaterializeByHand)->Name("BM_Materialize/ByHand");

void BM_Materialize(benchmark::State& state) {
    const SV column = MakeColumn()->AsArray().WithIndices(RandomIndices(), SortSpecOrder::UNKNOWN);
    for (auto _ : state) {
        benchmark::DoNotOptimize(column->AsArray().Materialize());
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_Materialize)->Name("BM_Materialize/Lum");

}  // namespace
}  // namespace lum::core
