#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/main/serialize/VtlToken.h"
#include "lum/core/serialize/SpecialKindUtil.h"

namespace lum::core {

// The words that are no identifiers. The names of the special kinds stand under their numbers, and
// behind them the others. The name of Normal is none: 0 stands for no keyword.
inline constexpr unsigned int kTrue = kSpecialKindCount;
inline constexpr unsigned int kFalse = kTrue + 1;
inline constexpr unsigned int kInf = kTrue + 2;
inline constexpr unsigned int kNan = kTrue + 3;
inline constexpr unsigned int kKeywordCount = kTrue + 4;

constexpr std::array<std::u16string_view, kKeywordCount> MakeKeywords() {
    std::array<std::u16string_view, kKeywordCount> keywords;
    for (unsigned int i = 1; i < kSpecialKindCount; ++i) {
        keywords[i] = kSpecialKindNames[i];
    }
    keywords[kTrue] = u"true";
    keywords[kFalse] = u"false";
    keywords[kInf] = u"inf";
    keywords[kNan] = u"nan";
    return keywords;
}

inline constexpr std::array<std::u16string_view, kKeywordCount> kKeywords = MakeKeywords();

namespace detail {

// For each unit the lengths of the keywords that begin with it, as a set of bits: words are tested
// all the time, and this tells nearly all of them from keywords without looking at a second unit.
constexpr std::array<std::uint16_t, 128> MakeKeywordLengths() {
    std::array<std::uint16_t, 128> lengths{};
    for (unsigned int i = 1; i < kKeywordCount; ++i) {
        lengths[kKeywords[i][0]] |= static_cast<std::uint16_t>(1u << kKeywords[i].size());
    }
    return lengths;
}

inline constexpr std::array<std::uint16_t, 128> kKeywordLengths = MakeKeywordLengths();

}  // namespace detail

// The number of the keyword that `word`, which begins with an ASCII unit, is; 0 for none.
inline unsigned int FindKeyword(std::u16string_view word) noexcept {
    if (word.size() >= 16 || (detail::kKeywordLengths[word[0]] >> word.size() & 1) == 0)
        [[likely]] {
        return 0;
    }
    for (unsigned int i = 1; i < kKeywordCount; ++i) {
        if (word == kKeywords[i]) {
            return i;
        }
    }
    return 0;
}

}  // namespace lum::core
