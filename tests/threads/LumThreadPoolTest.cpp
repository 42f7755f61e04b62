#include "lum/core/utility/LumThreadPool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <initializer_list>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "core/main/utility/TaskWorkerHandleImpl.h"
#include "lumsys/TThreadPool.h"

namespace lum::core::LumThreadPool {
namespace {

namespace AsyncTask = lumsys::AsyncTask;
using Handles = std::vector<std::unique_ptr<TaskWorkerHandle>>;

TEST(LumThreadPoolTest, RecommendedNumberOfWorkers) {
    struct Case {
        unsigned int threads;
        unsigned int used;
        unsigned int wanted;
        unsigned int expected;
    };
    const Case cases[] = {
        {8, 0, 100, 4}, {8, 0, 3, 3},   {8, 0, 0, 0},   {8, 4, 100, 4},
        {8, 5, 100, 2}, {8, 6, 100, 2}, {8, 7, 100, 1}, {8, 8, 100, 0},
        {8, 9, 100, 0}, {8, 8, 3, 0},   {8, 7, 3, 1},   {8, 0, 4294967295, 4},
        {5, 0, 100, 2}, {2, 1, 100, 1}, {2, 2, 100, 0}, {1, 0, 100, 0},
    };
    for (const Case& c : cases) {
        Initialize(c.threads);
        std::latch gate(1);
        Handles busy;
        for (unsigned int i = 0; i < c.used; ++i) {
            busy.push_back(ScheduleTaskWorker([&] { gate.wait(); }));
        }
        EXPECT_EQ(RecommendedNumberOfWorkers(c.wanted), c.expected)
            << c.wanted << " wanted of " << c.threads << " threads, " << c.used << " in use";
        gate.count_down();
        Wait(std::move(busy));
    }
}

TEST(LumThreadPoolTest, ByDefaultThereIsAThreadForEachProcessor) {
    Initialize();
    EXPECT_EQ(lumsys::TThreadPool::GetNumberOfThreads(),
              std::max(1u, std::thread::hardware_concurrency()));
}

TEST(LumThreadPoolTest, WaitsForAllAndConsumesTheHandles) {
    Initialize(3);
    Wait({});
    std::atomic<int> sum{0};
    Handles handles;
    for (int i = 1; i <= 100; ++i) {
        handles.push_back(ScheduleTaskWorker([&sum, i] { sum += i; }));
    }
    Wait(std::move(handles));
    EXPECT_TRUE(handles.empty());  // NOLINT(bugprone-use-after-move): that it is empty is told.
    EXPECT_EQ(sum, 5050);
}

/// Schedules the workers and waits for them.
void RunWorkers(std::initializer_list<std::function<void()>> workers) {
    Handles handles;
    for (const auto& worker : workers) {
        handles.push_back(ScheduleTaskWorker(worker));
    }
    Wait(std::move(handles));
}

// The later one of the list fails first in time, and the last one runs on after both.
TEST(LumThreadPoolTest, ThrowsWhatTheFirstOfTheListHasThrown) {
    for (const unsigned int threads : {1u, 3u}) {
        Initialize(threads);
        std::latch hasFailed(threads == 1 ? 0 : 1);
        std::atomic<bool> isOver{false};
        const auto run = [&] {
            RunWorkers({[] {},
                        [&] {
                            hasFailed.wait();
                            throw std::runtime_error("first");
                        },
                        [&] {
                            hasFailed.count_down(threads == 1 ? 0 : 1);
                            throw std::runtime_error("second");
                        },
                        [&] {
                            std::this_thread::yield();
                            isOver = true;
                        }});
        };
        EXPECT_THAT(run, testing::ThrowsMessage<std::runtime_error>("first"));
        EXPECT_TRUE(isOver);
    }
}

TEST(LumThreadPoolTest, AForgottenWorkerRunsAllTheSame) {
    Initialize(1);
    std::atomic<bool> hasRun{false};
    ScheduleTaskWorker([&] { hasRun = true; }).reset();
    RunWorkers({[] {}});
    EXPECT_TRUE(hasRun);
}

TEST(LumThreadPoolTest, AWorkerWaitsForItsOwnBatch) {
    Initialize(1);
    int sum = 0;
    RunWorkers({[&] { RunWorkers({[&] { sum += 1; }, [&] { sum += 10; }, [&] { sum += 100; }}); }});
    EXPECT_EQ(sum, 111);
}

struct ForeignHandle : TaskWorkerHandle {};

std::unique_ptr<TaskWorkerHandle> HandleOf(AsyncTask::Future<void> future) {
    auto handle = std::make_unique<TaskWorkerHandleImpl>();
    handle->SetFuture(std::move(future));
    return handle;
}

// A list of a worker and the handle; in every case the worker has ended before the failure is told.
template <typename Error>
void ExpectFailure(std::unique_ptr<TaskWorkerHandle> handle, unsigned int key) {
    std::atomic<bool> isOver{false};
    Handles handles;
    handles.push_back(std::move(handle));
    handles.push_back(ScheduleTaskWorker([&] {
        std::this_thread::yield();
        isOver = true;
        throw std::runtime_error("not the first");
    }));
    try {
        Wait(std::move(handles));
        ADD_FAILURE() << "did not throw";
    } catch (const Error& error) {
        EXPECT_EQ(error.GetKey(), key);
    }
    EXPECT_TRUE(isOver);
    EXPECT_TRUE(handles.empty());  // NOLINT(bugprone-use-after-move): that it is empty is told.
}

TEST(LumThreadPoolTest, HandlesThatCannotBeWaitedFor) {
    Initialize(2);
    ExpectFailure<AsyncTask::InvalidFutureException>(nullptr, 0xBA363583);
    ExpectFailure<AsyncTask::InvalidFutureException>(std::make_unique<ForeignHandle>(), 0xBA363583);
    ExpectFailure<AsyncTask::InvalidFutureException>(HandleOf({}), 0xBA363583);
    const auto deferred = AsyncTask::Schedule([] {}, AsyncTask::LaunchMode::Deferred);
    ExpectFailure<lumsys::LogicException>(HandleOf(deferred), 0x6618D717);
    EXPECT_TRUE(deferred.Cancel());
    ExpectFailure<AsyncTask::CancelException>(HandleOf(deferred), 0xA0E8E158);
}

}  // namespace
}  // namespace lum::core::LumThreadPool
