#pragma once

#include <utility>
#include <vector>

#include "MemoryMap.h"
#include "lum/core/store/SharedBuffer.h"

namespace lumhost {

/// A payload in a mapped file. Columns that are read from it are pages of the file, and hold a
/// share of the buffer: it stays mapped as long as any of them lives.
class MappedBuffer final : public lum::core::ISharedArrayBuffer {
public:
    explicit MappedBuffer(MemoryMap map) noexcept : m_map(std::move(map)) {}

    lum::core::ArrayView<const unsigned char> GetView() const override { return m_map.GetBytes(); }

private:
    const MemoryMap m_map;
};

/// A payload in memory, as BinaryProtocolCreator gives it or as it came from a network.
class VectorBuffer final : public lum::core::ISharedArrayBuffer {
public:
    explicit VectorBuffer(std::vector<unsigned char> bytes) noexcept : m_bytes(std::move(bytes)) {}

    lum::core::ArrayView<const unsigned char> GetView() const override { return m_bytes; }

private:
    const std::vector<unsigned char> m_bytes;
};

}  // namespace lumhost
