#include "lum/core/utility/LumDateTime.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

constexpr unsigned long long kDay = 864000000;
constexpr unsigned long long kFirstValue = 1613223648000000;
constexpr unsigned long long kLastValue = 9007016831999999;

LumDateTime MakeDate(int year, int month, int day) {
    return LumDateTime(year, month, day, 0, 0, 0, 0);
}

// A slow and obvious model of the calendar, without any formula of day numbers.
bool IsLeapYear(int year) {
    return year % 4 == 0 && (year < 1582 || year % 100 != 0 || year % 400 == 0);
}

int DaysInMonth(int year, int month) {
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return kDays[month - 1] + (month == 2 && IsLeapYear(year) ? 1 : 0);
}

bool Exists(int year, int month, int day) {
    return day <= DaysInMonth(year, month) && !(year == 1582 && month == 10 && day > 4 && day < 15);
}

int DaysInYear(int year) {
    return year == 1582 ? 355 : IsLeapYear(year) ? 366 : 365;
}

// Each day follows the one before, and has the week of its Thursday: of the year in which that
// lies, whose Thursdays are counted.
bool IsRight(int year, int month, int day, int dayOfYear, unsigned long long dayNumber) {
    constexpr int kFirstWeekday = 7;  // 0400-01-01 was a Sunday.
    const int weekday = static_cast<int>((dayNumber + kFirstWeekday - 1) % 7) + 1;
    int isoYear = year;
    int thursday = dayOfYear + 4 - weekday;
    if (thursday < 1) {
        thursday += DaysInYear(--isoYear);
    } else if (thursday > DaysInYear(year)) {
        thursday -= DaysInYear(isoYear++);
    }
    const LumISO8601DateTimeParts isoParts(isoYear, (thursday - 1) / 7 + 1, weekday, 23, 59, 59,
                                           9999);
    const LumDateTimeParts parts(year, month, day, 23, 59, 59, 9999);

    const LumDateTime midnight = MakeDate(year, month, day);
    const LumDateTime lastTick = LumDateTime::FromValue(midnight.GetValue() + kDay - 1);
    return midnight.GetValue() == kFirstValue + dayNumber * kDay &&
           lastTick.GetLumDateTimeParts() == parts &&
           lastTick.GetLumISO8601DateTimeParts() == isoParts &&
           lastTick.GetGregorianDayOfYear() == dayOfYear;
}

TEST(LumDateTimeTest, EveryDayOfTheCalendar) {
    unsigned long long dayNumber = 0;
    for (int year = 400; year <= 23829; ++year) {
        int dayOfYear = 0;
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= DaysInMonth(year, month); ++day) {
                if (Exists(year, month, day)) {
                    ASSERT_TRUE(IsRight(year, month, day, ++dayOfYear, dayNumber++))
                        << year << '-' << month << '-' << day;
                }
            }
        }
    }
    EXPECT_EQ(LumDateTime::DateTimeMinimum.GetValue(), kFirstValue);
    EXPECT_EQ(LumDateTime::DateTimeMaximum.GetValue(), kLastValue);
    EXPECT_EQ(dayNumber * kDay, kLastValue - kFirstValue + 1);
    EXPECT_EQ(LumDateTime(), MakeDate(1900, 1, 1));
    EXPECT_EQ(LumDateTime::DateTimeDefault, LumDateTime());
}

// Between the limits every date passes or fails as the calendar has it.
TEST(LumDateTimeTest, RefusesDaysThatDoNotExist) {
    for (const int year : {400, 1499, 1500, 1582, 1600, 1700, 1900, 2000, 2023, 2024, 23829}) {
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= 31; ++day) {
                SCOPED_TRACE(testing::Message() << year << '-' << month << '-' << day);
                if (Exists(year, month, day)) {
                    EXPECT_NO_THROW(MakeDate(year, month, day));
                } else {
                    EXPECT_LUM_ERROR(InvalidDateTime, "", MakeDate(year, month, day));
                }
            }
        }
    }
    EXPECT_LUM_REPORT(InvalidDateTime, "", "(SplitValue(value) == given)", MakeDate(2023, 2, 29));
}

