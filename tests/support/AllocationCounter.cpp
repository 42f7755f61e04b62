#include "tests/support/AllocationCounter.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> g_count{0};
std::atomic<std::size_t> g_bytes{0};
std::atomic<std::size_t> g_peakBytes{0};

void* Count(void* memory) noexcept {
    g_count.fetch_add(1, std::memory_order_relaxed);
    const std::size_t added = malloc_usable_size(memory);
    const std::size_t bytes = g_bytes.fetch_add(added, std::memory_order_relaxed) + added;
    std::size_t peak = g_peakBytes.load(std::memory_order_relaxed);
    while (bytes > peak && !g_peakBytes.compare_exchange_weak(peak, bytes)) {
    }
    return memory;
}

void* Require(void* memory) {
    return memory != nullptr ? memory : throw std::bad_alloc();
}

void Free(void* memory) noexcept {
    g_bytes.fetch_sub(malloc_usable_size(memory), std::memory_order_relaxed);
    std::free(memory);
}

}  // namespace

// The library's own sorts ask for their buffers this way.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Count(std::malloc(size));
}
void* operator new(std::size_t size) {
    return Require(Count(std::malloc(size)));
}
// The blocks of rows.
void* operator new(std::size_t size, std::align_val_t alignment) {
    const auto bytes = static_cast<std::size_t>(alignment);
    return Require(Count(std::aligned_alloc(bytes, (size + bytes - 1) / bytes * bytes)));
}
void operator delete(void* memory) noexcept {
    Free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    Free(memory);
}
void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept {
    Free(memory);
}
void operator delete(void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
    Free(memory);
}

namespace lum::test {

AllocationCounter::AllocationCounter() : m_start(g_count.load()) {}

std::size_t AllocationCounter::GetCount() const {
    return g_count.load() - m_start;
}

PeakMemory::PeakMemory() : m_start(g_bytes.load()) {
    g_peakBytes = m_start;
}

std::size_t PeakMemory::GetBytes() const {
    return g_peakBytes.load() - m_start;
}

}  // namespace lum::test
