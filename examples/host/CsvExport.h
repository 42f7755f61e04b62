#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "CsvImport.h"

namespace lumhost {

/// Writes the columns, which are of one length, as comma-separated text by RFC 4180, with their
/// names as the first row. ImportCsv reads back the same columns, but for texts that look like
/// numbers, dates or truth values throughout their column, and for colours, which it takes for
/// texts or numbers unless it is told the types; for Real32, which come back as Real64; and for
/// integers and dates of a type wider than their column needs.
/// Errors: FileError, for `file`, for a column of rows or collections, and for a special cell other
///   than Null, which the text cannot tell; what was written before is of no use then.
void ExportCsv(const std::vector<NamedColumn>& columns, std::ostream& out, const std::string& file);

}  // namespace lumhost
