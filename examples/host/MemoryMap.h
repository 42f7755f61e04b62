#pragma once

#include <cstddef>
#include <string>

#include "lum/core/store/ArrayView.h"

namespace lumhost {

/// A file that stands in memory, read-only, page by page as it is touched.
///
/// Threads: the bytes may be read on any threads at once.
/// Ownership: the mapping is undone with the object; moving it leaves an empty one. The file may be
///   deleted or replaced meanwhile, but must not be written or cut: bytes would change, and reading
///   beyond the new end ends the program.
class MemoryMap {
public:
    /// Maps the regular file at `path`. Errors: FileError where there is none, it cannot be read,
    /// or has no bytes, of which no memory can be made.
    static MemoryMap Open(const std::string& path);

    ~MemoryMap();
    MemoryMap(MemoryMap&& other) noexcept;

    lum::core::ArrayView<const unsigned char> GetBytes() const noexcept {
        return {static_cast<const unsigned char*>(m_address), m_size};
    }

private:
    MemoryMap(void* address, std::size_t size) noexcept : m_address(address), m_size(size) {}

    void* m_address;
    std::size_t m_size;
};

}  // namespace lumhost
