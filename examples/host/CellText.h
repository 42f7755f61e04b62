#pragma once

#include <optional>
#include <string_view>

namespace lumhost {

/// What the text of one cell can be read as without losing anything. The kinds are bits, so that a
/// column's cells can be gathered into one set.
enum CellKind : unsigned {
    kBoolCell = 1,       ///< true, false, also True and TRUE, False and FALSE
    kInt32Cell = 2,      ///< an optional sign and digits, without leading zeros
    kInt64Cell = 4,      ///< the same beyond 32 bits, up to 2^53, which a real still holds exactly
    kWideInt64Cell = 8,  ///< the same beyond 2^53, up to 64 bits
    kReal64Cell = 16,    ///< with a decimal point, an exponent, or both; "1.5", ".5", "5.", "2e-3"
    kDateCell = 32,      ///< YYYY-MM-DD, a day of the calendar
    kDateTimeCell = 64,  ///< YYYY-MM-DDTHH:MM:SS, optionally with one to four decimals
    kTextCell = 128      ///< anything else
};

/// The narrowest kind of `text`, which is not empty. A number that a double would turn into
/// infinity or 0 is text, and so is one with leading zeros, such as "007", which are digits that a
/// number would lose.
CellKind ClassifyCell(std::string_view text);

/// A date and a time of day; the first moment of 1900 unless told. The fraction counts 0.1
/// milliseconds.
struct DateTimeFields {
    int year = 1900;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int fraction = 0;

    bool operator==(const DateTimeFields&) const = default;
};

// Readers: each takes the whole text or gives nothing. They take what ClassifyCell says of the
// kind, and leading zeros of numbers besides. None depends on the locale.

std::optional<bool> ReadBool(std::string_view text);
std::optional<int> ReadInt32(std::string_view text);
std::optional<long long> ReadInt64(std::string_view text);
/// The nearest real; nothing where that would be infinite, or 0 for a number that is not.
std::optional<float> ReadReal32(std::string_view text);
std::optional<double> ReadReal64(std::string_view text);
/// A day from 0400-01-01 to 23829-12-31 in the historical calendar: Julian up to 1582-10-04,
/// Gregorian from 1582-10-15 on. Years have four digits, or five from 10000 on.
std::optional<DateTimeFields> ReadDate(std::string_view text);
/// As ReadDate, and "T" and a time of day, or the date alone for its midnight.
std::optional<DateTimeFields> ReadDateTime(std::string_view text);
/// Eight hexadecimal digits: alpha, red, green, blue, from the highest bits down.
std::optional<unsigned> ReadColor(std::string_view text);

}  // namespace lumhost
