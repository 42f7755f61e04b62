#pragma once

#include <string>
#include <utility>
#include <vector>

#include "ColumnType.h"
#include "Progress.h"
#include "TextSource.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/RInternString.h"

namespace lumhost {

struct CsvImportOptions {
    /// The first row holds the columns' names; otherwise they are called c1, c2, and so on.
    bool hasHeader = true;
    /// The types of single columns, by name. The other columns' types are inferred.
    std::vector<std::pair<std::string, ColumnType>> types;
};

struct NamedColumn {
    lum::core::RInternString name;
    lum::core::SV values;  ///< an array
};

/// Reads comma-separated text into typed arrays of equal length, in the order of the columns. Cells
/// without a value are Null (ColumnInference and ColumnBuilder say which those are).
///
/// The text is read twice: once to find the types and to count the rows, once to fill the arrays,
/// which are made at their full size at once. So at no time is there more in memory than the arrays
/// and a buffer.
///
/// Errors: FileError for text that CsvReader refuses, a column without a name or with the name of
///   another one, a type for a column that is not there, a cell that cannot be read as the type
///   that was asked for, text that is not UTF-8, and a file that changes meanwhile.
std::vector<NamedColumn> ImportCsv(TextSource& source, const CsvImportOptions& options,
                                   Progress& progress);

}  // namespace lumhost
