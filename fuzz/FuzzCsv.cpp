// Comma-separated text. The reader agrees with a slow and obvious one on every text, rows or the
// line of the first fault, however its buffer cuts the text. What was read, written as text and
// read again, is the same. The import refuses the text or makes columns in which the cells without
// a value, and no others, are Null, and texts are the texts of the cells.

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "CsvImport.h"
#include "fuzz/FuzzAssert.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/Collation.h"
#include "lum/core/utility/RIndirectString.h"
#include "tests/host/CsvText.h"

namespace {

using lumhost::test::Cell;
using lumhost::test::Rows;

std::vector<lumhost::NamedColumn> Import(const std::string& text, bool hasHeader) {
    std::ostringstream out;
    lumhost::Progress progress(out, /*isTerminal=*/false, "");
    lumhost::MemorySource source("text.csv", text);
    return lumhost::ImportCsv(source, {hasHeader, {}}, progress);
}

template <typename T>
bool HasNullsWhereCellsAreEmpty(const lumhost::NamedColumn& column, const Rows& rows,
                                std::size_t index, std::size_t firstRow) {
    const auto& cells = column.values->AsTypedArray<T>();
    const bool isText =
        column.values->AsUniformCollection().GetElementType()->Is(lum::core::StoreType::String);
    for (std::size_t row = firstRow; row < rows.size(); ++row) {
        const Cell& cell = rows[row][index];
        const bool isNull =
            cell.text.empty() ? !(isText && cell.isQuoted) : cell.text == "NA" && !cell.isQuoted;
        if (cells.IsSpecial(static_cast<lum::core::lumsize_t>(row - firstRow)) != isNull) {
            return false;
        }
    }
    return true;
}

bool HoldsTheTexts(const lumhost::NamedColumn& column, const Rows& rows, std::size_t index,
                   std::size_t firstRow) {
    const auto& cells = column.values->AsTypedArray<lum::core::RIndirectString>();
    for (std::size_t row = firstRow; row < rows.size(); ++row) {
        const auto position = static_cast<lum::core::lumsize_t>(row - firstRow);
        if (!cells.IsSpecial(position) &&
            cells.GetValue(position).toStdString() != rows[row][index].text) {
            return false;
        }
    }
    return true;
}

bool AgreesWithCells(const lumhost::NamedColumn& column, const Rows& rows, std::size_t index,
                     std::size_t firstRow) {
    using lum::core::StoreType;
    switch (column.values->AsUniformCollection().GetElementType()->GetStoreType()) {
        case StoreType::Bool:
            return HasNullsWhereCellsAreEmpty<unsigned char>(column, rows, index, firstRow);
        case StoreType::Int32:
            return HasNullsWhereCellsAreEmpty<unsigned int>(column, rows, index, firstRow);
        case StoreType::String:
            return HasNullsWhereCellsAreEmpty<lum::core::RIndirectString>(column, rows, index,
                                                                          firstRow) &&
                   HoldsTheTexts(column, rows, index, firstRow);
        default:
            return HasNullsWhereCellsAreEmpty<unsigned long long>(column, rows, index, firstRow);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace lumhost::test;
    static const bool isStarted = (lum::core::RegisterDefaultCollatorPool(), true);
    if (size == 0 || !isStarted) {
        return 0;
    }
    // The first byte chooses where the buffer cuts the text, and whether there is a header.
    const std::size_t bufferBytes = data[0] / 2;
    const bool hasHeader = data[0] % 2 == 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);

    const Reading reading = ReadCsv(text, bufferBytes);
    LUM_FUZZ_ASSERT(reading == CsvModel(text).Read(), "the reader and the model differ");
    if (reading.faultLine == 0) {
        const Reading again = ReadCsv(WriteCsv(reading.rows, "\r\n"), bufferBytes);
        LUM_FUZZ_ASSERT(reading == again, "written and read again, the rows differ");
    }
    try {
        const std::vector<lumhost::NamedColumn> columns = Import(text, hasHeader);
        LUM_FUZZ_ASSERT(reading.faultLine == 0, "the import took what the reader refuses");
        for (std::size_t index = 0; index < columns.size(); ++index) {
            LUM_FUZZ_ASSERT(AgreesWithCells(columns[index], reading.rows, index, hasHeader ? 1 : 0),
                            "column " + std::to_string(index));
        }
    } catch (const lumhost::FileError&) {
        return 0;  // Refusing bad text is the job; any other escape is a fault.
    }
    return 0;
}
