#pragma once

namespace lum::core {

/// A date and a time of day as ISO 8601 week fields. The ISO year is that of the week's Thursday,
/// so it differs from the calendar year around the first of January. Nothing keeps the fields in
/// range, and IsValid looks at each alone.
/// Units: weeks count from 1, weekdays from 1 (Monday) to 7 (Sunday), the fraction counts 0.1 ms.
class LumISO8601DateTimeParts {
public:
    constexpr LumISO8601DateTimeParts() = default;
    constexpr LumISO8601DateTimeParts(int isoYear, int isoWeek, int isoWeekday, int hour,
                                      int minute, int second, int fraction)
        : m_isoYear(isoYear),
          m_isoWeek(isoWeek),
          m_isoWeekday(isoWeekday),
          m_hour(hour),
          m_minute(minute),
          m_second(second),
          m_fraction(fraction) {}

    constexpr int GetISOYear() const { return m_isoYear; }
    constexpr int GetISOWeek() const { return m_isoWeek; }
    constexpr int GetISOWeekday() const { return m_isoWeekday; }
    constexpr int GetHour() const { return m_hour; }
    constexpr int GetMinute() const { return m_minute; }
    constexpr int GetSecond() const { return m_second; }
    constexpr int GetFraction() const { return m_fraction; }

    constexpr void SetISOYear(int isoYear) { m_isoYear = isoYear; }
    constexpr void SetISOWeek(int isoWeek) { m_isoWeek = isoWeek; }
    constexpr void SetISOWeekday(int isoWeekday) { m_isoWeekday = isoWeekday; }
    constexpr void SetHour(int hour) { m_hour = hour; }
    constexpr void SetMinute(int minute) { m_minute = minute; }
    constexpr void SetSecond(int second) { m_second = second; }
    constexpr void SetFraction(int fraction) { m_fraction = fraction; }

    /// The ISO year is 400 to 23829, the week 1 to 53 in every year, and the others are in range.
    constexpr bool IsValid() const {
        return m_isoYear >= 400 && m_isoYear <= 23829 && m_isoWeek >= 1 && m_isoWeek <= 53 &&
               m_isoWeekday >= 1 && m_isoWeekday <= 7 && m_hour >= 0 && m_hour < 24 &&
               m_minute >= 0 && m_minute < 60 && m_second >= 0 && m_second < 60 &&
               m_fraction >= 0 && m_fraction <= 9999;
    }

    friend constexpr bool operator==(const LumISO8601DateTimeParts&,
                                     const LumISO8601DateTimeParts&) = default;

private:
    int m_isoYear = 0;
    int m_isoWeek = 0;
    int m_isoWeekday = 0;
    int m_hour = 0;
    int m_minute = 0;
    int m_second = 0;
    int m_fraction = 0;
};

}  // namespace lum::core
