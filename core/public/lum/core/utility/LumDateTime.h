#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <type_traits>

#include "lum/core/Export.h"
#include "lum/core/utility/Fnv.h"
#include "lum/core/utility/LumDateTimeParts.h"
#include "lum/core/utility/LumISO8601DateTimeParts.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

/// A date with a time of day: the value behind the store types Date and DateTime. The calendar is
/// the historical one, Julian up to 1582-10-04 and Gregorian from 1582-10-15, the day after; there
/// is no year 0. A date in range lies from DateTimeMinimum to DateTimeMaximum.
///
/// Threads: a plain value.
/// Units: the value counts 0.1 ms, 864000000 to the day: value / 864000000 + 1 is the Julian day
///   number (of a day that begins at midnight), the remainder is the time of day. Differences of
///   values are therefore durations, and the order of numbers is the order in time.
/// Errors: the constructors check; FromValue and FromDouble do not, and can give a value out of
///   range, which is held as it is, answers false to IsValid and fails in ToString.
class LUM_CORE_API LumDateTime {
public:
    /// Units of 0.1 ms in a day.
    static constexpr unsigned long long kTicksPerDay = 864000000;

    /// 0400-01-01 00:00:00.0000
    static const LumDateTime DateTimeMinimum;
    /// 23829-12-31 23:59:59.9999
    static const LumDateTime DateTimeMaximum;
    /// 1900-01-01 00:00:00.0000, which is also the origin of FromDouble.
    static const LumDateTime DateTimeDefault;

    /// DateTimeDefault.
    constexpr LumDateTime() noexcept : m_value(kDefaultValue) {}
    /// Errors: LumRuntimeException for the first field out of its range, in this order:
    ///   YearOutOfRange (400 to 23829), MonthOutOfRange, DayOutOfRange (1 to 31), HourOutOfRange,
    ///   MinuteOutOfRange, SecondOutOfRange, FractionOutOfRange (0 to 9999), with the field's value
    ///   in the details; InvalidDateTime for a day that its month lacks or that 1582 skipped.
    LumDateTime(int year, int month, int day, int hour, int minute, int second, int fraction);
    explicit LumDateTime(const LumDateTimeParts& parts);

    /// Any number is taken.
    static constexpr LumDateTime FromValue(unsigned long long value) noexcept {
        LumDateTime dateTime;
        dateTime.m_value = value;
        return dateTime;
    }
    constexpr unsigned long long GetValue() const noexcept { return m_value; }

    /// `days` after DateTimeDefault, before it where negative. The part of a day is rounded to
    /// 0.1 ms, halves away from the origin. Numbers that no value can hold, infinities and NaN give
    /// a meaningless value.
    static LumDateTime FromDouble(double days) noexcept;
    /// The days since DateTimeDefault, negative before it.
    double ToDouble() const noexcept;

    LumDateTimeParts GetLumDateTimeParts() const noexcept;
    /// Errors: YearOutOfRange for a value out of range.
    LumISO8601DateTimeParts GetLumISO8601DateTimeParts() const;
    /// The day's number in its year, 1 on the first of January. Days that 1582 skipped do not
    /// count. Errors: YearOutOfRange for a value out of range.
    int GetGregorianDayOfYear() const;

    /// The time of day is not midnight.
    constexpr bool HasTime() const noexcept { return m_value % kTicksPerDay != 0; }
    /// The value lies from DateTimeMinimum to DateTimeMaximum.
    bool IsValid() const noexcept { return GetLumDateTimeParts().IsValid(); }
    /// Midnight of the same day.
    /// Errors: YearOutOfRange for a value out of range.
    LumDateTime TruncateTime() const;

    /// -1, 0 or 1.
    constexpr int CompareTo(LumDateTime other) const noexcept {
        return static_cast<int>(m_value > other.m_value) -
               static_cast<int>(m_value < other.m_value);
    }
    friend constexpr bool operator==(LumDateTime, LumDateTime) noexcept = default;
    friend constexpr std::strong_ordering operator<=>(LumDateTime, LumDateTime) noexcept = default;

    /// "2024-03-01", with a time of day "2024-03-01T09:05:00", with a fraction
    /// "2024-03-01T09:05:00.2500".
    /// Errors: InvalidDateTime for a value out of range.
    TStringCore ToString() const;

    constexpr unsigned long long GetHashValue() const noexcept { return FnvHash(m_value); }

private:
    static constexpr unsigned long long kDefaultValue = 2086577280000000;

    unsigned long long m_value;
};

static_assert(sizeof(LumDateTime) == 8 && std::is_trivially_copyable_v<LumDateTime>);

}  // namespace lum::core

template <>
struct std::hash<lum::core::LumDateTime> {
    std::size_t operator()(lum::core::LumDateTime dateTime) const {
        return dateTime.GetHashValue();
    }
};
