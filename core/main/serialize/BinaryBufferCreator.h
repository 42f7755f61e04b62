#pragma once

#include <bit>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "lum/core/store/ArrayView.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

// Positions and lengths in a buffer of the binary form.
using buffersize_t = lumsize_t;

// Words go to the wire and come from it as they stand in memory.
static_assert(std::endian::native == std::endian::little);

// A vector of bytes that neither clears what it grows by nor, where the system can remap pages,
// copies what it holds: payloads reach gigabytes.
class ByteVector {
public:
    bool empty() const noexcept { return m_size == 0; }
    uint64 size() const noexcept { return m_size; }
    const unsigned char* data() const noexcept { return m_bytes.get(); }
    const unsigned char* begin() const noexcept { return data(); }
    const unsigned char* end() const noexcept { return data() + m_size; }
    unsigned char* data() noexcept { return m_bytes.get(); }

    void reserve(uint64 capacity) {
        if (capacity > m_capacity) {
            Reallocate(capacity);
        }
    }
    // `count` more bytes, which the caller fills.
    unsigned char* Extend(uint64 count) {
        if (count > m_capacity - m_size) {
            Reallocate(m_size + count > 2 * m_capacity ? m_size + count : 2 * m_capacity);
        }
        unsigned char* const room = m_bytes.get() + m_size;
        m_size += count;
        return room;
    }

    // Takes back the last `count` bytes.
    void Shrink(uint64 count) noexcept { m_size -= count; }

private:
    struct Free {
        void operator()(unsigned char* bytes) const noexcept { std::free(bytes); }
    };

    void Reallocate(uint64 capacity);

    std::unique_ptr<unsigned char, Free> m_bytes;
    uint64 m_size = 0;
    uint64 m_capacity = 0;
};

// A growing block of bytes with words at multiples of their size.
//
// Threads: one at a time.
// Errors: LumRuntimeException with the code named, reported; the bytes stay as they were.
class BinaryBufferCreator {
public:
    BinaryBufferCreator() : BinaryBufferCreator(kDefaultSize) {}
    explicit BinaryBufferCreator(buffersize_t initialSize) { m_buffer.reserve(initialSize); }

    // Pads with zeros to a multiple of `wordSize`. Errors: InvalidWordSize outside 1 to 8.
    void Align(unsigned char wordSize);
    // Aligns and appends. Zero bytes do nothing at all: they do not even align.
    void AppendBytes(const void* data, buffersize_t count, unsigned char wordSize);
    // The same for a count that was multiplied from a 32-bit one.
    void AppendLongBytes(const void* data, uint64 count, unsigned char wordSize);

    void Append(unsigned char value) { AppendWord(value); }
    void Append(signed char value) { AppendWord(value); }
    void Append(unsigned short value) { AppendWord(value); }
    void Append(int value) { AppendWord(value); }
    void Append(unsigned int value) { AppendWord(value); }
    void Append(float value) { AppendWord(value); }
    void Append(double value) { AppendWord(value); }
    void Append(uint64 value) { AppendWord(value); }
    void Append(int64 value) { AppendWord(value); }
    // Nothing converts on the way to the wire.
    template <typename T>
    void Append(T) = delete;

    // The text as UTF-8, with neither its length nor a terminator.
    void AppendString(const TStringCore& text);
    // Seven bits a byte, the lowest first; bit 7 says that more follow. Never aligns.
    void AppendBase128(unsigned int value) {
        constexpr uint64 kMostBytes = 5;
        unsigned char* room = m_buffer.Extend(kMostBytes);
        uint64 unused = kMostBytes - 1;
        for (; value >= 0x80; value >>= 7) {
            *room++ = static_cast<unsigned char>(value | 0x80);
            --unused;
        }
        *room = static_cast<unsigned char>(value);
        m_buffer.Shrink(unused);
    }
    // The bytes of another buffer; does not align.
    void AppendBuffer(const BinaryBufferCreator& other);

    // Overwrites the four bytes from `position` on. Errors: BufferWriteOutOfBounds.
    void SetValueAt(buffersize_t position, unsigned int value);

    // Errors: OutOfRange, plain, beyond 2^32 - 1 bytes.
    buffersize_t GetLength() const { return LumSizeCastSafe(m_buffer.size()); }
    const ByteVector& GetBuffer() const noexcept { return m_buffer; }

private:
    // Saves the first steps of growing.
    static constexpr buffersize_t kDefaultSize = 5120;

    template <typename T>
    void AppendWord(T value) {
        const uint64 padding = (sizeof(T) - m_buffer.size() % sizeof(T)) % sizeof(T);
        unsigned char* room = m_buffer.Extend(padding + sizeof(T));
        for (uint64 i = 0; i < padding; ++i) {
            *room++ = 0;
        }
        std::memcpy(room, &value, sizeof(T));
    }

    ByteVector m_buffer;
};

}  // namespace lum::core
