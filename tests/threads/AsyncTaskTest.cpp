#include "lumsys/AsyncTask.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/RunTogether.h"
#include "tests/threads/PoolTasks.h"

namespace lumsys::AsyncTask {
namespace {

using lum::test::FailsWithKey;
using lum::test::MakePool;
using lum::test::OnPool;

bool FailsAsInvalid(const std::function<void()>& statement) {
    return FailsWithKey<InvalidFutureException>(0xBA363583, statement);
}

/// The one thread of the pool, kept busy while this lives.
class BusyThread {
public:
    BusyThread() {
        MakePool(1);
        m_future = OnPool([this] {
            m_begun.count_down();
            m_end.wait();
        });
        m_begun.wait();
    }
    ~BusyThread() {
        m_end.count_down();
        m_future.Wait();
    }
    const Future<void>& GetFuture() const { return m_future; }

private:
    std::latch m_begun{1};
    std::latch m_end{1};
    Future<void> m_future;
};

TEST(AsyncTaskTest, EveryCopyHearsHowTheTaskEnded) {
    MakePool(2);
    for (const LaunchMode mode : {LaunchMode::Pool, LaunchMode::Deferred}) {
        const Future<void> fine = Schedule([] {}, mode);
        const Future<void> failed = Schedule([] { throw std::runtime_error("of the task"); }, mode);
        const Future<void> copy = failed;
        fine.Wait();
        failed.Wait();
        fine.CheckForException();
        for (const Future<void>& future : {failed, copy, copy}) {
            EXPECT_TRUE(future.IsReady());
            EXPECT_THAT([&future = future] { future.CheckForException(); },
                        testing::ThrowsMessage<std::runtime_error>("of the task"));
        }
    }
    const Future<void> empty = OnPool(nullptr);
    empty.Wait();
    EXPECT_THROW(empty.CheckForException(), std::bad_function_call);
}

// A waiting thread may free what the function refers to.
TEST(AsyncTaskTest, TheFunctionIsGoneWhenTheFutureIsReady) {
    MakePool(2);
    for (int round = 0; round < 200; ++round) {
        auto held = std::make_shared<int>(round);
        const std::weak_ptr<int> watched = held;
        const Future<void> future = OnPool([held = std::move(held)] { ++*held; });
        future.Wait();
        ASSERT_TRUE(watched.expired());
    }
}

TEST(AsyncTaskTest, ADeferredTaskRunsOnTheThreadThatWaits) {
    std::thread::id ranOn;
    const Future<void> future =
        Schedule([&] { ranOn = std::this_thread::get_id(); }, LaunchMode::Deferred);
    EXPECT_TRUE(future.IsDeferred());
    EXPECT_FALSE(future.IsReady());
    future.Wait();
    EXPECT_EQ(ranOn, std::this_thread::get_id());
    EXPECT_FALSE(future.IsDeferred());
    EXPECT_TRUE(WaitAll({future}, 0));
}

TEST(AsyncTaskTest, AnUnfinishedTaskHasNoOutcome) {
    const BusyThread busy;
    const struct {
        Future<void> future;
        const char* state;
    } cases[] = {
        {Schedule([] {}, LaunchMode::Deferred), "deferred"},
        {OnPool([] {}), "queued"},
        {busy.GetFuture(), "running"},
    };
    for (const auto& [future, state] : cases) {
        EXPECT_TRUE(FailsWithKey<LogicException>(0xB0CF49DE, [&future = future] {
            future.CheckForException();
        })) << state;
        try {
            future.CheckForException();
        } catch (const LogicException& error) {
            const std::string message = error.what();
            EXPECT_TRUE(message.starts_with("Not ready after wait! future=")) << message;
            EXPECT_TRUE(message.ends_with(std::string(" state=") + state + ".")) << message;
            EXPECT_EQ(error.GetInfo().file, "lumsys/main/AsyncTask.cpp");
        }
    }
    cases[1].future.Cancel();
}

TEST(AsyncTaskTest, AFutureWithoutATask) {
    const Future<void> future;
    EXPECT_FALSE(future.IsValid());
    EXPECT_TRUE(FailsAsInvalid([&] { static_cast<void>(future.IsReady()); }));
    EXPECT_TRUE(FailsAsInvalid([&] { static_cast<void>(future.IsDeferred()); }));
    EXPECT_TRUE(FailsAsInvalid([&] { future.Wait(); }));
    EXPECT_TRUE(FailsAsInvalid([&] { future.CheckForException(); }));
    EXPECT_TRUE(FailsAsInvalid([&] { static_cast<void>(future.Cancel()); }));
}

TEST(AsyncTaskTest, OnlyWhatHasNotBegunIsCancelled) {
    bool hasRun = false;
    {
        const BusyThread busy;
        auto held = std::make_shared<int>(0);
        const std::weak_ptr<int> watched = held;
        const Future<void> queued = OnPool([&hasRun, held = std::move(held)] { hasRun = true; });
        const Future<void> deferred = Schedule([&] { hasRun = true; }, LaunchMode::Deferred);
        EXPECT_EQ(TThreadPool::GetThreadPoolUseCount(), 2u);

        EXPECT_FALSE(busy.GetFuture().Cancel());
        for (const Future<void>& future : {queued, deferred}) {
            EXPECT_TRUE(future.Cancel());
            EXPECT_FALSE(future.Cancel());
            EXPECT_TRUE(WaitAll({future}, 0));
            EXPECT_TRUE(
                FailsWithKey<CancelException>(0xA0E8E158, [&] { future.CheckForException(); }));
        }
        EXPECT_TRUE(watched.expired());
        EXPECT_EQ(TThreadPool::GetThreadPoolUseCount(), 1u);
    }
    const Future<void> next = OnPool([] {});  // Behind the cancelled task in the queue.
    next.Wait();
    EXPECT_FALSE(next.Cancel());
    next.CheckForException();
    EXPECT_FALSE(hasRun);
}

TEST(AsyncTaskTest, TimeLimits) {
    MakePool(2);
    EXPECT_TRUE(WaitAll({}, kNoTimeLimit));
    std::latch gate(1);
    const std::vector<Future<void>> futures{OnPool([&] { gate.wait(); }), OnPool([] {})};
    EXPECT_FALSE(WaitAll(futures, 0));
    EXPECT_FALSE(WaitAll(futures, 2));
    const std::jthread opener([&] { gate.count_down(); });
    // More than any clock can tell.
    EXPECT_TRUE(WaitAll(futures, kNoTimeLimit - 1));
}

TEST(AsyncTaskTest, WrongFuturesAreToldWhenTheOthersHaveEnded) {
    MakePool(1);
    const Future<void> deferred = Schedule([] {}, LaunchMode::Deferred);
    for (int round = 0; round < 50; ++round) {
        std::atomic<bool> isOver{false};
        const Future<void> running = OnPool([&] {
            std::this_thread::yield();
            isOver = true;
        });
        if (round % 2 == 0) {
            ASSERT_TRUE(FailsWithKey<LogicException>(0x6618D717, [&] {
                WaitAll({deferred, running}, kNoTimeLimit);
            }));
        } else {
            ASSERT_TRUE(FailsAsInvalid([&] { WaitAll({running, {}, deferred}, kNoTimeLimit); }));
        }
        ASSERT_TRUE(isOver);
    }
    EXPECT_TRUE(deferred.IsDeferred());
}

// Each task waits for the two that it schedules, on fewer threads than there are levels.
void Spread(int levels, std::atomic<int>& leaves) {
    if (levels == 0) {
        ++leaves;
        return;
    }
    const std::vector<Future<void>> futures{OnPool([&, levels] { Spread(levels - 1, leaves); }),
                                            OnPool([&, levels] { Spread(levels - 1, leaves); })};
    if (levels % 2 == 0) {
        WaitAll(futures, kNoTimeLimit);
    } else {
        futures[1].Wait();
        futures[0].Wait();
    }
}

TEST(AsyncTaskTest, TasksWaitForTasksThatTheySchedule) {
    for (const unsigned int threads : {1u, 2u, 3u}) {
        MakePool(threads);
        std::atomic<int> leaves{0};
        OnPool([&] { Spread(8, leaves); }).Wait();
        EXPECT_EQ(leaves, 256);
        EXPECT_EQ(TThreadPool::GetThreadPoolUseCount(), 0u);
    }
}

TEST(AsyncTaskTest, OneThreadKeepsTheOrder) {
    MakePool(1);
    std::vector<int> order;
    std::vector<Future<void>> futures;
    for (int i = 0; i < 100; ++i) {
        futures.push_back(OnPool([&order, i] { order.push_back(i); }));
    }
    WaitAll(futures, kNoTimeLimit);
    EXPECT_EQ(order.size(), 100u);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

// Threads of the host schedule, cancel and wait at once: every task has run or was cancelled, and
// never both.
TEST(AsyncTaskTest, EveryTaskEndsOnce) {
    constexpr std::size_t kTasks = 2000;
    MakePool(3);
    std::vector<std::atomic<int>> runs(kTasks);
    std::vector<Future<void>> futures(kTasks);
    std::atomic<std::size_t> scheduled{0};
    std::atomic<std::size_t> cancelled{0};
    lum::test::RunTogether(3, [&](std::size_t thread) {
        if (thread == 0) {
            for (std::size_t i = 0; i < kTasks; ++i) {
                futures[i] = OnPool([&runs, i] {
                    ++runs[i];
                    if (i % 3 == 0) {
                        throw i;
                    }
                });
                scheduled.store(i + 1, std::memory_order_release);
            }
            return;
        }
        for (std::size_t seen = 0; seen < kTasks;) {
            const std::size_t end = scheduled.load(std::memory_order_acquire);
            for (; seen < end; ++seen) {
                if (thread == 1) {
                    cancelled += futures[seen].Cancel() ? 1 : 0;
                } else {
                    futures[seen].Wait();
                }
            }
        }
    });
    ASSERT_TRUE(WaitAll(futures, 0));
    EXPECT_EQ(TThreadPool::GetThreadPoolUseCount(), 0u);
    std::size_t cancelledHere = 0;
    for (std::size_t i = 0; i < kTasks; ++i) {
        try {
            futures[i].CheckForException();
            EXPECT_EQ(runs[i], 1);
            EXPECT_NE(i % 3, 0u);
        } catch (const CancelException&) {
            EXPECT_EQ(runs[i], 0);
            ++cancelledHere;
        } catch (const std::size_t thrown) {
            EXPECT_EQ(thrown, i);
            EXPECT_EQ(runs[i], 1);
        }
    }
    EXPECT_EQ(cancelledHere, cancelled);
}

}  // namespace
}  // namespace lumsys::AsyncTask
