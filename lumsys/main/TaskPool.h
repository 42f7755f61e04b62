#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "lumsys/TThreadPool.h"

namespace lumsys {

class TaskState;

/// What stands behind TThreadPool: a queue, and a crew of threads that empties it.
///
/// The queue outlives its crews, so threads can be replaced at any time. The pool itself is never
/// destroyed: during exit, destructors of the host may still schedule tasks. No lock is held while
/// a task, a hook or a destructor of the host runs on the same thread.
class TaskPool final : public TThreadPool {
public:
    static TaskPool& Instance();
    /// Whether this thread is one of the pool's.
    static bool IsPoolThread() noexcept;
    /// Tells the host, where this thread is one of the pool's, that a task has failed.
    static void ReportFailure(const std::exception_ptr& exception);

    void SetSettings(unsigned int threads, ThreadHook&& threadStarted, ThreadHook&& threadEnding,
                     FailureHook&& taskFailed);
    void Start();

    /// Puts a task behind the others, or cancels it if the pool is over.
    void Submit(std::shared_ptr<TaskState> task) noexcept;
    void NoteTaskEnded() noexcept { m_useCount.fetch_sub(1, std::memory_order_relaxed); }

    unsigned int GetThreadCount() const noexcept {
        return m_threadCount.load(std::memory_order_relaxed);
    }
    unsigned int GetUseCount() const noexcept { return m_useCount.load(std::memory_order_relaxed); }

private:
    struct Settings {
        unsigned int threads;
        ThreadHook threadStarted;
        ThreadHook threadEnding;
        FailureHook taskFailed;

        bool HasHooks() const { return threadStarted || threadEnding || taskFailed; }
    };
    struct Crew {
        Settings settings;
        bool isRetired = false;  // Guarded by m_queueMutex.
        std::vector<std::thread> threads;
    };
    struct EndAtExit;

    TaskPool();

    std::unique_ptr<Crew> MakeCrew(const Settings& settings);
    void Retire(Crew& crew);
    void ShutDown();
    void RunWorker(const Crew& crew) noexcept;
    std::shared_ptr<TaskState> TakeFirst() noexcept;

    /// The crew that this thread belongs to.
    static thread_local const Crew* g_crewOfThread;

    std::mutex m_setupMutex;  // Over the settings and the crew; taken before m_queueMutex.
    Settings m_settings;
    std::unique_ptr<Crew> m_crew;
    std::atomic<bool> m_hasStarted{false};

    std::mutex m_queueMutex;  // Over the queue, and whether it is closed.
    std::condition_variable m_wakeUp;
    std::shared_ptr<TaskState> m_first;
    TaskState* m_last = nullptr;
    bool m_isClosed = false;

    std::atomic<unsigned int> m_threadCount{0};
    std::atomic<unsigned int> m_useCount{0};
};

}  // namespace lumsys
