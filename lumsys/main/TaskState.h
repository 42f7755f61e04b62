#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "lumsys/AsyncTask.h"

namespace lumsys {

class TaskState;

/// What the futures of a task share: the task, and when that is Ready, the exception it ended by.
///
/// The exception belongs to the futures alone: a thread that ran the task never destroys it once it
/// can be rethrown, so handlers on other threads may look at it without regard to that thread.
struct FutureState {
    std::shared_ptr<TaskState> task;
    std::exception_ptr exception;
};

/// A task: its function until it has run, and how far it has got.
///
/// Whoever moves the phase away from Deferred or Queued owns the task until it is Ready: a thread
/// of the pool, a waiting thread that runs it itself, or one that cancels it. A queued task that
/// was begun elsewhere stays in the queue, where its turn then does nothing.
class TaskState {
public:
    enum class Phase : unsigned char { Deferred, Queued, Running, Ready };
    using Deadline = std::optional<std::chrono::steady_clock::time_point>;

    TaskState(std::function<void()>&& function, AsyncTask::LaunchMode mode) noexcept;
    /// A new task with what its futures share.
    static std::shared_ptr<FutureState> Make(std::function<void()>&& function,
                                             AsyncTask::LaunchMode mode);
    TaskState(const TaskState&) = delete;
    TaskState& operator=(const TaskState&) = delete;

    Phase GetPhase() const noexcept { return m_phase.load(std::memory_order_acquire); }
    bool IsReady() const noexcept { return GetPhase() == Phase::Ready; }

    /// Runs the task on this thread if nobody has begun it.
    void TryRun() noexcept;
    /// Ends the task with CancelException if nobody has begun it.
    bool TryCancel(unsigned int key, const wchar_t* name) noexcept;

    /// Whether the task has ended when this returns; without a deadline it has.
    bool WaitUntil(const Deadline& deadline);

private:
    friend class TaskPool;

    bool Claim() noexcept;
    void Finish(std::exception_ptr exception) noexcept;

    std::atomic<Phase> m_phase;
    const bool m_isPooled;
    std::function<void()> m_function;     // The owner's, by phase.
    std::weak_ptr<FutureState> m_future;  // Where the owner leaves the exception.
    std::mutex m_mutex;                   // Under which the phase becomes Ready.
    std::condition_variable m_ready;
    std::shared_ptr<TaskState> m_next;  // In the queue; guarded by the pool's m_queueMutex.
};

}  // namespace lumsys
