#pragma once

#include <cstddef>

#include "ColumnType.h"
#include "CsvRows.h"

namespace lumhost {

/// Whether a field is a cell without a value: empty or NA, and not in quotes. Quotes make text of
/// it, so that the country code "NA" and the text "" can be written.
inline bool IsNullField(const CsvField& field) {
    return !field.isQuoted && (field.length == 0 ||
                               (field.length == 2 && field.data[0] == 'N' && field.data[1] == 'A'));
}

/// Finds the narrowest type that holds every cell of a column and loses nothing. The order of the
/// rows has no influence.
///
///  - Cells without a value fit every type. Quotes alone do not make text of a number or a date,
///    since many programs write them around every field.
///  - Bool, Int32, Int64, Real64, Date and DateTime each need all cells to be of that kind
///    (CellKind tells them apart), where Int32 widens to Int64, a Date to the DateTime of its
///    midnight, and an integer to Real64 if a real holds it exactly.
///  - Anything else is String, and so is a column in which no cell has a value.
class ColumnInference {
public:
    /// Takes in the cells of one column of `rows`.
    void Add(const CsvRows& rows, std::size_t column);

    ColumnType GetType() const;

private:
    unsigned m_kinds = 0;  // CellKind bits of the cells so far.
};

}  // namespace lumhost
