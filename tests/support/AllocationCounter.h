#pragma once

#include <cstddef>

namespace lum::test {

/// Counts the calls of operator new, on all threads, from its construction on. A program that uses
/// it gets the counting operators in place of the standard ones.
class AllocationCounter {
public:
    AllocationCounter();
    std::size_t GetCount() const;

private:
    std::size_t m_start;
};

/// The most bytes that stood allocated by operator new, on all threads, beyond those that stood
/// when it was made: as the heap counts them, what it adds to each block included. One at a time.
class PeakMemory {
public:
    PeakMemory();
    std::size_t GetBytes() const;

private:
    std::size_t m_start;
};

}  // namespace lum::test
