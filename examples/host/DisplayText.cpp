#include "DisplayText.h"

#include <algorithm>
#include <iterator>

namespace lumhost {
namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// The blocks that matter, after Unicode Standard Annex 11 (East Asian Width) and Markus Kuhn's
// wcwidth (2007). A rare character outside of them only shifts what stands behind it in its line.
constexpr Range kMarks[] = {{0x0300, 0x036F}, {0x0483, 0x0489},  {0x0591, 0x05BD}, {0x064B, 0x065F},
                            {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E},  {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF},
                            {0x200B, 0x200D}, {0x20D0, 0x20FF},  {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F},
                            {0xFEFF, 0xFEFF}, {0xE0100, 0xE01EF}};
constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0x4DBF},   {0x4E00, 0xA4CF},  {0xA960, 0xA97F},
    {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},  {0xFFE0, 0xFFE6},
    {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};
// Besides the controls proper: what ends lines, and what turns the direction of text around.
constexpr Range kControls[] = {
    {0x00, 0x1F}, {0x7F, 0x9F}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}};

template <std::size_t N>
bool Contains(const Range (&ranges)[N], char32_t character) {
    const Range* const range =
        std::partition_point(std::begin(ranges), std::end(ranges),
                             [&](const Range& other) { return other.last < character; });
    return range != std::end(ranges) && range->first <= character;
}

std::size_t WidthOf(char32_t character) {
    return Contains(kMarks, character) ? 0 : Contains(kWide, character) ? 2 : 1;
}

// Takes the first character off the text, with its bytes. A byte that begins none stands for
// itself.
struct Character {
    explicit Character(std::string_view& text) {
        const auto lead = static_cast<unsigned char>(text[0]);
        const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        bytes = text.substr(0, length);
        code = length == 1 ? lead : lead & (0x7Fu >> length);
        for (const char byte : bytes.substr(1)) {
            code = code << 6 | (static_cast<unsigned char>(byte) & 0x3Fu);
        }
        text.remove_prefix(bytes.size());
    }

    std::string_view bytes;
    char32_t code;
};

}  // namespace

std::size_t DisplayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        width += WidthOf(Character(text).code);
    }
    return width;
}

std::string FitForDisplay(std::string_view text, std::size_t maxWidth) {
    std::string fitted;
    std::size_t width = 0;
    // What is kept if the text turns out to be too long, since the dots take a column too.
    std::size_t keptBytes = 0;
    while (!text.empty()) {
        const Character character(text);
        width += WidthOf(character.code);
        if (width > maxWidth) {
            fitted.resize(keptBytes);
            return fitted + "…";
        }
        if (Contains(kControls, character.code)) {
            fitted += '?';
        } else {
            fitted += character.bytes;
        }
        keptBytes = width < maxWidth ? fitted.size() : keptBytes;
    }
    return fitted;
}

}  // namespace lumhost
