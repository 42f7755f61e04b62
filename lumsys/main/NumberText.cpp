// TStringCore::number: numbers as text, independent of the locale.
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

#include "lumsys/TStringCore.h"

namespace lumsys {
namespace {

TStringCore FromAscii(const char* first, const char* last) {
    TStringCore text;
    const auto count = static_cast<std::size_t>(last - first);
    char16_t* out = text.prepareAppend(count);
    while (first != last) {
        *out++ = static_cast<unsigned char>(*first++);
    }
    text.commitAppend(count);
    return text;
}

template <typename T>
TStringCore IntegerText(T value, int base) {
    char buffer[std::numeric_limits<unsigned long long>::digits + 1];
    const int radix = base >= 2 && base <= 36 ? base : 10;
    const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value, radix);
    return FromAscii(buffer, result.ptr);
}

/// What printf's '#' adds to the text of a finite number: a decimal point where there is none, and
/// for the general form the zeros up to `precision` significant digits.
void KeepPoint(std::string& text, bool isGeneral, int precision) {
    std::size_t exponent = text.find('e');
    if (exponent == std::string::npos) {
        exponent = text.size();
    }
    std::string mantissa = text.substr(0, exponent);
    if (mantissa.find('.') == std::string::npos) {
        mantissa += '.';
    }
    if (isGeneral) {
        int digits = 0;
        bool isLeading = true;
        for (const char c : mantissa) {
            isLeading = isLeading && !(c >= '1' && c <= '9');
            digits += !isLeading && c >= '0' && c <= '9' ? 1 : 0;
        }
        if (digits == 0) {
            digits = 1;  // Zero itself is one digit of the precision.
        }
        for (; digits < precision; ++digits) {
            mantissa += '0';
        }
    }
    text.replace(0, exponent, mantissa);
}

}  // namespace

TStringCore TStringCore::number(short value, int base) {
    return IntegerText(value, base);
}
TStringCore TStringCore::number(unsigned short value, int base) {
    return IntegerText(value, base);
}
TStringCore TStringCore::number(int value, int base) {
    return IntegerText(value, base);
}
TStringCore TStringCore::number(unsigned int value, int base) {
    return IntegerText(value, base);
}
TStringCore TStringCore::number(long value, int base) {
    return IntegerText(value, base);
}
TStringCore TStringCore::number(unsigned long value, int base) {
    return IntegerText(value, base);
}
TStringCore TStringCore::number(long long value, int base) {
    return IntegerText(value, base);
}
TStringCore TStringCore::number(unsigned long long value, int base) {
    return IntegerText(value, base);
}

TStringCore TStringCore::number(double value, char format, int precision, bool keepPoint) {
    const bool isUpper = format == 'E' || format == 'F' || format == 'G';
    const char lower = isUpper ? static_cast<char>(format - 'A' + 'a') : format;
    const std::chars_format style = lower == 'e'   ? std::chars_format::scientific
                                    : lower == 'f' ? std::chars_format::fixed
                                                   : std::chars_format::general;
    const bool isGeneral = style == std::chars_format::general;
    int digits = precision < 0 ? 6 : precision;
    if (isGeneral && digits == 0) {
        digits = 1;
    }
    // The longest text: the fixed form of the largest number, its sign, point and places.
    std::string text(
        static_cast<std::size_t>(digits) + std::numeric_limits<double>::max_exponent10 + 16, '\0');
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value, style, digits);
    text.resize(static_cast<std::size_t>(result.ptr - text.data()));
    if (std::isnan(value)) {
        text = "nan";
    } else if (keepPoint && std::isfinite(value)) {
        KeepPoint(text, isGeneral, digits);
    }
    if (isUpper) {
        for (char& c : text) {
            c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        }
    }
    return FromAscii(text.data(), text.data() + text.size());
}

}  // namespace lumsys
