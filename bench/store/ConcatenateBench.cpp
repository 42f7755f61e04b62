// 100 columns of Real64 joined into one: at most 1.05 of one copy of as many bytes into memory that
// is taken for it.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/ScalarTypes.h"

namespace lum::core {
namespace {

using Cells = std::vector<unsigned long long>;

constexpr lumsize_t kChunkCount = 100;

Cells MakeCells(lumsize_t count) {
    Cells cells(count);
    for (lumsize_t i = 0; i < count; ++i) {
        cells[i] = i * 0x9E3779B97F4A7C15ull;
    }
    return cells;
}

void BM_CopyBytes(benchmark::State& state) {
    const auto chunkSize = static_cast<lumsize_t>(state.range(0));
    const Cells cells = MakeCells(kChunkCount * chunkSize);
    const std::size_t size = cells.size() * sizeof(cells[0]);
    for (auto _ : state) {
        const std::unique_ptr<unsigned char[]> copy(new unsigned char[size]);
        std::memcpy(copy.get(), cells.data(), size);
        benchmark::DoNotOptimize(copy.get());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long long>(size));
}

void BM_Concatenate(benchmark::State& state) {
    const auto chunkSize = static_cast<lumsize_t>(state.range(0));
    const Cells cells = MakeCells(kChunkCount * chunkSize);
    const SV whole = factory::MakeArray<unsigned long long>(RealType::Get64(), Cells(cells),
                                                            SortSpecOrder::UNKNOWN);
    std::vector<SV> chunks;
    for (lumsize_t i = 0; i < kChunkCount; ++i) {
        chunks.push_back(whole->AsArray().GetRange(i * chunkSize, chunkSize, 1));
    }
    const auto join = [&chunks] {
        return ConcatenateArrays(chunks, nullptr, SortSpecOrder::UNKNOWN);
    };
    const SV joined = join();
    const auto values = joined->AsTypedArray<unsigned long long>().GetValues();
    if (!std::equal(cells.begin(), cells.end(), values.begin(), values.end())) {
        return state.SkipWithError("wrong elements");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(join());
    }
    state.SetBytesProcessed(state.iterations() *
                            static_cast<long long>(cells.size() * sizeof(cells[0])));
}

BENCHMARK(BM_CopyBytes)->Name("BM_Concatenate/CopyBytes")->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(BM_Concatenate)->Name("BM_Concatenate/Lum")->Arg(1000)->Arg(10000)->Arg(100000);

}  // namespace
}  // namespace lum::core
