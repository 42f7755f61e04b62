#include <chrono>
#include <cmath>

#include "tests/functions/BuiltinTables.h"

namespace lum::core::functions_test {

using enum SpecialKind;
using namespace FunctionNames;

namespace {

// Integers keep their low bits, reals are cut; a real that does not fit gives the lowest integer.
template <typename In, typename Out>
Out Convert(In x) {
    if constexpr (std::is_integral_v<Out> && std::is_floating_point_v<In>) {
        const long double whole = std::trunc(static_cast<long double>(x));
        const bool fits = whole >= static_cast<long double>(std::numeric_limits<Out>::lowest()) &&
                          whole <= static_cast<long double>(std::numeric_limits<Out>::max());
        return fits ? static_cast<Out>(whole) : std::numeric_limits<Out>::lowest();
    } else {
        return static_cast<Out>(x);
    }
}

std::chrono::year_month_day CalendarDay(LumDateTime date, int daysLater = 0) {
    constexpr long long kJulianDayOf1970 = 2440588;
    const auto julianDay = static_cast<long long>(date.GetValue() / LumDateTime::kTicksPerDay) + 1;
    return std::chrono::sys_days(std::chrono::days(julianDay - kJulianDayOf1970 + daysLater));
}

// The year of a week is that of its Thursday, and so is the week's number.
std::pair<int, int> YearAndWeek(LumDateTime date) {
    const auto weekday = std::chrono::weekday(CalendarDay(date)).iso_encoding();
    const auto thursday = CalendarDay(date, 4 - static_cast<int>(weekday));
    const std::chrono::sys_days first = thursday.year() / std::chrono::January / 1;
    const auto day = (std::chrono::sys_days(thursday) - first).count();
    return {static_cast<int>(thursday.year()), static_cast<int>(day / 7 + 1)};
}

}  // namespace

void AddConversions(FunctionTable& table) {
    const auto add = [&]<typename In, typename Out>(const wchar_t* name) {
        table.Add(name, Convert<In, Out>);
    };
    const auto addSpecial = [&]<typename In, typename Out>(const wchar_t* name) {
        table.Add(name, [](In x, SpecialKind kind) {
            return ElementWithKind<Out>(Convert<In, Out>(x), kind == Normal ? Normal : Null);
        });
    };
    ForTypes<long long, float, double>([&]<typename T>() { add.operator()<T, int>(TO_INT32); });
    ForTypes<int, float, double>([&]<typename T>() { add.operator()<T, long long>(TO_INT64); });
    ForTypes<int, long long, double>([&]<typename T>() { add.operator()<T, float>(TO_REAL32); });
    ForTypes<int, long long, float, double>(
        [&]<typename T>() { add.operator()<T, double>(TO_REAL64); });
    addSpecial.operator()<double, float>(TO_REAL32);
    ForTypes<bool, long long, double>(
        [&]<typename T>() { addSpecial.operator()<T, double>(TO_REAL64); });

    table.Add(TO_REAL64, [](LumDateTime x) { return x.ToDouble(); });
    table.Add(TO_REAL64, [](LumDateTime x, SpecialKind kind) {
        return NullUnless(kind == Normal, x.ToDouble());
    });
    table.Add(TO_DATETIME, [](double x) { return LumDateTime::FromDouble(x); });
    table.Add(TO_COLOR, [](int x) { return LumColor::FromInt32(x); });
    table.Add(TO_COLOR,
              [](long long x) { return LumColor::FromInt32(Convert<long long, int>(x)); });

    const Options dates{.domain = Domain::GregorianDates};
    table.Add(
        GET_MONTH,
        [](LumDateTime x) {
            return static_cast<int>(static_cast<unsigned>(CalendarDay(x).month()));
        },
        dates);
    table.Add(
        GET_YEAR, [](LumDateTime x) { return static_cast<int>(CalendarDay(x).year()); }, dates);
    table.Add(
        GET_ISO_WEEK, [](LumDateTime x) { return YearAndWeek(x).second; }, dates);
    table.Add(
        GET_ISO_YEAR, [](LumDateTime x) { return YearAndWeek(x).first; }, dates);
}

}  // namespace lum::core::functions_test
