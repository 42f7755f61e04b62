#include "core/main/serialize/JsonCells.h"

#include <array>

#include "core/main/serialize/TextRoom.h"
#include "lum/core/serialize/SpecialKindUtil.h"
#include "lum/core/store/SpecialKindText.h"

namespace lum::core {
namespace {

char16_t* WriteQuoted(std::u16string_view units, char16_t* out) {
    *out++ = u'"';
    out = WriteUnits(units, out);
    *out++ = u'"';
    return out;
}

char16_t* WriteTwoDigits(int number, char16_t* out) {
    out[0] = static_cast<char16_t>(u'0' + number / 10);
    out[1] = static_cast<char16_t>(u'0' + number % 10);
    return out + 2;
}

// The text of LumDateTime::ToString.
char16_t* WriteDateTime(LumDateTime value, char16_t* out) {
    const LumDateTimeParts parts = value.GetLumDateTimeParts();
    if (!parts.IsValid()) [[unlikely]] {
        return WriteUnits(value.ToString().view(), out);  // Which fails.
    }
    const int year = parts.GetYear();
    *out = static_cast<char16_t>(u'0' + year / 10000);
    out += year >= 10000 ? 1 : 0;
    out = WriteTwoDigits(year / 100 % 100, out);
    out = WriteTwoDigits(year % 100, out);
    *out++ = u'-';
    out = WriteTwoDigits(parts.GetMonth(), out);
    *out++ = u'-';
    out = WriteTwoDigits(parts.GetDay(), out);
    if (value.HasTime()) {
        *out++ = u'T';
        out = WriteTwoDigits(parts.GetHour(), out);
        *out++ = u':';
        out = WriteTwoDigits(parts.GetMinute(), out);
        *out++ = u':';
        out = WriteTwoDigits(parts.GetSecond(), out);
    }
    if (parts.GetFraction() != 0) {
        *out++ = u'.';
        out = WriteTwoDigits(parts.GetFraction() / 100, out);
        out = WriteTwoDigits(parts.GetFraction() % 100, out);
    }
    return out;
}

}  // namespace

std::u16string_view GetNonFiniteText(double value) noexcept {
    return std::isnan(value) ? u"nan" : value > 0 ? u"+inf" : u"-inf";
}

char16_t* WriteQuotedNonFinite(double value, char16_t* out) noexcept {
    return WriteQuoted(GetNonFiniteText(value), out);
}

char16_t* DateCell::Write(unsigned long long stored, char16_t* out) {
    *out++ = u'"';
    out = WriteDateTime(LumDateTime::FromValue(stored), out);
    *out++ = u'"';
    return out;
}

char16_t* ColorCell::Write(unsigned int stored, char16_t* out) noexcept {
    *out++ = u'"';
    for (int shift = 24; shift >= 0; shift -= 8) {
        out = WriteHex2(static_cast<unsigned char>(stored >> shift), out);
    }
    *out++ = u'"';
    return out;
}

char16_t* KindCell::Write(SpecialKind kind, char16_t* out) {
    static constexpr auto kNames = [] {
        std::array<std::u16string_view, kSpecialKindCount> names;
        for (unsigned int i = 0; i < kSpecialKindCount; ++i) {
            names[i] = kSpecialKindNames[i];
        }
        return names;
    }();
    const auto number = static_cast<unsigned int>(kind);
    if (number >= kSpecialKindCount) [[unlikely]] {
        return WriteQuoted(SpecialKindToString(kind).view(), out);  // Which fails.
    }
    return WriteQuoted(kNames[number], out);
}

}  // namespace lum::core
