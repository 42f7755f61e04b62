#include "core/main/serialize/NumberWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

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

std::string Format(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof(text), format, value);
    return text;
}

// Fails, and names the value, unless both signs of it have the text that printf gives.
void ExpectPrinted(double value) {
    ASSERT_EQ(TextOf(WriteReal64, value), Format("%.17g", value)) << Format("%a", value);
    ASSERT_EQ(TextOf(WriteReal64, -value), Format("%.17g", -value)) << Format("%a", -value);
}

void ExpectPrinted(float value) {
    ASSERT_EQ(TextOf(WriteReal32, value), Format("%.8g", value)) << Format("%a", value);
    ASSERT_EQ(TextOf(WriteReal32, -value), Format("%.8g", -value)) << Format("%a", -value);
}

struct RealCase {
    double value;
    const char* text;
};

TEST(NumberWriterTest, Real64) {
    const RealCase kCases[] = {
        {0.0, "0"},
        {-0.0, "-0"},
        {1, "1"},
        {-10, "-10"},
        {0.1, "0.10000000000000001"},
        {12.34, "12.34"},
        {-1234567.25, "-1234567.25"},
        // From plain to exponent form, on both ends.
        {1e-4, "0.0001"},
        {1e-5, "1.0000000000000001e-05"},
        {-0.00012345678901234567, "-0.00012345678901234567"},
        {1e16, "10000000000000000"},
        {12345678901234568, "12345678901234568"},
        {1e17, "1e+17"},
        {1.5e17, "1.5e+17"},
        {1e22, "1e+22"},
        // The double lies below the power of ten, and rounds up to it or does not.
        {1e23, "9.9999999999999992e+22"},
        {1e-14, "1e-14"},
        {1e98, "1e+98"},
        // Ties: the eighteenth and last digit is 5, the one before it even or odd.
        {1.00000762939453125, "1.0000076293945312"},
        {1.00002288818359375, "1.0000228881835938"},
        {DBL_MAX, "1.7976931348623157e+308"},
        {-DBL_MAX, "-1.7976931348623157e+308"},
        {DBL_MIN, "2.2250738585072014e-308"},
        {DBL_TRUE_MIN, "4.9406564584124654e-324"},
    };
    for (const RealCase& row : kCases) {
        EXPECT_EQ(TextOf(WriteReal64, row.value), row.text);
    }
}

TEST(NumberWriterTest, Real32) {
    const RealCase kCases[] = {
        {0.0, "0"},
        {-0.0, "-0"},
        {0.1f, "0.1"},
        {16777216, "16777216"},
        {123456792, "1.2345679e+08"},
        {1e8, "1e+08"},
        {1e-5f, "9.9999997e-06"},
        // The float lies below the power of ten, and rounds up to it.
        {1e-6f, "1e-06"},
        {1e12f, "1e+12"},
        // Ties.
        {1.00390625, "1.0039062"},
        {1.01171875, "1.0117188"},
        {FLT_MAX, "3.4028235e+38"},
        {-FLT_TRUE_MIN, "-1.4012985e-45"},
    };
    for (const RealCase& row : kCases) {
        EXPECT_EQ(TextOf(WriteReal32, static_cast<float>(row.value)), row.text);
    }
}

// Both ends of every binary exponent, denormal ones included.
TEST(NumberWriterTest, EveryBinaryExponent) {
    for (int exponent = -1074; exponent <= 1023; ++exponent) {
        const double power = std::ldexp(1.0, exponent);
        ExpectPrinted(power);
        ExpectPrinted(std::nextafter(power, 0.0));
        ExpectPrinted(power * 1.7320508075688772);
    }
    for (int exponent = -149; exponent <= 127; ++exponent) {
        const float power = std::ldexp(1.0f, exponent);
        ExpectPrinted(power);
        ExpectPrinted(std::nextafter(power, 0.0f));
        ExpectPrinted(power * 1.7320508f);
    }
}

// Where the decimal exponent changes, and where rounding may carry into it.
TEST(NumberWriterTest, AroundPowersOfTen) {
    for (int exponent = -323; exponent <= 308; ++exponent) {
        double value = std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr);
        value = std::nextafter(std::nextafter(value, 0.0), 0.0);
        for (int i = 0; i < 5; ++i) {
            ExpectPrinted(value);
            value = std::nextafter(value, DBL_MAX);
        }
    }
    for (int exponent = -44; exponent <= 38; ++exponent) {
        float value = std::strtof(("1e" + std::to_string(exponent)).c_str(), nullptr);
        for (int i = 0; i < 20; ++i) {
            value = std::nextafter(value, 0.0f);
        }
        for (int i = 0; i < 40; ++i) {
            ExpectPrinted(value);
            value = std::nextafter(value, FLT_MAX);
        }
    }
}

