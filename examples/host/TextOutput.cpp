#include "TextOutput.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace lumhost {

void WriteLine(std::ostream& out, const lum::core::TStringCore& text) {
    // Piece by piece, since the text of a large store would otherwise stand in memory twice.
    constexpr std::size_t kPiece = std::size_t{1} << 16;
    for (std::size_t position = 0; position < text.length();) {
        std::size_t count = std::min(kPiece, text.length() - position);
        const char16_t last = text[position + count - 1];
        const bool cutsPair = last >= 0xD800 && last < 0xDC00 && count > 1;
        count -= cutsPair ? 1 : 0;
        out << text.mid(position, count);
        position += count;
    }
    out << '\n' << std::flush;
    if (!out) {
        throw std::runtime_error("the output cannot be written");
    }
}

}  // namespace lumhost
