#include "HexLines.h"

#include <algorithm>

namespace lumhost {
namespace {

constexpr HexLines::Position kShownBytes = 8;
constexpr std::size_t kBytesWidth = 3 * kShownBytes - 1;
constexpr const char* kDigits = "0123456789abcdef";

}  // namespace

HexLines::HexLines(lum::core::ArrayView<const unsigned char> bytes)
    : m_bytes(bytes), m_digits(bytes.GetSize() > 0x10000 ? 8 : 4) {}

void HexLines::Add(Position begin, Position end, const std::string& meaning) {
    if (m_isQuiet) {
        return;
    }
    if (begin > m_next) {
        const Position gap = begin - m_next;
        AddLine(m_next, begin,
                gap < 8 ? "padding" : std::to_string(gap) + " bytes that nobody reads");
    }
    AddLine(begin, end, meaning);
    m_next = end;
}

std::string HexLines::Format(Position position) const {
    std::string text;
    for (Position rest = position; rest != 0 || text.size() < m_digits; rest >>= 4) {
        text.insert(text.begin(), kDigits[rest & 0xF]);
    }
    return text;
}

void HexLines::AddLine(Position begin, Position end, const std::string& meaning) {
    std::string bytes;
    const bool isCut = end - begin > kShownBytes;
    const Position shownEnd = isCut ? begin + kShownBytes - 1 : end;
    for (Position position = begin; position < shownEnd; ++position) {
        const unsigned char byte = m_bytes[position];
        bytes += bytes.empty() ? "" : " ";
        bytes += {kDigits[byte >> 4], kDigits[byte & 0xF]};
    }
    bytes += isCut ? " .." : "";
    bytes.resize(kBytesWidth, ' ');
    m_text += m_text.empty() ? "" : "\n";
    m_text += Format(begin) + "  " + bytes + "  " +
              std::string(2 * static_cast<std::size_t>(m_level), ' ') + meaning;
}

}  // namespace lumhost
