#include "lum/core/utility/LumColor.h"

#include <array>

#include "lum/core/Check.h"

namespace lum::core {
namespace {

/// `channel` as 8 bits. A negative one counts as a huge unsigned number, and so fails as well.
unsigned char CheckChannel(int channel, LumError error) {
    LUM_CHECK(static_cast<unsigned int>(channel) <= 255, error, L"Must be between 0 and 255");
    return static_cast<unsigned char>(channel);
}

}  // namespace

// The braces order the checks.
LumColor::LumColor(int red, int green, int blue, int alpha)
    : LumColor{CheckChannel(red, LumError::InvalidRed), CheckChannel(green, LumError::InvalidGreen),
               CheckChannel(blue, LumError::InvalidBlue),
               CheckChannel(alpha, LumError::InvalidAlpha)} {}

void LumColor::SetR(int red) {
    m_value = (m_value & 0xFF00FFFF) |
              static_cast<unsigned int>(CheckChannel(red, LumError::InvalidRed)) << 16;
}

void LumColor::SetG(int green) {
    m_value = (m_value & 0xFFFF00FF) |
              static_cast<unsigned int>(CheckChannel(green, LumError::InvalidGreen)) << 8;
}

void LumColor::SetB(int blue) {
    m_value = (m_value & 0xFFFFFF00) |
              static_cast<unsigned int>(CheckChannel(blue, LumError::InvalidBlue));
}

void LumColor::SetA(int alpha) {
    m_value = (m_value & 0x00FFFFFF) |
              static_cast<unsigned int>(CheckChannel(alpha, LumError::InvalidAlpha)) << 24;
}

TStringCore LumColor::ToString() const {
    std::array<char16_t, 8> digits;
    unsigned int rest = m_value;
    for (std::size_t i = digits.size(); i > 0; --i) {
        digits[i - 1] = u"0123456789abcdef"[rest & 0xF];
        rest >>= 4;
    }
    return TStringCore(digits.data(), digits.size());
}

}  // namespace lum::core
