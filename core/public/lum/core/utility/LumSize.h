#pragma once

#include "lum/core/Export.h"

namespace lum::core {

/// The count and index type of the whole library.
using lumsize_t = unsigned int;

/// The 64-bit integers of the interface: the same types on every platform, so that overload sets
/// with int, long and these stay distinct everywhere.
using int64 = long long;
using uint64 = unsigned long long;

static_assert(sizeof(lumsize_t) == 4 && sizeof(int64) == 8);

namespace detail {
[[noreturn]] LUM_CORE_API void FailSizeCast();
}

/// `count` as a lumsize_t.
/// Errors: OutOfRange, with details and without context, above 4294967295.
inline lumsize_t LumSizeCastSafe(uint64 count) {
    if (count > 0xFFFFFFFFu) {
        detail::FailSizeCast();
    }
    return static_cast<lumsize_t>(count);
}

}  // namespace lum::core
