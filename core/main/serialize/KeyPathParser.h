#pragma once

#include <vector>

#include "lum/core/store/KeyPath.h"
#include "lum/core/utility/LumException.h"

namespace lum::core {

class Type;
class VtlScanner;

// Key paths and types over a running scanner, for texts in which they stand among other things; a
// text that is one path as a whole goes to KeyPath::ParseString, which describes the grammar. The
// readers take the tokens of what they read and leave what follows.
//
// Threads: those of the scanner. Errors: those of KeyPath::ParseString, with the whole text of the
// scanner as details. The scanner then stands somewhere within the path.

// Where the colon between a name and its type may stand. Among the arguments of a function, which
// nothing separates, a colon behind blanks begins a literal argument.
enum class TypeColon { AnywhereBehindName, TouchesName };

KeySegment ReadKeySegment(VtlScanner& scanner, TypeColon typeColon);
KeyPath ReadKeyPath(VtlScanner& scanner, TypeColon typeColon);

// Paths one after the other, with blanks between them, while the next token can begin one; there
// may be none.
std::vector<KeyPath> ReadKeyPaths(VtlScanner& scanner);

// The type that the next tokens spell. Where they spell none, null: `error` is the code to fail
// with, and all the tokens still stand ahead.
// Errors: those of making the types; std::out_of_range for the name of an unknown external type.
// The tokens then stand ahead as well.
const Type* TryReadType(VtlScanner& scanner, LumError& error);

}  // namespace lum::core
