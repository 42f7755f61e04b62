#pragma once

#include <memory>
#include <string>

#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"

namespace lumhost {

/// A walk down a column, which gives the text of one cell after the other.
///
/// Numbers are the shortest text that reads back as the same number, and a real always has a point
/// or an exponent; texts are UTF-8 as they stand; a Date is 2012-01-31, a DateTime has a time of
/// day even at midnight; colours are eight hexadecimal digits. Rows and values of the host's own
/// are JSON, and of collections there is the type and the count.
///
/// Threads: one thread at a time.
/// Ownership: the walk holds a share of the column.
class ColumnCells {
public:
    virtual ~ColumnCells() = default;

    /// Appends the text of the next cell, which is there, and gives its kind. Nothing is appended
    /// for a special cell. Errors: InvalidDateTime for a date out of range; OutOfBounds where an
    /// index of the column lies outside its storage.
    virtual lum::core::SpecialKind TakeNext(std::string& text) = 0;
};

/// A walk from the first cell of an array on. The type is looked at here, once a column.
std::unique_ptr<ColumnCells> MakeColumnCells(const lum::core::SV& column);

/// Whether cells of the type are one plain value each, which a comma-separated file can hold.
bool IsPlain(const lum::core::Type& elementType);

}  // namespace lumhost
