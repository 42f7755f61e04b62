// Scheduling a batch of tasks and waiting for it: at most a fifth of std::async, which makes a
// thread for each, and half of it for a single task. A oneTBB task group stands beside them for the
// scale: its tasks have neither futures nor an order, and the waiting thread runs them itself
// instead of waking another one.
#include <benchmark/benchmark.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>

#include <atomic>
#include <future>
#include <vector>

#include "lumsys/AsyncTask.h"
#include "lumsys/TThreadPool.h"

namespace lumsys {
namespace {

// As many as the runs are compared with; the machine may have more.
constexpr int kThreads = 2;

using Batch = long long (*)(int tasks);

long long RunOnPool(int tasks) {
    std::atomic<long long> sum{0};
    std::vector<AsyncTask::Future<void>> futures;
    futures.reserve(static_cast<std::size_t>(tasks));
    for (int i = 0; i < tasks; ++i) {
        futures.push_back(
            AsyncTask::Schedule([&sum, i] { sum.fetch_add(i, std::memory_order_relaxed); },
                                AsyncTask::LaunchMode::Pool));
    }
    AsyncTask::WaitAll(futures, AsyncTask::kNoTimeLimit);
    for (const AsyncTask::Future<void>& future : futures) {
        future.CheckForException();
    }
    return sum;
}

long long RunAsync(int tasks) {
    std::atomic<long long> sum{0};
    std::vector<std::future<void>> futures;
    futures.reserve(static_cast<std::size_t>(tasks));
    for (int i = 0; i < tasks; ++i) {
        futures.push_back(std::async(std::launch::async,
                                     [&sum, i] { sum.fetch_add(i, std::memory_order_relaxed); }));
    }
    for (std::future<void>& future : futures) {
        future.get();
    }
    return sum;
}

long long RunTaskGroup(int tasks) {
    static tbb::task_arena s_arena(kThreads);
    std::atomic<long long> sum{0};
    s_arena.execute([&] {
        tbb::task_group group;
        for (int i = 0; i < tasks; ++i) {
            group.run([&sum, i] { sum.fetch_add(i, std::memory_order_relaxed); });
        }
        group.wait();
    });
    return sum;
}

void BM_Tasks(benchmark::State& state, Batch batch) {
    TThreadPool::Configure(kThreads, {}, {}, {});
    const int tasks = static_cast<int>(state.range(0));
    if (batch(tasks) != static_cast<long long>(tasks) * (tasks - 1) / 2) {
        return state.SkipWithError("result differs from the sum");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(batch(tasks));
    }
    state.SetItemsProcessed(state.iterations() * tasks);
}
BENCHMARK_CAPTURE(BM_Tasks, Lum, RunOnPool)->Arg(1)->Arg(16)->Arg(1000)->UseRealTime();
BENCHMARK_CAPTURE(BM_Tasks, Async, RunAsync)->Arg(1)->Arg(16)->Arg(1000)->UseRealTime();
BENCHMARK_CAPTURE(BM_Tasks, TaskGroup, RunTaskGroup)->Arg(1)->Arg(16)->Arg(1000)->UseRealTime();

}  // namespace
}  // namespace lumsys
