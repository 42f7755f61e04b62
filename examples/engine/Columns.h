#pragma once

#include <vector>

#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/LumError.h"
#include "lum/core/utility/LumSize.h"

/// Columns and rows, as the operators read, choose and build them.
///
/// Threads: any. Ownership: what is made shares storage with what it was made from where told.
/// Errors: those of the library's factories; as told.
namespace lumengine {

using Rows = std::vector<unsigned>;

bool IsArray(const lum::core::SV& value);
bool IsTable(const lum::core::SV& value);

/// How many rows a table has, or elements another collection of one type.
lum::core::lumsize_t CountRows(const lum::core::SV& value);

/// An array as it is, or the members of a set in any order. Errors: `otherwise` for any other
/// value.
lum::core::SV ToColumn(const lum::core::SV& value, lum::core::LumError otherwise);
/// What was made of ToColumn(source), as a set where `source` is one.
lum::core::SV ToFormOf(const lum::core::SV& source, const lum::core::SV& column);

/// The kind of each element of an array; empty where none is special.
std::vector<lum::core::SpecialKind> KindsOf(const lum::core::SV& column);

/// Rows of an array or a table, which share its storage. `keepsOrder` says that none stands before
/// one that it follows there.
lum::core::SV SelectRows(const lum::core::SV& value, Rows&& rows, bool keepsOrder);

/// Primitives of one type, special or not, as a column; there is one at least.
lum::core::SV ColumnOf(const std::vector<lum::core::SV>& scalars);

}  // namespace lumengine
