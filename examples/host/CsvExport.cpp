#include "CsvExport.h"

#include <memory>
#include <string_view>

#include "ColumnCells.h"
#include "FileError.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/SpecialKindText.h"
#include "lum/core/store/StoreValue.h"

namespace lumhost {
namespace {

using namespace lum::core;

// Without quotes an empty field and NA would be Null.
bool NeedsQuotes(std::string_view text) {
    return text.empty() || text == "NA" || text.find_first_of(",\"\r\n") != std::string_view::npos;
}

void WriteField(std::string_view text, std::ostream& out) {
    if (!NeedsQuotes(text)) {
        out << text;
        return;
    }
    out << '"';
    for (const char byte : text) {
        out << (byte == '"' ? "\"\"" : std::string_view(&byte, 1));
    }
    out << '"';
}

std::string NameOf(const NamedColumn& column) {
    return TStringCore(column.name).toStdString();
}

[[noreturn]] void Fail(const std::string& file, const NamedColumn& column,
                       const std::string& what) {
    throw FileError(file, 0,
                    "column " + QuoteForMessage(NameOf(column)) + " " + what +
                        ", which comma-separated text cannot hold");
}

void CheckColumn(const NamedColumn& column, const std::string& file) {
    const Type& type = *column.values->AsArray().GetElementType();
    if (!IsPlain(type)) {
        Fail(file, column, "is of type " + column.values->GetType()->ToString().toStdString());
    }
}

}  // namespace

void ExportCsv(const std::vector<NamedColumn>& columns, std::ostream& out,
               const std::string& file) {
    std::vector<std::unique_ptr<ColumnCells>> cells;
    for (const NamedColumn& column : columns) {
        CheckColumn(column, file);
        out << (cells.empty() ? "" : ",");
        WriteField(NameOf(column), out);
        cells.push_back(MakeColumnCells(column.values));
    }
    out << '\n';
    const lumsize_t rowCount = columns.empty() ? 0 : columns[0].values->GetCount();
    std::string text;
    for (lumsize_t row = 0; row < rowCount; ++row) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            out << (i == 0 ? "" : ",");
            text.clear();
            const SpecialKind kind = cells[i]->TakeNext(text);
            if (kind == SpecialKind::Normal) {
                WriteField(text, out);
            } else if (kind != SpecialKind::Null) {
                Fail(file, columns[i],
                     "has " + SpecialKindToString(kind).toStdString() + " in row " +
                         std::to_string(row));
            }
        }
        out << '\n';
    }
}

}  // namespace lumhost
