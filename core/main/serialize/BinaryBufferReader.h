#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "core/main/serialize/BinaryBufferCreator.h"
#include "lum/core/Check.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

// A cursor over bytes from outside that stand somewhere else. The bytes may stand at any address;
// words stand at multiples of their size from the first byte on.
//
// The cursor is an address as a number: aligning may carry it beyond the end, where no pointer may
// point.
//
// Threads: one at a time.
// Errors: LumRuntimeException with the code named, reported. BufferReadOutOfBounds where fewer
//   bytes are left than asked for.
class BinaryBufferReader {
public:
    BinaryBufferReader(const unsigned char* start, buffersize_t length) noexcept
        : m_start(reinterpret_cast<std::uintptr_t>(start)),
          m_pos(m_start),
          m_bufferEnd(m_start + length) {}

    // Moves to the next multiple of `wordSize`, which may lie beyond the end; the next read then
    // fails. Errors: InvalidWordSize for other than 1, 2, 4 and 8.
    void Align(unsigned int wordSize);

    // A word, behind the padding in front of it. Bools are read as bytes: a byte from outside may
    // be neither 0 nor 1.
    template <typename T>
    T Read() {
        static_assert(std::is_trivially_copyable_v<T> && !std::is_same_v<T, bool>);
        T value;
        std::memcpy(&value, Take<sizeof(T)>(sizeof(T)), sizeof(T));
        return value;
    }

    // `byteCount` bytes in place, behind the padding in front of a word of type T; for none null,
    // and nothing moves. The caller sees to it that the address suits a T.
    template <typename T>
    const T* ReadPointer(uint64 byteCount) {
        return byteCount == 0 ? nullptr : reinterpret_cast<const T*>(Take<sizeof(T)>(byteCount));
    }

    // The next 8 bytes, the first in the lowest place; false where fewer are left. Nothing moves.
    bool PeekWord(uint64& word) const noexcept {
        if (GetRemaining() < sizeof(word)) {
            return false;
        }
        std::memcpy(&word, GetPointer(), sizeof(word));
        return true;
    }
    bool PeekByte(unsigned char& byte) const noexcept {
        if (IsAtEnd()) {
            return false;
        }
        byte = *GetPointer();
        return true;
    }
    // The caller has compared the count with what is left.
    void Skip(unsigned int byteCount) noexcept { m_pos += byteCount; }

    // Errors: OutOfRange beyond 32 bits.
    unsigned int ReadBase128() {
        if (m_pos < m_bufferEnd) {
            const unsigned int value = *GetPointer();
            if (value < 0x80) {
                ++m_pos;
                return value;
            }
        }
        const Base128 number = ReadLongBase128(m_pos, m_bufferEnd);
        m_pos = number.end;
        return number.value;
    }

    // The same, for numbers that come one by one and seldom take more than two bytes.
    unsigned int ReadBase128Count() {
        if (m_pos < m_bufferEnd && m_bufferEnd - m_pos >= 2) {
            const unsigned char* const bytes = GetPointer();
            if (bytes[0] >= 0x80 && bytes[1] < 0x80) {
                m_pos += 2;
                return (bytes[0] & 0x7Fu) | static_cast<unsigned int>(bytes[1]) << 7;
            }
        }
        return ReadBase128();
    }

    // The text of `length` bytes of UTF-8.
    TStringCore ReadStringBytes(buffersize_t length);

    bool IsAtEnd() const noexcept { return m_pos >= m_bufferEnd; }
    // Of the whole buffer, read or not.
    buffersize_t GetLength() const noexcept {
        return static_cast<buffersize_t>(m_bufferEnd - m_start);
    }
    // What was not read yet.
    uint64 GetRemaining() const noexcept { return IsAtEnd() ? 0 : m_bufferEnd - m_pos; }

private:
    BinaryBufferReader(std::uintptr_t start, std::uintptr_t bufferEnd) noexcept
        : m_start(start), m_pos(start), m_bufferEnd(bufferEnd) {}

    const unsigned char* GetPointer() const noexcept {
        return reinterpret_cast<const unsigned char*>(m_pos);
    }
    void AlignUnchecked(std::uintptr_t wordSize) noexcept {
        m_pos = m_start + ((m_pos - m_start + (wordSize - 1)) & ~(wordSize - 1));
    }
    template <unsigned int kWordSize>
    const unsigned char* Take(uint64 size) {
        static_assert(kWordSize == 1 || kWordSize == 2 || kWordSize == 4 || kWordSize == 8);
        AlignUnchecked(kWordSize);
        LUM_CHECK(m_pos <= m_bufferEnd, LumError::BufferReadOutOfBounds);
        LUM_CHECK_TEXT("((size_t)(m_bufferEnd - m_pos) >= size)", m_bufferEnd - m_pos >= size,
                       LumError::BufferReadOutOfBounds);
        const unsigned char* const taken = GetPointer();
        m_pos += size;
        return taken;
    }
    struct Base128 {
        std::uintptr_t end;
        unsigned int value;
    };
    // No member, so that a loop over numbers keeps its reader in registers.
    static Base128 ReadLongBase128(std::uintptr_t position, std::uintptr_t bufferEnd);
    unsigned int ReadBase128ByByte();

    std::uintptr_t m_start;
    std::uintptr_t m_pos;
    std::uintptr_t m_bufferEnd;
};

}  // namespace lum::core
