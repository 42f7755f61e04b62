#include "lumsys/TThreadPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <latch>
#include <stdexcept>
#include <thread>
#include <vector>

#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/utility/LumThreadPool.h"
#include "lum/core/utility/RInternString.h"
#include "lumsys/AsyncTask.h"
#include "tests/support/RunTogether.h"
#include "tests/threads/PoolTasks.h"

namespace lumsys {
namespace {

using AsyncTask::Future;
using AsyncTask::kNoTimeLimit;

using lum::test::MakePool;
using lum::test::OnPool;

TEST(ThreadPoolTest, AsManyTasksRunAtOnceAsThereAreThreads) {
    for (const unsigned int threads : {1u, 5u, 16u, 2u, 0u}) {
        const unsigned int expected = threads == 0 ? 1 : threads;
        MakePool(threads);
        EXPECT_EQ(TThreadPool::GetNumberOfThreads(), expected);
        std::latch allRun(static_cast<std::ptrdiff_t>(expected));
        std::vector<Future<void>> futures;
        for (unsigned int i = 0; i < expected; ++i) {
            futures.push_back(OnPool([&] { allRun.arrive_and_wait(); }));
        }
        AsyncTask::WaitAll(futures, kNoTimeLimit);
        EXPECT_EQ(TThreadPool::GetThreadPoolUseCount(), 0u);
    }
}

// The old thread runs a task until one of the queue has run, which only a new thread can do.
TEST(ThreadPoolTest, NewThreadsTakeOverTheQueue) {
    MakePool(1);
    std::latch begun(1);
    std::latch gate(1);
    std::vector<Future<void>> futures{OnPool([&] {
        begun.count_down();
        gate.wait();
    })};
    futures.push_back(OnPool([&] { gate.count_down(); }));
    begun.wait();
    EXPECT_EQ(TThreadPool::GetThreadPoolUseCount(), 2u);
    MakePool(2);
    EXPECT_EQ(TThreadPool::GetNumberOfThreads(), 2u);
    EXPECT_TRUE(futures[0].IsReady());
    AsyncTask::WaitAll(futures, kNoTimeLimit);
}

TEST(ThreadPoolTest, NoTaskIsLostWhileThreadsAreReplaced) {
    // A call that goes to a thread that is about to leave; no later one would make up for it.
    for (unsigned int round = 0; round < 100; ++round) {
        MakePool(1);
        lum::test::RunTogether(2, [](std::size_t thread) {
            if (thread == 0) {
                MakePool(2);
            } else {
                OnPool([] {}).Wait();
            }
        });
    }

    constexpr int kTasks = 3000;
    std::atomic<int> runs{0};
    std::atomic<bool> isOver{false};
    MakePool(1);
    lum::test::RunTogether(2, [&](std::size_t thread) {
        if (thread == 0) {
            for (unsigned int i = 0; !isOver; ++i) {
                MakePool(1 + i % 3);
            }
            return;
        }
        for (int i = 0; i < kTasks; ++i) {
            OnPool([&] { ++runs; }).Wait();
        }
        isOver = true;
    });
    EXPECT_EQ(runs, kTasks);
    EXPECT_EQ(TThreadPool::GetThreadPoolUseCount(), 0u);
}

TEST(ThreadPoolTest, ATaskDoesNotConfigureItsPool) {
    MakePool(2);
    const Future<void> future = OnPool([] { MakePool(3); });
    future.Wait();
    EXPECT_THROW(future.CheckForException(), std::logic_error);
    EXPECT_EQ(TThreadPool::GetNumberOfThreads(), 2u);
}

TEST(ThreadPoolTest, HooksHearOfThreadsAndFailures) {
    std::atomic<int> started{0};
    std::atomic<int> ended{0};
    std::atomic<int> sum{0};
    TThreadPool::Configure(
        3, [&] { ++started; }, [&] { ++ended; },
        [&](const std::exception_ptr& exception) {
            try {
                std::rethrow_exception(exception);
            } catch (const int thrown) {
                sum += thrown;
            }
        });
    TThreadPool::Get();
    std::vector<Future<void>> futures;
    for (int i = 1; i <= 10; ++i) {
        futures.push_back(OnPool([i] { throw i; }));
    }
    AsyncTask::WaitAll(futures, kNoTimeLimit);
    EXPECT_EQ(sum, 55);
    EXPECT_EQ(ended, 0);
    MakePool(3);  // As many, but without hooks.
    EXPECT_EQ(started, 3);
    EXPECT_EQ(ended, 3);
    OnPool([] { throw 1; }).Wait();
    EXPECT_EQ(sum, 55);
}

// What the end of a process has to look like, told by statics that stand around the pool: they are
// destroyed in the opposite order.
std::atomic<bool> g_isExiting{false};
std::atomic<bool> g_hasRunningEnded{false};
std::atomic<bool> g_hasQueuedRun{false};

bool WasCancelled(const Future<void>& future) {
    return lum::test::FailsWithKey<AsyncTask::CancelException>(0x87C6E9CC,
                                                               [&] { future.CheckForException(); });
}

struct MadeBeforeThePool {
    Future<void> queued;

    ~MadeBeforeThePool() {
        const Future<void> late = OnPool([] { g_hasQueuedRun = true; });
        const bool isFine = g_hasRunningEnded && !g_hasQueuedRun && WasCancelled(queued) &&
                            WasCancelled(late) && TThreadPool::GetNumberOfThreads() == 0 &&
                            TThreadPool::GetThreadPoolUseCount() == 0;
        std::_Exit(isFine ? 0 : 1);
    }
};

struct MadeAfterThePool {
    ~MadeAfterThePool() { g_isExiting = true; }
};

void ExitWhileTasksRun() {
    static MadeBeforeThePool s_before;
    if (TThreadPool::GetNumberOfThreads() != 0 ||
        lum::core::LumThreadPool::RecommendedNumberOfWorkers(8) != 0) {
        std::_Exit(2);
    }
    lum::core::LumThreadPool::Initialize(1);
    static MadeAfterThePool s_after;
    std::latch begun(1);
    OnPool([&] {
        begun.count_down();
        while (!g_isExiting) {
            std::this_thread::yield();
        }
        // The pool is waited for while types and names still stand.
        using lum::core::ArrayType;
        const lum::core::Type* type = lum::core::IntType::Get32();
        for (int i = 0; i < 100; ++i) {
            type = ArrayType::Get(type);
            lum::core::RInternString(TStringCore::number(i) + L", interned while exiting");
        }
        g_hasRunningEnded = true;
    });
    begun.wait();
    s_before.queued = OnPool([] { g_hasQueuedRun = true; });
    std::exit(3);
}

TEST(ThreadPoolDeathTest, AtExitRunningTasksAreWaitedForAndOthersCancelled) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(ExitWhileTasksRun(), testing::ExitedWithCode(0), "");
}

TEST(ThreadPoolDeathTest, ATaskMayEndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            MakePool(2);
            OnPool([] { std::exit(0); }).Wait();
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace lumsys
