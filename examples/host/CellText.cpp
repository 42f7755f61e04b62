#include "CellText.h"

#include <charconv>
#include <climits>
#include <system_error>

namespace lumhost {
namespace {

bool IsDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

const char* SkipDigits(const char* position, const char* end) {
    while (position != end && IsDigit(*position)) {
        ++position;
    }
    return position;
}

const char* SkipSign(const char* position, const char* end) {
    return position != end && (*position == '+' || *position == '-') ? position + 1 : position;
}

// std::from_chars takes "-" but not "+", and words such as "inf" that are no numbers here. It
// refuses a real that would be infinite, or 0 for a number that is not.
template <typename T>
std::optional<T> ReadNumber(std::string_view text) {
    const char* const end = text.data() + text.size();
    const char* const digits = SkipSign(text.data(), end);
    if (digits == end || !(IsDigit(*digits) || *digits == '.')) {
        return std::nullopt;
    }
    T value{};
    const auto [behind, error] =
        std::from_chars(text.front() == '+' ? digits : text.data(), end, value);
    return error == std::errc() && behind == end ? std::optional<T>(value) : std::nullopt;
}

CellKind ClassifyLongInteger(std::string_view text) {
    constexpr long long kExactInReal = 1LL << 53;
    const std::optional<long long> value = ReadInt64(text);
    if (!value) {
        return kTextCell;
    }
    if (*value >= INT_MIN && *value <= INT_MAX) {
        return kInt32Cell;
    }
    return *value >= -kExactInReal && *value <= kExactInReal ? kInt64Cell : kWideInt64Cell;
}

// `position` is behind the digits before the point.
CellKind ClassifyReal(std::string_view text, const char* position, bool hasDigits) {
    const char* const end = text.data() + text.size();
    if (*position == '.') {
        const char* const decimals = position + 1;
        position = SkipDigits(decimals, end);
        hasDigits = hasDigits || position != decimals;
    }
    if (!hasDigits) {
        return kTextCell;
    }
    constexpr std::size_t kAlwaysInRange = 300;  // Digits, without an exponent.
    if (position == end && text.size() <= kAlwaysInRange) {
        return kReal64Cell;
    }
    return ReadReal64(text) ? kReal64Cell : kTextCell;
}

bool IsCalendarDay(const DateTimeFields& date) {
    constexpr int kDaysInMonth[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (date.year < 400 || date.year > 23829 || date.month < 1 || date.month > 12) {
        return false;
    }
    // The February of 1582, the year of the change, was still one of the Julian calendar.
    const bool isLeapYear =
        date.year % 4 == 0 && (date.year <= 1582 || date.year % 100 != 0 || date.year % 400 == 0);
    const int days = kDaysInMonth[date.month - 1] + (date.month == 2 && isLeapYear ? 1 : 0);
    const bool isInTheGap = date.year == 1582 && date.month == 10 && date.day > 4 && date.day < 15;
    return date.day >= 1 && date.day <= days && !isInTheGap;
}

// Takes exactly `count` digits off the front of `text`; false where there are fewer.
bool TakeDigits(std::string_view& text, std::size_t count, int& value) {
    if (text.size() < count) {
        return false;
    }
    value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (!IsDigit(text[i])) {
            return false;
        }
        value = value * 10 + (text[i] - '0');
    }
    text.remove_prefix(count);
    return true;
}

bool TakeMark(std::string_view& text, char mark) {
    if (text.empty() || text.front() != mark) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

bool TakeDate(std::string_view& text, DateTimeFields& fields) {
    const bool hasLongYear = text.size() > 4 && IsDigit(text[4]);
    return TakeDigits(text, hasLongYear ? 5 : 4, fields.year) &&
           !(hasLongYear && fields.year < 10000) && TakeMark(text, '-') &&
           TakeDigits(text, 2, fields.month) && TakeMark(text, '-') &&
           TakeDigits(text, 2, fields.day) && IsCalendarDay(fields);
}

bool TakeTime(std::string_view& text, DateTimeFields& fields) {
    if (!(TakeDigits(text, 2, fields.hour) && fields.hour < 24 && TakeMark(text, ':') &&
          TakeDigits(text, 2, fields.minute) && fields.minute < 60 && TakeMark(text, ':') &&
          TakeDigits(text, 2, fields.second) && fields.second < 60)) {
        return false;
    }
    if (!TakeMark(text, '.')) {
        return true;
    }
    constexpr int kUnits[] = {1000, 100, 10, 1};  // Of a fraction of one to four digits.
    const std::size_t count = text.size();
    if (count < 1 || count > 4 || !TakeDigits(text, count, fields.fraction)) {
        return false;
    }
    fields.fraction *= kUnits[count - 1];
    return true;
}

}  // namespace

CellKind ClassifyCell(std::string_view text) {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const char* const digits = SkipSign(begin, end);
    const char* const behind = SkipDigits(digits, end);
    const auto digitCount = behind - digits;
    const bool hasLeadingZero = digitCount > 1 && *digits == '0';
    if (behind == end) {
        constexpr int kAlwaysInt32 = 9;  // Digits.
        return digitCount == 0 || hasLeadingZero ? kTextCell
               : digitCount <= kAlwaysInt32      ? kInt32Cell
                                                 : ClassifyLongInteger(text);
    }
    switch (*behind) {
        case '-':
            return ReadDate(text) ? kDateCell : ReadDateTime(text) ? kDateTimeCell : kTextCell;
        case '.':
        case 'e':
        case 'E':
            return hasLeadingZero ? kTextCell : ClassifyReal(text, behind, digitCount > 0);
        default:
            return ReadBool(text) ? kBoolCell : kTextCell;
    }
}

std::optional<bool> ReadBool(std::string_view text) {
    if (text == "true" || text == "True" || text == "TRUE") {
        return true;
    }
    if (text == "false" || text == "False" || text == "FALSE") {
        return false;
    }
    return std::nullopt;
}

std::optional<int> ReadInt32(std::string_view text) {
    return ReadNumber<int>(text);
}

std::optional<long long> ReadInt64(std::string_view text) {
    return ReadNumber<long long>(text);
}

std::optional<float> ReadReal32(std::string_view text) {
    return ReadNumber<float>(text);
}

std::optional<double> ReadReal64(std::string_view text) {
    return ReadNumber<double>(text);
}

std::optional<DateTimeFields> ReadDate(std::string_view text) {
    DateTimeFields fields;
    return TakeDate(text, fields) && text.empty() ? std::optional(fields) : std::nullopt;
}

std::optional<DateTimeFields> ReadDateTime(std::string_view text) {
    DateTimeFields fields;
    if (!TakeDate(text, fields)) {
        return std::nullopt;
    }
    const bool isWhole = text.empty() || (TakeMark(text, 'T') && TakeTime(text, fields));
    return isWhole && text.empty() ? std::optional(fields) : std::nullopt;
}

std::optional<unsigned> ReadColor(std::string_view text) {
    constexpr std::size_t kDigits = 8;
    unsigned value = 0;
    const auto [behind, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    return text.size() == kDigits && error == std::errc() && behind == text.data() + kDigits
               ? std::optional(value)
               : std::nullopt;
}

}  // namespace lumhost
