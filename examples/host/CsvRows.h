#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace lumhost {

/// One field of a row: its text without quotes, and whether it stood in quotes.
struct CsvField {
    const char* data = nullptr;
    std::uint32_t length = 0;
    bool isQuoted = false;

    std::string_view GetText() const { return {data, length}; }
};

/// Some rows of a CSV text, which all have the same number of fields. The texts stand in the
/// buffer of the reader that filled this.
class CsvRows {
public:
    std::size_t GetRowCount() const { return m_lines.size(); }
    std::size_t GetColumnCount() const { return m_columnCount; }
    const CsvField& GetField(std::size_t row, std::size_t column) const {
        return m_fields[row * m_columnCount + column];
    }
    /// The line of the text, counted from 1, at which the row begins.
    unsigned long long GetLine(std::size_t row) const { return m_lines[row]; }

private:
    friend class CsvReader;

    std::vector<CsvField> m_fields;  // Row after row.
    std::vector<unsigned long long> m_lines;
    std::size_t m_columnCount = 0;
};

}  // namespace lumhost
