#include "lum/core/utility/RFormatString.h"

#include <algorithm>
#include <cstring>

namespace lum::core {
namespace {

constexpr int kHighestMarker = 99;

TStringCore FromNarrow(const char* text) {
    return text == nullptr ? TStringCore() : TStringCore::fromUtf8(text, std::strlen(text));
}

bool IsDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

char16_t FillUnit(wchar_t fill) {
    const auto codePoint = static_cast<char32_t>(fill);
    return codePoint <= 0xFFFF ? static_cast<char16_t>(codePoint) : u'\uFFFD';
}

}  // namespace

RFormatString::Exception::~Exception() = default;

RFormatString::RFormatString(const wchar_t* format) : RFormatString(TStringCore(format)) {}
RFormatString::RFormatString(const char* format) : RFormatString(FromNarrow(format)) {}
RFormatString::RFormatString(const TStringCore& format) : m_format(format) {
    scanForMarkers();
}

RFormatString& RFormatString::operator=(const wchar_t* format) {
    return *this = RFormatString(format);
}

RFormatString& RFormatString::operator=(const TStringCore& format) {
    return *this = RFormatString(format);
}

RFormatString& RFormatString::arg(const TStringCore& text, int fieldWidth, wchar_t fill) {
    return AppendPadded(text, fieldWidth, fill);
}

RFormatString& RFormatString::arg(short value, int fieldWidth, int base, wchar_t fill) {
    return AppendPadded(TStringCore::number(value, base), fieldWidth, fill);
}

RFormatString& RFormatString::arg(unsigned short value, int fieldWidth, int base, wchar_t fill) {
    return AppendPadded(TStringCore::number(value, base), fieldWidth, fill);
}

RFormatString& RFormatString::arg(int value, int fieldWidth, int base, wchar_t fill) {
    return AppendPadded(TStringCore::number(value, base), fieldWidth, fill);
}

RFormatString& RFormatString::arg(unsigned int value, int fieldWidth, int base, wchar_t fill) {
    return AppendPadded(TStringCore::number(value, base), fieldWidth, fill);
}

RFormatString& RFormatString::arg(long value, int fieldWidth, int base, wchar_t fill) {
    return AppendPadded(TStringCore::number(value, base), fieldWidth, fill);
}

RFormatString& RFormatString::arg(unsigned long value, int fieldWidth, int base, wchar_t fill) {
    return AppendPadded(TStringCore::number(value, base), fieldWidth, fill);
}

RFormatString& RFormatString::arg(long long value, int fieldWidth, int base, wchar_t fill) {
    return AppendPadded(TStringCore::number(value, base), fieldWidth, fill);
}

RFormatString& RFormatString::arg(unsigned long long value, int fieldWidth, int base,
                                  wchar_t fill) {
    return AppendPadded(TStringCore::number(value, base), fieldWidth, fill);
}

RFormatString& RFormatString::arg(double value, int fieldWidth, char format, int precision,
                                  wchar_t fill, bool flag) {
    return AppendPadded(TStringCore::number(value, format, precision, flag), fieldWidth, fill);
}

RFormatString& RFormatString::arg(wchar_t character, int fieldWidth, wchar_t fill) {
    return AppendPadded(TStringCore(character), fieldWidth, fill);
}

RFormatString& RFormatString::AppendPadded(const TStringCore& text, int fieldWidth, wchar_t fill) {
    // The magnitude of the lowest width takes more than an int.
    const long long width = fieldWidth;
    const char16_t unit = FillUnit(fill);
    m_parameters.push_back(width >= 0 ? text.rightJustified(static_cast<std::size_t>(width), unit)
                                      : text.leftJustified(static_cast<std::size_t>(-width), unit));
    return *this;
}

RFormatString& RFormatString::AppendAll(const TStringCore* parameters, std::size_t count) {
    m_parameters.insert(m_parameters.end(), parameters, parameters + count);
    return *this;
}

TStringCore RFormatString::result() const {
    if (static_cast<int>(m_parameters.size()) < m_maxMarker) {
        throw Exception(LumError::FormatTooFewParameters,
                        RFormatString(L"have %1, need %2: format string = \"%3\"")
                            .arg(static_cast<int>(m_parameters.size()))
                            .arg(m_maxMarker)
                            .arg(m_format));
    }
    const auto parameterOf = [this](const Marker& marker) -> const TStringCore& {
        return m_parameters[static_cast<std::size_t>(marker.number - 1)];
    };

    std::size_t length = m_format.length();
    for (const Marker& marker : m_markers) {
        length += marker.number == 0 ? 1 : parameterOf(marker).length();
        length -= static_cast<std::size_t>(marker.length);
    }
    TStringCore text;
    text.reserve(length);

    std::size_t copied = 0;
    for (const Marker& marker : m_markers) {
        const auto position = static_cast<std::size_t>(marker.position);
        text.append(m_format.data() + copied, position - copied);
        if (marker.number == 0) {
            text += u'%';
        } else {
            text += parameterOf(marker);
        }
        copied = position + static_cast<std::size_t>(marker.length);
    }
    text.append(m_format.data() + copied, m_format.length() - copied);
    return text;
}

void RFormatString::scanForMarkers() {
    enum class State { Text, AfterPercent, InNumber };

    m_markers.reserve(static_cast<std::size_t>(std::count(m_format.begin(), m_format.end(), u'%')));
    State state = State::Text;
    Marker marker = {};
    int position = 0;
    for (const char16_t unit : m_format) {
        switch (state) {
            case State::InNumber:
                if (IsDigit(unit)) {
                    marker.length += 1;
                    marker.number = marker.number * 10 + (unit - u'0');
                    if (marker.number > kHighestMarker) {
                        throw Exception(LumError::FormatMarkerTooLarge);
                    }
                    break;
                }
                RecordNumbered(marker, LumError::FormatMarkerTooSmall);
                state = State::Text;
                [[fallthrough]];
            case State::Text:
                if (unit == u'%') {
                    marker = {.position = position, .length = 2, .number = 0};
                    state = State::AfterPercent;
                }
                break;
            case State::AfterPercent:
                if (unit == u'%') {
                    m_markers.push_back(marker);
                    state = State::Text;
                } else if (!IsDigit(unit)) {
                    throw Exception(LumError::FormatNumberlessMarker);
                } else if (unit == u'0') {
                    throw Exception(LumError::FormatLeadingZero);
                } else {
                    marker.number = unit - u'0';
                    state = State::InNumber;
                }
                break;
        }
        ++position;
    }
    if (state == State::AfterPercent) {
        throw Exception(LumError::FormatIncompleteMarker);
    }
    if (state == State::InNumber) {
        RecordNumbered(marker, LumError::FormatInvalidLastMarker);
    }
}

void RFormatString::RecordNumbered(const Marker& marker, LumError errorBelowOne) {
    // Cannot fail while a number begins with a digit other than 0: result() subtracts 1 from it.
    if (marker.number < 1) {
        throw Exception(errorBelowOne);
    }
    m_maxMarker = std::max(m_maxMarker, marker.number);
    m_markers.push_back(marker);
}

}  // namespace lum::core
