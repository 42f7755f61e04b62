#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "lum/core/Export.h"

namespace lum::core {

/// Batches of workers on the thread pool of the process.
///
///     const unsigned int count = LumThreadPool::RecommendedNumberOfWorkers(parts.GetCount());
///     std::vector<std::unique_ptr<LumThreadPool::TaskWorkerHandle>> workers(count);
///     for (auto& worker : workers) {
///         worker = LumThreadPool::ScheduleTaskWorker([&] { parts.TakeUntilNoneIsLeft(); });
///     }
///     if (count == 0) {
///         parts.TakeUntilNoneIsLeft();
///     }
///     LumThreadPool::Wait(std::move(workers));
///
/// Threads: after Initialize, all functions may be called from any thread, tasks included.
/// Ownership: the pool belongs to the process and ends with it: at exit, tasks that have not begun
///   are cancelled and running ones are waited for, while types and names still stand. What else a
///   task uses, it uses only until the host leaves main; a host waits for its tasks before.
/// Units: threads and tasks.
/// Errors: the keyed errors of lumsys/AsyncTask.h, never a LumError; std::system_error where the
///   operating system refuses a thread.
namespace LumThreadPool {

/// A worker that was scheduled. Destroying it neither waits for the worker nor stops it.
class LUM_CORE_API TaskWorkerHandle {
public:
    virtual ~TaskWorkerHandle() = 0;
};

/// Makes the pool, with `threads` threads, at least one. A start-up call, behind the host's other
/// ones. A later call changes the number: it returns when the former threads have finished what
/// they were running, and loses no task.
/// Errors: std::logic_error from a task of the pool.
LUM_CORE_API void Initialize(unsigned int threads);
/// As above, with a thread for each processor.
LUM_CORE_API void Initialize();

/// How many of `wanted` workers a batch should take, so that other batches find threads as well: at
/// most half of the threads, and the half or the quarter of that where too many are in use; 0 where
/// the caller had better do the work on its own thread. Nothing is reserved: the answer counts what
/// is scheduled now.
LUM_CORE_API unsigned int RecommendedNumberOfWorkers(unsigned int wanted);

/// Runs `task` on a thread of the pool. What it throws is kept for Wait.
/// Cost: three allocations and one short lock.
LUM_CORE_API std::unique_ptr<TaskWorkerHandle> ScheduleTaskWorker(std::function<void()> task);

/// Waits until all workers have ended, then throws what the first that failed, in order of the
/// list, has thrown; what others have thrown is dropped. The list is consumed. Called by a task,
/// it runs those workers itself that no thread has begun.
///
/// A task must not wait for a worker that, by any detour, waits for that task.
/// Errors: those of the workers; AsyncTask::CancelException for a worker that was cancelled before
///   it began; AsyncTask::InvalidFutureException for a handle that is null or not made here, thrown
///   when the others have ended.
LUM_CORE_API void Wait(std::vector<std::unique_ptr<TaskWorkerHandle>>&& handles);

}  // namespace LumThreadPool
}  // namespace lum::core
