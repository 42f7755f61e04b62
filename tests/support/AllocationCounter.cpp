#include "tests/support/AllocationCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> g_count{0};

}  // namespace

// The library's own sorts ask for their buffers this way.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    g_count.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size != 0 ? size : 1);
}

void* operator new(std::size_t size) {
    g_count.fetch_add(1, std::memory_order_relaxed);
    if (void* const memory = std::malloc(size != 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace lum::test {

AllocationCounter::AllocationCounter() : m_start(g_count.load()) {}

std::size_t AllocationCounter::GetCount() const {
    return g_count.load() - m_start;
}

}  // namespace lum::test
