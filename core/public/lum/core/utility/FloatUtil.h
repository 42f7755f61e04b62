#pragma once

#include "lum/core/Export.h"

namespace lum::core::FloatUtil {

/// -1, 0 or 1: numbers of one sign that lie at most `maxUlps` representable numbers apart are
/// equal, and so are 0.0 and -0.0. A NaN is greater than anything that is not within the tolerance
/// of its bit pattern.
LUM_CORE_API int Compare(float a, float b, unsigned int maxUlps) noexcept;
LUM_CORE_API int Compare(double a, double b, unsigned int maxUlps) noexcept;

LUM_CORE_API bool IsNan(float value) noexcept;
LUM_CORE_API bool IsNan(double value) noexcept;

/// NaN or an infinity.
LUM_CORE_API bool IsSpecial(float value) noexcept;
LUM_CORE_API bool IsSpecial(double value) noexcept;

}  // namespace lum::core::FloatUtil
