#pragma once

#include <string>
#include <vector>

#include "CsvImport.h"
#include "lum/core/utility/LumSize.h"

namespace lumhost {

/// The columns, which are of one length, as people look at a table: their names, a rule, and the
/// first `maxRows` rows, aligned, numbers to the right. A special cell is the name of its kind in
/// angle brackets, <Null>; a text in such brackets stands in single quotes. Long texts are cut.
/// A last line says how many rows there are beyond.
/// Errors: those of ColumnCells; IllegalSpecialKind for a kind without a name.
/// Cost: that of the rows that are shown.
std::string FormatTable(const std::vector<NamedColumn>& columns, lum::core::lumsize_t maxRows);

}  // namespace lumhost
