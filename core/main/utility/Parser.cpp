#include "core/main/utility/Parser.h"

#include <bit>
#include <string_view>
#include <type_traits>
#include <utility>

#include "core/main/serialize/VtlScanner.h"
#include "lum/core/Check.h"
#include "lum/core/types/Type.h"
#include "lum/core/utility/RIndirectString.h"

namespace lum::core {
namespace {

using Kind = VtlTokenKind;

template <typename T>
T ValueOrFail(std::optional<T>&& value, LumError error) {
    if (!value) {
        LUM_FAIL(error);
    }
    return *std::move(value);
}

// The literal that `accept` takes from the whole of `text`.
template <typename T>
std::optional<T> AcceptWhole(const TStringCore& text, std::optional<T> (*accept)(VtlScanner&)) {
    VtlScanner scanner(text);
    std::optional<T> value = accept(scanner);
    return scanner.PeekIs(Kind::End) ? std::move(value) : std::nullopt;
}

// Bools and numbers -------------------------------------------------------------------------------

std::optional<bool> AcceptBool(VtlScanner& scanner) {
    if (!scanner.Accept(Kind::BoolLiteral)) {
        return std::nullopt;
    }
    return scanner.GetCurrent().GetBool();
}

bool AcceptMinus(VtlScanner& scanner) {
    return !scanner.Accept(Kind::Plus) && scanner.Accept(Kind::Minus);
}

std::optional<long long> AcceptInt64(VtlScanner& scanner) {
    const bool isNegative = AcceptMinus(scanner);
    if (!scanner.Accept(Kind::IntegerLiteral)) {
        return std::nullopt;
    }
    const long long value = scanner.GetCurrent().GetInteger();
    return isNegative ? -value : value;
}

std::optional<int> AcceptInt32(VtlScanner& scanner) {
    const std::optional<long long> value = AcceptInt64(scanner);
    if (!value) {
        return std::nullopt;
    }
    return static_cast<int>(*value);
}

std::optional<double> AcceptReal64(VtlScanner& scanner) {
    const bool isNegative = AcceptMinus(scanner);
    double value = 0;
    if (scanner.Accept(Kind::RealLiteral)) {
        value = scanner.GetCurrent().GetReal();
    } else if (scanner.Accept(Kind::IntegerLiteral)) {
        value = static_cast<double>(scanner.GetCurrent().GetInteger());
    } else {
        return std::nullopt;
    }
    return isNegative ? -value : value;
}

std::optional<float> AcceptReal32(VtlScanner& scanner) {
    const std::optional<double> value = AcceptReal64(scanner);
    if (!value) {
        return std::nullopt;
    }
    return static_cast<float>(*value);
}

// Dates -------------------------------------------------------------------------------------------

// Whether `digits` is a decimal number of up to nine significant digits, more than any field has.
bool ReadField(std::u16string_view digits, int& field) {
    constexpr int kLimit = 100'000'000;
    field = 0;
    for (const char16_t digit : digits) {
        if (digit < u'0' || digit > u'9' || field >= kLimit) {
            return false;
        }
        field = field * 10 + (digit - u'0');
    }
    return !digits.empty();
}

// Cuts the text before the next separator off `rest`; all of it where there is none.
std::u16string_view CutAt(char16_t separator, std::u16string_view& rest) {
    const std::size_t at = rest.find(separator);
    const std::u16string_view cut = rest.substr(0, at);
    rest = at == std::u16string_view::npos ? std::u16string_view() : rest.substr(at + 1);
    return cut;
}

// The fields of a date's text, not yet known to be in range.
std::optional<LumDateTimeParts> SplitDateTime(std::u16string_view text) {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int fraction = 0;
    const bool hasTime = text.find(u'T') != std::u16string_view::npos;
    const bool hasFraction = text.find(u'.') != std::u16string_view::npos;
    if (!ReadField(CutAt(u'-', text), year) || !ReadField(CutAt(u'-', text), month) ||
        !ReadField(CutAt(u'T', text), day)) {
        return std::nullopt;
    }
    if (hasTime && (!ReadField(CutAt(u':', text), hour) || !ReadField(CutAt(u':', text), minute) ||
                    !ReadField(CutAt(u'.', text), second))) {
        return std::nullopt;
    }
    if (hasFraction && (text.size() != 4 || !ReadField(text, fraction))) {
        return std::nullopt;
    }
    return LumDateTimeParts(year, month, day, hour, minute, second, fraction);
}

// The date of those fields, if there is one. The constructor of LumDateTime would say so as well,
// but also report a failure to the log.
std::optional<LumDateTime> TryMakeDateTime(const LumDateTimeParts& parts) {
    if (!parts.IsValid()) {
        return std::nullopt;
    }
    // Every month has a first day. Counted on from there, a day that the month lacks, or that
    // stands behind a gap in it, comes out too late.
    LumDateTimeParts firstParts = parts;
    firstParts.SetDay(1);
    unsigned long long value =
        LumDateTime(firstParts).GetValue() +
        static_cast<unsigned int>(parts.GetDay() - 1) * LumDateTime::kTicksPerDay;
    LumDateTimeParts found = LumDateTime::FromValue(value).GetLumDateTimeParts();
    while (found.GetMonth() != parts.GetMonth() || found.GetDay() > parts.GetDay()) {
        value -= LumDateTime::kTicksPerDay;
        found = LumDateTime::FromValue(value).GetLumDateTimeParts();
    }
    return found == parts ? std::optional(LumDateTime::FromValue(value)) : std::nullopt;
}

// Colours -----------------------------------------------------------------------------------------

// The value of a hexadecimal digit, or -1.
int HexDigitOf(char16_t unit) {
    if (unit >= u'0' && unit <= u'9') {
        return unit - u'0';
    }
    const int letter = unit | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

// NoError, or what is wrong with the digits.
LumError ReadColorDigits(const TStringCore& digits, LumColor& color) {
    if (digits.isEmpty()) {
        return LumError::EmptyHexString;
    }
    if (digits.length() > 8) {
        return LumError::LongHexString;
    }
    unsigned int value = 0;
    for (const char16_t unit : digits) {
        const int digit = HexDigitOf(unit);
        if (digit < 0) {
            return LumError::InvalidHexCharacter;
        }
        value = value << 4 | static_cast<unsigned int>(digit);
    }
    color.SetValue(std::bit_cast<int>(value));
    return LumError::NoError;
}

LumColor ColorOrFail(const TStringCore& digits) {
    LumColor color;
    const LumError error = ReadColorDigits(digits, color);
    if (error != LumError::NoError) {
        LUM_FAIL(error);
    }
    return color;
}

// The contents of a text that may be a string literal; nothing where it begins like one and is
// none.
std::optional<TStringCore> Unquoted(const TStringCore& text) {
    if (text.isEmpty() || text[0] != u'\'') {
        return text;
    }
    VtlToken token;
    if (!VtlScanner::IsSingleToken(text, Kind::StringLiteral, token)) {
        return std::nullopt;
    }
    return token.GetText();
}

}  // namespace

// Readers -----------------------------------------------------------------------------------------

bool ReadBool(VtlScanner& scanner) {
    return ValueOrFail(AcceptBool(scanner), LumError::CannotParseBool);
}

bool ReadBool(const TStringCore& text) {
    return ValueOrFail(TryReadBool(text), LumError::CannotParseBool);
}

std::optional<bool> TryReadBool(const TStringCore& text) {
    return AcceptWhole(text, AcceptBool);
}

int ReadInt32(VtlScanner& scanner) {
    return ValueOrFail(AcceptInt32(scanner), LumError::CannotParseInt32);
}

int ReadInt32(const TStringCore& text) {
    return ValueOrFail(TryReadInt32(text), LumError::CannotParseInt32);
}

std::optional<int> TryReadInt32(const TStringCore& text) {
    return AcceptWhole(text, AcceptInt32);
}

long long ReadInt64(VtlScanner& scanner) {
    return ValueOrFail(AcceptInt64(scanner), LumError::CannotParseInt64);
}

long long ReadInt64(const TStringCore& text) {
    return ValueOrFail(TryReadInt64(text), LumError::CannotParseInt64);
}

std::optional<long long> TryReadInt64(const TStringCore& text) {
    return AcceptWhole(text, AcceptInt64);
}

float ReadReal32(VtlScanner& scanner) {
    return ValueOrFail(AcceptReal32(scanner), LumError::CannotParseReal32);
}

float ReadReal32(const TStringCore& text) {
    return ValueOrFail(TryReadReal32(text), LumError::CannotParseReal32);
}

std::optional<float> TryReadReal32(const TStringCore& text) {
    return AcceptWhole(text, AcceptReal32);
}

double ReadReal64(VtlScanner& scanner) {
    return ValueOrFail(AcceptReal64(scanner), LumError::CannotParseReal64);
}

double ReadReal64(const TStringCore& text) {
    return ValueOrFail(TryReadReal64(text), LumError::CannotParseReal64);
}

std::optional<double> TryReadReal64(const TStringCore& text) {
    return AcceptWhole(text, AcceptReal64);
}

TStringCore ReadString(VtlScanner& scanner) {
    if (!scanner.Accept(Kind::StringLiteral)) {
        LUM_FAIL(LumError::CannotParseString);
    }
    return scanner.GetCurrent().GetText();
}

TStringCore ReadString(const TStringCore& text) {
    return text;
}

std::optional<TStringCore> TryReadString(const TStringCore& text) {
    return text;
}

LumDateTime ReadDateTime(VtlScanner& scanner) {
    if (!scanner.Accept(Kind::StringLiteral)) {
        LUM_FAIL(LumError::CannotParseDateTime);
    }
    return LumDateTime(ValueOrFail(SplitDateTime(scanner.GetCurrent().GetText().view()),
                                   LumError::CannotParseDateTime));
}

LumDateTime ReadDateTime(const TStringCore& text) {
    const TStringCore contents = ValueOrFail(Unquoted(text), LumError::CannotParseDateTime);
    return LumDateTime(ValueOrFail(SplitDateTime(contents.view()), LumError::CannotParseDateTime));
}

std::optional<LumDateTime> TryReadDateTime(const TStringCore& text) {
    const std::optional<TStringCore> contents = Unquoted(text);
    const std::optional<LumDateTimeParts> parts =
        contents ? SplitDateTime(contents->view()) : std::nullopt;
    return parts ? TryMakeDateTime(*parts) : std::nullopt;
}

LumColor ReadColor(VtlScanner& scanner) {
    return ColorOrFail(scanner.Expect(Kind::StringLiteral).GetText());
}

LumColor ReadColor(const TStringCore& text) {
    const std::optional<TStringCore> digits = Unquoted(text);
    if (!digits) {
        LUM_FAIL(LumError::UnexpectedToken, text);
    }
    return ColorOrFail(*digits);
}

std::optional<LumColor> TryReadColor(const TStringCore& text) {
    const std::optional<TStringCore> digits = Unquoted(text);
    LumColor color;
    if (!digits || ReadColorDigits(*digits, color) != LumError::NoError) {
        return std::nullopt;
    }
    return color;
}

// Typed readers -----------------------------------------------------------------------------------

namespace {

// The two forms that fail differ in nothing but what they read from.
template <typename T, typename Source>
T ReadStorageFrom(const Type* type, Source& source) {
    if constexpr (std::is_same_v<T, unsigned char>) {
        LUM_CHECK(type->GetStoreType() == StoreType::Bool, LumError::ExpectedBool);
        return ReadBool(source) ? 1 : 0;
    } else if constexpr (std::is_same_v<T, RIndirectString>) {
        LUM_CHECK(type->GetStoreType() == StoreType::String, LumError::ExpectedString);
        return ReadString(source);
    } else if constexpr (sizeof(T) == 4) {
        switch (type->GetStoreType()) {
            case StoreType::Int32:
                return std::bit_cast<T>(ReadInt32(source));
            case StoreType::Real32:
                return std::bit_cast<T>(ReadReal32(source));
            case StoreType::Color:
                return std::bit_cast<T>(ReadColor(source).AsInt32());
            default:
                LUM_FAIL(LumError::TypeMismatchExpected);
        }
    } else {
        switch (type->GetStoreType()) {
            case StoreType::Int64:
                return std::bit_cast<T>(ReadInt64(source));
            case StoreType::Real64:
                return std::bit_cast<T>(ReadReal64(source));
            case StoreType::Date:
            case StoreType::DateTime:
                return ReadDateTime(source).GetValue();
            default:
                LUM_FAIL(LumError::TypeMismatchExpected);
        }
    }
}

// The bits of what `read` makes of the text; nothing where they are not as wide as T.
template <typename T, typename Value>
std::optional<T> BitsOf(std::optional<Value> (*read)(const TStringCore&), const TStringCore& text) {
    if constexpr (sizeof(T) == sizeof(Value)) {
        const std::optional<Value> value = read(text);
        return value ? std::optional(std::bit_cast<T>(*value)) : std::nullopt;
    } else {
        return std::nullopt;
    }
}

}  // namespace

template <typename T>
T ReadStorage(const Type* type, VtlScanner& scanner) {
    return ReadStorageFrom<T>(type, scanner);
}

template <typename T>
T ReadStorage(const Type* type, const TStringCore& text) {
    return ReadStorageFrom<T>(type, text);
}

template <typename T>
std::optional<T> TryReadStorage(const Type* type, const TStringCore& text) {
    if constexpr (std::is_same_v<T, RIndirectString>) {
        return type->Is(StoreType::String) ? TryReadString(text) : std::nullopt;
    } else {
        switch (type->GetStoreType()) {
            case StoreType::Bool:
                return BitsOf<T>(TryReadBool, text);
            case StoreType::Int32:
                return BitsOf<T>(TryReadInt32, text);
            case StoreType::Int64:
                return BitsOf<T>(TryReadInt64, text);
            case StoreType::Real32:
                return BitsOf<T>(TryReadReal32, text);
            case StoreType::Real64:
                return BitsOf<T>(TryReadReal64, text);
            case StoreType::Date:
            case StoreType::DateTime:
                return BitsOf<T>(TryReadDateTime, text);
            case StoreType::Color:
                return BitsOf<T>(TryReadColor, text);
            default:
                return std::nullopt;
        }
    }
}

#define LUM_INSTANTIATE_TYPED_READERS(T)                        \
    template T ReadStorage<T>(const Type*, VtlScanner&);        \
    template T ReadStorage<T>(const Type*, const TStringCore&); \
    template std::optional<T> TryReadStorage<T>(const Type*, const TStringCore&);

LUM_INSTANTIATE_TYPED_READERS(unsigned char)
LUM_INSTANTIATE_TYPED_READERS(unsigned int)
LUM_INSTANTIATE_TYPED_READERS(unsigned long long)
LUM_INSTANTIATE_TYPED_READERS(RIndirectString)

// Bytes -------------------------------------------------------------------------------------------

std::vector<unsigned char> ReadHexBytes(const TStringCore& text) {
    LUM_CHECK_TEXT("(s.length() % 2 == 0)", text.length() % 2 == 0, LumError::OddHexString);
    std::vector<unsigned char> bytes(text.length() / 2);
    const char16_t* digits = text.data();
    for (unsigned char& byte : bytes) {
        const int high = HexDigitOf(digits[0]);
        const int low = HexDigitOf(digits[1]);
        const bool isOk = high >= 0 && low >= 0;
        LUM_CHECK(isOk, LumError::InvalidHexCharacter);
        byte = static_cast<unsigned char>(high << 4 | low);
        digits += 2;
    }
    return bytes;
}

}  // namespace lum::core
