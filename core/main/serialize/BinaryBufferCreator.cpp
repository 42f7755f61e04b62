#include "core/main/serialize/BinaryBufferCreator.h"

#include <new>
#include <string>

#include "lum/core/Check.h"

namespace lum::core {

void ByteVector::Reallocate(uint64 capacity) {
    void* const moved = std::realloc(m_bytes.get(), capacity);
    if (moved == nullptr) {
        throw std::bad_alloc();
    }
    static_cast<void>(m_bytes.release());
    m_bytes.reset(static_cast<unsigned char*>(moved));
    m_capacity = capacity;
}

void BinaryBufferCreator::Align(unsigned char wordSize) {
    LUM_CHECK(wordSize > 0 && wordSize <= 8, LumError::InvalidWordSize);
    const uint64 excess = m_buffer.size() % wordSize;
    if (excess != 0) {
        const uint64 padding = wordSize - excess;
        std::memset(m_buffer.Extend(padding), 0, padding);
    }
}

void BinaryBufferCreator::AppendBytes(const void* data, buffersize_t count,
                                      unsigned char wordSize) {
    AppendLongBytes(data, count, wordSize);
}

void BinaryBufferCreator::AppendLongBytes(const void* data, uint64 count, unsigned char wordSize) {
    if (count != 0) {
        Align(wordSize);
        std::memcpy(m_buffer.Extend(count), data, count);
    }
}

void BinaryBufferCreator::AppendString(const TStringCore& text) {
    // Plain text, as most is, goes straight to its place.
    unsigned char* const room = m_buffer.Extend(text.length());
    const char16_t* const units = text.data();
    unsigned int seen = 0;
    for (std::size_t i = 0; i < text.length(); ++i) {
        seen |= units[i];
        room[i] = static_cast<unsigned char>(units[i]);
    }
    if (seen < 0x80) {
        return;
    }
    m_buffer.Shrink(text.length());
    const std::string bytes = text.toStdString();
    AppendLongBytes(bytes.data(), bytes.size(), 1);
}

void BinaryBufferCreator::AppendBuffer(const BinaryBufferCreator& other) {
    AppendLongBytes(other.m_buffer.data(), other.m_buffer.size(), 1);
}

void BinaryBufferCreator::SetValueAt(buffersize_t position, unsigned int value) {
    LUM_CHECK_TEXT("(pos + sizeof(buffersize_t) <= m_buffer.size())",
                   position + sizeof(value) <= m_buffer.size(), LumError::BufferWriteOutOfBounds);
    std::memcpy(m_buffer.data() + position, &value, sizeof(value));
}

}  // namespace lum::core
