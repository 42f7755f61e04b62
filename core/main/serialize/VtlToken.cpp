#include "core/main/serialize/VtlToken.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <string>
#include <system_error>

#include "core/main/serialize/VtlKeywords.h"
#include "lum/core/Check.h"

namespace lum::core {
namespace {

using Kind = VtlTokenKind;

// Reals -------------------------------------------------------------------------------------------

// Whether a decimal text says a number of at least 1: what tells those beyond the largest real from
// those below the smallest.
bool IsLarge(std::string_view text) noexcept {
    const std::size_t exponentStart = std::min(text.find_first_of("eE"), text.size());
    const std::string_view mantissa = text.substr(0, exponentStart);
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t firstDigit = mantissa.find_first_not_of("0.");
    if (firstDigit == std::string_view::npos) {
        return false;
    }
    // The power of ten of the first digit, without the exponent; -1 is the first behind the point.
    long long power = static_cast<long long>(point) - static_cast<long long>(firstDigit);
    if (firstDigit < point) {
        --power;
    }
    constexpr long long kFarAbove = 1LL << 40;  // No text has so many digits.
    long long exponent = 0;
    const bool isNegative = exponentStart + 1 < text.size() && text[exponentStart + 1] == '-';
    for (const char digit : text.substr(exponentStart)) {
        if (digit >= '0' && digit <= '9') {
            exponent = std::min(exponent * 10 + (digit - '0'), kFarAbove);
        }
    }
    return power + (isNegative ? -exponent : exponent) >= 0;
}

// The real nearest to a decimal text; beyond the range of reals infinity or zero.
double RealOf(std::string_view text) noexcept {
    double value = 0;
    const std::from_chars_result result =
        std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        return IsLarge(text) ? std::numeric_limits<double>::infinity() : 0.0;
    }
    return value;
}

double RealOf(std::u16string_view units) {
    const auto narrow = [](char16_t unit) { return static_cast<char>(unit); };
    std::array<char, 64> buffer;
    if (units.size() <= buffer.size()) {
        std::transform(units.begin(), units.end(), buffer.begin(), narrow);
        return RealOf(std::string_view(buffer.data(), units.size()));
    }
    std::string text(units.size(), '\0');
    std::transform(units.begin(), units.end(), text.begin(), narrow);
    return RealOf(std::string_view(text));
}

// Strings -----------------------------------------------------------------------------------------

// The text of what stands between the quotes, whose escapes are known to be right.
TStringCore Unescape(std::u16string_view units) {
    TStringCore text;
    if (units.find(u'\\') == std::u16string_view::npos) {
        text.append(units.data(), units.size());
        return text;
    }
    char16_t* const out = text.prepareAppend(units.size());
    char16_t* outEnd = out;
    for (std::size_t at = 0; at < units.size(); ++at) {
        char16_t unit = units[at];
        if (unit == u'\\') {
            ++at;
            unit = units[at] == u'n' ? u'\n' : units[at];
        }
        *outEnd++ = unit;
    }
    text.commitAppend(static_cast<std::size_t>(outEnd - out));
    return text;
}

}  // namespace

TStringCore VtlToken::GetText() const {
    const std::u16string_view units = GetUnits();
    switch (m_kind) {
        case Kind::Comment:
            return TStringCore(units.substr(2));
        case Kind::StringLiteral:
            return Unescape(units.substr(1, units.size() - 2));
        case Kind::Invalid:
        case Kind::NoToken:
        case Kind::End:
        case Kind::Whitespace:
        case Kind::Indent:
        case Kind::Dedent:
        case Kind::BoolLiteral:
        case Kind::IntegerLiteral:
        case Kind::RealLiteral:
        case Kind::SpecialLiteral:
            return TStringCore();
        default:
            return TStringCore(units);
    }
}

bool VtlToken::GetBool() const {
    LUM_INVARIANT(m_kind == VtlTokenKind::BoolLiteral, LumError::IllegalOperation);
    return FindKeyword(GetUnits()) == kTrue;
}

long long VtlToken::GetInteger() const {
    LUM_INVARIANT(m_kind == VtlTokenKind::IntegerLiteral, LumError::IllegalOperation);
    long long value = 0;
    for (const char16_t digit : GetUnits()) {
        value = value * 10 + (digit - u'0');  // In range, or the token would be Invalid.
    }
    return value;
}

double VtlToken::GetReal() const {
    LUM_INVARIANT(m_kind == VtlTokenKind::RealLiteral, LumError::IllegalOperation);
    switch (FindKeyword(GetUnits())) {
        case kInf:
            return std::numeric_limits<double>::infinity();
        case kNan:
            return std::numeric_limits<double>::quiet_NaN();
        default:
            return RealOf(GetUnits());
    }
}

SpecialKind VtlToken::GetSpecialKind() const {
    LUM_INVARIANT(m_kind == VtlTokenKind::SpecialLiteral, LumError::IllegalOperation);
    return static_cast<SpecialKind>(FindKeyword(GetUnits()));
}

}  // namespace lum::core
