#include "PayloadHeaderDump.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "FileError.h"
#include "lum/core/serialize/BinaryProtocol.h"

namespace lumhost {
namespace {

using namespace lum::core;
using Position = HexLines::Position;

constexpr lumsize_t kShownItems = 8;

// Where the bytes end before the header does.
struct EndOfBytes {};

// Reads the fields of a section, each at a multiple of its size from the section's start.
class Fields {
public:
    Fields(ArrayView<const unsigned char> bytes, Position begin, Position end)
        : m_bytes(bytes), m_start(begin), m_position(begin), m_end(end) {}

    template <typename T>
    T Take() {
        m_begin = m_start + (m_position - m_start + sizeof(T) - 1) / sizeof(T) * sizeof(T);
        T value;
        std::memcpy(&value, TakeBytes(m_begin, sizeof(T)).data(), sizeof(T));
        return value;
    }
    unsigned int TakeBase128() {
        m_begin = m_position;
        unsigned int value = 0;
        for (unsigned int shift = 0; shift < 35; shift += 7) {
            const auto byte = static_cast<unsigned char>(TakeBytes(m_position, 1)[0]);
            value |= static_cast<unsigned int>(byte & 0x7F) << shift;
            if (byte < 0x80) {
                break;
            }
        }
        return value;
    }
    std::string_view TakeText(Position size) {
        m_begin = m_position;
        return TakeBytes(m_position, size);
    }

    // Of the field that was taken last.
    Position GetBegin() const { return m_begin; }
    Position GetEnd() const { return m_position; }

private:
    std::string_view TakeBytes(Position begin, Position size) {
        if (begin > m_end || m_end - begin < size) {
            throw EndOfBytes();
        }
        m_position = begin + size;
        return {reinterpret_cast<const char*>(m_bytes.GetData()) + begin, size};
    }

    ArrayView<const unsigned char> m_bytes;
    Position m_start;
    Position m_begin = 0;
    Position m_position;
    Position m_end;
};

// A section that the header announces by a position and a length.
struct Section {
    Position field;  // Where it is announced.
    Position begin;
    Position size;

    bool IsInside(Position end) const { return begin < end && end - begin >= size; }
};

std::string DescribeFlags(unsigned int flags) {
    const std::string counts = (flags & 2) != 0 ? "counts in base-128" : "counts in 4 bytes";
    return "flags: " + counts + ((flags & 1) != 0 ? ", checksums" : "");
}

class HeaderDump {
public:
    HeaderDump(ArrayView<const unsigned char> bytes, HexLines& lines)
        : m_bytes(bytes), m_fields(bytes, 0, bytes.GetSize()), m_lines(lines) {}

    PayloadHeader Dump() {
        const auto version = m_fields.Take<unsigned short>();
        Note("version " + std::to_string(version));
        const auto flags = m_fields.Take<unsigned int>();
        Note(DescribeFlags(flags));
        m_isBase128 = (flags & 2) != 0;
        const unsigned int pathSize =
            m_isBase128 ? m_fields.TakeBase128() : m_fields.Take<unsigned int>();
        Note("length of the path");
        const std::string_view path = m_fields.TakeText(pathSize);
        Note("path " + QuoteForMessage(path));
        const Section offsets = TakeSection("string offsets");
        const Section texts = TakeSection("string bytes");
        const Position data = m_fields.Take<unsigned int>();
        const Position dataField = m_fields.GetBegin();
        Note("data at 0x" + m_lines.Format(data));

        const Position end = m_bytes.GetSize();
        const bool hasStrings = offsets.begin != 0 && texts.begin != 0;
        const bool hasSections = hasStrings && offsets.IsInside(end) && texts.IsInside(end);
        if (hasSections) {
            DumpStrings(offsets, texts);
        }
        const Position suspect = version != BinaryProtocol::Version     ? 0
                                 : hasStrings && !offsets.IsInside(end) ? offsets.field
                                 : hasStrings && !texts.IsInside(end)   ? texts.field
                                 : data >= end                          ? dataField
                                                                        : offsets.begin;
        return {m_isBase128, data, suspect};
    }

private:
    void Note(const std::string& meaning) {
        m_lines.Add(m_fields.GetBegin(), m_fields.GetEnd(), meaning);
    }

    Section TakeSection(const std::string& name) {
        const Position begin = m_fields.Take<unsigned int>();
        const Position field = m_fields.GetBegin();
        Note(name + (begin == 0 ? ": none" : " at 0x" + m_lines.Format(begin)));
        const Position size = m_fields.Take<unsigned int>();
        Note(std::to_string(size) + (size == 1 ? " byte" : " bytes") + " of them");
        return {field, begin, size};
    }

    void DumpStrings(const Section& offsets, const Section& texts) {
        if (offsets.size < 4) {
            return;
        }
        Fields words(m_bytes, offsets.begin, offsets.begin + offsets.size);
        const auto first = words.Take<unsigned int>();
        m_lines.Add(words.GetBegin(), words.GetEnd(),
                    "number of the first string: " + std::to_string(first));
        const Position count = offsets.size / 4 - 1;
        std::vector<Position> begins;
        while (begins.size() < std::min<Position>(count, kShownItems + 1)) {
            begins.push_back(words.Take<unsigned int>());
            if (begins.size() <= kShownItems) {
                m_lines.Add(words.GetBegin(), words.GetEnd(),
                            "string " + std::to_string(first + begins.size() - 1) + " begins at " +
                                std::to_string(begins.back()));
            }
        }
        NoteMore(count, offsets.begin + 4 * (count + 1));
        DumpTexts(first, begins, count, texts);
    }

    // Only the differences of offsets count: the texts stand one behind the other.
    void DumpTexts(Position first, const std::vector<Position>& begins, Position count,
                   const Section& texts) {
        const Position end = texts.begin + texts.size;
        Position begin = texts.begin;
        for (std::size_t i = 0; i < std::min<std::size_t>(begins.size(), kShownItems); ++i) {
            const Position size = i + 1 < begins.size() ? begins[i + 1] - begins[i] : end - begin;
            if (size > end - begin) {
                return;  // Offsets that fall, or rise too far: a reader says so.
            }
            const auto* const text = reinterpret_cast<const char*>(m_bytes.GetData()) + begin;
            m_lines.Add(
                begin, begin + size,
                "string " + std::to_string(first + i) + ": " + QuoteForMessage({text, size}));
            begin += size;
        }
        NoteMore(count, end);
    }

    void NoteMore(Position count, Position end) {
        if (count > kShownItems) {
            m_lines.Add(m_lines.GetEndOfLast(), end, std::to_string(count - kShownItems) + " more");
        }
    }

    ArrayView<const unsigned char> m_bytes;
    Fields m_fields;
    HexLines& m_lines;
    bool m_isBase128 = false;
};

}  // namespace

std::optional<PayloadHeader> DumpHeader(ArrayView<const unsigned char> bytes, HexLines& lines) {
    try {
        return HeaderDump(bytes, lines).Dump();
    } catch (const EndOfBytes&) {
        return std::nullopt;
    }
}

}  // namespace lumhost
