#include "CsvImport.h"

#include <limits>
#include <memory>
#include <optional>
#include <unordered_set>

#include "ColumnBuilder.h"
#include "ColumnInference.h"
#include "CsvReader.h"
#include "FileError.h"
#include "Utf8.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/LumString.h"

namespace lumhost {
namespace {

constexpr unsigned kPasses = 2;

// What the first pass finds.
struct Layout {
    std::vector<std::string> names;
    std::vector<ColumnType> types;
    unsigned long long rowCount = 0;
};

std::vector<std::string> ReadHeader(CsvReader& reader, const std::string& file) {
    CsvRows rows;
    if (!reader.ReadRows(rows, 1)) {
        throw FileError(file, 1, "the file is empty; its first row should name the columns");
    }
    const unsigned long long line = rows.GetLine(0);
    std::vector<std::string> names;
    std::unordered_set<std::string_view> seen;
    for (std::size_t column = 0; column < rows.GetColumnCount(); ++column) {
        const std::string_view name = rows.GetField(0, column).GetText();
        if (name.empty()) {
            throw FileError(file, line, "column " + std::to_string(column + 1) + " has no name");
        }
        if (!IsUtf8(name)) {
            throw FileError(file, line,
                            "the name of column " + std::to_string(column + 1) + " is not UTF-8");
        }
        if (!seen.insert(name).second) {
            throw FileError(file, line, "two columns have the name " + QuoteForMessage(name));
        }
        names.emplace_back(name);
    }
    return names;
}

std::vector<std::string> NumberColumns(std::size_t count) {
    std::vector<std::string> names;
    for (std::size_t column = 1; column <= count; ++column) {
        names.push_back(std::string("c").append(std::to_string(column)));
    }
    return names;
}

// For each column the type that was asked for, if any.
std::vector<std::optional<ColumnType>> FindGivenTypes(const Layout& layout,
                                                      const CsvImportOptions& options,
                                                      const std::string& file) {
    std::vector<std::optional<ColumnType>> types(layout.names.size());
    for (const auto& [name, type] : options.types) {
        std::size_t column = 0;
        while (column < layout.names.size() && layout.names[column] != name) {
            ++column;
        }
        if (column == layout.names.size()) {
            throw FileError(file, 0, "there is no column " + QuoteForMessage(name));
        }
        types[column] = type;
    }
    return types;
}

Layout FindLayout(TextSource& source, const CsvImportOptions& options, Progress& progress) {
    const std::string& file = source.GetName();
    CsvReader reader(source);
    CsvRows rows;
    Layout layout;
    if (options.hasHeader) {
        layout.names = ReadHeader(reader, file);
    }
    bool hasRows = reader.ReadRows(rows);
    if (!options.hasHeader) {
        layout.names = NumberColumns(hasRows ? rows.GetColumnCount() : 0);
    }
    const std::vector<std::optional<ColumnType>> given = FindGivenTypes(layout, options, file);
    std::vector<ColumnInference> inferences(layout.names.size());
    for (; hasRows; hasRows = reader.ReadRows(rows)) {
        for (std::size_t column = 0; column < inferences.size(); ++column) {
            if (!given[column]) {
                inferences[column].Add(rows, column);
            }
        }
        layout.rowCount += rows.GetRowCount();
        if (layout.rowCount > std::numeric_limits<lum::core::lumsize_t>::max()) {
            throw FileError(file, rows.GetLine(0), "the file has more rows than an array can hold");
        }
        progress.Update(reader.GetPosition(), kPasses * source.GetSize());
    }
    for (std::size_t column = 0; column < inferences.size(); ++column) {
        layout.types.push_back(given[column].value_or(inferences[column].GetType()));
    }
    return layout;
}

[[noreturn]] void FailSinceFileChanged(const std::string& file) {
    throw FileError(file, 0, "the file changed while it was being read");
}

std::vector<NamedColumn> FillColumns(TextSource& source, const CsvImportOptions& options,
                                     const Layout& layout, Progress& progress) {
    const std::string& file = source.GetName();
    std::vector<std::unique_ptr<ColumnBuilder>> builders;
    for (std::size_t column = 0; column < layout.names.size(); ++column) {
        builders.push_back(MakeColumnBuilder(layout.types[column], file, layout.names[column],
                                             static_cast<std::size_t>(layout.rowCount)));
    }
    CsvReader reader(source);
    CsvRows rows;
    if (options.hasHeader) {
        reader.ReadRows(rows, 1);
    }
    unsigned long long rowCount = 0;
    while (reader.ReadRows(rows)) {
        rowCount += rows.GetRowCount();
        if (rows.GetColumnCount() != builders.size() || rowCount > layout.rowCount) {
            FailSinceFileChanged(file);
        }
        for (std::size_t column = 0; column < builders.size(); ++column) {
            builders[column]->Append(rows, column);
        }
        progress.Update(source.GetSize() + reader.GetPosition(), kPasses * source.GetSize());
    }
    if (rowCount != layout.rowCount) {
        FailSinceFileChanged(file);
    }
    std::vector<NamedColumn> columns;
    for (std::size_t column = 0; column < builders.size(); ++column) {
        const std::string& name = layout.names[column];
        columns.push_back(
            {lum::core::RInternString(lum::core::TStringCore::fromUtf8(name.data(), name.size())),
             builders[column]->Finish()});
    }
    return columns;
}

}  // namespace

std::vector<NamedColumn> ImportCsv(TextSource& source, const CsvImportOptions& options,
                                   Progress& progress) {
    const Layout layout = FindLayout(source, options, progress);
    source.Rewind();
    return FillColumns(source, options, layout, progress);
}

}  // namespace lumhost
