#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "core/main/serialize/NumberWriter.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/LumColor.h"
#include "lum/core/utility/LumDateTime.h"
#include "lum/core/utility/LumTuple.h"
#include "lum/core/utility/RIndirectString.h"

namespace lum::core {

// Elements as JSON text. A cell is named after the store type that it writes, and has
//
//   Storage    the type that columns of it are stored in
//   ToNative   a stored element as the value that it is, which has an order
//
// and, for elements of bounded length,
//
//   kMaxUnits  how long the text can become
//   Write      writes a stored element at `out`, in quotes where JSON has no literal for it, and
//              gives the end. It may touch the units up to `out` + kMaxUnits + kNumberCapacity.
//
// None of them keeps a state.

struct BoolCell {
    using Storage = unsigned char;
    static constexpr std::size_t kMaxUnits = 5;
    static bool ToNative(unsigned char stored) noexcept { return stored != 0; }
    static char16_t* Write(unsigned char stored, char16_t* out) noexcept {
        // Copied whole and cut by the length, since truth values are hard to predict.
        static constexpr char16_t kTexts[2][kMaxUnits] = {{u'f', u'a', u'l', u's', u'e'},
                                                          {u't', u'r', u'u', u'e'}};
        const bool value = ToNative(stored);
        std::memcpy(out, kTexts[value], sizeof(kTexts[value]));
        return out + (kMaxUnits - value);
    }
};

struct Int32Cell {
    using Storage = unsigned int;
    static constexpr std::size_t kMaxUnits = 11;
    static int ToNative(unsigned int stored) noexcept { return std::bit_cast<int>(stored); }
    static char16_t* Write(unsigned int stored, char16_t* out) noexcept {
        return WriteInt32(ToNative(stored), out);
    }
};

struct Int64Cell {
    using Storage = unsigned long long;
    static constexpr std::size_t kMaxUnits = 20;
    static long long ToNative(unsigned long long stored) noexcept {
        return std::bit_cast<long long>(stored);
    }
    static char16_t* Write(unsigned long long stored, char16_t* out) noexcept {
        return WriteInt64(ToNative(stored), out);
    }
};

// "nan", "+inf" or "-inf".
std::u16string_view GetNonFiniteText(double value) noexcept;
// The same in quotes.
char16_t* WriteQuotedNonFinite(double value, char16_t* out) noexcept;

struct Real32Cell {
    using Storage = unsigned int;
    static constexpr std::size_t kMaxUnits = 14;
    static float ToNative(unsigned int stored) noexcept { return std::bit_cast<float>(stored); }
    static char16_t* Write(unsigned int stored, char16_t* out) noexcept {
        const float value = ToNative(stored);
        return std::isfinite(value) ? WriteReal32(value, out)
                                    : WriteQuotedNonFinite(double{value}, out);
    }
};

struct Real64Cell {
    using Storage = unsigned long long;
    static constexpr std::size_t kMaxUnits = 24;
    static double ToNative(unsigned long long stored) noexcept {
        return std::bit_cast<double>(stored);
    }
    static char16_t* Write(unsigned long long stored, char16_t* out) noexcept {
        const double value = ToNative(stored);
        return std::isfinite(value) ? WriteReal64(value, out) : WriteQuotedNonFinite(value, out);
    }
};

// A Date or a DateTime.
struct DateCell {
    using Storage = unsigned long long;
    static constexpr std::size_t kMaxUnits = 27;
    static LumDateTime ToNative(unsigned long long stored) noexcept {
        return LumDateTime::FromValue(stored);
    }
    // Errors: those of LumDateTime::ToString.
    static char16_t* Write(unsigned long long stored, char16_t* out);
    // What is written below a special kind, where any number may stand: the default date for one
    // that has no text.
    static unsigned long long ToPlaceholder(unsigned long long stored) noexcept {
        return ToNative(stored).IsValid() ? stored : LumDateTime().GetValue();
    }
};

// Eight hexadecimal digits; as a number, a colour is written by Int32Cell.
struct ColorCell {
    using Storage = unsigned int;
    static constexpr std::size_t kMaxUnits = 10;
    static LumColor ToNative(unsigned int stored) noexcept {
        return LumColor::FromInt32(std::bit_cast<int>(stored));
    }
    static char16_t* Write(unsigned int stored, char16_t* out) noexcept;
};

struct StringCell {
    using Storage = RIndirectString;
    static const TStringCore& ToNative(const RIndirectString& stored) noexcept { return stored; }
};

struct RowCell {
    using Storage = LumTuple;
    static const LumTuple& ToNative(const LumTuple& stored) noexcept { return stored; }
};

// External values and collections.
struct ValueCell {
    using Storage = SV;
};

// A special kind, as a string.
struct KindCell {
    using Storage = SpecialKind;
    static constexpr std::size_t kMaxUnits = 12;
    // Errors: those of SpecialKindToString.
    static char16_t* Write(SpecialKind kind, char16_t* out);
};

}  // namespace lum::core
