#pragma once

#include <bit>
#include <cmath>
#include <limits>
#include <type_traits>

#include "lum/core/functions/SpecialRules.h"

namespace lum::core {

// Sums, differences, products and floors as the built-in functions give them: integers wrap, which
// signed numbers may not do by themselves.

namespace detail {
template <typename T, typename Operation>
constexpr T Wrapping(T a, T b, Operation operation) noexcept {
    if constexpr (std::is_integral_v<T>) {
        using Unsigned = std::make_unsigned_t<T>;
        return static_cast<T>(operation(static_cast<Unsigned>(a), static_cast<Unsigned>(b)));
    } else {
        return operation(a, b);
    }
}
}  // namespace detail

template <typename T>
constexpr T Add(const T& a, const T& b) noexcept {
    return detail::Wrapping(a, b, [](auto x, auto y) { return x + y; });
}

template <typename T>
constexpr T Subtract(const T& a, const T& b) noexcept {
    return detail::Wrapping(a, b, [](auto x, auto y) { return x - y; });
}

template <typename T>
constexpr T Multiply(const T& a, const T& b) noexcept {
    return detail::Wrapping(a, b, [](auto x, auto y) { return x * y; });
}

template <typename T>
constexpr T Negate(const T& a) noexcept {
    if constexpr (std::is_integral_v<T>) {
        return Subtract(T{0}, a);
    } else {
        return -a;
    }
}

// A signalling NaN becomes a quiet one, which std::floor does by some instruction sets and by
// others not.
template <typename T>
T Floor(const T& a) noexcept {
    using Bits = detail::BitsOf<T>;
    constexpr Bits kQuiet = std::bit_cast<Bits>(std::numeric_limits<T>::quiet_NaN());
    return Choose(a == a, std::floor(a), std::bit_cast<T>(std::bit_cast<Bits>(a) | kQuiet));
}

}  // namespace lum::core
