#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "ColumnType.h"
#include "CsvRows.h"
#include "lum/core/store/StoreValueFwd.h"

namespace lumhost {

/// Collects the cells of one column of a file and makes an array of them.
///
/// Threads: one thread at a time.
/// Errors: FileError with the line of a cell that cannot be read as the column's type, or that is
///   not UTF-8.
class ColumnBuilder {
public:
    virtual ~ColumnBuilder() = default;

    /// Takes in one column of `rows`. Cells without a value become Null; so does the text "" in a
    /// column that is not a String.
    virtual void Append(const CsvRows& rows, std::size_t column) = 0;

    /// The array of all cells so far. The builder is empty afterwards.
    virtual lum::core::SV Finish() = 0;
};

/// `file` and `name` are those of messages; `rowCount` is how many cells to make room for.
std::unique_ptr<ColumnBuilder> MakeColumnBuilder(ColumnType type, const std::string& file,
                                                 const std::string& name, std::size_t rowCount);

}  // namespace lumhost
