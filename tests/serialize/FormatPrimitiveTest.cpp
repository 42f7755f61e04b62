#include "lum/core/serialize/FormatPrimitive.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/serialize/JsonForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using namespace factory;

// The text of a scalar is that of its JSON, without the quotes.
TEST(FormatPrimitiveTest, EveryScalarType) {
    using Int64Limits = std::numeric_limits<long long>;
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr float kNan32 = std::numeric_limits<float>::quiet_NaN();
    const std::pair<SV, std::string> cases[] = {
        {MakeBool(true), "true"},
        {MakeBool(false), "false"},
        {MakeInt32(std::numeric_limits<int>::min()), "-2147483648"},
        {MakeInt64(Int64Limits::max()), "9223372036854775807"},
        {MakeInt64(Int64Limits::min()), "-9223372036854775808"},
        {MakeReal32(0.1f), "0.1"},
        {MakeReal32(1e9f), "1e+09"},
        {MakeReal32(kNan32), "\"nan\""},
        {MakeReal32(-std::numeric_limits<float>::infinity()), "\"-inf\""},
        {MakeReal64(0.1), "0.10000000000000001"},
        {MakeReal64(-0.0), "-0"},
        {MakeReal64(2.5, 10, 2), "2.5"},
        {MakeReal64(-std::nan("")), "\"nan\""},
        {MakeReal64(kInfinity), "\"+inf\""},
        {MakeString(L""), "\"\""},
        {MakeString(L"Null and more"), "\"Null and more\""},
        {MakeDate(LumDateTime(2024, 3, 1, 0, 0, 0, 0)), "\"2024-03-01\""},
        {MakeDateTime(LumDateTime(2024, 3, 1, 9, 5, 0, 2500)), "\"2024-03-01T09:05:00.2500\""},
        {MakeDateTime(LumDateTime::DateTimeMaximum), "\"23829-12-31T23:59:59.9999\""},
        {MakeColor(255, 0, 10, 128), "\"80ff000a\""},
        {MakeSpecial(IntType::Get32(), SpecialKind::Null), "\"Null\""},
        {MakeSpecial(test::TypeOf("P{i}"), SpecialKind::ManyValues), "\"ManyValues\""},
    };
    for (const auto& [value, json] : cases) {
        EXPECT_EQ(test::Compact(value), json);
        EXPECT_EQ(test::Readable(value), json);
        std::string text = json;
        std::erase(text, '"');
        EXPECT_EQ(FormatPrimitive(*value).toStdString(), text);
    }
    EXPECT_EQ(FormatPrimitive(*MakeString(L"'Null'\"\n")).toStdString(), "'Null'\"\n");
}

TEST(FormatPrimitiveTest, RefusesWhatIsNoScalar) {
    EXPECT_LUM_REPORT(InvalidStoreTypeValue, "Tuple", "",
                      FormatPrimitive(*MakeTuple(test::RowOf("P{i}: 1"))));
    EXPECT_LUM_REPORT(InvalidStoreTypeValue, "Array", "", FormatPrimitive(*test::ColumnOf("i: 1")));
    EXPECT_LUM_ERROR(InvalidDateTime, "", FormatPrimitive(*MakeDate(LumDateTime::FromValue(0))));
}

}  // namespace
}  // namespace lum::core
