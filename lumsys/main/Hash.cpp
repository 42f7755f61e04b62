#include "lumsys/Hash.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace lumsys {
namespace {

struct State {
    std::uint32_t a;
    std::uint32_t b;
    std::uint32_t c;

    void Mix() noexcept {
        a -= b, a -= c, a ^= c >> 13;
        b -= c, b -= a, b ^= a << 8;
        c -= a, c -= b, c ^= b >> 13;
        a -= b, a -= c, a ^= c >> 12;
        b -= c, b -= a, b ^= a << 16;
        c -= a, c -= b, c ^= b >> 5;
        a -= b, a -= c, a ^= c >> 3;
        b -= c, b -= a, b ^= a << 10;
        c -= a, c -= b, c ^= b >> 15;
    }
};

std::uint32_t LoadLittleEndian(const unsigned char* bytes) noexcept {
    if constexpr (std::endian::native == std::endian::little) {
        std::uint32_t word;
        std::memcpy(&word, bytes, sizeof(word));
        return word;
    } else {
        return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 |
               std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[3]} << 24;
    }
}

}  // namespace

unsigned int Hash(const void* data, std::size_t length, unsigned int seed) noexcept {
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::size_t rest = length;
    State state{0x9e3779b9u, 0x9e3779b9u, seed};
    for (; rest >= 12; rest -= 12, bytes += 12) {
        state.a += LoadLittleEndian(bytes);
        state.b += LoadLittleEndian(bytes + 4);
        state.c += LoadLittleEndian(bytes + 8);
        state.Mix();
    }
    state.c += static_cast<std::uint32_t>(length);
    unsigned char tail[12] = {};
    if (rest != 0) {
        std::memcpy(tail, bytes, rest);
    }
    state.a += LoadLittleEndian(tail);
    state.b += LoadLittleEndian(tail + 4);
    // The low byte of c is reserved for the length.
    state.c += LoadLittleEndian(tail + 8) << 8;
    state.Mix();
    return state.c;
}

}  // namespace lumsys