// Values with one digit more than is written, a 5: those between 10^k and 10^(k+1) that are odd
// multiples of the smallest binary fraction which ends there.
TEST(NumberWriterTest, Ties) {
    std::mt19937_64 random(7);
    for (int digits = 1; digits <= 16; ++digits) {
        const int fractionBits = 18 - digits;
        const double least = std::pow(10.0, digits - 1);
        for (int i = 0; i < 500; ++i) {
            const double whole =
                std::floor(least * (1 + static_cast<double>(random() % 900) / 100));
            const auto odd = static_cast<double>(random() % (1ull << fractionBits) | 1);
            ExpectPrinted(whole + std::ldexp(odd, -fractionBits));
        }
    }
    for (int digits = 1; digits <= 7; ++digits) {
        const int fractionBits = 9 - digits;
        const double least = std::pow(10.0, digits - 1);
        for (int i = 0; i < 500; ++i) {
            const double whole =
                std::floor(least * (1 + static_cast<double>(random() % 900) / 100));
            const auto odd = static_cast<double>(random() % (1ull << fractionBits) | 1);
            ExpectPrinted(static_cast<float>(whole + std::ldexp(odd, -fractionBits)));
        }
    }
}

// Those doubles which, scaled to 17 digits, exceed a half by the least: the first ones to be
// rounded down if anything in the 128 bits of a power of ten were wrong.
TEST(NumberWriterTest, LittleMoreThanATie) {
    for (const double value :
         {0x1.3de005bd620dfp+215, 0x1.3de005bd620dfp+216, 0x1.7c0747bd76fa1p-814,
          0x1.7c0747bd76fa1p-815, 0x1.a999ddec72acap+599, 0x1.a3d8d5e503e59p-975,
          0x1.272a47124ff70p-307, 0x1.b848a3ee9807ep-123, 0x1.69239f38fb691p-464,
          0x1.39382cbb82031p-287, 0x1.342acd09310acp+269}) {
        ExpectPrinted(value);
    }
}

// A column of money, and one of any bits.
TEST(NumberWriterTest, RandomReals) {
    const std::uint64_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t bits = random();
        ExpectPrinted(static_cast<double>(bits % 10'000'000'000) / 100);
        ExpectPrinted(static_cast<float>(bits % 1'000'000) / 100);
        if (const auto value = std::bit_cast<double>(bits); std::isfinite(value)) {
            ExpectPrinted(value);
        }
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
        if (std::isfinite(value)) {
            ExpectPrinted(value);
        }
    }
}

// Around every count of digits, and every power of two.
TEST(NumberWriterTest, Integers) {
    std::vector<long long> values = {0, LLONG_MAX, LLONG_MIN, INT_MAX, INT_MIN};
    for (long long power = 1; power <= LLONG_MAX / 10; power *= 10) {
        values.insert(values.end(), {power - 1, power, power + 1, 10 * (power - 1) + 8});
    }
    for (int shift = 0; shift < 63; ++shift) {
        values.push_back(1ll << shift);
    }
    for (const long long value : values) {
        const long long negated = value == LLONG_MIN ? value : -value;
        for (const long long number : {value, negated}) {
            EXPECT_EQ(TextOf(WriteInt64, number), std::to_string(number));
            const int narrow = static_cast<int>(number);
            EXPECT_EQ(TextOf(WriteInt32, narrow), std::to_string(narrow));
        }
    }
}

// All pairs and quadruples of digits go through the same arithmetic.
TEST(NumberWriterTest, EveryFourDigits) {
    for (int value = 0; value < 10000; ++value) {
        const int number = 12340000 + value;
        ASSERT_EQ(TextOf(WriteInt32, number), std::to_string(number));
        ASSERT_EQ(TextOf(WriteInt32, value * 10000), std::to_string(value * 10000));
        ExpectPrinted(static_cast<double>(number) * 100003);
        ExpectPrinted(static_cast<double>(value * 10000ll + 10000 * 10000ll));
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
