#pragma once

#include <exception>
#include <functional>

#include "lumsys/Export.h"

namespace lumsys {

/// The pool of threads of the process, on which AsyncTask runs what is scheduled there. Tasks begin
/// in the order in which they were scheduled.
///
/// Threads: all operations may run on any number of threads at once, but Configure, see there.
/// Ownership: the process has one pool, made by the first Get. At exit, tasks that nobody has begun
///   are cancelled and running ones are waited for; this happens before anything is destroyed that
///   was made before the pool, and after what was made later. A task that is scheduled afterwards
///   is cancelled at once.
/// Units: threads and tasks.
/// Errors: std::system_error where the operating system refuses a thread.
class LUM_CORE_API TThreadPool {
public:
    /// Called on a thread of the pool.
    using ThreadHook = std::function<void()>;
    /// Called with the exception that ended a task.
    using FailureHook = std::function<void(const std::exception_ptr&)>;

    TThreadPool(const TThreadPool&) = delete;
    TThreadPool& operator=(const TThreadPool&) = delete;

    /// Sets how many threads the pool has (0 counts as 1) and what it tells the host, each of which
    /// may be empty: that a thread has started, that it is about to end, and that a task has
    /// failed. The last is called on the thread that ran the task, before the task's future is
    /// ready, and hears of the failures that a wait on several tasks drops. Hooks run on several
    /// threads at once; one that throws ends the process.
    ///
    /// Before the pool is made, this costs nothing. Later it replaces the threads, unless nothing
    /// changes: new ones take over the queue, and the call returns when the old ones have finished
    /// the tasks that they were running. No task is lost.
    /// Errors: std::logic_error from a task of the pool, which cannot wait for its own end. Where
    ///   an error is thrown, the pool stays as it was.
    static void Configure(unsigned int threads, ThreadHook threadStarted, ThreadHook threadEnding,
                          FailureHook taskFailed);

    /// The pool, which the first call makes: as configured, or else with a thread for each
    /// processor.
    static TThreadPool& Get();

    /// How many threads the pool has; 0 before it is made, and once it is over.
    static unsigned int GetNumberOfThreads() noexcept;

    /// How many tasks were scheduled on the pool and have not ended, queued ones included. A task
    /// no longer counts when its future is ready.
    static unsigned int GetThreadPoolUseCount() noexcept;

protected:
    TThreadPool() = default;
    ~TThreadPool() = default;
};

}  // namespace lumsys
