#include "CsvReader.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

#include "FileError.h"

namespace lumhost {
namespace {

// Rows are handed on in pieces of about this many fields, which stay in the processor's cache
// while the columns are worked on one by one.
constexpr std::size_t kFieldsAtOnce = std::size_t{1} << 14;

constexpr std::size_t kMinBufferBytes = 16;
constexpr std::size_t kWord = sizeof(std::uint64_t);

// The top bit of each byte of `word` that is zero, and no other bit. Exact for every byte: the
// addition cannot carry from one byte into the next.
constexpr std::uint64_t ZeroBytes(std::uint64_t word) {
    constexpr std::uint64_t kLowBits = 0x7F7F7F7F7F7F7F7FULL;
    return ~(((word & kLowBits) + kLowBits) | word | kLowBits);
}

constexpr std::uint64_t EqualBytes(std::uint64_t word, char byte) {
    return ZeroBytes(word ^ (0x0101010101010101ULL * static_cast<unsigned char>(byte)));
}

// The first comma, quote, line feed or carriage return at or behind `position`. There is one, and
// a word can be read wherever the search comes to.
char* FindStructure(char* position) {
    for (;; position += kWord) {
        std::uint64_t word;
        std::memcpy(&word, position, kWord);
        const std::uint64_t found = EqualBytes(word, ',') | EqualBytes(word, '\n') |
                                    EqualBytes(word, '\r') | EqualBytes(word, '"');
        if (found != 0) {
            const int bits = std::endian::native == std::endian::little ? std::countr_zero(found)
                                                                        : std::countl_zero(found);
            return position + bits / 8;
        }
    }
}

// Room for `capacity` bytes of text and a word behind it.
std::unique_ptr<char[]> MakeBuffer(std::size_t capacity) {
    return std::make_unique_for_overwrite<char[]>(capacity + kWord);
}

unsigned long long CountLineEnds(const char* begin, const char* end) {
    return static_cast<unsigned long long>(std::count(begin, end, '\n'));
}

std::string Fields(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " field" : " fields");
}

}  // namespace

CsvReader::CsvReader(TextSource& source, std::size_t bufferBytes, std::size_t maxRowBytes)
    : m_source(source),
      m_maxRowBytes(maxRowBytes),
      m_capacity(std::max(bufferBytes, kMinBufferBytes)),
      m_buffer(MakeBuffer(m_capacity)),
      m_next(m_buffer.get()),
      m_end(m_next) {
    Refill();
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (std::string_view(m_next, static_cast<std::size_t>(m_end - m_next))
            .starts_with(kByteOrderMark)) {
        m_next += kByteOrderMark.size();
    }
}

bool CsvReader::ReadRows(CsvRows& rows, std::size_t maxRows) {
    rows.m_fields.clear();
    rows.m_lines.clear();
    for (;;) {
        while (m_next != m_end && rows.GetRowCount() < maxRows &&
               rows.m_fields.size() < kFieldsAtOnce) {
            if (ParseRow(rows) == RowEnd::NeedsMoreText) {
                break;
            }
        }
        if (rows.GetRowCount() > 0) {
            // The buffer is not moved under the rows; a row that is cut waits for the next call.
            rows.m_columnCount = m_columnCount;
            return true;
        }
        if (m_sourceHasEnded) {
            return false;
        }
        Refill();
    }
}

CsvReader::RowEnd CsvReader::ParseRow(CsvRows& rows) {
    const std::size_t firstField = rows.m_fields.size();
    const std::size_t storedFields = m_columnCount != 0 ? m_columnCount : kMaxFields;
    m_fieldsWithDoubledQuotes.clear();
    m_lineEndsInQuotes = 0;
    char* position = m_next;
    for (std::size_t fieldCount = 1;; ++fieldCount) {
        CsvField field;
        field.isQuoted = *position == '"';
        field.data = field.isQuoted ? position + 1 : position;
        char* const fieldEnd = field.isQuoted ? FindClosingQuote(position, rows.m_fields.size())
                                              : FindStructure(position);
        if (fieldEnd == nullptr) {
            rows.m_fields.resize(firstField);
            return RowEnd::NeedsMoreText;
        }
        field.length = static_cast<std::uint32_t>(fieldEnd - field.data);
        position = field.isQuoted ? fieldEnd + 1 : fieldEnd;
        if (!IsFieldEnd(position, field.isQuoted)) {
            rows.m_fields.resize(firstField);
            return RowEnd::NeedsMoreText;
        }
        if (fieldCount <= storedFields) {
            rows.m_fields.push_back(field);
        }
        if (*position == ',') {
            ++position;
            continue;
        }
        if (position != m_end) {
            position += *position == '\r' ? 2 : 1;
        }
        FinishRow(rows, fieldCount, position);
        return RowEnd::Complete;
    }
}

