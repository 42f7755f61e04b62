#include "lumsys/main/TaskPool.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "lumsys/main/TaskState.h"

namespace lumsys {

thread_local const TaskPool::Crew* TaskPool::g_crewOfThread = nullptr;

/// Its place among the statics is what orders the end of the pool against theirs.
struct TaskPool::EndAtExit {
    EndAtExit() = default;
    EndAtExit(const EndAtExit&) = delete;
    EndAtExit& operator=(const EndAtExit&) = delete;
    ~EndAtExit() { Instance().ShutDown(); }
};

TaskPool::TaskPool() : m_settings{std::max(1u, std::thread::hardware_concurrency()), {}, {}, {}} {}

TaskPool& TaskPool::Instance() {
    static TaskPool& s_pool = *new TaskPool;
    return s_pool;
}

bool TaskPool::IsPoolThread() noexcept {
    return g_crewOfThread != nullptr;
}

void TaskPool::ReportFailure(const std::exception_ptr& exception) {
    if (g_crewOfThread != nullptr && g_crewOfThread->settings.taskFailed) {
        g_crewOfThread->settings.taskFailed(exception);
    }
}

void TaskPool::SetSettings(unsigned int threads, ThreadHook&& threadStarted,
                           ThreadHook&& threadEnding, FailureHook&& taskFailed) {
    if (IsPoolThread()) {
        throw std::logic_error("a task cannot configure the thread pool that runs it");
    }
    Settings settings{std::max(1u, threads), std::move(threadStarted), std::move(threadEnding),
                      std::move(taskFailed)};
    std::unique_ptr<Crew> crew;  // As the settings, it dies behind the lock: hooks are the host's.
    const std::lock_guard guard(m_setupMutex);
    const bool isSame =
        settings.threads == m_settings.threads && !settings.HasHooks() && !m_settings.HasHooks();
    const bool isRunning = GetThreadCount() != 0;
    if (isRunning && !isSame) {
        // The new threads come first: what an old one still runs may need a task of the queue.
        crew = MakeCrew(settings);
        m_threadCount.store(settings.threads, std::memory_order_relaxed);
        std::swap(m_crew, crew);
        Retire(*crew);
    }
    std::swap(m_settings, settings);
}

void TaskPool::Start() {
    if (m_hasStarted.load(std::memory_order_acquire)) {
        return;
    }
    const std::lock_guard guard(m_setupMutex);
    if (m_crew != nullptr) {
        return;
    }
    m_crew = MakeCrew(m_settings);
    static const EndAtExit s_endAtExit;
    m_threadCount.store(m_settings.threads, std::memory_order_relaxed);
    m_hasStarted.store(true, std::memory_order_release);
}

std::unique_ptr<TaskPool::Crew> TaskPool::MakeCrew(const Settings& settings) {
    auto crew = std::make_unique<Crew>();
    crew->settings = settings;
    crew->threads.reserve(settings.threads);
    // Threads that have started have to be ended again where a later one is refused.
    try {
        while (crew->threads.size() < settings.threads) {
            crew->threads.emplace_back([this, &own = *crew] { RunWorker(own); });
        }
    } catch (...) {
        Retire(*crew);
        throw;
    }
    return crew;
}

void TaskPool::Retire(Crew& crew) {
    {
        const std::lock_guard guard(m_queueMutex);
        crew.isRetired = true;
    }
    // The other crew is woken as well: a thread that retires now may have been woken for a task,
    // which it leaves to them.
    m_wakeUp.notify_all();
    for (std::thread& thread : crew.threads) {
        // A task that calls exit() gets here on its own thread.
        if (thread.get_id() == std::this_thread::get_id()) {
            thread.detach();
        } else {
            thread.join();
        }
    }
}

void TaskPool::ShutDown() {
    std::shared_ptr<TaskState> abandoned;
    {
        const std::lock_guard guard(m_queueMutex);
        m_isClosed = true;
        abandoned = std::move(m_first);
        m_last = nullptr;
    }
    // One by one, since a chain that frees itself would go as deep as it is long.
    while (abandoned != nullptr) {
        std::shared_ptr<TaskState> next = std::move(abandoned->m_next);
        abandoned->TryCancel(0x87C6E9CC, L"LumeraException_AutoGen_0x87C6E9CC");
        abandoned = std::move(next);
    }
    const std::lock_guard guard(m_setupMutex);
    m_threadCount.store(0, std::memory_order_relaxed);
    Retire(*m_crew);
}

void TaskPool::Submit(std::shared_ptr<TaskState> task) noexcept {
    m_useCount.fetch_add(1, std::memory_order_relaxed);
    {
        const std::lock_guard guard(m_queueMutex);
        if (!m_isClosed) {
            TaskState* const added = task.get();
            (m_last == nullptr ? m_first : m_last->m_next).swap(task);
            m_last = added;
        }
    }
    if (task != nullptr) {
        task->TryCancel(0x87C6E9CC, L"LumeraException_AutoGen_0x87C6E9CC");
        return;
    }
    m_wakeUp.notify_one();
}

std::shared_ptr<TaskState> TaskPool::TakeFirst() noexcept {
    std::shared_ptr<TaskState> task = std::move(m_first);
    m_first = std::move(task->m_next);
    if (m_first == nullptr) {
        m_last = nullptr;
    }
    return task;
}

void TaskPool::RunWorker(const Crew& crew) noexcept {
    g_crewOfThread = &crew;
    if (crew.settings.threadStarted) {
        crew.settings.threadStarted();
    }
    std::unique_lock lock(m_queueMutex);
    while (true) {
        m_wakeUp.wait(lock, [&] { return crew.isRetired || m_first != nullptr; });
        if (crew.isRetired) {
            break;
        }
        std::shared_ptr<TaskState> task = TakeFirst();
        lock.unlock();
        task->TryRun();
        task.reset();
        lock.lock();
    }
    lock.unlock();
    if (crew.settings.threadEnding) {
        crew.settings.threadEnding();
    }
}

void TThreadPool::Configure(unsigned int threads, ThreadHook threadStarted, ThreadHook threadEnding,
                            FailureHook taskFailed) {
    TaskPool::Instance().SetSettings(threads, std::move(threadStarted), std::move(threadEnding),
                                     std::move(taskFailed));
}

TThreadPool& TThreadPool::Get() {
    TaskPool& pool = TaskPool::Instance();
    pool.Start();
    return pool;
}

unsigned int TThreadPool::GetNumberOfThreads() noexcept {
    return TaskPool::Instance().GetThreadCount();
}

unsigned int TThreadPool::GetThreadPoolUseCount() noexcept {
    return TaskPool::Instance().GetUseCount();
}

}  // namespace lumsys
