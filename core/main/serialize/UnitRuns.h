#pragma once

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <string_view>

namespace lum::core {

// Where runs of units end, sixteen units at a time where the processor can: where words and quoted
// texts end follows no pattern, and a loop that tests unit by unit pays for a mispredicted branch
// at each of them.

// Units [at, end) that are looked at, in memory that may be read up to `readableEnd`. A part of a
// larger text can say so, and then its last few units are looked at together, too.
struct UnitRange {
    const char16_t* end;
    const char16_t* readableEnd;
};

constexpr std::size_t kVtlClassCount = 128;

constexpr std::array<bool, kVtlClassCount> MakeWordParts() {
    std::array<bool, kVtlClassCount> isWordPart{};
    for (const char16_t unit : std::u16string_view(
             u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789^_~=#.?-")) {
        isWordPart[unit] = true;
    }
    return isWordPart;
}
inline constexpr std::array<bool, kVtlClassCount> kIsWordPart = MakeWordParts();

// Whether a word goes on with that unit.
struct IsWordPart {
    static bool Test(char16_t unit) noexcept { return unit < kVtlClassCount && kIsWordPart[unit]; }
#if defined(__SSE2__)
    static __m128i Test(__m128i units) noexcept;
#endif
};

// Whether a key path of words and their types, without blanks, goes on with that unit.
struct IsPathPart {
    static bool Test(char16_t unit) noexcept {
        return IsWordPart::Test(unit) || unit == u'/' || unit == u':' || unit == u'<' ||
               unit == u',' || unit == u'>';
    }
#if defined(__SSE2__)
    static __m128i Test(__m128i units) noexcept;
#endif
};

// Whether a unit is not that one, or none of those.
template <char16_t... kStops>
struct IsNoneOf {
    static bool Test(char16_t unit) noexcept { return ((unit != kStops) && ...); }
#if defined(__SSE2__)
    static __m128i Test(__m128i units) noexcept;
#endif
};

struct IsBlank {
    static bool Test(char16_t unit) noexcept { return unit == u' '; }
#if defined(__SSE2__)
    static __m128i Test(__m128i units) noexcept;
#endif
};

#if defined(__SSE2__)
namespace detail {

inline constexpr std::ptrdiff_t kBlockUnits = 16;

// Sixteen units as bytes. Those above 0xFF become 0 or 0xFF, which none of the tests asks for.
inline __m128i LoadBlock(const char16_t* units) noexcept {
    const auto* const blocks = reinterpret_cast<const __m128i*>(units);
    return _mm_packus_epi16(_mm_loadu_si128(blocks), _mm_loadu_si128(blocks + 1));
}
inline __m128i Equal(__m128i units, char unit) noexcept {
    return _mm_cmpeq_epi8(units, _mm_set1_epi8(unit));
}
// Whether units lie in [first, first + count].
inline __m128i InRange(__m128i units, char first, char count) noexcept {
    const __m128i distance = _mm_sub_epi8(units, _mm_set1_epi8(first));
    return _mm_cmpeq_epi8(_mm_subs_epu8(distance, _mm_set1_epi8(count)), _mm_setzero_si128());
}

}  // namespace detail

inline __m128i IsWordPart::Test(__m128i units) noexcept {
    using detail::Equal;
    using detail::InRange;
    const __m128i isLetter = InRange(_mm_or_si128(units, _mm_set1_epi8(0x20)), 'a', 25);
    // "-./0123456789" but for the slash.
    const __m128i isDigit = _mm_andnot_si128(Equal(units, '/'), InRange(units, '-', '9' - '-'));
    // Two signs that differ in one bit are tested at once.
    const __m128i isCaretOrLine = Equal(_mm_or_si128(units, _mm_set1_epi8(1)), '_');
    const __m128i isEqualsOrQuery = Equal(_mm_or_si128(units, _mm_set1_epi8(2)), '?');
    const __m128i isOther = _mm_or_si128(Equal(units, '#'), Equal(units, '~'));
    return _mm_or_si128(_mm_or_si128(isLetter, isDigit),
                        _mm_or_si128(_mm_or_si128(isCaretOrLine, isEqualsOrQuery), isOther));
}

inline __m128i IsPathPart::Test(__m128i units) noexcept {
    using detail::Equal;
    const __m128i isSlashOrColon = _mm_or_si128(Equal(units, '/'), Equal(units, ':'));
    const __m128i isAngle = Equal(_mm_or_si128(units, _mm_set1_epi8(2)), '>');
    const __m128i isTypePart = _mm_or_si128(isAngle, Equal(units, ','));
    return _mm_or_si128(IsWordPart::Test(units), _mm_or_si128(isSlashOrColon, isTypePart));
}

template <char16_t... kStops>
__m128i IsNoneOf<kStops...>::Test(__m128i units) noexcept {
    __m128i isStop = _mm_setzero_si128();
    ((isStop = _mm_or_si128(isStop, detail::Equal(units, static_cast<char>(kStops)))), ...);
    return _mm_cmpeq_epi8(isStop, _mm_setzero_si128());
}

inline __m128i IsBlank::Test(__m128i units) noexcept {
    return detail::Equal(units, ' ');
}
#endif

// The first place from `at` on whose unit is not in the class; the end where there is none.
template <typename Class>
const char16_t* SkipRun(const char16_t* at, const UnitRange& range) noexcept {
#if defined(__SSE2__)
    while (range.readableEnd - at >= detail::kBlockUnits) {
        const auto isIn =
            static_cast<unsigned int>(_mm_movemask_epi8(Class::Test(detail::LoadBlock(at))));
        if (isIn != 0xFFFF) {
            return std::min(at + std::countr_one(isIn), range.end);
        }
        at += detail::kBlockUnits;
        if (at >= range.end) {
            return range.end;
        }
    }
#endif
    while (at < range.end && Class::Test(*at)) {
        ++at;
    }
    return at;
}

}  // namespace lum::core
