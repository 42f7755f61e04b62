// Composite arrays of 1,000 runs. Bulk copy: at most 1.2 of a fill of the same output with one
// value. The end of a run costs O(runs), whatever their length. The boxed walk and the cursor cost
// O(1) an element, however many runs there are: no more than over a plain array.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "core/main/store/ValueCompositeArray.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/ScalarTypes.h"

namespace lum::core {
namespace {

constexpr lumsize_t kCount = 1000000;
constexpr lumsize_t kRunCount = 1000;

template <typename T>
const Type* TypeFor() {
    return sizeof(T) == 1   ? static_cast<const Type*>(BoolType::Get())
           : sizeof(T) == 4 ? IntType::Get32()
                            : IntType::Get64();
}

/// Runs of one length, numbered from 0 on, or all equal.
template <typename T>
SV MakeComposite(lumsize_t count, bool isOneValue = false) {
    std::vector<ValueCompositeArrayRange<T>> runs;
    for (lumsize_t i = 0; i < kRunCount; ++i) {
        runs.push_back(
            {static_cast<T>(isOneValue ? 7 : i), SpecialKind::Normal, count / kRunCount});
    }
    return MakeCompositeArray<T>(TypeFor<T>(), std::move(runs), nullptr, SortSpecOrder::UNKNOWN);
}

SV MakePlain() {
    std::vector<unsigned long long> values(kCount);
    for (lumsize_t i = 0; i < kCount; ++i) {
        values[i] = i / (kCount / kRunCount);
    }
    return factory::MakeArray<unsigned long long>(IntType::Get64(), std::move(values),
                                                  SortSpecOrder::UNKNOWN);
}

template <typename T>
void BM_Fill(benchmark::State& state) {
    std::vector<T> out(kCount);
    T value = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        std::fill(out.begin(), out.end(), value);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

template <typename T>
void BM_CopyRuns(benchmark::State& state) {
    const SV column = MakeComposite<T>(kCount);
    const auto& array = column->AsTypedArray<T>();
    std::vector<T> out(kCount);
    array.CopyValues(out, 0, kCount);
    for (lumsize_t i = 0; i < kCount; ++i) {
        if (out[i] != static_cast<T>(i / (kCount / kRunCount))) {
            return state.SkipWithError("wrong copy");
        }
    }
    for (auto _ : state) {
        array.CopyValues(out, 0, kCount);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_Fill<unsigned char>)->Name("BM_CopyRuns8/Fill");
BENCHMARK(BM_CopyRuns<unsigned char>)->Name("BM_CopyRuns8/Lum");
BENCHMARK(BM_Fill<unsigned int>)->Name("BM_CopyRuns32/Fill");
BENCHMARK(BM_CopyRuns<unsigned int>)->Name("BM_CopyRuns32/Lum");
BENCHMARK(BM_Fill<unsigned long long>)->Name("BM_CopyRuns64/Fill");
BENCHMARK(BM_CopyRuns<unsigned long long>)->Name("BM_CopyRuns64/Lum");

/// The argument is the count of elements; the runs are 1,000 whatever it is, and all equal.
void BM_FindRunEnd(benchmark::State& state) {
    const auto count = static_cast<lumsize_t>(state.range(0));
    const SV column = MakeComposite<unsigned long long>(count, /*isOneValue=*/true);
    const IStoreArray& array = column->AsArray();
    if (array.FindRunEnd(0) != count - 1) {
        return state.SkipWithError("wrong end");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(array.FindRunEnd(0));
    }
    state.SetItemsProcessed(state.iterations() * kRunCount);
}
BENCHMARK(BM_FindRunEnd)->Name("BM_FindRunEnd/Lum")->Arg(kRunCount)->Arg(kCount)->Arg(4000000000);

void BM_BoxedWalk(benchmark::State& state, const SV& column) {
    const auto& iterable = column->AsArray().GetStoreValueIterable();
    for (auto _ : state) {
        for (auto it = iterable.begin()->Clone(); *it != iterable.end(); it->Advance()) {
            benchmark::DoNotOptimize(it->Dereference());
        }
    }
    state.SetItemsProcessed(state.iterations() * column->GetCount());
}

void BM_Cursor(benchmark::State& state, const SV& column) {
    const auto& array = column->AsTypedArray<unsigned long long>();
    unsigned long long expected = 0;
    for (lumsize_t i = 0; i < kCount; ++i) {
        expected += i / (kCount / kRunCount);
    }
    for (auto _ : state) {
        unsigned long long sum = 0;
        for (const unsigned long long value : array.GetAdapter()) {
            sum += value;
        }
        if (sum != expected) {
            return state.SkipWithError("wrong sum");
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

SV MakeRuns() {
    return MakeComposite<unsigned long long>(kCount);
}

SV MakeIndexedRuns() {
    std::vector<unsigned> indices(kCount);
    for (lumsize_t i = 0; i < kCount; ++i) {
        indices[i] = kCount - 1 - i;
    }
    return MakeRuns()->AsArray().WithIndices(std::move(indices), SortSpecOrder::UNKNOWN);
}

BENCHMARK_CAPTURE(BM_BoxedWalk, Plain, MakePlain());
BENCHMARK_CAPTURE(BM_BoxedWalk, LumRuns, MakeRuns());
BENCHMARK_CAPTURE(BM_BoxedWalk, LumIndexedRuns, MakeIndexedRuns());
BENCHMARK_CAPTURE(BM_BoxedWalk, LumConstant,
                  factory::MakeConstantArray<unsigned long long>(IntType::Get64(), 7ull, kCount));
BENCHMARK_CAPTURE(BM_Cursor, Plain, MakePlain());
BENCHMARK_CAPTURE(BM_Cursor, LumRuns, MakeRuns());
BENCHMARK_CAPTURE(BM_Cursor, LumIndexedRuns, MakeIndexedRuns());

}  // namespace
}  // namespace lum::core
