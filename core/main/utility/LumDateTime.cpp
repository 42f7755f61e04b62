#include "lum/core/utility/LumDateTime.h"

#include <array>
#include <string_view>

#include "lum/core/Check.h"
#include "lum/core/utility/RFormatString.h"

namespace lum::core {
namespace {

// Both directions of the calendar follow Meeus, "Astronomical Algorithms" (1991), chapter 7. His
// decimal factors stand here as integer fractions: 30.6001 as 306001 / 10000, 36524.25 as
// 146097 / 4, and so on. No quotient comes near enough to a whole number for the two to differ.

constexpr int kFirstGregorianDate = 15821015;
constexpr long long kLastJulianDay = 2299160;

/// The value of fields that the caller knows to be sound: years of four or five digits.
constexpr unsigned long long ComputeLumDateTimeUnchecked(int year, int month, int day, int hour,
                                                         int minute, int second, int fraction) {
    // The year is counted from March, so that the leap day is its last; and the year before 1 is
    // -1.
    const bool isEarly = month < 3;
    const int marchYear = year + (year < 1 ? 1 : 0) - (isEarly ? 1 : 0);
    const int marchMonth = isEarly ? month + 13 : month + 1;
    int julianDay =
        365 * marchYear + 1718994 + (marchYear + 8000) / 4 + 306001 * marchMonth / 10000 + day;
    if (year * 10000 + month * 100 + day >= kFirstGregorianDate) {
        julianDay += (marchYear + 8000) / 400 - (marchYear + 8000) / 100 + 62;
    }
    const long long seconds = ((julianDay * 24LL + hour) * 60 + minute) * 60 + second;
    return static_cast<unsigned long long>(seconds * 10000 + fraction);
}

/// The fields of any value: even the highest stays below the year 59 million.
LumDateTimeParts SplitValue(unsigned long long value) {
    const auto julianDay = static_cast<long long>(value / LumDateTime::kTicksPerDay) + 1;
    long long day = julianDay;
    if (julianDay > kLastJulianDay) {
        const long long century = (4 * julianDay - 7468865) / 146097;
        day += 1 + century - century / 4;
    }
    day += 1524;
    const long long marchYear = (20 * day - 2442) / 7305;
    day -= marchYear * 1461 / 4;
    const long long marchMonth = day * 10000 / 306001;
    day -= marchMonth * 306001 / 10000;
    const long long month = marchMonth > 13 ? marchMonth - 13 : marchMonth - 1;
    const long long year = month > 2 ? marchYear - 4716 : marchYear - 4715;

    const auto timeOfDay = static_cast<int>(value % LumDateTime::kTicksPerDay);
    const int seconds = timeOfDay / 10000;
    return LumDateTimeParts(static_cast<int>(year), static_cast<int>(month), static_cast<int>(day),
                            seconds / 3600, seconds / 60 % 60, seconds % 60, timeOfDay % 10000);
}

void CheckYear(int year) {
    LUM_CHECK_RANGE(year, 400, 23829, LumError::YearOutOfRange,
                    RFormatString(L"Value '%1' must be between 400 and 23829").arg(year));
}

unsigned long long ComputeLumDateTime(int year, int month, int day, int hour, int minute,
                                      int second, int fraction) {
    CheckYear(year);
    LUM_CHECK_RANGE(month, 1, 12, LumError::MonthOutOfRange,
                    RFormatString(L"Value '%1' must be between 1 and 12").arg(month));
    LUM_CHECK_RANGE(day, 1, 31, LumError::DayOutOfRange,
                    RFormatString(L"Value '%1' must be between 1 and 31").arg(day));
    LUM_CHECK_RANGE(hour, 0, 23, LumError::HourOutOfRange,
                    RFormatString(L"Value '%1' must be between 0 and 23").arg(hour));
    LUM_CHECK_RANGE(minute, 0, 59, LumError::MinuteOutOfRange,
                    RFormatString(L"Value '%1' must be between 0 and 59").arg(minute));
    LUM_CHECK_RANGE(second, 0, 59, LumError::SecondOutOfRange,
                    RFormatString(L"Value '%1' must be between 0 and 59").arg(second));
    LUM_CHECK_RANGE(fraction, 0, 9999, LumError::FractionOutOfRange,
                    RFormatString(L"Value '%1' must be between 0 and 9999").arg(fraction));

    // A day that does not exist gets the value of another one, whose fields are not these.
    const unsigned long long value =
        ComputeLumDateTimeUnchecked(year, month, day, hour, minute, second, fraction);
    const LumDateTimeParts given(year, month, day, hour, minute, second, fraction);
    LUM_CHECK(SplitValue(value) == given, LumError::InvalidDateTime);
    return value;
}

/// `number` cut to a whole one; 2^63 for what the type cannot hold, where a plain conversion has no
/// defined result.
unsigned long long TruncateToUnsigned(double number) {
    return number >= 0 && number < 0x1p64 ? static_cast<unsigned long long>(number) : 1ULL << 63;
}

unsigned long long TicksOfDays(double days) {
    const unsigned long long whole = TruncateToUnsigned(days);
    const double rest = days - static_cast<double>(whole);
    return whole * LumDateTime::kTicksPerDay + TruncateToUnsigned(rest * 8.64e8 + 0.5);
}

int DaysBetween(unsigned long long first, unsigned long long last) {
    return static_cast<int>((last - first) / LumDateTime::kTicksPerDay);
}

/// `year` is that of `value`.
int DayOfYear(unsigned long long value, int year) {
    CheckYear(year);  // The first of January exists in every year in range.
    return DaysBetween(ComputeLumDateTimeUnchecked(year, 1, 1, 0, 0, 0, 0), value) + 1;
}

/// The text of a date and a time, built in place.
class TextBuilder {
public:
    void Append(char16_t separator) { m_units[m_length++] = separator; }
    void AppendDigits(int number, std::size_t count) {
        for (std::size_t i = count; i > 0; --i) {
            m_units[m_length + i - 1] = static_cast<char16_t>(u'0' + number % 10);
            number /= 10;
        }
        m_length += count;
    }
    TStringCore GetText() const { return TStringCore(m_units.data(), m_length); }

private:
    std::array<char16_t, std::u16string_view(u"23829-12-31T23:59:59.9999").size()> m_units;
    std::size_t m_length = 0;
};

}  // namespace

constinit const LumDateTime LumDateTime::DateTimeMinimum =
    FromValue(ComputeLumDateTimeUnchecked(400, 1, 1, 0, 0, 0, 0));
constinit const LumDateTime LumDateTime::DateTimeMaximum =
    FromValue(ComputeLumDateTimeUnchecked(23829, 12, 31, 23, 59, 59, 9999));
constinit const LumDateTime LumDateTime::DateTimeDefault =
    FromValue(ComputeLumDateTimeUnchecked(1900, 1, 1, 0, 0, 0, 0));

static_assert(LumDateTime().GetValue() == ComputeLumDateTimeUnchecked(1900, 1, 1, 0, 0, 0, 0));

LumDateTime::LumDateTime(int year, int month, int day, int hour, int minute, int second,
                         int fraction)
    : m_value(ComputeLumDateTime(year, month, day, hour, minute, second, fraction)) {}

LumDateTime::LumDateTime(const LumDateTimeParts& parts)
    : LumDateTime(parts.GetYear(), parts.GetMonth(), parts.GetDay(), parts.GetHour(),
                  parts.GetMinute(), parts.GetSecond(), parts.GetFraction()) {}

LumDateTime LumDateTime::FromDouble(double days) noexcept {
    // Unsigned arithmetic wraps: what lies far out of range gives some value, and no fault.
    return FromValue(days < 0 ? kDefaultValue - TicksOfDays(-days)
                              : kDefaultValue + TicksOfDays(days));
}

double LumDateTime::ToDouble() const noexcept {
    constexpr double kDaysPerTick = 1.1574074074074074e-9;
    return m_value >= kDefaultValue
               ? static_cast<double>(m_value - kDefaultValue) * kDaysPerTick
               : -(static_cast<double>(kDefaultValue - m_value) * kDaysPerTick);
}

LumDateTimeParts LumDateTime::GetLumDateTimeParts() const noexcept {
    return SplitValue(m_value);
}

int LumDateTime::GetGregorianDayOfYear() const {
    return DayOfYear(m_value, GetLumDateTimeParts().GetYear());
}

LumISO8601DateTimeParts LumDateTime::GetLumISO8601DateTimeParts() const {
    const LumDateTimeParts parts = GetLumDateTimeParts();
    const int year = parts.GetYear();
    const int weekday = static_cast<int>((m_value / kTicksPerDay + 1) % 7) + 1;

    int isoYear = year;
    int week = (DayOfYear(m_value, year) + 10 - weekday) / 7;
    // The neighbouring years are reckoned without a check, since they may lie out of range.
    if (week == 0) {
        isoYear -= 1;
        const auto newYear = ComputeLumDateTimeUnchecked(isoYear, 1, 1, 0, 0, 0, 0);
        week = (DaysBetween(newYear, m_value) + 11 - weekday) / 7;
    } else if (week == 53) {
        // January 4 lies in the first week of every year.
        const auto januaryFourth = ComputeLumDateTimeUnchecked(year + 1, 1, 4, 0, 0, 0, 0);
        const int monday = 4 - static_cast<int>((januaryFourth / kTicksPerDay + 1) % 7);
        if (monday < 1 &&
            ComputeLumDateTimeUnchecked(year, 12, monday + 31, 0, 0, 0, 0) <= m_value) {
            week = 1;
            isoYear += 1;
        }
    }
    return LumISO8601DateTimeParts(isoYear, week, weekday, parts.GetHour(), parts.GetMinute(),
                                   parts.GetSecond(), parts.GetFraction());
}

LumDateTime LumDateTime::TruncateTime() const {
    CheckYear(GetLumDateTimeParts().GetYear());
    return FromValue(m_value - m_value % kTicksPerDay);
}

TStringCore LumDateTime::ToString() const {
    const LumDateTimeParts parts = GetLumDateTimeParts();
    LUM_CHECK(parts.IsValid(), LumError::InvalidDateTime);

    TextBuilder text;
    text.AppendDigits(parts.GetYear(), parts.GetYear() > 9999 ? 5 : 4);
    text.Append(u'-');
    text.AppendDigits(parts.GetMonth(), 2);
    text.Append(u'-');
    text.AppendDigits(parts.GetDay(), 2);
    if (HasTime()) {
        text.Append(u'T');
        text.AppendDigits(parts.GetHour(), 2);
        text.Append(u':');
        text.AppendDigits(parts.GetMinute(), 2);
        text.Append(u':');
        text.AppendDigits(parts.GetSecond(), 2);
    }
    if (parts.GetFraction() != 0) {
        text.Append(u'.');
        text.AppendDigits(parts.GetFraction(), 4);
    }
    return text.GetText();
}

}  // namespace lum::core
