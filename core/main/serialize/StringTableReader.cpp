#include "core/main/serialize/StringTableReader.h"

#include <cstdint>
#include <cstring>
#include <new>

namespace lum::core {
namespace {

// Decodes UTF-8 into `text`, which is empty. `room` bytes can be read, of which `length` are meant.
// Short plain text, as most names and cells are, goes straight to its place.
void DecodeInto(TStringCore& text, const unsigned char* bytes, std::size_t length, uint64 room) {
    constexpr std::size_t kPlainLength = TStringCore::kInlineCapacity;
    static_assert(kPlainLength == 12);
    if (length <= kPlainLength && room >= kPlainLength) {
        constexpr uint64 kHighBits = 0x8080808080808080;
        uint64 low;
        std::uint32_t high;
        std::memcpy(&low, bytes, sizeof(low));
        std::memcpy(&high, bytes + sizeof(low), sizeof(high));
        const uint64 lowMask = length >= 8 ? ~uint64{0} : (uint64{1} << 8 * length) - 1;
        const uint64 highMask = length <= 8 ? 0 : (uint64{1} << 8 * (length - 8)) - 1;
        if (((low & lowMask) | (high & highMask)) & kHighBits) {
            text = TStringCore::fromUtf8(reinterpret_cast<const char*>(bytes), length);
            return;
        }
        char16_t* const units = text.prepareAppend(kPlainLength);
        for (std::size_t i = 0; i < kPlainLength; ++i) {
            units[i] = bytes[i];
        }
        text.commitAppend(length);
        return;
    }
    text = TStringCore::fromUtf8(reinterpret_cast<const char*>(bytes), length);
}

}  // namespace

StringTableReader::Strings::~Strings() {
    for (std::size_t i = 0; i < m_size; ++i) {
        m_blocks[i / kBlockSize]->GetPlace(i % kBlockSize)->~TStringCore();
    }
}

TStringCore& StringTableReader::Strings::Append() {
    if (m_size == m_blocks.size() * kBlockSize) {
        m_blocks.push_back(std::make_unique_for_overwrite<Block>());
    }
    auto* const text = new (m_blocks.back()->GetPlace(m_size % kBlockSize)) TStringCore();
    ++m_size;
    return *text;
}

void StringTableReader::AppendPayloadStrings(BinaryBufferReader& indices,
                                             BinaryBufferReader& strings) {
    const auto payloadStartIndex = indices.Read<unsigned int>();
    LUM_CHECK(LumSizeCastSafe(m_strings.size()) == payloadStartIndex, LumError::Unspecified);
    if (indices.IsAtEnd()) {
        return;
    }
    // The offsets give lengths alone: strings stand one behind the other from the first byte on,
    // whatever the first offset says. One offset that is below that before it gives a length that
    // no block has.
    auto start = indices.Read<unsigned int>();
    while (true) {
        const bool isLast = indices.IsAtEnd();
        const unsigned int end = isLast ? strings.GetLength() : indices.Read<unsigned int>();
        const buffersize_t length = end - start;
        if (length == 0) {
            m_strings.Append();
        } else {
            const uint64 room = strings.GetRemaining();
            const auto* const bytes = strings.ReadPointer<unsigned char>(length);
            DecodeInto(m_strings.Append(), bytes, length, room);
        }
        if (isLast) {
            return;
        }
        start = end;
    }
}

}  // namespace lum::core
