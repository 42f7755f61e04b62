#pragma once

#include <concepts>
#include <cstddef>

namespace lum::core {

/// FNV-1a in its 64-bit form (Fowler, Noll and Vo, 1991) over the bytes of `value`, least
/// significant first on every machine: the hash of scalars, colours, dates and special kinds. A
/// signed value is hashed as its unsigned bits, a pointer as a uint64.
/// Cost: one multiplication a byte, each waiting for the one before.
template <std::unsigned_integral Unsigned>
constexpr unsigned long long FnvHash(Unsigned value) noexcept {
    unsigned long long bytes = value;
    unsigned long long hash = 0xcbf29ce484222325;
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
        hash = (hash ^ (bytes & 0xFF)) * 0x100000001b3;
        bytes >>= 8;
    }
    return hash;
}

/// One hash of two, which depends on their order: the rule that folds the members of tuples, the
/// segments of paths and the types of keys, from a start of 0 where there are many.
constexpr unsigned long long HashCombine(unsigned long long first,
                                         unsigned long long second) noexcept {
    return first ^ (second + (first << 6) + 0x9e3779b9 + (first >> 2));
}

}  // namespace lum::core
