#include "lum/core/utility/FloatUtil.h"

#include <bit>
#include <cmath>

#include "lum/core/utility/LumSize.h"

namespace lum::core::FloatUtil {
namespace {

template <typename Bits, typename Real>
int CompareTolerantly(Real a, Real b, unsigned int maxUlps) noexcept {
    if (a == b) {
        return 0;
    }
    const int plain = b > a ? -1 : 1;
    if (std::signbit(a) != std::signbit(b)) {
        return plain;
    }
    // With equal signs the bit patterns order as the magnitudes do, and the difference fits.
    const auto bitsA = std::bit_cast<Bits>(a);
    const auto bitsB = std::bit_cast<Bits>(b);
    const Bits distance = bitsA > bitsB ? bitsA - bitsB : bitsB - bitsA;
    return distance <= maxUlps ? 0 : plain;
}

}  // namespace

int Compare(float a, float b, unsigned int maxUlps) noexcept {
    return CompareTolerantly<unsigned int>(a, b, maxUlps);
}

int Compare(double a, double b, unsigned int maxUlps) noexcept {
    return CompareTolerantly<uint64>(a, b, maxUlps);
}

bool IsNan(float value) noexcept {
    return std::isnan(value);
}
bool IsNan(double value) noexcept {
    return std::isnan(value);
}
bool IsSpecial(float value) noexcept {
    return !std::isfinite(value);
}
bool IsSpecial(double value) noexcept {
    return !std::isfinite(value);
}

}  // namespace lum::core::FloatUtil