struct Field {
    LumError error;
    const char* name;
    int low, high;
};

constexpr Field kFields[] = {{LumError::YearOutOfRange, "year", 400, 23829},
                             {LumError::MonthOutOfRange, "month", 1, 12},
                             {LumError::DayOutOfRange, "day", 1, 31},
                             {LumError::HourOutOfRange, "hour", 0, 23},
                             {LumError::MinuteOutOfRange, "minute", 0, 59},
                             {LumError::SecondOutOfRange, "second", 0, 59},
                             {LumError::FractionOutOfRange, "fraction", 0, 9999}};
constexpr std::size_t kFieldCount = std::size(kFields);

TEST(LumDateTimeTest, FieldsOutOfRangeAreRefused) {
    const auto make = [](const int(&f)[kFieldCount]) {
        const LumDateTime direct(f[0], f[1], f[2], f[3], f[4], f[5], f[6]);
        EXPECT_EQ(direct, LumDateTime(LumDateTimeParts(f[0], f[1], f[2], f[3], f[4], f[5], f[6])));
        return direct;
    };
    for (std::size_t at = 0; at < kFieldCount; ++at) {
        const auto& [error, field, lowest, highest] = kFields[at];
        const std::string low = std::to_string(lowest);
        const std::string high = std::to_string(highest);
        const std::string name = std::string("(") + field + ")";
        const std::string condition = name + " >= (" + low + ") && " + name + " <= (" + high + ")";
        for (const int bad : {lowest - 1, highest + 1, std::numeric_limits<int>::min(),
                              std::numeric_limits<int>::max()}) {
            // Every field behind the bad one is bad as well: the first decides.
            int fields[kFieldCount] = {2000, 1, 1, 0, 0, 0, 0};
            std::fill(fields + at, std::end(fields), -1);
            fields[at] = bad;
            EXPECT_TRUE(test::FailsAs(
                {error,
                 "Value '" + std::to_string(bad) + "' must be between " + low + " and " + high,
                 true, condition},
                [&] { make(fields); }));
        }
        for (const int good : {lowest, highest}) {
            int fields[kFieldCount] = {2000, 1, 1, 0, 0, 0, 0};
            fields[at] = good;
            EXPECT_TRUE(make(fields).IsValid()) << field;
        }
    }
}

// Outside the range no calendar model holds; there the split is that of the published formulas in
// floating point.
TEST(LumDateTimeTest, AnyValueSplits) {
    const auto split = [](unsigned long long value) {
        const auto jd = static_cast<double>(value / kDay + 1);
        double a = jd;
        if (jd > 2299160) {
            const double alpha = std::trunc((jd - 1867216.25) / 36524.25);
            a = jd + 1 + alpha - std::trunc(alpha / 4);
        }
        const double b = a + 1524;
        const double c = std::trunc((b - 122.1) / 365.25);
        const double d = std::trunc(c * 365.25);
        const double e = std::trunc((b - d) / 30.6001);
        const double month = e - 1 > 12 ? e - 13 : e - 1;
        const auto rest = static_cast<int>(value % kDay);
        return LumDateTimeParts(static_cast<int>(month > 2 ? c - 4716 : c - 4715),
                                static_cast<int>(month),
                                static_cast<int>(b - d - std::trunc(e * 30.6001)), rest / 36000000,
                                rest / 600000 % 60, rest / 10000 % 60, rest % 10000);
    };
    std::vector<unsigned long long> values = {0,          1,     kFirstValue - 1, kFirstValue,
                                              kLastValue, ~0ULL, ~0ULL - kDay,    1ULL << 63};
    std::mt19937_64 random(14);
    for (int i = 0; i < 200000; ++i) {
        values.push_back(random() >> (i % 24));
    }
    for (const unsigned long long value : values) {
        const LumDateTime dateTime = LumDateTime::FromValue(value);
        ASSERT_EQ(dateTime.GetLumDateTimeParts(), split(value)) << value;
        ASSERT_EQ(dateTime.IsValid(), value >= kFirstValue && value <= kLastValue) << value;
    }
}

