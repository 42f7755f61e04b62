#pragma once

#include <concepts>
#include <cstddef>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/utility/LumException.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

/// Text from a template with numbered markers: RFormatString(L"%2 of %1").arg(name).arg(5). The
/// markers %1 to %99 stand in any order, each as often as wanted; %% is a percent sign. A marker's
/// number ends at the first character that is no digit, so "%1a" is marker 1 and an "a".
///
/// Threads: one object belongs to one thread at a time.
/// Ownership: holds the template and the parameters.
/// Units: positions and field widths are code units of UTF-16.
/// Errors: RFormatString::Exception, thrown without report and context. A malformed template fails
///   when it is taken, too few parameters fail in result(). An assignment that fails has changed
///   nothing. Text beyond the limit of TStringCore is its std::length_error.
class LUM_CORE_API RFormatString {
public:
    class LUM_CORE_API Exception : public LumRuntimeException {
    public:
        using LumRuntimeException::LumRuntimeException;
        Exception(const Exception&) = default;
        Exception(Exception&&) noexcept = default;
        ~Exception() override;
    };

    /// Takes a template and scans it; narrow text is UTF-8, and null counts as empty.
    /// Errors: FormatNumberlessMarker where a "%" is followed by neither "%" nor a digit,
    ///   FormatLeadingZero by "0", FormatMarkerTooLarge by a number above 99, and
    ///   FormatIncompleteMarker by nothing.
    RFormatString(const wchar_t* format);  // NOLINT(google-explicit-constructor)
    RFormatString(const char* format);     // NOLINT(google-explicit-constructor)
    explicit RFormatString(const TStringCore& format);
    RFormatString(const RFormatString&) = default;
    RFormatString(RFormatString&&) noexcept = default;
    ~RFormatString() = default;

    /// Takes another template, as the constructor does; the parameters of the old one are dropped.
    RFormatString& operator=(const wchar_t* format);
    RFormatString& operator=(const TStringCore& format);
    RFormatString& operator=(const RFormatString&) = default;
    RFormatString& operator=(RFormatString&&) noexcept = default;

    /// Appends the parameter of the next marker: the first call gives that of %1. A positive field
    /// width pads the text with `fill` on its left up to that width, a negative one on its right up
    /// to its magnitude; longer text stays whole. A fill above U+FFFF becomes U+FFFD. Numbers are
    /// written as TStringCore::number writes them.
    RFormatString& arg(const TStringCore& text, int fieldWidth = 0, wchar_t fill = L' ');
    RFormatString& arg(short value, int fieldWidth = 0, int base = 10, wchar_t fill = L' ');
    RFormatString& arg(unsigned short value, int fieldWidth = 0, int base = 10,
                       wchar_t fill = L' ');
    RFormatString& arg(int value, int fieldWidth = 0, int base = 10, wchar_t fill = L' ');
    RFormatString& arg(unsigned int value, int fieldWidth = 0, int base = 10, wchar_t fill = L' ');
    RFormatString& arg(long value, int fieldWidth = 0, int base = 10, wchar_t fill = L' ');
    RFormatString& arg(unsigned long value, int fieldWidth = 0, int base = 10, wchar_t fill = L' ');
    RFormatString& arg(long long value, int fieldWidth = 0, int base = 10, wchar_t fill = L' ');
    RFormatString& arg(unsigned long long value, int fieldWidth = 0, int base = 10,
                       wchar_t fill = L' ');
    /// `flag` keeps the decimal point, and with 'g' the trailing zeros.
    RFormatString& arg(double value, int fieldWidth = 0, char format = 'g', int precision = 6,
                       wchar_t fill = L' ', bool flag = false);
    RFormatString& arg(wchar_t character, int fieldWidth = 0, wchar_t fill = L' ');
    /// A unit of a TStringCore would otherwise be taken for a number.
    RFormatString& arg(char16_t unit, int fieldWidth = 0, wchar_t fill = L' ') = delete;

    /// Appends two to ten parameters in turn, unpadded.
    template <std::convertible_to<TStringCore>... Rest>
    requires(sizeof...(Rest) <= 8) RFormatString& arg(const TStringCore& first,
                                                      const TStringCore& second,
                                                      const Rest&... rest) {
        const TStringCore parameters[] = {first, second, rest...};
        return AppendAll(parameters, sizeof...(Rest) + 2);
    }
    /// Appends each element in turn, unpadded.
    RFormatString& arg(const std::vector<TStringCore>& parameters) {
        return AppendAll(parameters.data(), parameters.size());
    }

    /// The template with its markers replaced. A marker inside a parameter stays as it is, and
    /// parameters beyond the highest marker are ignored.
    /// Cost: one allocation, none for short text.
    /// Errors: FormatTooFewParameters, with both counts and the template.
    TStringCore result() const;
    operator TStringCore() const { return result(); }  // NOLINT(google-explicit-constructor)

    const TStringCore& formatString() const noexcept { return m_format; }
    /// Drops the parameters; the template can then be filled again without a new scan.
    void clearParms() noexcept { m_parameters.clear(); }

private:
    struct Marker {
        int position;  // Of the "%".
        int length;
        int number;  // 0 for "%%".
    };

    void scanForMarkers();
    void RecordNumbered(const Marker& marker, LumError errorBelowOne);
    RFormatString& AppendPadded(const TStringCore& text, int fieldWidth, wchar_t fill);
    RFormatString& AppendAll(const TStringCore* parameters, std::size_t count);

    int m_maxMarker = 0;
    std::vector<Marker> m_markers;
    std::vector<TStringCore> m_parameters;
    TStringCore m_format;
};

}  // namespace lum::core
