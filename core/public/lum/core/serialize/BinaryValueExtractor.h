#pragma once

#include <memory>

#include "lum/core/Export.h"
#include "lum/core/store/ArrayView.h"

namespace lum::core {

class BinaryBufferReader;

/// Reads back what a BinaryValuePacker packed.
///
/// Threads: an extractor belongs to one thread at a time.
/// Ownership: none of the bytes, which have to outlive it.
/// Errors: LumRuntimeException with the code named at the operation, reported.
class LUM_CORE_API BinaryValueExtractor {
public:
    /// Errors: OutOfRange, plain, from 2^32 bytes on.
    explicit BinaryValueExtractor(const ArrayView<const unsigned char>& bytes);
    BinaryValueExtractor(BinaryValueExtractor&& other) noexcept;
    BinaryValueExtractor& operator=(BinaryValueExtractor&& other) noexcept;
    ~BinaryValueExtractor();

    /// Errors: BufferReadOutOfBounds where fewer than four bytes are left.
    float ReadReal32();
    bool IsEndOfBuffer() const;

private:
    std::unique_ptr<BinaryBufferReader> m_reader;
};

}  // namespace lum::core
