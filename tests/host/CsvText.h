#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "CsvReader.h"
#include "FileError.h"

namespace lumhost::test {

struct Cell {
    std::string text;
    bool isQuoted = false;

    bool operator==(const Cell&) const = default;
};
using Rows = std::vector<std::vector<Cell>>;

/// What became of a text: its rows, or the line of its first fault.
struct Reading {
    Rows rows;
    std::vector<unsigned long long> lines;  // At which each row begins.
    unsigned long long faultLine = 0;

    bool operator==(const Reading&) const = default;
};

/// A slow and obvious reader of whole texts, byte by byte, to test the real one against.
class CsvModel {
public:
    explicit CsvModel(std::string_view text) : m_text(text) {
        if (m_text.starts_with("\xEF\xBB\xBF")) {
            m_text.remove_prefix(3);
        }
    }

    Reading Read() {
        Reading reading;
        while (m_position < m_text.size()) {
            const unsigned long long line = m_line;
            std::vector<Cell> row;
            do {
                row.emplace_back();
                if (!ReadCell(row.back())) {
                    return {{}, {}, m_faultLine};
                }
            } while (Take(","));
            if (!Take("\r\n")) {
                Take("\n");
            }
            ++m_line;
            if (!reading.rows.empty() && reading.rows[0].size() != row.size()) {
                return {{}, {}, line};
            }
            reading.rows.push_back(std::move(row));
            reading.lines.push_back(line);
        }
        return reading;
    }

private:
    bool IsAt(std::string_view mark) const { return m_text.substr(m_position).starts_with(mark); }
    bool Take(std::string_view mark) {
        const bool isThere = IsAt(mark);
        m_position += isThere ? mark.size() : 0;
        return isThere;
    }
    bool ReadCell(Cell& cell) {
        cell.isQuoted = Take("\"");
        m_faultLine = m_line;
        if (cell.isQuoted) {
            while (IsAt("\"\"") || !IsAt("\"")) {
                if (m_position == m_text.size()) {
                    return false;
                }
                m_line += IsAt("\n") ? 1 : 0;
                cell.text += m_text[m_position];
                m_position += IsAt("\"") ? 2 : 1;
            }
            ++m_position;
        } else {
            while (m_position < m_text.size() &&
                   std::string_view(",\"\r\n").find(m_text[m_position]) == std::string_view::npos) {
                cell.text += m_text[m_position++];
            }
        }
        m_faultLine = m_line;
        return m_position == m_text.size() || IsAt(",") || IsAt("\n") || IsAt("\r\n");
    }

    std::string_view m_text;
    std::size_t m_position = 0;
    unsigned long long m_line = 1;
    unsigned long long m_faultLine = 0;
};

/// Reads the text by the real reader, with a first buffer of `bufferBytes`.
inline Reading ReadCsv(const std::string& text, std::size_t bufferBytes) {
    Reading reading;
    try {
        MemorySource source("text.csv", text);
        CsvReader reader(source, bufferBytes);
        CsvRows rows;
        while (reader.ReadRows(rows)) {
            for (std::size_t row = 0; row < rows.GetRowCount(); ++row) {
                std::vector<Cell>& cells = reading.rows.emplace_back();
                for (std::size_t column = 0; column < rows.GetColumnCount(); ++column) {
                    const CsvField& field = rows.GetField(row, column);
                    cells.push_back({std::string(field.GetText()), field.isQuoted});
                }
                reading.lines.push_back(rows.GetLine(row));
            }
        }
    } catch (const FileError& error) {
        return {{}, {}, error.GetLine()};
    }
    return reading;
}

/// The rows as CSV text, behind a byte order mark, since one may stand in the first cell too.
inline std::string WriteCsv(const Rows& rows, std::string_view lineEnd) {
    std::string text = "\xEF\xBB\xBF";
    for (const std::vector<Cell>& row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            text += column == 0 ? "" : ",";
            text += row[column].isQuoted ? "\"" : "";
            for (const char byte : row[column].text) {
                text += byte;
                text += byte == '"' ? "\"" : "";
            }
            text += row[column].isQuoted ? "\"" : "";
        }
        text += lineEnd;
    }
    return text;
}

}  // namespace lumhost::test
