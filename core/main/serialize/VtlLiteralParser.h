#pragma once

#include "lum/core/store/StoreValueFwd.h"

namespace lum::core {

class Type;
class VtlScanner;

// Reads a literal of a statement: the name of a special kind, which every type takes, or a value of
// the type, as core/main/utility/Parser.h says. A string is a word or stands in quotes; a date and
// a colour stand in quotes. The value has just that type. Takes the tokens of the literal and
// leaves what follows.
//
// Errors: those of the readers of Parser.h, and for a string CannotParseString; for a type that is
// not primitive, or External, CannotMakeValueForKey; all reported.
SV ReadVtlLiteral(VtlScanner& scanner, const Type* type);

}  // namespace lum::core
