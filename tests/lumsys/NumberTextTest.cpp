// TStringCore::number against the C library.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "lumsys/TStringCore.h"
#include "tests/support/Random.h"

namespace lumsys {
namespace {

TEST(NumberTextTest, Integers) {
    struct Case {
        TStringCore actual;
        const char* expected;
    };
    const Case cases[] = {
        {TStringCore::number(0), "0"},
        {TStringCore::number(-255, 16), "-ff"},
        {TStringCore::number(35, 36), "z"},
        {TStringCore::number(-10, 1), "-10"},
        {TStringCore::number(10, 37), "10"},
        {TStringCore::number(10, -2), "10"},
        {TStringCore::number(short{-32768}), "-32768"},
        {TStringCore::number(static_cast<unsigned short>(65535), 8), "177777"},
        {TStringCore::number(4294967295u), "4294967295"},
        {TStringCore::number(-1L, 2), "-1"},
        {TStringCore::number(1UL << 31, 16), "80000000"},
        {TStringCore::number(std::numeric_limits<long long>::min()), "-9223372036854775808"},
        {TStringCore::number(std::numeric_limits<long long>::min(), 2),
         "-1000000000000000000000000000000000000000000000000000000000000000"},
        {TStringCore::number(std::numeric_limits<unsigned long long>::max()),
         "18446744073709551615"}};
    for (const Case& c : cases) {
        EXPECT_EQ(c.actual.toStdString(), c.expected);
    }
}

std::string Printed(double value, char format, int precision, bool keepPoint) {
    if (keepPoint && (format == 'g' || format == 'G') && std::isfinite(value)) {
        // By its definition, since some C libraries lose zeros where a number rounds up to a power
        // of ten: the exponent of the scientific form decides between the two forms.
        const int digits = precision < 0 ? 6 : std::max(precision, 1);
        const std::string scientific = Printed(value, format == 'g' ? 'e' : 'E', digits - 1, true);
        const int exponent = std::stoi(scientific.substr(scientific.find_first_of("eE") + 1));
        return exponent >= -4 && exponent < digits
                   ? Printed(value, 'f', digits - 1 - exponent, true)
                   : scientific;
    }
    const std::string pattern = std::string(keepPoint ? "%#.*" : "%.*") + format;
    std::vector<char> buffer(1024);
    const int count =
        std::snprintf(buffer.data(), buffer.size(), pattern.c_str(), precision, value);
    return {buffer.data(), static_cast<std::size_t>(count)};
}

TEST(NumberTextTest, RealsAsPrintfWritesThem) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    std::vector<double> values = {0.0,    -0.0,   1.0,    -1.5,      9.5,       99.95, 999999.5,
                                  1e6,    1e-4,   1e-5,   123456789, 1e15,      1e17,  1e22,
                                  1e23,   5e-324, 0.1,    2.0 / 3,   100000,    0.5,   1.7e308,
                                  1e-300, 4096,   -1e100, kInfinity, -kInfinity};
    lum::test::Random random;
    for (int i = 0; i < 500; ++i) {
        const auto value = std::bit_cast<double>(random.Bits());
        if (std::isfinite(value)) {
            values.push_back(value);
        }
    }
    for (const double value : values) {
        for (const char format : {'e', 'E', 'f', 'F', 'g', 'G'}) {
            for (const int precision : {-1, 0, 1, 2, 6, 8, 17, 40, 330}) {
                for (const bool keepPoint : {false, true}) {
                    ASSERT_EQ(
                        TStringCore::number(value, format, precision, keepPoint).toStdString(),
                        Printed(value, format, precision, keepPoint))
                        << format << precision << keepPoint << ' ' << random.Trace();
                }
            }
        }
    }
}

TEST(NumberTextTest, RealsBeyondPrintf) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(TStringCore::number(nan), L"nan");
    EXPECT_EQ(TStringCore::number(-nan, 'G', 3, true), L"NAN");
    EXPECT_EQ(TStringCore::number(0.1), L"0.1");
    EXPECT_EQ(TStringCore::number(1234567.0, 'x'), L"1.23457e+06");  // No such form counts as g.
}

}  // namespace
}  // namespace lumsys
