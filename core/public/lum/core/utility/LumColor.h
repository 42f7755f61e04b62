#pragma once

#include <bit>
#include <cstddef>
#include <functional>
#include <type_traits>

#include "lum/core/Export.h"
#include "lum/core/utility/Fnv.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

/// A colour of four channels of 8 bits: the value behind the store type Color. It is packed into 32
/// bits, alpha highest, then red, green and blue; the default is 0.
///
/// Threads: a plain value.
/// Units: a channel is 0 to 255.
/// Errors: LumRuntimeException with InvalidRed, InvalidGreen, InvalidBlue or InvalidAlpha from what
///   takes a channel as int; the colour stays as it was.
class LUM_CORE_API LumColor {
public:
    constexpr LumColor() = default;
    constexpr LumColor(unsigned char red, unsigned char green, unsigned char blue,
                       unsigned char alpha) noexcept
        : m_value(static_cast<unsigned int>(alpha) << 24 | static_cast<unsigned int>(red) << 16 |
                  static_cast<unsigned int>(green) << 8 | static_cast<unsigned int>(blue)) {}
    /// Checks the channels in the order of the parameters.
    LumColor(int red, int green, int blue, int alpha);

    /// Any packed value is a colour.
    static constexpr LumColor FromInt32(int value) noexcept {
        LumColor color;
        color.SetValue(value);
        return color;
    }
    constexpr int AsInt32() const noexcept { return std::bit_cast<int>(m_value); }
    constexpr void SetValue(int value) noexcept { m_value = std::bit_cast<unsigned int>(value); }

    constexpr int GetR() const noexcept { return static_cast<int>(m_value >> 16 & 0xFF); }
    constexpr int GetG() const noexcept { return static_cast<int>(m_value >> 8 & 0xFF); }
    constexpr int GetB() const noexcept { return static_cast<int>(m_value & 0xFF); }
    constexpr int GetA() const noexcept { return static_cast<int>(m_value >> 24); }

    void SetR(int red);
    void SetG(int green);
    void SetB(int blue);
    void SetA(int alpha);

    /// The order is that of the packed values as signed numbers, so that a colour with an alpha of
    /// 128 or more stands before one with less. Columns and tuples sort by it.
    friend constexpr bool operator==(LumColor, LumColor) noexcept = default;
    friend constexpr bool operator<(LumColor left, LumColor right) noexcept {
        return left.AsInt32() < right.AsInt32();
    }
    friend constexpr bool operator>(LumColor left, LumColor right) noexcept { return right < left; }

    constexpr unsigned long long GetHashValue() const noexcept { return FnvHash(m_value); }

    /// Eight lower-case hexadecimal digits: alpha, red, green, blue. Opaque red is "ffff0000".
    TStringCore ToString() const;

private:
    unsigned int m_value = 0;
};

static_assert(sizeof(LumColor) == 4 && std::is_trivially_copyable_v<LumColor>);

}  // namespace lum::core

template <>
struct std::hash<lum::core::LumColor> {
    std::size_t operator()(lum::core::LumColor color) const { return color.GetHashValue(); }
};
