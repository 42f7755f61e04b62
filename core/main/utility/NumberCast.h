#pragma once

#include <limits>

#include "lum/core/utility/LumSize.h"

namespace lum::core {

/// `value` truncated toward zero, or the lowest integer of the target where it does not fit or is
/// no number. The plain conversion is undefined there, and compilers differ.
template <typename Integer, typename Real>
constexpr Integer TruncateReal(Real value) noexcept {
    // 2^31 or 2^63, exact in both widths of reals.
    constexpr Real kLimit = Real{2} * static_cast<Real>(Integer{1} << (sizeof(Integer) * 8 - 2));
    return value >= -kLimit && value < kLimit ? static_cast<Integer>(value)
                                              : std::numeric_limits<Integer>::min();
}

}  // namespace lum::core