TEST(LumDateTimeTest, ValuesOutOfRangeAreHeldAndRefusedLater) {
    for (const unsigned long long value : {0ULL, kFirstValue - 1, kLastValue + 1, ~0ULL}) {
        const LumDateTime dateTime = LumDateTime::FromValue(value);
        EXPECT_EQ(dateTime.GetValue(), value);
        EXPECT_LUM_REPORT(InvalidDateTime, "", "(parts.IsValid())", dateTime.ToString());
        const std::string details = "Value '" +
                                    std::to_string(dateTime.GetLumDateTimeParts().GetYear()) +
                                    "' must be between 400 and 23829";
        EXPECT_LUM_ERROR(YearOutOfRange, details, dateTime.TruncateTime());
        EXPECT_LUM_ERROR(YearOutOfRange, details, dateTime.GetGregorianDayOfYear());
        EXPECT_LUM_ERROR(YearOutOfRange, details, dateTime.GetLumISO8601DateTimeParts());
    }
}

TEST(LumDateTimeTest, TextHasTheTimeWhereThereIsOne) {
    const struct {
        LumDateTimeParts parts;
        std::string date, time;
    } cases[] = {
        {{2024, 3, 1, 0, 0, 0, 0}, "2024-03-01", ""},
        {{2024, 3, 1, 9, 5, 0, 0}, "2024-03-01", "T09:05:00"},
        {{2024, 3, 1, 9, 5, 0, 2500}, "2024-03-01", "T09:05:00.2500"},
        {{2024, 12, 31, 0, 0, 0, 1}, "2024-12-31", "T00:00:00.0001"},
        {{400, 1, 1, 0, 0, 0, 0}, "0400-01-01", ""},
        {{23829, 12, 31, 23, 59, 59, 9999}, "23829-12-31", "T23:59:59.9999"},
    };
    for (const auto& [parts, date, time] : cases) {
        const LumDateTime dateTime(parts);
        EXPECT_EQ(dateTime.ToString().toStdString(), date + time);
        EXPECT_EQ(dateTime.TruncateTime().ToString().toStdString(), date);
        EXPECT_EQ(dateTime.HasTime(), !time.empty()) << date << time;
    }
}

TEST(LumDateTimeTest, DaysAsReals) {
    struct Case {
        double days;
        long long ticks;  // Since 1900-01-01.
    };
    constexpr double kTick = 1 / 8.64e8;
    const Case cases[] = {
        {0.0, 0},
        {-0.0, 0},
        {1.5, 1296000000},
        {-0.5, -432000000},
        {-1.75, -1512000000},
        {0.4 * kTick, 0},
        {-0.4 * kTick, 0},
        {0.5 * kTick, 1},  // Halves go away from the origin.
        {-0.5 * kTick, -1},
        {3 + 0.625 / 864, 2592000000 + 625000},
        {-(3 + 0.625 / 864), -2592000000 - 625000},
        {0.99999999999, 864000000},  // The rounded part of a day may be a whole one.
    };
    for (const Case& c : cases) {
        const LumDateTime dateTime = LumDateTime::FromDouble(c.days);
        EXPECT_EQ(static_cast<long long>(dateTime.GetValue() - LumDateTime().GetValue()), c.ticks)
            << c.days;
        EXPECT_NEAR(dateTime.ToDouble(), c.days, 0.51 * kTick);
    }
    EXPECT_GT(LumDateTime::FromValue(~0ULL).ToDouble(), 0);

    std::mt19937_64 random(15);
    std::uniform_int_distribution<unsigned long long> values(
        MakeDate(1600, 1, 1).GetValue(), LumDateTime(2300, 1, 1, 0, 0, 0, 0).GetValue());
    for (int i = 0; i < 100000; ++i) {
        const LumDateTime dateTime = LumDateTime::FromValue(values(random));
        ASSERT_EQ(LumDateTime::FromDouble(dateTime.ToDouble()), dateTime);
    }
}

