// Compares the texts of reals with those of std::snprintf, byte for byte: random bit patterns, as
// many as asked for, and on demand every float there is. Exits with 1 at the first difference.
//
//   NumberWriterCheck [--patterns N] [--seed S] [--all-floats]

#include "core/main/serialize/NumberWriter.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

namespace {

// True if `write` gives what `format` gives; reports the difference otherwise.
template <typename T>
bool Check(T value, const char* format, char16_t* (*write)(T, char16_t*) noexcept) {
    char expected[64];
    std::snprintf(expected, sizeof(expected), format, static_cast<double>(value));
    char16_t text[lum::core::kNumberCapacity];
    const char16_t* end = write(value, text);
    std::string given;
    for (const char16_t* unit = text; unit != end; ++unit) {
        given.push_back(*unit < 0x80 ? static_cast<char>(*unit) : '?');
    }
    if (given != expected) {
        std::printf("%a: expected %s, got %s\n", static_cast<double>(value), expected,
                    given.c_str());
        return false;
    }
    return true;
}

bool CheckDouble(std::uint64_t bits) {
    const auto value = std::bit_cast<double>(bits);
    return !std::isfinite(value) || Check(value, "%.17g", lum::core::WriteReal64);
}

bool CheckFloat(std::uint32_t bits) {
    const auto value = std::bit_cast<float>(bits);
    return !std::isfinite(value) || Check(value, "%.8g", lum::core::WriteReal32);
}

// Patterns spread over all exponents; every fourth one keeps only a few leading bits of its
// fraction, as measured values do, which is where ties and trailing zeros are found.
std::uint64_t ThinOut(std::uint64_t bits, std::uint64_t index) {
    return index % 4 == 0 ? bits & ~((1ull << bits % 52) - 1) : bits;
}

}  // namespace

int main(int argc, char** argv) {
    unsigned long long patterns = 100'000'000;
    unsigned long long seed = std::random_device{}();
    bool allFloats = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view option = argv[i];
        if (option == "--patterns" && i + 1 < argc) {
            patterns = std::strtoull(argv[++i], nullptr, 10);
        } else if (option == "--seed" && i + 1 < argc) {
            seed = std::strtoull(argv[++i], nullptr, 10);
        } else if (option == "--all-floats") {
            allFloats = true;
        } else {
            std::printf("usage: %s [--patterns N] [--seed S] [--all-floats]\n", argv[0]);
            return 2;
        }
    }
    std::printf("seed %llu\n", seed);

    std::mt19937_64 random(seed);
    for (unsigned long long i = 0; i < patterns; ++i) {
        const std::uint64_t bits = random();
        if (!CheckDouble(ThinOut(bits, i)) || !CheckFloat(static_cast<std::uint32_t>(bits >> 32))) {
            return 1;
        }
    }
    std::printf("%llu double and %llu float patterns agree\n", patterns, patterns);
    if (allFloats) {
        std::uint32_t bits = 0;
        do {
            if (!CheckFloat(bits)) {
                return 1;
            }
        } while (++bits != 0);
        std::printf("all floats agree\n");
    }
    return 0;
}
