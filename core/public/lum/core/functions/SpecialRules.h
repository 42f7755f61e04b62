#pragma once

#include <bit>
#include <type_traits>

#include "lum/core/functions/ElementTypes.h"

/// The rules that special forms of functions share, for those who write one. They take no branch,
/// since specials come in no order that a processor could learn; so what stands below a special is
/// computed with like any other value.
///
///     ElementWithKind<double> Half(const double& value, SpecialKind kind) {
///         return OrNull(value / 2, kind == SpecialKind::Normal);
///     }

namespace lum::core {

/// The zero of a type: 0, 0.0, false, the empty string, the null SV. That of LumDateTime is the
/// count 0 and not its default.
template <FunctionElement T>
T ZeroOf() {
    if constexpr (std::is_same_v<T, LumDateTime>) {
        return LumDateTime::FromValue(0);
    } else {
        return T();
    }
}

/// `value` if `isValue`, else `other`.
template <FunctionElement T>
T Choose(bool isValue, const T& value, const T& other) {
    if constexpr (detail::kHasBits<T>) {
        // A conditional over a value that was just loaded becomes a branch or a second loop.
        using Bits = detail::BitsOf<T>;
        const Bits mask = Bits{0} - static_cast<Bits>(isValue);
        return std::bit_cast<T>(static_cast<Bits>((std::bit_cast<Bits>(value) & mask) |
                                                  (std::bit_cast<Bits>(other) & ~mask)));
    } else {
        return isValue ? value : other;
    }
}

/// The rule "Null out": `value` where `isValue`, else zero of the kind Null.
template <FunctionElement T>
ElementWithKind<T> OrNull(const T& value, bool isValue) {
    static_assert(static_cast<int>(SpecialKind::Normal) == 0 &&
                  static_cast<int>(SpecialKind::Null) == 1);
    return {Choose(isValue, value, ZeroOf<T>()), static_cast<SpecialKind>(!isValue)};
}

}  // namespace lum::core
