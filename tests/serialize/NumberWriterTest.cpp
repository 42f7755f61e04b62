#include "core/main/serialize/NumberWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/Random.h"

namespace lum::core {
namespace {

// What `write` gives for `value`; says so if it touches a unit outside of its room.
template <typename T>
std::string TextOf(char16_t* (*write)(T, char16_t*) noexcept, std::type_identity_t<T> value) {
    constexpr std::size_t kMargin = 16;
    constexpr char16_t kUntouched = 0xbeef;
    std::vector<char16_t> units(kMargin + kNumberCapacity + kMargin, kUntouched);
    char16_t* out = units.data() + kMargin;
    const char16_t* end = write(value, out);
    const auto isUntouched = [](char16_t unit) { return unit == kUntouched; };
    if (!std::all_of(units.begin(), units.begin() + kMargin, isUntouched) ||
        !std::all_of(units.end() - kMargin, units.end(), isUntouched)) {
        return "touched units outside of its room";
    }
    std::string text;
    for (const char16_t* unit = out; unit != end; ++unit) {
        text.push_back(*unit < 0x80 ? static_cast<char>(*unit) : '?');
    }
    return text;
}

std::string TextOf(double value) {
    return TextOf(WriteReal64, value);
}
std::string TextOf(float value) {
    return TextOf(WriteReal32, value);
}

// Fails, and names the value, unless both signs of it have the text that printf gives.
template <typename Real>
void ExpectPrinted(Real value) {
    for (const Real real : {value, -value}) {
        char text[64];
        std::snprintf(text, sizeof(text), sizeof(Real) == 8 ? "%.17g" : "%.8g",
                      static_cast<double>(real));
        ASSERT_EQ(TextOf(real), text);
    }
}

// Both ends of every binary exponent, denormal ones included; and around the powers of ten, where
// the decimal exponent changes, and where rounding may carry into it.
template <typename Real>
void ExpectEdgesPrinted(int reach) {
    using Limits = std::numeric_limits<Real>;
    ExpectPrinted(Real{});
    for (Real power = Limits::denorm_min(); std::isfinite(power); power *= 2) {
        ExpectPrinted(power);
        ExpectPrinted(std::nextafter(power, Real{}));
        ExpectPrinted(power * static_cast<Real>(1.7320508075688772));
    }
    ExpectPrinted(Limits::max());
    for (int exponent = Limits::min_exponent10 - Limits::max_digits10;
         exponent <= Limits::max_exponent10; ++exponent) {
        const std::string power = "1e" + std::to_string(exponent);
        Real near = sizeof(Real) == 8 ? static_cast<Real>(std::strtod(power.c_str(), nullptr))
                                      : static_cast<Real>(std::strtof(power.c_str(), nullptr));
        for (int i = 0; i < reach; ++i) {
            near = std::nextafter(near, Real{});
        }
        for (int i = 0; i <= 2 * reach; ++i) {
            ExpectPrinted(near);
            near = std::nextafter(near, Limits::max());
        }
    }
}

// Values with one digit more than is written, a 5: those between 10^k and 10^(k+1) that are odd
// multiples of the smallest binary fraction which ends there.
template <typename Real>
void ExpectTiesPrinted(test::Random& random, int writtenDigits) {
    for (int digits = 1; digits < writtenDigits; ++digits) {
        const int fractionBits = writtenDigits + 1 - digits;
        const double least = std::pow(10.0, digits - 1);
        for (int i = 0; i < 500; ++i) {
            const double whole =
                std::floor(least * (1 + static_cast<double>(random.Below(900)) / 100));
            const auto odd = static_cast<double>(random.Below(1ull << fractionBits) | 1);
            ExpectPrinted(static_cast<Real>(whole + std::ldexp(odd, -fractionBits)));
        }
    }
}

TEST(NumberWriterTest, EdgesAndTies) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    ExpectEdgesPrinted<double>(2);
    ExpectEdgesPrinted<float>(20);
    ExpectTiesPrinted<double>(random, 17);
    ExpectTiesPrinted<float>(random, 8);
}

// Those which, scaled to 17 digits, exceed a half by the least: the first ones to be rounded down
// if anything in the 128 bits of a power of ten were wrong.
TEST(NumberWriterTest, HardToRound) {
    for (const double value :
         {0x1.3de005bd620dfp+215, 0x1.3de005bd620dfp+216, 0x1.7c0747bd76fa1p-814,
          0x1.7c0747bd76fa1p-815, 0x1.a999ddec72acap+599, 0x1.a3d8d5e503e59p-975,
          0x1.272a47124ff70p-307, 0x1.b848a3ee9807ep-123, 0x1.69239f38fb691p-464,
          0x1.39382cbb82031p-287, 0x1.342acd09310acp+269}) {
        ExpectPrinted(value);
    }
}

// Columns of money, and of any bits.
TEST(NumberWriterTest, RandomNumbers) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    const auto expectPrinted = [](auto value) {
        if (std::isfinite(value)) {
            ExpectPrinted(value);
        }
    };
    for (int i = 0; i < 100000; ++i) {
        const unsigned long long bits = random.Bits();
        expectPrinted(static_cast<double>(bits % 10'000'000'000) / 100);
        expectPrinted(static_cast<float>(bits % 1'000'000) / 100);
        expectPrinted(std::bit_cast<double>(bits));
        expectPrinted(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
        const auto integer = std::bit_cast<long long>(bits);
        ASSERT_EQ(TextOf(WriteInt64, integer), std::to_string(integer));
    }
}

// Around every count of digits, and every power of two.
TEST(NumberWriterTest, Integers) {
    std::vector<long long> values = {LLONG_MAX, INT_MAX, INT_MIN};
    for (long long power = 1; power <= LLONG_MAX / 10; power *= 10) {
        values.insert(values.end(), {power - 1, power, power + 1, 10 * (power - 1) + 8});
    }
    for (int shift = 0; shift < 63; ++shift) {
        values.push_back(1ll << shift);
    }
    for (const long long value : values) {
        for (const long long number : {value, -value, ~value}) {
            EXPECT_EQ(TextOf(WriteInt64, number), std::to_string(number));
            const int narrow = static_cast<int>(number);
            EXPECT_EQ(TextOf(WriteInt32, narrow), std::to_string(narrow));
        }
    }
}

TEST(NumberWriterTest, EveryByteInHexadecimal) {
    for (int byte = 0; byte <= UCHAR_MAX; ++byte) {
        char text[8];
        std::snprintf(text, sizeof(text), "%02x", static_cast<unsigned>(byte));
        EXPECT_EQ(TextOf(WriteHex2, static_cast<unsigned char>(byte)), text);
    }
}

}  // namespace
}  // namespace lum::core
