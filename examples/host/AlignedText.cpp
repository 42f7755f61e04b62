#include "AlignedText.h"

#include <algorithm>

#include "DisplayText.h"

namespace lumhost {

std::string AlignColumns(const std::vector<TextColumn>& columns) {
    std::vector<std::size_t> widths;
    for (const TextColumn& column : columns) {
        std::size_t width = 0;
        for (const std::string& cell : column.cells) {
            width = std::max(width, DisplayWidth(cell));
        }
        widths.push_back(width);
    }
    std::string text;
    const std::size_t rowCount = columns.empty() ? 0 : columns[0].cells.size();
    for (std::size_t row = 0; row < rowCount; ++row) {
        text += row == 0 ? "" : "\n";
        std::size_t pending = 0;  // Blanks that are due if anything follows in the line.
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const std::string& cell = columns[i].cells[row];
            const std::size_t room = widths[i] - DisplayWidth(cell);
            const std::size_t before = columns[i].isRightAligned ? room : 0;
            if (!cell.empty()) {
                text.append(pending + before, ' ').append(cell);
                pending = 0;
            }
            pending += (cell.empty() ? widths[i] : room - before) + 2;
        }
    }
    return text;
}

}  // namespace lumhost
