#pragma once

#include <ostream>

#include "lum/core/utility/LumString.h"

namespace lumhost {

/// Writes the text as UTF-8 and ends the line.
/// Errors: std::runtime_error where `out` does not take the text.
void WriteLine(std::ostream& out, const lum::core::TStringCore& text);

}  // namespace lumhost
