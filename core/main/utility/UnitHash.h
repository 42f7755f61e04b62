#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "lum/core/utility/LumSize.h"

namespace lum::core {

/// The hash of UTF-16 units for a table in memory: folded products (after wyhash by Wang Yi, 2019,
/// the variant that keeps the factors), made for texts of a few words. Each object has a seed of
/// its own, since texts come from strangers, and nobody may know which of them meet in a table.
///
/// Threads: any.
class UnitHash {
public:
    UnitHash();

    /// Every bit depends on every unit, and on how many there are.
    uint64 operator()(const char16_t* units, std::size_t count) const noexcept;

private:
    template <typename Word>
    static uint64 Load(const char* bytes) noexcept {
        Word word;
        std::memcpy(&word, bytes, sizeof(word));
        return word;
    }
    // Both halves of the product and both factors in one: where one factor is 0, the other still
    // counts.
    static uint64 Fold(uint64 a, uint64 b) noexcept {
        __extension__ using Wide = unsigned __int128;
        const Wide product = Wide{a} * b;
        return a ^ b ^ static_cast<uint64>(product) ^ static_cast<uint64>(product >> 64);
    }

    uint64 m_seed;
};

// A text of up to 12 units takes two products that do not wait for each other; words overlap where
// the length is no multiple of theirs, and the length itself is a factor.
inline uint64 UnitHash::operator()(const char16_t* units, std::size_t count) const noexcept {
    const auto* bytes = reinterpret_cast<const char*>(units);
    const std::size_t length = count * sizeof(char16_t);
    std::size_t rest = length;
    uint64 hash = m_seed;
    for (; rest > 24; rest -= 16, bytes += 16) {
        hash = Fold(Load<uint64>(bytes) ^ hash, Load<uint64>(bytes + 8) ^ 0x8EBC6AF09C88C6E3);
    }
    uint64 first = 0;
    uint64 second = 0;
    uint64 third = 0;
    if (rest >= 8) {
        first = Load<uint64>(bytes);
        third = Load<uint64>(bytes + rest - 8);
        if (rest > 16) {
            second = Load<uint64>(bytes + 8);
        }
    } else if (rest >= 4) {
        first = Load<std::uint32_t>(bytes);
        third = Load<std::uint32_t>(bytes + rest - 4);
    } else if (rest != 0) {
        first = Load<std::uint16_t>(bytes);
    }
    hash = Fold(first ^ hash, second ^ 0x589965CC75374CC3) ^
           Fold(third ^ m_seed, length ^ 0x1D8E4E27C47D124F);
    return hash ^ hash >> 32;
}

}  // namespace lum::core
