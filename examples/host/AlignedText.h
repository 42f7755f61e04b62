#pragma once

#include <string>
#include <vector>

namespace lumhost {

/// The cells of one column, from the top down, in UTF-8.
struct TextColumn {
    std::vector<std::string> cells;
    bool isRightAligned = false;
};

/// The columns side by side, two blanks apart, each as wide as its widest cell on a terminal: a
/// line for each row, without blanks at its end, all but the last with a line feed. The columns
/// have as many cells as the first.
std::string AlignColumns(const std::vector<TextColumn>& columns);

}  // namespace lumhost
