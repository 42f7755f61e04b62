#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "lumsys/Export.h"
#include "lumsys/LumeraError.h"

namespace lumsys {

struct FutureState;
class TaskState;

/// Tasks and their futures.
///
/// Threads: all operations may run on any number of threads at once; copies of a future belong to
///   their threads, while one future object is not changed on one thread and used on another.
/// Ownership: the futures of a task share its outcome. A task of the pool runs even when all of
///   them are gone, a deferred one does not. What the function holds is destroyed before the
///   futures are ready; what it has thrown lives as long as the last of them.
/// Units: time limits are milliseconds.
/// Errors: the keyed errors named below. What a task throws is kept for CheckForException.
namespace AsyncTask {

/// Where a task runs.
enum class LaunchMode : unsigned int {
    Deferred = 2,  ///< On the thread that first waits for its future alone.
    Pool = 4,      ///< On a thread of TThreadPool.
};

/// The time limit of a wait that has none.
inline constexpr unsigned long long kNoTimeLimit = ~0ull;

/// Kept as the outcome of a task that was cancelled before it began: key 0xA0E8E158 where
/// Future::Cancel did so, 0x87C6E9CC where the pool was over.
class LUM_CORE_API CancelException : public LumeraError {
public:
    explicit CancelException(const LumeraError& error) : LumeraError(error) {}
};

/// A future without a task was asked for something; key 0xBA363583.
class LUM_CORE_API InvalidFutureException : public LumeraError {
public:
    explicit InvalidFutureException(const LumeraError& error) : LumeraError(error) {}
};

template <typename T>
class Future;

/// The end of a task, to come or reached.
template <>
class LUM_CORE_API Future<void> {
public:
    /// A future without a task. It may be copied, assigned to and asked IsValid; all else throws
    /// InvalidFutureException.
    Future() = default;

    bool IsValid() const noexcept { return m_state != nullptr; }
    /// Whether the task has ended, by itself, by an exception or by being cancelled.
    bool IsReady() const;
    /// Whether the task waits for somebody to wait for it.
    bool IsDeferred() const;

    /// Returns when the task has ended. Runs a deferred task here, and on a thread of the pool also
    /// a queued one that no thread has begun, so that tasks may wait for tasks that they schedule
    /// however few threads there are.
    void Wait() const;

    /// Rethrows what the task threw, or CancelException. To be asked after a wait.
    /// Errors: LogicException with key 0xB0CF49DE if the task has not ended.
    void CheckForException() const;

    /// Cancels the task if it has not begun, and says whether it did. The function is destroyed
    /// here.
    bool Cancel() const;

private:
    friend LUM_CORE_API Future<void> Schedule(std::function<void()> function, LaunchMode mode);
    friend LUM_CORE_API bool WaitAll(const std::vector<Future<void>>& futures,
                                     unsigned long long timeLimit);

    explicit Future(std::shared_ptr<FutureState> state) noexcept : m_state(std::move(state)) {}
    TaskState& GetTask() const;

    std::shared_ptr<FutureState> m_state;
};

/// Makes a task of `function`. It can be cancelled until it begins: by Future::Cancel, and by the
/// pool at exit. An empty function fails as its call does, by std::bad_function_call.
/// Cost: two allocations and, on the pool, one short lock; a sleeping thread is woken. Makes the
/// pool if there is none.
/// Errors: std::bad_alloc, and those of TThreadPool::Get; nothing was scheduled then.
LUM_CORE_API Future<void> Schedule(std::function<void()> function, LaunchMode mode);

/// Waits until all tasks have ended, or `timeLimit` milliseconds have passed; says whether all have
/// ended. What they threw stays with them. Without a time limit, a thread of the pool runs those
/// tasks itself that no thread has begun.
///
/// Cost: O(futures). The last is waited for first: it mostly ends last, and then the thread is
/// woken once, not once a task.
/// Errors: InvalidFutureException if a future has no task; LogicException with key 0x6618D717 if one
/// is deferred. Both come after the wait for the others, since tasks may use what the caller's
/// frame holds.
LUM_CORE_API bool WaitAll(const std::vector<Future<void>>& futures, unsigned long long timeLimit);

}  // namespace AsyncTask
}  // namespace lumsys
