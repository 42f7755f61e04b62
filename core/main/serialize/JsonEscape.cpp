#include "core/main/serialize/JsonEscape.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "core/main/serialize/NumberWriter.h"

namespace lum::core {
namespace {

constexpr std::size_t kMaxEscapeUnits = 6;

bool NeedsEscape(char16_t unit) { return unit < 32 || unit == u'"' || unit == u'\\'; }

// Blocks of units -------------------------------------------------------------------------------

// Four units in a word, the first one in the lowest bits.
class WordBlock {
public:
    static constexpr std::size_t kUnits = 4;
    static_assert(std::endian::native == std::endian::little);

    explicit WordBlock(const char16_t* units) { std::memcpy(&m_units, units, sizeof(m_units)); }
    void Store(char16_t* out) const { std::memcpy(out, &m_units, sizeof(m_units)); }
    // The place of the first unit that needs an escape; kUnits without one.
    std::size_t FindEscape() const {
        // A borrow can mark a lane above one that is found, but never one below.
        const std::uint64_t found = ZeroLanes(m_units & 0xffe0'ffe0'ffe0'ffe0) |
                                    ZeroLanes(m_units ^ kLanes * u'"') |
                                    ZeroLanes(m_units ^ kLanes * u'\\');
        return static_cast<std::size_t>(std::countr_zero(found)) / 16;
    }

private:
    static constexpr std::uint64_t kLanes = 0x0001'0001'0001'0001;

    static std::uint64_t ZeroLanes(std::uint64_t lanes) {
        return (lanes - kLanes) & ~lanes & kLanes << 15;
    }

    std::uint64_t m_units;
};

#if defined(__SSE2__)
class VectorBlock {
public:
    static constexpr std::size_t kUnits = 8;

    explicit VectorBlock(const char16_t* units)
        : m_units(_mm_loadu_si128(reinterpret_cast<const __m128i*>(units))) {}
    void Store(char16_t* out) const {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), m_units);
    }
    std::size_t FindEscape() const {
        // 0 for all units up to 31.
        const __m128i above = _mm_subs_epu16(m_units, _mm_set1_epi16(31));
        const __m128i isControl = _mm_cmpeq_epi16(above, _mm_setzero_si128());
        const __m128i isQuote = _mm_cmpeq_epi16(m_units, _mm_set1_epi16(u'"'));
        const __m128i isBackslash = _mm_cmpeq_epi16(m_units, _mm_set1_epi16(u'\\'));
        const __m128i found = _mm_or_si128(isControl, _mm_or_si128(isQuote, isBackslash));
        const auto bytes = static_cast<std::uint32_t>(_mm_movemask_epi8(found));
        return static_cast<std::size_t>(std::countr_zero(bytes | 1u << 16)) / 2;
    }

private:
    __m128i m_units;
};
#endif

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
    if (count >= VectorBlock::kUnits) {
        return CopyBlocks<VectorBlock>(units, count, out);
    }
#endif
    if (count >= WordBlock::kUnits) {
        return CopyBlocks<WordBlock>(units, count, out);
    }
    std::size_t copied = 0;
    for (; copied < count && !NeedsEscape(units[copied]); ++copied) {
        out[copied] = units[copied];
    }
    return copied;
}

void AppendEscaped(TextRoom& room, const char16_t* units, std::size_t count) {
    for (;;) {
        char16_t* const out = room.Ensure(count);
        const std::size_t copied = CopyUntilEscape(units, count, out);
        room.SetEnd(out + copied);
        if (copied == count) {
            return;
        }
        room.SetEnd(WriteEscape(units[copied], room.Ensure(kMaxEscapeUnits)));
        units += copied + 1;
        count -= copied + 1;
    }
}

}  // namespace lum::core
