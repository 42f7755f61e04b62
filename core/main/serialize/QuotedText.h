#pragma once

#include "lum/core/utility/LumString.h"

namespace lum::core {

// Appends `text` as a string literal that the scanner reads back as exactly `text`: in single
// quotes, with a backslash before each quote and backslash, and "\n" for a line feed. `out` and
// `text` are two objects.
void AppendQuoted(TStringCore& out, const TStringCore& text);

// The same of the units before the first zero alone: the form of string values, where a zero ends
// the text.
void AppendQuotedUntilZero(TStringCore& out, const TStringCore& text);

}  // namespace lum::core
