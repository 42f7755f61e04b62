#pragma once

#include <memory>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

class BinaryBufferCreator;

/// Packs reals into bytes, for host values of the host's own kinds: little-endian words of four
/// bytes, which a BinaryValueExtractor reads back.
///
/// Threads: a packer belongs to one thread at a time.
/// Ownership: the packer owns its bytes.
/// Errors: LumRuntimeException with the code named at the operation, reported; the bytes stay as
///   they were.
class LUM_CORE_API BinaryValuePacker {
public:
    BinaryValuePacker();
    /// Reserves `initialSize` bytes.
    explicit BinaryValuePacker(lumsize_t initialSize);
    BinaryValuePacker(BinaryValuePacker&& other) noexcept;
    BinaryValuePacker& operator=(BinaryValuePacker&& other) noexcept;
    ~BinaryValuePacker();

    void Append(float value);
    /// Overwrites the four bytes from `byteIndex` on.
    /// Errors: BufferWriteOutOfBounds where they were not all appended before.
    void SetReal32AtByteIndex(lumsize_t byteIndex, float value);
    /// A copy of the bytes.
    std::vector<unsigned char> GetBytes() const;

private:
    std::unique_ptr<BinaryBufferCreator> m_buffer;
};

}  // namespace lum::core
