#pragma once

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/main/serialize/TextRoom.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

// Units that a JSON string has to escape are those below 32, the quote and the backslash.

// Copies units up to the first one that needs an escape, and gives their number, which is `count`
// where there is none. Any of the `count` units from `out` on may be overwritten.
std::size_t CopyUntilEscape(const char16_t* units, std::size_t count, char16_t* out) noexcept;

// Writes units as the inside of a JSON string, all but the quotes, and gives the end. The units do
// not stand in the text that `room` belongs to.
char16_t* WriteEscaped(TextRoom& room, const char16_t* units, std::size_t count, char16_t* out);

namespace detail {

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
    void Store(char16_t* out) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(out), m_units); }
    // Two bits for each unit, the first one lowest; set where it needs an escape.
    std::uint32_t GetEscapes() const {
        // 0 for all units up to 31.
        const __m128i above = _mm_subs_epu16(m_units, _mm_set1_epi16(31));
        const __m128i isControl = _mm_cmpeq_epi16(above, _mm_setzero_si128());
        const __m128i isQuote = _mm_cmpeq_epi16(m_units, _mm_set1_epi16(u'"'));
        const __m128i isBackslash = _mm_cmpeq_epi16(m_units, _mm_set1_epi16(u'\\'));
        const __m128i found = _mm_or_si128(isControl, _mm_or_si128(isQuote, isBackslash));
        return static_cast<std::uint32_t>(_mm_movemask_epi8(found));
    }
    std::size_t FindEscape() const {
        return static_cast<std::size_t>(std::countr_zero(GetEscapes() | 1u << 16)) / 2;
    }

private:
    __m128i m_units;
};
#endif

}  // namespace detail

// Room that CopyTextUntilEscape takes beyond the text.
inline constexpr std::size_t kCopyTextSlack = 8;

// CopyUntilEscape of a whole text, for loops over many short ones; `out` has room for
// kCopyTextSlack units more. What columns hold most, up to 16 units, goes as two blocks that may
// overlap, and without a branch on the length, which no processor can predict.
inline std::size_t CopyTextUntilEscape(const TStringCore& text, char16_t* out) noexcept {
    const char16_t* const units = text.data();
    const std::size_t length = text.length();
#if defined(__SSE2__)
    using detail::VectorBlock;
    static_assert(TStringCore::kInlineCapacity >= VectorBlock::kUnits);
    // A whole block can be read where the units stand in the text object itself.
    const bool isInline = units == static_cast<const void*>(&text);
    const bool canReadBlock = isInline | (length >= VectorBlock::kUnits);
    if (canReadBlock & (length <= 2 * VectorBlock::kUnits)) [[likely]] {
        const auto beyond = static_cast<std::ptrdiff_t>(length - VectorBlock::kUnits);
        const std::ptrdiff_t second = beyond & ~(beyond >> 63);  // 0 where the first has it all.
        const VectorBlock firstBlock(units);
        const VectorBlock secondBlock(units + second);
        firstBlock.Store(out);
        secondBlock.Store(out + second);
        const std::uint32_t escapes = firstBlock.GetEscapes() | secondBlock.GetEscapes();
        const std::uint64_t ofText = (std::uint64_t{1} << 2 * length) - 1;
        if ((escapes & ofText) == 0) [[likely]] {
            return length;
        }
    }
#endif
    return CopyUntilEscape(units, length, out);
}

}  // namespace lum::core