char* CsvReader::FindClosingQuote(char* opening, std::size_t fieldIndex) {
    char* const text = opening + 1;
    char* closing = text;
    bool hasDoubledQuotes = false;
    for (;;) {
        closing = static_cast<char*>(
            std::memchr(closing, '"', static_cast<std::size_t>(m_end - closing)));
        if (closing == nullptr) {
            if (!m_sourceHasEnded) {
                return nullptr;
            }
            Fail(opening, "a quote is opened here and never closed");
        }
        if (closing[1] != '"') {  // The line feed behind the text, where the text ends here.
            break;
        }
        hasDoubledQuotes = true;
        closing += 2;
    }
    if (hasDoubledQuotes) {
        m_fieldsWithDoubledQuotes.push_back(fieldIndex);
    }
    m_lineEndsInQuotes += CountLineEnds(text, closing);
    return closing;
}

bool CsvReader::IsFieldEnd(const char* position, bool isQuoted) const {
    if (*position == ',' || (*position == '\n' && position != m_end)) {
        return true;
    }
    const bool isCarriageReturn = *position == '\r';
    if (position == m_end || (isCarriageReturn && position + 1 == m_end)) {
        if (!m_sourceHasEnded) {
            return false;
        }
        if (!isCarriageReturn) {
            return true;
        }
    } else if (isCarriageReturn && position[1] == '\n') {
        return true;
    }
    Fail(position,
         isCarriageReturn ? "a carriage return stands without a line feed behind it"
         : isQuoted ? "text stands behind a closing quote (a quote inside quotes is written twice)"
                    : "a quote stands inside a field that does not begin with one");
}

void CsvReader::FinishRow(CsvRows& rows, std::size_t fieldCount, char* next) {
    if (m_columnCount == 0) {
        if (fieldCount > kMaxFields) {
            Fail(m_next, "the row has " + Fields(fieldCount) + "; at most " +
                             std::to_string(kMaxFields) + " are read");
        }
        m_columnCount = fieldCount;
    } else if (fieldCount != m_columnCount) {
        const bool isEmptyLine = *m_next == '\n' || *m_next == '\r';
        Fail(m_next, (isEmptyLine ? "the line is empty" : "the row has " + Fields(fieldCount)) +
                         ", but the first row has " + Fields(m_columnCount));
    }
    UndoubleQuotes(rows);
    rows.m_lines.push_back(m_line);
    m_line += 1 + m_lineEndsInQuotes;
    m_next = next;
}

void CsvReader::UndoubleQuotes(CsvRows& rows) const {
    for (const std::size_t index : m_fieldsWithDoubledQuotes) {
        CsvField& field = rows.m_fields[index];
        char* const text = m_next + (field.data - m_next);  // The same place, to be written.
        char* out = text;
        for (const char* in = text; in != text + field.length; ++in) {
            *out++ = *in;
            in += *in == '"' ? 1 : 0;
        }
        field.length = static_cast<std::uint32_t>(out - text);
    }
}

void CsvReader::Refill() {
    const auto kept = static_cast<std::size_t>(m_end - m_next);
    if (kept == m_capacity) {
        if (m_capacity >= m_maxRowBytes) {
            Fail(m_next, "the row is longer than " + std::to_string(m_maxRowBytes) +
                             " bytes (perhaps a quote is not closed)");
        }
        // Doubling keeps the cost of reading a long row again from its start in proportion.
        std::unique_ptr<char[]> larger = MakeBuffer(m_capacity * 2);
        std::memcpy(larger.get(), m_next, kept);
        m_buffer = std::move(larger);
        m_capacity *= 2;
    } else if (kept > 0) {
        std::memmove(m_buffer.get(), m_next, kept);
    }
    m_next = m_buffer.get();
    const std::size_t wanted = m_capacity - kept;
    const std::size_t count = m_source.Read(m_next + kept, wanted);
    m_bytesRead += count;
    m_sourceHasEnded = count < wanted;
    m_end = m_next + kept + count;
    std::memset(m_end, '\n', kWord);
}

void CsvReader::Fail(const char* position, const std::string& text) const {
    throw FileError(m_source.GetName(), m_line + CountLineEnds(m_next, position), text);
}

}  // namespace lumhost
