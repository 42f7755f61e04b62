#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lumhost {

/// How many columns of a terminal the text takes, which is UTF-8: two for the wide characters of
/// East Asia and for pictures, none for marks that stand on the character before.
std::size_t DisplayWidth(std::string_view text);

/// The text as one cell of a table, harmless to a terminal: with a question mark for each control
/// character, and cut to `maxWidth` columns, which then end with "…".
std::string FitForDisplay(std::string_view text, std::size_t maxWidth);

}  // namespace lumhost
