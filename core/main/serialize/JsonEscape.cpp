#include "core/main/serialize/JsonEscape.h"

#include <algorithm>

#include "core/main/serialize/NumberWriter.h"

namespace lum::core {
namespace {

constexpr std::size_t kMaxEscapeUnits = 6;

bool NeedsEscape(char16_t unit) {
    return unit < 32 || unit == u'"' || unit == u'\\';
}

// CopyUntilEscape for at least one block of units. The last block overlaps the one before.
template <typename Block>
inline std::size_t CopyBlocks(const char16_t* units, std::size_t count, char16_t* out) {
    const std::size_t last = count - Block::kUnits;
    for (std::size_t i = 0;; i = std::min(i + Block::kUnits, last)) {
        const Block block(units + i);
        block.Store(out + i);
        const std::size_t found = block.FindEscape();
        if (found != Block::kUnits) {
            return i + found;
        }
        if (i == last) {
            return count;
        }
    }
}

char16_t* WriteEscape(char16_t unit, char16_t* out) {
    out[0] = u'\\';
    switch (unit) {
        case u'\b':
            out[1] = u'b';
            break;
        case u'\t':
            out[1] = u't';
            break;
        case u'\n':
            out[1] = u'n';
            break;
        case u'\f':
            out[1] = u'f';
            break;
        case u'\r':
            out[1] = u'r';
            break;
        case u'"':
        case u'\\':
            out[1] = unit;
            break;
        default:
            out[1] = u'u';
            out[2] = u'0';
            out[3] = u'0';
            return WriteHex2(static_cast<unsigned char>(unit), out + 4);
    }
    return out + 2;
}

}  // namespace

std::size_t CopyUntilEscape(const char16_t* units, std::size_t count, char16_t* out) noexcept {
#if defined(__SSE2__)
    if (count >= detail::VectorBlock::kUnits) {
        return CopyBlocks<detail::VectorBlock>(units, count, out);
    }
#endif
    if (count >= detail::WordBlock::kUnits) {
        return CopyBlocks<detail::WordBlock>(units, count, out);
    }
    std::size_t copied = 0;
    for (; copied < count && !NeedsEscape(units[copied]); ++copied) {
        out[copied] = units[copied];
    }
    return copied;
}

char16_t* WriteEscaped(TextRoom& room, const char16_t* units, std::size_t count, char16_t* out) {
    for (;;) {
        out = room.Ensure(out, count);
        const std::size_t copied = CopyUntilEscape(units, count, out);
        out += copied;
        if (copied == count) {
            return out;
        }
        out = WriteEscape(units[copied], room.Ensure(out, kMaxEscapeUnits));
        units += copied + 1;
        count -= copied + 1;
    }
}

}  // namespace lum::core
