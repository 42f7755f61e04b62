#include "lummetrics/Metrics.h"

#include <mutex>
#include <new>
#include <utility>

namespace lummetrics::Metrics {
namespace {

thread_local bool g_isInSink = false;

struct Installed {
    std::mutex mutex;
    std::shared_ptr<const Sink> sink;  // Guarded by mutex, as are changes of g_bits.
};

/// Never destroyed: scopes may end while the process does.
Installed& GetInstalled() {
    static Installed& s_installed = *new Installed;
    return s_installed;
}

}  // namespace

namespace detail {

constinit std::atomic<unsigned int> g_bits{0};

bool IsInSink() noexcept {
    return g_isInSink;
}

}  // namespace detail

std::shared_ptr<const Sink> SetSink(std::shared_ptr<const Sink> sink, unsigned int bits) {
    if (sink == nullptr || !*sink || bits == 0) {
        sink = nullptr;
        bits = 0;
    }
    Installed& installed = GetInstalled();
    const std::lock_guard guard(installed.mutex);
    detail::g_bits.store(bits, std::memory_order_relaxed);
    installed.sink.swap(sink);
    return sink;
}

void Scope::Open(const char* name) {
    if (g_isInSink) {
        return;
    }
    std::shared_ptr<const Sink> sink;
    {
        Installed& installed = GetInstalled();
        const std::lock_guard guard(installed.mutex);
        sink = installed.sink;
    }
    if (sink != nullptr) {
        m_name = name;
        ::new (&m_observation) Observation{std::move(sink), Clock::now()};
    }
}

void Scope::Close() noexcept {
    const ScopeRecord record{m_name, m_observation.start, Clock::now()};
    g_isInSink = true;
    (*m_observation.sink)(record);
    g_isInSink = false;
    std::destroy_at(&m_observation);
}

}  // namespace lummetrics::Metrics
