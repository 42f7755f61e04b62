#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "core/main/serialize/NumberWriter.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/utility/LumColor.h"
#include "lum/core/utility/LumDateTime.h"
#include "lum/core/utility/RIndirectString.h"

namespace lum::core {

// Elements as JSON text, of bounded length but for strings. A cell is named after the store type that it writes, and
// has
//
//   Storage      the type that columns of it are stored in
//   kMaxUnits    how long its text can become
//   Write        writes a stored value at `out`, quoted where JSON has no literal for it, and gives
//                the end. It may touch the units up to `out` + kMaxUnits + kNumberCapacity.
//
// All of them keep no state and take no lock.

struct BoolCell {
    using Storage = unsigned char;
    static constexpr std::size_t kMaxUnits = 5;
    static char16_t* Write(unsigned char stored, char16_t* out) noexcept {
        // Copied whole and cut by the length: a column of truth values is hard to predict.
        static constexpr char16_t kTexts[2][kMaxUnits] = {{u'f', u'a', u'l', u's', u'e'},
                                                          {u't', u'r', u'u', u'e'}};
        const bool value = stored != 0;
        std::memcpy(out, kTexts[value], sizeof(kTexts[value]));
        return out + (kMaxUnits - value);
    }
};

struct Int32Cell {
    using Storage = unsigned int;
    static constexpr std::size_t kMaxUnits = 11;
    static char16_t* Write(unsigned int stored, char16_t* out) noexcept {
        return WriteInt32(std::bit_cast<int>(stored), out);
    }
};

struct Int64Cell {
    using Storage = unsigned long long;
    static constexpr std::size_t kMaxUnits = 20;
    static char16_t* Write(unsigned long long stored, char16_t* out) noexcept {
        return WriteInt64(std::bit_cast<long long>(stored), out);
    }
};

// "nan", "+inf" or "-inf".
std::u16string_view GetNonFiniteText(double value) noexcept;
// The same in quotes.
char16_t* WriteQuotedNonFinite(double value, char16_t* out) noexcept;

struct Real32Cell {
    using Storage = unsigned int;
    static constexpr std::size_t kMaxUnits = 14;
    static char16_t* Write(unsigned int stored, char16_t* out) noexcept {
        const auto value = std::bit_cast<float>(stored);
        if (!std::isfinite(value)) [[unlikely]] {
            return WriteQuotedNonFinite(double{value}, out);
        }
        return WriteReal32(value, out);
    }
};

struct Real64Cell {
    using Storage = unsigned long long;
    static constexpr std::size_t kMaxUnits = 24;
    static char16_t* Write(unsigned long long stored, char16_t* out) noexcept {
        const auto value = std::bit_cast<double>(stored);
        if (!std::isfinite(value)) [[unlikely]] {
            return WriteQuotedNonFinite(value, out);
        }
        return WriteReal64(value, out);
    }
};

// A Date or a DateTime. Errors: those of LumDateTime::ToString.
struct DateCell {
    using Storage = unsigned long long;
    static constexpr std::size_t kMaxUnits = 27;
    static char16_t* Write(unsigned long long stored, char16_t* out);
    // What is written under a special kind, where any number may stand: the default date for one
    // that has no text.
    static unsigned long long ToPlaceholder(unsigned long long stored) noexcept {
        const LumDateTime date = LumDateTime::FromValue(stored);
        return (date.IsValid() ? date : LumDateTime()).GetValue();
    }
};

// Eight hexadecimal digits; as a number, a colour is written by Int32Cell.
struct ColorCell {
    using Storage = unsigned int;
    static constexpr std::size_t kMaxUnits = 10;
    static char16_t* Write(unsigned int stored, char16_t* out) noexcept;
};

// A string, as it stands between the quotes but for JSON's escapes; it has no bound, so the writer of
// items knows it by name.
struct StringCell {
    using Storage = RIndirectString;
};

// A special kind as a JSON string.
struct KindCell {
    using Storage = SpecialKind;
    static constexpr std::size_t kMaxUnits = 12;
    // Errors: those of SpecialKindToString.
    static char16_t* Write(SpecialKind kind, char16_t* out);
};

}  // namespace lum::core
