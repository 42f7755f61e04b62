#include "lum/core/utility/LumThreadPool.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "core/main/utility/InternTable.h"
#include "core/main/utility/TaskWorkerHandleImpl.h"
#include "lumsys/TThreadPool.h"

namespace lum::core::LumThreadPool {

namespace AsyncTask = lumsys::AsyncTask;
using lumsys::TThreadPool;

TaskWorkerHandle::~TaskWorkerHandle() = default;

void Initialize(unsigned int threads) {
    // The registry of types and names has to stand before the pool, so that at exit it falls after
    // it: the tasks that are waited for may still use both.
    GetInternTable();
    TThreadPool::Configure(threads, {}, {}, {});
    TThreadPool::Get();
}

void Initialize() {
    Initialize(std::thread::hardware_concurrency());
}

unsigned int RecommendedNumberOfWorkers(unsigned int wanted) {
    const unsigned int total = TThreadPool::GetNumberOfThreads();
    const unsigned int used = TThreadPool::GetThreadPoolUseCount();
    const unsigned int workers = std::min(total / 2, wanted);
    for (const unsigned int share : {workers, workers / 2, workers / 4}) {
        if (share + used <= total) {
            return share;
        }
    }
    return 0;
}

std::unique_ptr<TaskWorkerHandle> ScheduleTaskWorker(std::function<void()> task) {
    // The handle comes first: if there is no memory for it, nothing must have been scheduled.
    auto handle = std::make_unique<TaskWorkerHandleImpl>();
    handle->SetFuture(AsyncTask::Schedule(std::move(task), AsyncTask::LaunchMode::Pool));
    return handle;
}

void Wait(std::vector<std::unique_ptr<TaskWorkerHandle>>&& handles) {
    std::vector<AsyncTask::Future<void>> futures;
    futures.reserve(handles.size());
    for (const std::unique_ptr<TaskWorkerHandle>& handle : handles) {
        const auto* const own = dynamic_cast<const TaskWorkerHandleImpl*>(handle.get());
        futures.push_back(own != nullptr ? own->GetFuture() : AsyncTask::Future<void>());
    }
    handles.clear();
    AsyncTask::WaitAll(futures, AsyncTask::kNoTimeLimit);
    for (const AsyncTask::Future<void>& future : futures) {
        future.CheckForException();
    }
}

}  // namespace lum::core::LumThreadPool
