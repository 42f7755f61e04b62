#pragma once

#include "lum/core/utility/LumThreadPool.h"
#include "lumsys/AsyncTask.h"

namespace lum::core::LumThreadPool {

/// The one kind of handle there is.
class TaskWorkerHandleImpl final : public TaskWorkerHandle {
public:
    const lumsys::AsyncTask::Future<void>& GetFuture() const { return m_future; }
    void SetFuture(lumsys::AsyncTask::Future<void> future) { m_future = std::move(future); }

private:
    lumsys::AsyncTask::Future<void> m_future;
};

}  // namespace lum::core::LumThreadPool