// What a double cannot say in 64 bits must not depend on compiler and machine.
TEST(LumDateTimeTest, RealsBeyondAllDatesGiveInvalidValues) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const unsigned long long meaningless = LumDateTime().GetValue() ^ 1ULL << 63;
    for (const double days : {kInfinity, -kInfinity, 1e300, -1e300, 0x1p64, -0x1p64,
                              std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(LumDateTime::FromDouble(days).GetValue(), meaningless) << days;
        EXPECT_FALSE(LumDateTime::FromDouble(days).IsValid()) << days;
    }
    EXPECT_EQ(LumDateTime::FromDouble(1e18).GetValue(),
              LumDateTime().GetValue() + 1000000000000000000 * kDay);
}

TEST(LumDateTimeTest, ComparesByValue) {
    const LumDateTime ascending[] = {LumDateTime::FromValue(0), MakeDate(1582, 10, 4),
                                     MakeDate(1582, 10, 15), LumDateTime::FromValue(~0ULL)};
    for (const LumDateTime& left : ascending) {
        for (const LumDateTime& right : ascending) {
            EXPECT_TRUE((left <=> right) == (&left <=> &right));
            EXPECT_EQ(left.CompareTo(right), (&left > &right) - (&left < &right));
            EXPECT_EQ(left == right, &left == &right);
        }
    }
    EXPECT_EQ(std::hash<LumDateTime>()(LumDateTime()), 0x284c8cb99624f1c3);
}

/// Each setter sets its own field, which alone decides what is valid.
template <typename Parts, std::size_t N>
void CheckParts(void (Parts::*const (&setters)[N])(int), const int (&lows)[N],
                const int (&highs)[N], const Parts& ascending) {
    Parts parts;
    for (std::size_t i = 0; i < N; ++i) {
        (parts.*setters[i])(lows[i] + static_cast<int>(i));
    }
    EXPECT_TRUE(parts == ascending);
    for (std::size_t i = 0; i < N; ++i) {
        const auto isValid = [&](int value) {
            Parts changed = parts;
            (changed.*setters[i])(value);
            return changed.IsValid();
        };
        EXPECT_TRUE(isValid(lows[i]) && isValid(highs[i])) << i;
        EXPECT_FALSE(isValid(lows[i] - 1) || isValid(highs[i] + 1)) << i;
    }
}

TEST(LumDateTimeTest, PartsAreCheckedFieldByField) {
    using Parts = LumDateTimeParts;
    CheckParts<Parts>({&Parts::SetYear, &Parts::SetMonth, &Parts::SetDay, &Parts::SetHour,
                       &Parts::SetMinute, &Parts::SetSecond, &Parts::SetFraction},
                      {400, 1, 1, 0, 0, 0, 0}, {23829, 12, 31, 23, 59, 59, 9999},
                      Parts(400, 2, 3, 3, 4, 5, 6));
    using IsoParts = LumISO8601DateTimeParts;
    CheckParts<IsoParts>(
        {&IsoParts::SetISOYear, &IsoParts::SetISOWeek, &IsoParts::SetISOWeekday, &IsoParts::SetHour,
         &IsoParts::SetMinute, &IsoParts::SetSecond, &IsoParts::SetFraction},
        {400, 1, 1, 0, 0, 0, 0}, {23829, 53, 7, 23, 59, 59, 9999}, IsoParts(400, 2, 3, 3, 4, 5, 6));
    EXPECT_TRUE(Parts(2023, 2, 31, 0, 0, 0, 0).IsValid());  // The month's length is not looked at.
}

}  // namespace
}  // namespace lum::core
