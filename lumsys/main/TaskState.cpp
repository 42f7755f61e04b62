#include "lumsys/main/TaskState.h"

#include <utility>

#include "lumsys/main/TaskPool.h"

namespace lumsys {

TaskState::TaskState(std::function<void()>&& function, AsyncTask::LaunchMode mode) noexcept
    : m_phase(mode == AsyncTask::LaunchMode::Pool ? Phase::Queued : Phase::Deferred),
      m_isPooled(mode == AsyncTask::LaunchMode::Pool),
      m_function(std::move(function)) {}

std::shared_ptr<FutureState> TaskState::Make(std::function<void()>&& function,
                                             AsyncTask::LaunchMode mode) {
    auto future = std::make_shared<FutureState>();
    future->task = std::make_shared<TaskState>(std::move(function), mode);
    future->task->m_future = future;
    return future;
}

bool TaskState::Claim() noexcept {
    Phase expected = m_isPooled ? Phase::Queued : Phase::Deferred;
    return m_phase.compare_exchange_strong(expected, Phase::Running, std::memory_order_acquire,
                                           std::memory_order_relaxed);
}

void TaskState::TryRun() noexcept {
    if (!Claim()) {
        return;
    }
    std::exception_ptr exception;
    // What a task throws is for whoever waits for it.
    try {
        m_function();
    } catch (...) {
        exception = std::current_exception();
    }
    if (exception) {
        TaskPool::ReportFailure(exception);
    }
    Finish(std::move(exception));
}

bool TaskState::TryCancel(unsigned int key, const wchar_t* name) noexcept {
    if (!Claim()) {
        return false;
    }
    std::exception_ptr exception;
    // Thrown and caught, so that a failure to allocate the exception takes its place.
    try {
        throw AsyncTask::CancelException(LumeraError::MakeError(key, name));
    } catch (...) {
        exception = std::current_exception();
    }
    Finish(std::move(exception));
    return true;
}

void TaskState::Finish(std::exception_ptr exception) noexcept {
    m_function = nullptr;
    if (exception) {
        if (const std::shared_ptr<FutureState> future = m_future.lock()) {
            future->exception = std::move(exception);
        }
        exception = nullptr;  // Here, before anybody can rethrow it, where all futures are gone.
    }
    if (m_isPooled) {
        TaskPool::Instance().NoteTaskEnded();
    }
    {
        const std::lock_guard guard(m_mutex);
        m_phase.store(Phase::Ready, std::memory_order_release);
    }
    m_ready.notify_all();
}

bool TaskState::WaitUntil(const Deadline& deadline) {
    if (IsReady()) {
        return true;
    }
    std::unique_lock lock(m_mutex);
    const auto isReady = [this] { return IsReady(); };
    if (deadline) {
        return m_ready.wait_until(lock, *deadline, isReady);
    }
    m_ready.wait(lock, isReady);
    return true;
}

}  // namespace lumsys
