#pragma once

#include <optional>
#include <vector>

#include "lum/core/utility/LumColor.h"
#include "lum/core/utility/LumDateTime.h"
#include "lum/core/utility/LumString.h"

// Primitive values as text: one grammar of numbers, quoted strings and the like wherever they
// occur, in a literal of a statement, in a JSON string or in a key.
//
// Collections answer to keys of text and so need these readers, while the scanner that does the
// reading stands with the other text forms, above the collections. This header is the one way
// between the two: it names the scanner without its definition, and only its source reaches up.
//
// Each reader has three forms:
// - over a running scanner, which takes the tokens of the literal and leaves what follows;
// - over a text, which is the literal and nothing else but white space;
// - Try, over a text, which answers with an empty optional, and logs nothing, where the second form
//   fails.
//
// Threads: no state. Errors: LumRuntimeException, reported, with the code named at the reader.

namespace lum::core {

class Type;
class VtlScanner;

// true or false. Errors: CannotParseBool.
bool ReadBool(VtlScanner& scanner);
bool ReadBool(const TStringCore& text);
std::optional<bool> TryReadBool(const TStringCore& text);

// An integer behind an optional sign, which blanks may follow: the low 32 bits of a number in the
// range of Int64. Errors: CannotParseInt32.
int ReadInt32(VtlScanner& scanner);
int ReadInt32(const TStringCore& text);
std::optional<int> TryReadInt32(const TStringCore& text);

// Likewise, from -(2^63 - 1) to 2^63 - 1: there is no text for the lowest value.
// Errors: CannotParseInt64.
long long ReadInt64(VtlScanner& scanner);
long long ReadInt64(const TStringCore& text);
std::optional<long long> TryReadInt64(const TStringCore& text);

// A real or an integer behind an optional sign; inf and nan are reals, and "-0" is the negative
// zero. The value is the nearest double, for Real32 rounded to a float; beyond the range of doubles
// it is infinity or zero. Errors: CannotParseReal32, CannotParseReal64.
float ReadReal32(VtlScanner& scanner);
float ReadReal32(const TStringCore& text);
std::optional<float> TryReadReal32(const TStringCore& text);
double ReadReal64(VtlScanner& scanner);
double ReadReal64(const TStringCore& text);
std::optional<double> TryReadReal64(const TStringCore& text);

// Over a scanner a string literal, unescaped. A text is taken as it stands, quotes and all: where a
// whole text is a string there is nothing to tell apart. Errors: CannotParseString.
TStringCore ReadString(VtlScanner& scanner);
TStringCore ReadString(const TStringCore& text);
std::optional<TStringCore> TryReadString(const TStringCore& text);

// What LumDateTime::ToString writes: "2024-03-01", "2024-03-01T09:05:00",
// "2024-03-01T09:05:00.2500". Fields may have more or fewer digits, but for the fraction, which has
// four. Over a scanner it stands in a string literal; a text is the date itself or, where it begins
// with a quote, such a literal. Errors: CannotParseDateTime; for a date that does not exist those
// of LumDateTime's constructor.
LumDateTime ReadDateTime(VtlScanner& scanner);
LumDateTime ReadDateTime(const TStringCore& text);
std::optional<LumDateTime> TryReadDateTime(const TStringCore& text);

// One to eight hexadecimal digits, the packed value: six digits leave alpha 0. In quotes or bare as
// for dates. Errors: UnexpectedToken with the whole text as details where a literal is due and is
// none; EmptyHexString, LongHexString, InvalidHexCharacter.
LumColor ReadColor(VtlScanner& scanner);
LumColor ReadColor(const TStringCore& text);
std::optional<LumColor> TryReadColor(const TStringCore& text);

// A value of a type, as the bits that columns store it by: T is unsigned char for Bool; unsigned
// int for Int32, Real32 and Color; unsigned long long for Int64, Real64, Date and DateTime;
// RIndirectString for String. Errors: those of the reader, and for a type of another storage
// ExpectedBool, TypeMismatchExpected (of 4 and of 8 bytes), ExpectedString; TryReadStorage then
// answers with an empty optional.
template <typename T>
T ReadStorage(const Type* type, VtlScanner& scanner);
template <typename T>
T ReadStorage(const Type* type, const TStringCore& text);
template <typename T>
std::optional<T> TryReadStorage(const Type* type, const TStringCore& text);

// The bytes of a text of two hexadecimal digits each, upper or lower case.
// Errors: OddHexString, InvalidHexCharacter, both reported.
std::vector<unsigned char> ReadHexBytes(const TStringCore& text);

}  // namespace lum::core
