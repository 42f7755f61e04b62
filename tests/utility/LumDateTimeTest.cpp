#include "lum/core/utility/LumDateTime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "tests/support/LumErrorMatchers.h"

namespace lum::core {

void PrintTo(LumDateTime dateTime, std::ostream* stream) {
    *stream << dateTime.GetValue();
}

void PrintTo(const LumDateTimeParts& parts, std::ostream* stream) {
    *stream << parts.GetYear() << '-' << parts.GetMonth() << '-' << parts.GetDay() << ' '
            << parts.GetHour() << ':' << parts.GetMinute() << ':' << parts.GetSecond() << '.'
            << parts.GetFraction();
}

void PrintTo(const LumISO8601DateTimeParts& parts, std::ostream* stream) {
    *stream << parts.GetISOYear() << "-W" << parts.GetISOWeek() << '-' << parts.GetISOWeekday()
            << ' ' << parts.GetHour() << ':' << parts.GetMinute() << ':' << parts.GetSecond() << '.'
            << parts.GetFraction();
}

namespace {

constexpr unsigned long long kDay = 864000000;
constexpr unsigned long long kLastTick = kDay - 1;
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

/// Calls `visit(year, month, day, dayNumber)` for every day in range, in order. Day numbers count
/// from 0; stops where `visit` answers false.
template <typename Visit>
void ForEachDay(Visit visit) {
    unsigned long long dayNumber = 0;
    for (int year = 400; year <= 23829; ++year) {
        for (int month = 1; month <= 12; ++month) {
            const int days = DaysInMonth(year, month);
            for (int day = 1; day <= days; ++day) {
                if (Exists(year, month, day) && !visit(year, month, day, dayNumber++)) {
                    return;
                }
            }
        }
    }
}

TEST(LumDateTimeTest, EveryDayFollowsTheOneBefore) {
    unsigned long long count = 0;
    ForEachDay([&](int year, int month, int day, unsigned long long dayNumber) {
        ++count;
        const LumDateTime date = MakeDate(year, month, day);
        const LumDateTimeParts parts(year, month, day, 23, 59, 59, 9999);
        if (date.GetValue() == kFirstValue + dayNumber * kDay &&
            LumDateTime::FromValue(date.GetValue() + kLastTick).GetLumDateTimeParts() == parts) {
            return true;
        }
        ADD_FAILURE() << year << '-' << month << '-' << day;
        return false;
    });
    EXPECT_EQ(count * kDay, kLastValue - kFirstValue + 1);
}

// By the rule of Thursdays: the week is of the year in which its Thursday lies, and counts the
// Thursdays of that year.
TEST(LumDateTimeTest, EveryDayHasTheWeekOfItsThursday) {
    // Day numbers of the first of January, from one year before the range to one after.
    std::vector<long long> newYears = {-DaysInYear(399), 0};
    for (int year = 400; year <= 23830; ++year) {
        newYears.push_back(newYears.back() + DaysInYear(year));
    }
    constexpr int kFirstWeekday = 7;  // 0400-01-01 was a Sunday.
    std::size_t yearIndex = 0;        // Of the last Thursday: year 399 + yearIndex.
    ForEachDay([&](int year, int month, int day, unsigned long long dayNumber) {
        const int weekday = static_cast<int>((dayNumber + kFirstWeekday - 1) % 7) + 1;
        const long long thursday = static_cast<long long>(dayNumber) + 4 - weekday;
        while (newYears[yearIndex + 1] <= thursday) {
            ++yearIndex;
        }
        const LumISO8601DateTimeParts expected(
            static_cast<int>(399 + yearIndex),
            static_cast<int>((thursday - newYears[yearIndex]) / 7) + 1, weekday, 12, 34, 56, 7890);
        const unsigned long long noon = (12 * 3600 + 34 * 60 + 56) * 10000 + 7890;
        const auto actual = LumDateTime::FromValue(kFirstValue + dayNumber * kDay + noon)
                                .GetLumISO8601DateTimeParts();
        if (actual == expected) {
            return true;
        }
        EXPECT_EQ(actual, expected) << year << '-' << month << '-' << day;
        return false;
    });
}

TEST(LumDateTimeTest, KnownWeeks) {
    struct Case {
        int year, month, day, isoYear, week, weekday, dayOfYear;
    };
    const Case cases[] = {
        {2021, 1, 3, 2020, 53, 7, 3},     {2020, 12, 31, 2020, 53, 4, 366},
        {2018, 12, 31, 2019, 1, 1, 365},  {2024, 3, 1, 2024, 9, 5, 61},
        {400, 1, 1, 399, 52, 7, 1},       {23829, 12, 31, 23829, 53, 4, 365},
        {1582, 10, 4, 1582, 40, 4, 277},  {1582, 10, 15, 1582, 40, 5, 278},
        {1582, 12, 31, 1582, 51, 5, 355}, {1583, 1, 1, 1582, 51, 6, 1},
    };
    for (const Case& c : cases) {
        const LumDateTime date = MakeDate(c.year, c.month, c.day);
        EXPECT_EQ(date.GetLumISO8601DateTimeParts(),
                  LumISO8601DateTimeParts(c.isoYear, c.week, c.weekday, 0, 0, 0, 0));
        EXPECT_EQ(date.GetGregorianDayOfYear(), c.dayOfYear) << c.year;
    }
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

TEST(LumDateTimeTest, FieldsOutOfRangeAreRefused) {
    struct Case {
        LumError error;
        int field;
        const char* name;
        int low, high;
    };
    const Case cases[] = {
        {LumError::YearOutOfRange, 0, "year", 400, 23829},
        {LumError::MonthOutOfRange, 1, "month", 1, 12},
        {LumError::DayOutOfRange, 2, "day", 1, 31},
        {LumError::HourOutOfRange, 3, "hour", 0, 23},
        {LumError::MinuteOutOfRange, 4, "minute", 0, 59},
        {LumError::SecondOutOfRange, 5, "second", 0, 59},
        {LumError::FractionOutOfRange, 6, "fraction", 0, 9999},
    };
    const auto make = [](const int(&f)[7]) {
        const LumDateTime direct(f[0], f[1], f[2], f[3], f[4], f[5], f[6]);
        EXPECT_EQ(direct, LumDateTime(LumDateTimeParts(f[0], f[1], f[2], f[3], f[4], f[5], f[6])));
        return direct;
    };
    for (const Case& c : cases) {
        const std::string low = std::to_string(c.low);
        const std::string high = std::to_string(c.high);
        const std::string name = std::string("(") + c.name + ")";
        const std::string condition = name + " >= (" + low + ") && " + name + " <= (" + high + ")";
        for (const int bad : {c.low - 1, c.high + 1, std::numeric_limits<int>::min(),
                              std::numeric_limits<int>::max()}) {
            // Every field behind the bad one is bad as well: the first decides.
            int fields[7] = {2000, 1, 1, 0, 0, 0, 0};
            for (int i = c.field; i < 7; ++i) {
                fields[i] = -1;
            }
            fields[c.field] = bad;
            EXPECT_TRUE(test::FailsAs(
                {c.error,
                 "Value '" + std::to_string(bad) + "' must be between " + low + " and " + high,
                 true, condition},
                [&] { make(fields); }));
        }
        for (const int good : {c.low, c.high}) {
            int fields[7] = {2000, 1, 1, 0, 0, 0, 0};
            fields[c.field] = good;
            EXPECT_TRUE(make(fields).IsValid()) << c.name;
        }
    }
}

TEST(LumDateTimeTest, Constants) {
    EXPECT_EQ(LumDateTime::DateTimeMinimum.GetValue(), kFirstValue);
    EXPECT_EQ(LumDateTime::DateTimeMaximum.GetValue(), kLastValue);
    EXPECT_EQ(LumDateTime::DateTimeDefault.GetValue(), 2086577280000000u);
    EXPECT_EQ(LumDateTime(), MakeDate(1900, 1, 1));
    EXPECT_EQ(LumDateTime::DateTimeMaximum, LumDateTime(23829, 12, 31, 23, 59, 59, 9999));
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
    struct Case {
        LumDateTimeParts parts;
        const char* date;
        const char* time;
    };
    const Case cases[] = {
        {{2024, 3, 1, 0, 0, 0, 0}, "2024-03-01", ""},
        {{2024, 3, 1, 9, 5, 0, 0}, "2024-03-01", "T09:05:00"},
        {{2024, 3, 1, 9, 5, 0, 2500}, "2024-03-01", "T09:05:00.2500"},
        {{2024, 12, 31, 0, 0, 0, 1}, "2024-12-31", "T00:00:00.0001"},
        {{2024, 12, 31, 0, 0, 7, 0}, "2024-12-31", "T00:00:07"},
        {{400, 1, 1, 0, 0, 0, 0}, "0400-01-01", ""},
        {{23829, 12, 31, 23, 59, 59, 9999}, "23829-12-31", "T23:59:59.9999"},
    };
    for (const Case& c : cases) {
        const LumDateTime dateTime(c.parts);
        EXPECT_EQ(dateTime.ToString().toStdString(), std::string(c.date) + c.time);
        EXPECT_EQ(dateTime.TruncateTime().ToString().toStdString(), c.date);
        EXPECT_EQ(dateTime.HasTime(), *c.time != '\0') << c.date << c.time;
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
    EXPECT_EQ(LumDateTime::FromDouble(1.5), LumDateTime(1900, 1, 2, 12, 0, 0, 0));
    EXPECT_EQ(LumDateTime::FromDouble(-0.5), LumDateTime(1899, 12, 31, 12, 0, 0, 0));
    EXPECT_EQ(LumDateTime(1900, 1, 2, 12, 0, 0, 0).ToDouble(), 1.5);
    EXPECT_EQ(LumDateTime(1899, 12, 31, 12, 0, 0, 0).ToDouble(), -0.5);
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
            const int order = &left < &right ? -1 : &left > &right ? 1 : 0;
            EXPECT_EQ(left.CompareTo(right), order);
            EXPECT_EQ(left < right, order < 0);
            EXPECT_EQ(left <= right, order <= 0);
            EXPECT_EQ(left > right, order > 0);
            EXPECT_EQ(left >= right, order >= 0);
            EXPECT_EQ(left == right, order == 0);
            EXPECT_EQ(left != right, order != 0);
        }
    }
    EXPECT_EQ(std::hash<LumDateTime>()(LumDateTime()), 0x284c8cb99624f1c3);
}

// The two kinds of parts name their fields alike but for the first three.
TEST(LumDateTimeTest, PartsAreCheckedFieldByField) {
    using Parts = LumDateTimeParts;
    using IsoParts = LumISO8601DateTimeParts;
    struct Field {
        void (Parts::*set)(int);
        void (IsoParts::*setIso)(int);
        int value, low, high, lowIso, highIso;
    };
    const Field fields[] = {
        {&Parts::SetYear, &IsoParts::SetISOYear, 2023, 400, 23829, 400, 23829},
        {&Parts::SetMonth, &IsoParts::SetISOWeek, 2, 1, 12, 1, 53},
        {&Parts::SetDay, &IsoParts::SetISOWeekday, 5, 1, 31, 1, 7},
        {&Parts::SetHour, &IsoParts::SetHour, 10, 0, 23, 0, 23},
        {&Parts::SetMinute, &IsoParts::SetMinute, 11, 0, 59, 0, 59},
        {&Parts::SetSecond, &IsoParts::SetSecond, 12, 0, 59, 0, 59},
        {&Parts::SetFraction, &IsoParts::SetFraction, 13, 0, 9999, 0, 9999},
    };
    Parts parts;
    IsoParts isoParts;
    for (const Field& field : fields) {
        (parts.*field.set)(field.value);
        (isoParts.*field.setIso)(field.value);
    }
    EXPECT_EQ(parts, Parts(2023, 2, 5, 10, 11, 12, 13));
    EXPECT_EQ(isoParts, IsoParts(2023, 2, 5, 10, 11, 12, 13));

    const auto isValid = [](auto changed, auto set, int value) {
        (changed.*set)(value);
        return changed.IsValid();
    };
    for (const Field& field : fields) {
        EXPECT_TRUE(isValid(parts, field.set, field.low));
        EXPECT_TRUE(isValid(parts, field.set, field.high));
        EXPECT_FALSE(isValid(parts, field.set, field.low - 1));
        EXPECT_FALSE(isValid(parts, field.set, field.high + 1));
        EXPECT_TRUE(isValid(isoParts, field.setIso, field.lowIso));
        EXPECT_TRUE(isValid(isoParts, field.setIso, field.highIso));
        EXPECT_FALSE(isValid(isoParts, field.setIso, field.lowIso - 1));
        EXPECT_FALSE(isValid(isoParts, field.setIso, field.highIso + 1));
    }
    EXPECT_TRUE(Parts(2023, 2, 31, 0, 0, 0, 0).IsValid());  // The month's length is not looked at.
}

}  // namespace
}  // namespace lum::core
