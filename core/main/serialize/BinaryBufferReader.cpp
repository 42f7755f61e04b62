#include "core/main/serialize/BinaryBufferReader.h"

#include <bit>

namespace lum::core {

void BinaryBufferReader::Align(unsigned int wordSize) {
    LUM_CHECK_TEXT("((wordSize == 1) || (wordSize == 2) || (wordSize == 4) || (wordSize == 8))",
                   wordSize == 1 || wordSize == 2 || wordSize == 4 || wordSize == 8,
                   LumError::InvalidWordSize);
    AlignUnchecked(wordSize);
}

BinaryBufferReader::Base128 BinaryBufferReader::ReadLongBase128(std::uintptr_t position,
                                                                std::uintptr_t bufferEnd) {
    BinaryBufferReader reader(position, bufferEnd);
    constexpr uint64 kMoreBits = 0x8080808080808080;
    constexpr uint64 kMoreBitsOfFiveBytes = 0x8080808080;
    if (uint64 word = 0; reader.PeekWord(word)) {
        // All lengths in one way: a branch on the length of each would be guessed wrong half the
        // time.
        const uint64 lastByteBits = ~word & kMoreBits;
        const uint64 bytes = static_cast<uint64>(std::countr_zero(lastByteBits)) / 8 + 1;
        word &= lastByteBits ^ (lastByteBits - 1);
        const uint64 value = (word & 0x7F) | (word >> 1 & 0x3F80) | (word >> 2 & 0x1FC000) |
                             (word >> 3 & 0xFE00000) | (word >> 4 & 0x7F0000000);
        if ((lastByteBits & kMoreBitsOfFiveBytes) != 0 && value <= 0xFFFFFFFF) {
            return {reader.m_pos + bytes, static_cast<unsigned int>(value)};
        }
    }
    const unsigned int value = reader.ReadBase128ByByte();
    return {reader.m_pos, value};
}

unsigned int BinaryBufferReader::ReadBase128ByByte() {
    unsigned int result = 0;
    for (unsigned int shift = 0;; shift += 7) {
        const auto b = Read<unsigned char>();
        LUM_CHECK(shift <= 21 || (shift <= 28 && b <= 15), LumError::OutOfRange);
        result |= (b & 0x7Fu) << shift;
        if ((b & 0x80) == 0) {
            return result;
        }
    }
}

TStringCore BinaryBufferReader::ReadStringBytes(buffersize_t length) {
    if (length == 0) {
        return {};
    }
    return TStringCore::fromUtf8(ReadPointer<char>(length), length);
}

}  // namespace lum::core
