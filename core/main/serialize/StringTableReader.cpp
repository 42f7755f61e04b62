#include "core/main/serialize/StringTableReader.h"

#include <cstdint>
#include <cstring>
#include <new>

namespace lum::core {
namespace {

// Four bytes, each in 16 bits.
uint64 Widen(uint64 bytes) {
    bytes = (bytes | bytes << 16) & 0x0000FFFF0000FFFF;
    return (bytes | bytes << 8) & 0x00FF00FF00FF00FF;
}

// The text of UTF-8. `room` bytes can be read, of which `length` are meant. Short plain text, as
// most names and cells are, is widened as a whole.
TStringCore Decode(const unsigned char* bytes, std::size_t length, uint64 room) {
    constexpr std::size_t kPlainLength = TStringCore::kInlineCapacity;
    static_assert(kPlainLength == 12);
    if (length <= kPlainLength && room >= kPlainLength) {
        constexpr uint64 kHighBits = 0x8080808080808080;
        uint64 low;
        std::uint32_t high;
        std::memcpy(&low, bytes, sizeof(low));
        std::memcpy(&high, bytes + sizeof(low), sizeof(high));
        low &= length >= 8 ? ~uint64{0} : (uint64{1} << 8 * length) - 1;
        high &= static_cast<std::uint32_t>(length <= 8 ? 0 : (uint64{1} << 8 * (length - 8)) - 1);
        if (((low | high) & kHighBits) == 0) {
            return TStringCore::fromWords(Widen(low & 0xFFFFFFFF), Widen(low >> 32), Widen(high),
                                          length);
        }
    }
    return TStringCore::fromUtf8(reinterpret_cast<const char*>(bytes), length);
}

}  // namespace

StringTableReader::Strings::~Strings() {
    for (std::size_t i = 0; i < m_size; ++i) {
        m_blocks[i / kBlockSize]->GetPlace(i % kBlockSize)->~TStringCore();
    }
}

template <typename Make>
void StringTableReader::Strings::Append(Make make) {
    if (m_size == m_blocks.size() * kBlockSize) {
        m_blocks.push_back(std::make_unique_for_overwrite<Block>());
    }
    new (m_blocks.back()->GetPlace(m_size % kBlockSize)) TStringCore(make());
    ++m_size;
}

StringTableReader::StringTableReader() {
    m_strings.Append([] { return TStringCore(); });
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
    const uint64 offsetCount = indices.GetRemaining() / sizeof(start);
    const auto* offset = indices.ReadPointer<unsigned char>(offsetCount * sizeof(start));
    for (uint64 i = 0; i < offsetCount; ++i, offset += sizeof(start)) {
        unsigned int end = 0;
        std::memcpy(&end, offset, sizeof(end));
        AppendText(strings, end - start);
        start = end;
    }
    // Fewer bytes than an offset has are refused.
    AppendText(strings,
               (indices.IsAtEnd() ? strings.GetLength() : indices.Read<unsigned int>()) - start);
}

void StringTableReader::AppendText(BinaryBufferReader& strings, buffersize_t length) {
    const uint64 room = strings.GetRemaining();
    const auto* const bytes = strings.ReadPointer<unsigned char>(length);
    m_strings.Append([&] { return length == 0 ? TStringCore() : Decode(bytes, length, room); });
}

}  // namespace lum::core
