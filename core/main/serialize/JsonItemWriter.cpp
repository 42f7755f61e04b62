#include "core/main/serialize/JsonItemWriter.h"

#include "core/main/serialize/JsonSerializerImplementation.h"

namespace lum::core {

JsonItemWriter::JsonItemWriter(JsonSerializer& serializer)
    : m_layout(serializer.m_implementation->GetTop().BeginItems()),
      m_room(*m_layout.text),
      m_separator{m_layout.hasItems, m_layout.isPadded} {}

void JsonItemWriter::BeginChild() {
    const TStringCore& before =
        m_separator.hasItems != 0 ? m_layout.beforeNextChild : m_layout.beforeFirstChild;
    m_room.Append(before.view());
    m_room.Append(u'[');
    m_separator.hasItems = 0;
}

void JsonItemWriter::EndChild() {
    char16_t* out = m_room.Ensure(2);
    out[0] = u' ';
    out += m_separator.isPadded;
    out[0] = u']';
    m_room.SetEnd(out + 1);
    m_separator.hasItems = 1;
}

void JsonItemWriter::AppendEscapedRest(const TStringCore& text, std::size_t done, char16_t* out) {
    m_room.SetEnd(out);
    AppendEscaped(m_room, text.data() + done, text.length() - done);
    m_room.Append(u'"');
}

lumsize_t JsonItemWriter::MemoryPlan::StartBlock(lumsize_t left) {
    const std::size_t length = m_room.GetLength();
    if (!m_isFirst && length + kMargin > m_planned) {
        // As long as the last elements, and a sixteenth more: memory that is not written costs
        // nothing, growing costs a copy of all.
        const std::size_t perElement = (length - m_lastLength) / kBlock + 1;
        const std::size_t rest = perElement * left;
        m_planned = length + rest + rest / 16 + kMargin;
        m_room.Reserve(m_planned);
    }
    m_isFirst = false;
    m_lastLength = length;
    return std::min(left, kBlock);
}

}  // namespace lum::core
