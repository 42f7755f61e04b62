#include "lum/core/serialize/FormatPrimitive.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/Random.h"

namespace lum::core {
namespace {

using namespace factory;

std::string Format(const SV& value) {
    return FormatPrimitive(*value).toStdString();
}

TEST(FormatPrimitiveTest, EveryScalarType) {
    using Int64Limits = std::numeric_limits<long long>;
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr float kNan32 = std::numeric_limits<float>::quiet_NaN();
    const std::pair<SV, std::string> cases[] = {
        {MakeBool(true), "true"},
        {MakeBool(false), "false"},
        {MakeInt32(0), "0"},
        {MakeInt32(std::numeric_limits<int>::min()), "-2147483648"},
        {MakeInt64(Int64Limits::max()), "9223372036854775807"},
        {MakeInt64(Int64Limits::min()), "-9223372036854775808"},
        {MakeReal32(0.1f), "0.1"},
        {MakeReal32(16777216.0f), "16777216"},
        {MakeReal32(1.0f / 3), "0.33333334"},
        {MakeReal32(1e9f), "1e+09"},
        {MakeReal32(kNan32), "nan"},
        {MakeReal32(-std::numeric_limits<float>::infinity()), "-inf"},
        {MakeReal64(0.1), "0.10000000000000001"},
        {MakeReal64(-0.0), "-0"},
        {MakeReal64(2.5, 10, 2), "2.5"},
        {MakeReal64(1e300), "1.0000000000000001e+300"},
        {MakeReal64(-std::nan("")), "nan"},
        {MakeReal64(kInfinity), "+inf"},
        {MakeReal64(-kInfinity), "-inf"},
        {MakeString(L""), ""},
        {MakeString(L"Null 'and' \"more\"\n"), "Null 'and' \"more\"\n"},
        {MakeDate(LumDateTime(2024, 3, 1, 0, 0, 0, 0)), "2024-03-01"},
        {MakeDateTime(LumDateTime(2024, 3, 1, 9, 5, 0, 2500)), "2024-03-01T09:05:00.2500"},
        {MakeDateTime(LumDateTime::DateTimeMaximum), "23829-12-31T23:59:59.9999"},
        {MakeColor(255, 0, 10, 128), "80ff000a"},
        {MakeSpecial(IntType::Get32(), SpecialKind::Null), "Null"},
        {MakeSpecial(test::TypeOf("P{i}"), SpecialKind::ManyValues), "ManyValues"},
    };
    for (const auto& [value, text] : cases) {
        EXPECT_EQ(Format(value), text);
    }
}

TEST(FormatPrimitiveTest, RealsAreThoseOfPrintf) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    char text[64];
    for (int i = 0; i < 20000; ++i) {
        const auto real = std::bit_cast<double>(random.Bits());
        if (std::isfinite(real)) {
            std::snprintf(text, sizeof(text), "%.17g", real);
            ASSERT_EQ(Format(MakeReal64(real)), text);
        }
        const auto shortReal = std::bit_cast<float>(static_cast<unsigned int>(random.Bits()));
        if (std::isfinite(shortReal)) {
            std::snprintf(text, sizeof(text), "%.8g", double{shortReal});
            ASSERT_EQ(Format(MakeReal32(shortReal)), text);
        }
    }
}

TEST(FormatPrimitiveTest, RefusesWhatIsNoScalar) {
    EXPECT_LUM_REPORT(InvalidStoreTypeValue, "Tuple", "",
                      FormatPrimitive(*MakeTuple(test::RowOf("P{i}: 1"))));
    EXPECT_LUM_REPORT(InvalidStoreTypeValue, "Array", "", FormatPrimitive(*test::ColumnOf("i: 1")));
    EXPECT_LUM_ERROR(InvalidDateTime, "", FormatPrimitive(*MakeDate(LumDateTime::FromValue(0))));
}

}  // namespace
}  // namespace lum::core
