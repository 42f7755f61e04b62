#pragma once

#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

/// The text as UTF-8, without a terminator. A lone surrogate becomes U+FFFD.
/// Threads: no state.
LUM_CORE_API std::vector<unsigned char> EncodeStringAsBytes(const TStringCore& text);

/// The text of UTF-8 bytes, all of them. Each maximal invalid part becomes U+FFFD.
/// Threads: no state. Errors: std::length_error beyond 2^30 bytes.
LUM_CORE_API TStringCore DecodeBytesAsString(const ArrayView<const unsigned char>& bytes);

}  // namespace lum::core
