#include "lumsys/AsyncTask.h"

#include <chrono>
#include <cstdint>
#include <utility>

#include "lumsys/main/TaskPool.h"
#include "lumsys/main/TaskState.h"

namespace lumsys::AsyncTask {
namespace {

[[noreturn]] void ThrowInvalidFuture() {
    throw InvalidFutureException(
        LumeraError::MakeError(0xBA363583, L"LumeraException_AutoGen_0xBA363583"));
}

const wchar_t* NameOf(TaskState::Phase phase) {
    switch (phase) {
        case TaskState::Phase::Deferred:
            return L"deferred";
        case TaskState::Phase::Queued:
            return L"queued";
        case TaskState::Phase::Running:
            return L"running";
        case TaskState::Phase::Ready:
            return L"ready";
    }
    return L"";
}

[[noreturn]] void ThrowNotReady(const TaskState& task, int line) {
    TStringCore message(L"Not ready after wait! future=");
    message += TStringCore::number(
        static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(&task)), 16);
    message += L" state=";
    message += NameOf(task.GetPhase());
    message += L".";
    ThrowLogicException(__FILE__, line, "IsReady()",
                        LumeraError::MakeError(0xB0CF49DE, L"LogicException_LogicAssert_0xB0CF49DE",
                                               std::move(message)));
}

TaskState::Deadline DeadlineOf(unsigned long long timeLimit) {
    using std::chrono::steady_clock;
    const steady_clock::time_point now = steady_clock::now();
    // A limit that the clock cannot tell is none.
    const auto longest = std::chrono::duration_cast<std::chrono::milliseconds>(
        steady_clock::time_point::max() - now);
    if (timeLimit >= static_cast<unsigned long long>(longest.count())) {
        return std::nullopt;
    }
    return now + std::chrono::milliseconds(timeLimit);
}

}  // namespace

TaskState& Future<void>::GetTask() const {
    if (m_state == nullptr) {
        ThrowInvalidFuture();
    }
    return *m_state->task;
}

bool Future<void>::IsReady() const {
    return GetTask().IsReady();
}

bool Future<void>::IsDeferred() const {
    return GetTask().GetPhase() == TaskState::Phase::Deferred;
}

void Future<void>::Wait() const {
    TaskState& task = GetTask();
    if (IsDeferred() || TaskPool::IsPoolThread()) {
        task.TryRun();
    }
    task.WaitUntil(std::nullopt);
}

void Future<void>::CheckForException() const {
    const TaskState& task = GetTask();
    if (!task.IsReady()) {
        ThrowNotReady(task, __LINE__);
    }
    if (m_state->exception) {
        std::rethrow_exception(m_state->exception);
    }
}

bool Future<void>::Cancel() const {
    return GetTask().TryCancel(0xA0E8E158, L"LumeraException_AutoGen_0xA0E8E158");
}

Future<void> Schedule(std::function<void()> function, LaunchMode mode) {
    std::shared_ptr<FutureState> state = TaskState::Make(std::move(function), mode);
    if (mode == LaunchMode::Pool) {
        TThreadPool::Get();
        TaskPool::Instance().Submit(state->task);
    }
    return Future<void>(std::move(state));
}

bool WaitAll(const std::vector<Future<void>>& futures, unsigned long long timeLimit) {
    const TaskState::Deadline deadline = DeadlineOf(timeLimit);
    if (!deadline && TaskPool::IsPoolThread()) {
        for (const Future<void>& future : futures) {
            if (future.IsValid() && !future.IsDeferred()) {
                future.m_state->task->TryRun();
            }
        }
    }
    bool anyInvalid = false;
    bool anyDeferred = false;
    bool areReady = true;
    for (auto future = futures.rbegin(); future != futures.rend(); ++future) {
        if (!future->IsValid()) {
            anyInvalid = true;
        } else if (future->IsDeferred()) {
            anyDeferred = true;
        } else {
            areReady = future->m_state->task->WaitUntil(deadline) && areReady;
        }
    }
    if (anyInvalid) {
        ThrowInvalidFuture();
    }
    if (anyDeferred) {
        ThrowLogicException(
            __FILE__, __LINE__, "!anyDeferred || 0 == futures.size()",
            LumeraError::MakeError(0x6618D717, L"LogicException_LogicAssert_0x6618D717"));
    }
    return areReady;
}

}  // namespace lumsys::AsyncTask
