// A scope that nobody observes: at most 1 ns above the loop without it. Beside it the load and the
// branch that it consists of, written by hand.
#include <benchmark/benchmark.h>

#include <atomic>
#include <memory>

#include "lum/core/utility/MetricsFilter.h"

namespace lum::core {
namespace {

std::atomic<unsigned int> g_flag{0};

void BM_NoScope(benchmark::State& state) {
    unsigned int work = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(++work);
    }
}
BENCHMARK(BM_NoScope)->Name("BM_Scope/None");

void BM_LoadAndBranch(benchmark::State& state) {
    unsigned int work = 0;
    for (auto _ : state) {
        if ((g_flag.load(std::memory_order_relaxed) & 1) != 0) {
            state.SkipWithError("the flag is set");
        }
        benchmark::DoNotOptimize(++work);
    }
}
BENCHMARK(BM_LoadAndBranch)->Name("BM_Scope/LoadAndBranch");

void BM_ScopeUnobserved(benchmark::State& state) {
    unsigned int work = 0;
    for (auto _ : state) {
        const Metrics::Scope scope = MetricsFilter::OpenScope(MetricsFilter::Bits::Vtl, "bench");
        benchmark::DoNotOptimize(++work);
    }
}
BENCHMARK(BM_ScopeUnobserved)->Name("BM_Scope/LumUnobserved");

void BM_ScopeObserved(benchmark::State& state) {
    long long heard = 0;
    const auto former = Metrics::SetSink(
        std::make_shared<const Metrics::Sink>([&](const Metrics::ScopeRecord&) { ++heard; }));
    unsigned int work = 0;
    for (auto _ : state) {
        const Metrics::Scope scope = MetricsFilter::OpenScope(MetricsFilter::Bits::Vtl, "bench");
        benchmark::DoNotOptimize(++work);
    }
    Metrics::SetSink(former);
    if (heard != static_cast<long long>(work)) {
        state.SkipWithError("the sink has not heard of every scope");
    }
}
BENCHMARK(BM_ScopeObserved)->Name("BM_Scope/LumObserved");

}  // namespace
}  // namespace lum::core
