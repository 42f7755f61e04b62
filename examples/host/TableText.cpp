#include "TableText.h"

#include <algorithm>

#include "AlignedText.h"
#include "ColumnCells.h"
#include "DisplayText.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/SpecialKindText.h"
#include "lum/core/store/StoreValue.h"

namespace lumhost {
namespace {

using namespace lum::core;

constexpr std::size_t kMaxCellWidth = 32;

bool IsNumber(const Type& type) {
    return type.Is(StoreType::Int32) || type.Is(StoreType::Int64) || type.Is(StoreType::Real32) ||
           type.Is(StoreType::Real64);
}

std::string FormatCell(ColumnCells& cells) {
    std::string text;
    const SpecialKind kind = cells.TakeNext(text);
    if (kind != SpecialKind::Normal) {
        return "<" + SpecialKindToString(kind).toStdString() + ">";
    }
    const bool looksSpecial = text.size() > 1 && text.front() == '<' && text.back() == '>';
    return FitForDisplay(looksSpecial ? "'" + text + "'" : text, kMaxCellWidth);
}

TextColumn FormatColumn(const NamedColumn& column, lumsize_t rowCount) {
    TextColumn text;
    text.isRightAligned = IsNumber(*column.values->AsArray().GetElementType());
    text.cells = {FitForDisplay(TStringCore(column.name).toStdString(), kMaxCellWidth), ""};
    const std::unique_ptr<ColumnCells> cells = MakeColumnCells(column.values);
    std::size_t width = DisplayWidth(text.cells[0]);
    for (lumsize_t row = 0; row < rowCount; ++row) {
        text.cells.push_back(FormatCell(*cells));
        width = std::max(width, DisplayWidth(text.cells.back()));
    }
    text.cells[1] = std::string(width, '-');
    return text;
}

}  // namespace

std::string FormatTable(const std::vector<NamedColumn>& columns, lumsize_t maxRows) {
    const lumsize_t rowCount = columns.empty() ? 0 : columns[0].values->GetCount();
    const lumsize_t shownRows = std::min(rowCount, maxRows);
    std::vector<TextColumn> texts;
    for (const NamedColumn& column : columns) {
        texts.push_back(FormatColumn(column, shownRows));
    }
    std::string table = AlignColumns(texts);
    if (const lumsize_t rest = rowCount - shownRows; rest > 0) {
        table += "\n... " + std::to_string(rest) + (rest == 1 ? " more row" : " more rows");
    }
    return table;
}

}  // namespace lumhost
