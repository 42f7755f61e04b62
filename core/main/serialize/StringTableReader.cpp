#include "core/main/serialize/StringTableReader.h"

#include <cstring>

#include "lumsys/Memory.h"

namespace lum::core {

StringTableReader::Strings::~Strings() {
    for (std::size_t i = 0; i < m_size; ++i) {
        m_blocks[i / kBlockSize]->GetPlace(i % kBlockSize)->~TStringCore();
    }
}

void StringTableReader::Strings::Reserve(std::size_t count) {
    const std::size_t blockCount = (m_size + count + kBlockSize - 1) / kBlockSize;
    if (blockCount <= m_blocks.size()) {
        return;
    }
    const std::size_t newCount = blockCount - m_blocks.size();
    m_blocks.reserve(blockCount);
    m_memory.push_back(std::make_unique_for_overwrite<Block[]>(newCount));
    Block* const blocks = m_memory.back().get();
    lumsys::AdviseLargePages(blocks, newCount * sizeof(Block));
    for (std::size_t i = 0; i < newCount; ++i) {
        m_blocks.push_back(blocks + i);
    }
}

StringTableReader::StringTableReader() {
    m_strings.Reserve(1);
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
    const auto append = [this, &strings](buffersize_t length) {
        m_strings.Append([&] { return strings.ReadStringBytes(length); });
    };
    m_strings.Reserve(offsetCount + 1);
    for (uint64 i = 0; i < offsetCount; ++i, offset += sizeof(start)) {
        unsigned int end = 0;
        std::memcpy(&end, offset, sizeof(end));
        append(end - start);
        start = end;
    }
    // Fewer bytes than an offset has are refused.
    append((indices.IsAtEnd() ? strings.GetLength() : indices.Read<unsigned int>()) - start);
}

}  // namespace lum::core
