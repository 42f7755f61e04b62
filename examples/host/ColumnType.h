#pragma once

#include <optional>

namespace lumhost {

/// The types that a column of a file can have.
enum class ColumnType { Bool, Int32, Int64, Real32, Real64, String, Date, DateTime, Color };

/// The type of a one-letter code, one of b i l f r s d t c; nothing for any other letter.
std::optional<ColumnType> ColumnTypeFromCode(char code);

/// The name of the type, as in "Int32".
const char* GetName(ColumnType type);

}  // namespace lumhost
