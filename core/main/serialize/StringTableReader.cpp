#include "core/main/serialize/StringTableReader.h"

#include <cstring>
#include <new>

namespace lum::core {

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
    m_strings.Append([&] { return strings.ReadStringBytes(length); });
}

}  // namespace lum::core
