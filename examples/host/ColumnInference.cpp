#include "ColumnInference.h"

#include "CellText.h"

namespace lumhost {

void ColumnInference::Add(const CsvRows& rows, std::size_t column) {
    const std::size_t rowCount = rows.GetRowCount();
    for (std::size_t row = 0; row < rowCount && (m_kinds & kTextCell) == 0; ++row) {
        const CsvField& field = rows.GetField(row, column);
        // The text "" says nothing of the type: where that is not String, it is one more Null. The
        // text "NA" needs no test of its own, since it is no number.
        if (field.length != 0 && !IsNullField(field)) {
            m_kinds |= ClassifyCell(field.GetText());
        }
    }
}

ColumnType ColumnInference::GetType() const {
    const auto isWithin = [this](unsigned kinds) { return (m_kinds & ~kinds) == 0; };
    if (m_kinds == 0) {
        return ColumnType::String;
    }
    if (isWithin(kBoolCell)) {
        return ColumnType::Bool;
    }
    if (isWithin(kInt32Cell)) {
        return ColumnType::Int32;
    }
    if (isWithin(kInt32Cell | kInt64Cell | kWideInt64Cell)) {
        return ColumnType::Int64;
    }
    if (isWithin(kInt32Cell | kInt64Cell | kReal64Cell)) {
        return ColumnType::Real64;
    }
    if (isWithin(kDateCell)) {
        return ColumnType::Date;
    }
    if (isWithin(kDateCell | kDateTimeCell)) {
        return ColumnType::DateTime;
    }
    return ColumnType::String;
}

}  // namespace lumhost
