#pragma once

#include <cstddef>

namespace lum::core {

// Numbers as text for the writers of whole columns. The real forms give, unit for unit, what
// std::printf gives in the C locale; nothing here reads a locale, allocates or calls the C library.
//
// Every function writes at `out`, returns the end of the text and may touch any of the
// kNumberCapacity units from `out` on: the units behind the returned end hold garbage then.
// The functions keep no state, so any number of threads may call them.

inline constexpr std::size_t kNumberCapacity = 32;

// "%.17g" of a finite value: 17 significant digits, rounded half to even on the exact binary value,
// without trailing zeros. Not for infinities and NaN, whose text is the caller's choice.
char16_t* WriteReal64(double value, char16_t* out) noexcept;

// "%.8g" of a finite value: 8 significant digits, otherwise as WriteReal64.
char16_t* WriteReal32(float value, char16_t* out) noexcept;

char16_t* WriteInt32(int value, char16_t* out) noexcept;
char16_t* WriteInt64(long long value, char16_t* out) noexcept;

// Two lower-case hexadecimal digits.
char16_t* WriteHex2(unsigned char byte, char16_t* out) noexcept;

}  // namespace lum::core
