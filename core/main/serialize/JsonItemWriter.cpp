#include "core/main/serialize/JsonItemWriter.h"

#include "core/main/serialize/JsonSerializerImplementation.h"

namespace lum::core {

JsonItemWriter::JsonItemWriter(JsonSerializer& serializer)
    : m_layout(serializer.m_implementation->GetTop().BeginItems()),
      m_room(*m_layout.text),
      m_place{nullptr, m_layout.hasItems, m_layout.isPadded} {}

JsonItemWriter::Place JsonItemWriter::BeginChild(Place place) {
    const TStringCore& before =
        place.hasItems != 0 ? m_layout.beforeNextChild : m_layout.beforeFirstChild;
    place.out = WriteUnits(before.view(), m_room.Ensure(place.out, before.length() + 1));
    *place.out++ = u'[';
    place.hasItems = 0;
    return place;
}

JsonItemWriter::Place JsonItemWriter::EndChild(Place place) {
    char16_t* out = m_room.Ensure(place.out, 2);
    out[0] = u' ';
    out += place.isPadded;
    out[0] = u']';
    return {out + 1, 1, place.isPadded};
}

char16_t* JsonItemWriter::WriteStringRest(const TStringCore& text, std::size_t done,
                                          char16_t* out) {
    out = WriteEscaped(m_room, text.data() + done, text.length() - done, out);
    return m_room.Ensure(out, 1);
}

void JsonItemWriter::PlanMemory(lumsize_t left) {
    // The rooms that are asked for at the end of the text must not make it grow once more.
    constexpr std::size_t kMargin = 2 * TextRoom::kUsualRoom;
    // A few long elements in front say little of a long column, so the text grows in steps.
    constexpr std::size_t kMaxGrowth = 64;
    const std::size_t length = m_room.GetLength(m_place.out);
    if (m_hasBlock && length + kMargin > m_plannedLength) {
        // As long as the last elements, and a sixteenth more: memory that is not written costs
        // nothing, growing costs a copy of all.
        const std::size_t perElement = (length - m_blockStart) / kBlock + 1;
        const std::size_t rest = perElement * left;
        m_plannedLength = std::min(length + rest + rest / 16, kMaxGrowth * length) + kMargin;
        m_place.out = m_room.Reserve(m_place.out, m_plannedLength);
    }
    m_hasBlock = true;
    m_blockStart = length;
}

}  // namespace lum::core
