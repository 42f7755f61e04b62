#pragma once

namespace lum::core {

/// A date and a time of day as calendar fields. The fields are independent numbers: nothing keeps
/// them in range, and IsValid looks at each alone.
/// Units: months and days count from 1, the fraction counts 0.1 ms.
class LumDateTimeParts {
public:
    constexpr LumDateTimeParts() = default;
    constexpr LumDateTimeParts(int year, int month, int day, int hour, int minute, int second,
                               int fraction)
        : m_year(year),
          m_month(month),
          m_day(day),
          m_hour(hour),
          m_minute(minute),
          m_second(second),
          m_fraction(fraction) {}

    constexpr int GetYear() const { return m_year; }
    constexpr int GetMonth() const { return m_month; }
    constexpr int GetDay() const { return m_day; }
    constexpr int GetHour() const { return m_hour; }
    constexpr int GetMinute() const { return m_minute; }
    constexpr int GetSecond() const { return m_second; }
    constexpr int GetFraction() const { return m_fraction; }

    constexpr void SetYear(int year) { m_year = year; }
    constexpr void SetMonth(int month) { m_month = month; }
    constexpr void SetDay(int day) { m_day = day; }
    constexpr void SetHour(int hour) { m_hour = hour; }
    constexpr void SetMinute(int minute) { m_minute = minute; }
    constexpr void SetSecond(int second) { m_second = second; }
    constexpr void SetFraction(int fraction) { m_fraction = fraction; }

    /// Each field is one that some LumDateTime has: the year 400 to 23829, the day 1 to 31 in every
    /// month. February 30 passes; the constructor of LumDateTime refuses it.
    constexpr bool IsValid() const {
        return m_year >= 400 && m_year <= 23829 && m_month >= 1 && m_month <= 12 && m_day >= 1 &&
               m_day <= 31 && m_hour >= 0 && m_hour < 24 && m_minute >= 0 && m_minute < 60 &&
               m_second >= 0 && m_second < 60 && m_fraction >= 0 && m_fraction <= 9999;
    }

    friend constexpr bool operator==(const LumDateTimeParts&, const LumDateTimeParts&) = default;

private:
    int m_year = 0;
    int m_month = 0;
    int m_day = 0;
    int m_hour = 0;
    int m_minute = 0;
    int m_second = 0;
    int m_fraction = 0;
};

}  // namespace lum::core
