#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "CsvRows.h"
#include "TextSource.h"

namespace lumhost {

/// Reads comma-separated values by RFC 4180: the structure of the text only, not what the fields
/// mean. A line ends with a line feed or a carriage return and a line feed; the last one need not
/// end. A byte order mark of UTF-8 at the start is skipped. Fields are bytes as they stand, blanks
/// included; a field in quotes may hold commas, line ends and doubled quotes. An empty line is a
/// row of one empty field.
///
/// Threads: one thread at a time.
/// Ownership: the source has to outlive the reader. The texts of rows stand in the reader's buffer
///   and are good until the next call of ReadRows.
/// Errors: FileError with the line, for a row that has not as many fields as the first one, for a
///   quote in a field that does not begin with one, text behind a closing quote, a quote that is
///   never closed, a carriage return without a line feed outside quotes, and a row beyond the
///   limits below. The reader is of no use after it.
/// Cost: one pass; memory for one buffer, which grows only to hold a single row that is larger.
class CsvReader {
public:
    /// Limits that keep a hostile text from taking much more memory than its own size.
    static constexpr std::size_t kMaxFields = std::size_t{1} << 16;
    static constexpr std::size_t kMaxRowBytes = std::size_t{1} << 30;

    static constexpr std::size_t kDefaultBufferBytes = std::size_t{1} << 17;

    explicit CsvReader(TextSource& source, std::size_t bufferBytes = kDefaultBufferBytes,
                       std::size_t maxRowBytes = kMaxRowBytes);

    /// Replaces `rows` by the next rows of the text: at most `maxRows` (which is at least 1), and
    /// at least one unless the text has ended, which gives false.
    bool ReadRows(CsvRows& rows, std::size_t maxRows = kNoLimit);

    /// How many bytes of the source lie before the first row not yet given.
    unsigned long long GetPosition() const {
        return m_bytesRead - static_cast<unsigned long long>(m_end - m_next);
    }

private:
    static constexpr std::size_t kNoLimit = ~std::size_t{0};

    enum class RowEnd { Complete, NeedsMoreText };

    RowEnd ParseRow(CsvRows& rows);
    /// The quote that closes the field that `opening` opens; null where the buffer ends before it
    /// is clear which that is.
    char* FindClosingQuote(char* opening, std::size_t fieldIndex);
    /// Whether a field may end at `position`, which fails where it may not; false where that hangs
    /// on text that is not in the buffer yet.
    bool IsFieldEnd(const char* position, bool isQuoted) const;
    void FinishRow(CsvRows& rows, std::size_t fieldCount, char* next);
    void UndoubleQuotes(CsvRows& rows) const;
    void Refill();
    [[noreturn]] void Fail(const char* position, const std::string& text) const;

    TextSource& m_source;
    std::size_t m_maxRowBytes;
    std::size_t m_capacity;  // Of the buffer, for text.
    std::unique_ptr<char[]> m_buffer;
    char* m_next;  // The first row not yet given; m_next..m_end is text.
    char* m_end;   // Line feeds stand behind the text, so that every scan stops.
    bool m_sourceHasEnded = false;
    unsigned long long m_bytesRead = 0;
    unsigned long long m_line = 1;  // Of m_next.
    std::size_t m_columnCount = 0;  // 0 until the first row is read.
    // Of the row that is being parsed.
    std::vector<std::size_t> m_fieldsWithDoubledQuotes;
    unsigned long long m_lineEndsInQuotes = 0;
};

}  // namespace lumhost
