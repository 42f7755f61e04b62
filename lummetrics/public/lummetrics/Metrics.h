#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

#include "lumsys/Export.h"

namespace lummetrics {

/// Scopes that a host can observe: how long each took, by name.
///
/// Threads: all operations may run on any number of threads at once; a scope belongs to one thread.
/// Ownership: a scope that is observed keeps the sink alive until it has told it. Names are
///   literals, which nobody owns.
/// Units: times are those of std::chrono::steady_clock.
/// Errors: none. A sink that throws ends the process, since scopes end in destructors.
/// Cost: without a sink a scope costs one load and one branch, and at its end a branch on itself.
namespace Metrics {

using Clock = std::chrono::steady_clock;

/// One scope that has ended.
struct ScopeRecord {
    const char* name;
    Clock::time_point start;
    Clock::time_point end;
};

/// Called at the end of each scope on the thread that the scope ran on, inner scopes before outer
/// ones, with no lock held. What the sink itself calls is not observed.
using Sink = std::function<void(const ScopeRecord&)>;

/// Bits of all kinds of scopes.
inline constexpr unsigned int kAllBits = ~0u;

/// Installs the host's sink for scopes of the kinds in `bits`, and gives back the sink before it;
/// null, or a sink without a function, or no bits end the observation. Scopes that are open then
/// still end at the sink under which they began.
LUM_CORE_API std::shared_ptr<const Sink> SetSink(std::shared_ptr<const Sink> sink,
                                                 unsigned int bits = kAllBits);

namespace detail {

/// The bits that the installed sink asks for; 0 without a sink.
extern LUM_CORE_API std::atomic<unsigned int> g_bits;

/// Whether this thread is inside a call of a sink.
LUM_CORE_API bool IsInSink() noexcept;

}  // namespace detail

/// Whether a scope of one of the kinds in `bits` would be observed: a sink asks for it, and this
/// thread is not inside a call of the sink.
inline bool TestBitsAndContext(unsigned int bits) noexcept {
    return (detail::g_bits.load(std::memory_order_relaxed) & bits) != 0 && !detail::IsInSink();
}

/// Tells the sink its name and how long it lived. The name has to be a literal.
///
/// This form is observed by a sink of any bits; what is guarded by bits of the library opens it as
/// MetricsFilter::OpenScope does.
class Scope {
public:
    /// A scope that nobody observes.
    Scope() noexcept {}
    explicit Scope(const char* name) {
        if (detail::g_bits.load(std::memory_order_relaxed) != 0) {
            Open(name);
        }
    }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    ~Scope() {
        if (m_name != nullptr) {
            Close();
        }
    }

private:
    LUM_CORE_API void Open(const char* name);
    LUM_CORE_API void Close() noexcept;

    struct Observation {
        std::shared_ptr<const Sink> sink;
        Clock::time_point start;
    };

    // In a union, so that a scope without a name neither makes nor destroys one.
    union {
        Observation m_observation;
    };
    const char* m_name = nullptr;  // Null where the scope is not observed.
};

}  // namespace Metrics
}  // namespace lummetrics
