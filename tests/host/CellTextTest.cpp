#include "CellText.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

namespace lumhost::test {
namespace {

// CsvImportTest tells which days there are, and that whatever has a kind can be read.
TEST(CellTextTest, ClassifiesCells) {
    const std::string longZero = "0." + std::string(400, '0');
    const std::string tooLarge = "1" + std::string(400, '0') + ".0";
    const std::pair<CellKind, std::string> groups[] = {
        {kBoolCell, "true|False|TRUE"},
        {kTextCell,
         "tRUE|trues|9223372036854775808|-9223372036854775809|"
         "123456789012345678901234567890|007|-01|00|00.5|01e5|1.8e308|1e-324|.|-.|"
         "+|-|+-5|--5|1e|1e+|.e5|1.5.2|1,5| 1|1 |0x10|inf|-inf|nan|NA|2024-4-1|2024-04-011|"
         "02024-01-01|+2024-04-01|24-04-01|2024-04|2024/04/01|2024-04-01T00:00:00.12345|"
         "2024-04-01T00:00:00.|2024-04-01T24:00:00|2024-04-01T00:60:00|2024-04-01T00:00:60|"
         "2024-04-01T00:00|2024-04-01T|2024-04-01T00:00:00Z|2024-04-31T00:00:00|" +
             tooLarge},
        {kInt32Cell, "0|-0|+17|2147483647|-2147483648"},
        {kInt64Cell, "2147483648|-2147483649|9007199254740992|-9007199254740992"},
        {kWideInt64Cell, "9007199254740993|9223372036854775807|-9223372036854775808"},
        {kReal64Cell, "0.5|-.5|5.|0e0|1E+5|1.5e-7|1.7976931348623157e308|4.9e-324|" + longZero},
        {kDateCell, "2024-02-29|23829-12-31"},
        {kDateTimeCell, "2024-04-01T23:59:59|2024-04-01T00:00:00.1|2024-04-01T00:00:00.1234"},
    };
    for (const auto& [kind, texts] : groups) {
        std::istringstream cells(texts);
        for (std::string cell; std::getline(cells, cell, '|');) {
            EXPECT_EQ(ClassifyCell(cell), kind) << cell;
        }
    }
}

TEST(CellTextTest, ReadsNumbers) {
    EXPECT_EQ(ReadInt32("+17"), 17);
    EXPECT_EQ(ReadInt32("-2147483648"), INT_MIN);
    EXPECT_EQ(ReadReal64("+5."), 5.0);
    EXPECT_EQ(ReadReal64("4.9e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(ReadReal32("0.1"), 0.1f);
    EXPECT_TRUE(std::signbit(*ReadReal64("-0.0")));
    EXPECT_EQ(ReadColor("fFff0080"), 0xFFFF0080u);
    for (const char* text : {"", "+", "-", "x", "1x", " 1", "1 ", "+-1", "-+1", "2147483648"}) {
        EXPECT_EQ(ReadInt32(text), std::nullopt) << text;
    }
    for (const char* text : {"", "inf", "-inf", "nan", "+nan", "1e999", "1e-999", "1.5x", "0x1"}) {
        EXPECT_EQ(ReadReal64(text), std::nullopt) << text;
    }
    for (const char* text : {"1e39", "1e-60"}) {
        EXPECT_EQ(ReadReal32(text), std::nullopt) << text;
    }
    for (const char* text : {"", "ff0080", "ffff00800", "0xffff00", "-fff0080", "ffff008g"}) {
        EXPECT_EQ(ReadColor(text), std::nullopt) << text;
    }
}

TEST(CellTextTest, ReadsDatesAndTimes) {
    EXPECT_EQ(ReadDateTime("2024-03-01"), (DateTimeFields{2024, 3, 1, 0, 0, 0, 0}));
    EXPECT_EQ(ReadDateTime("12024-03-01T09:05:07.0250"),
              (DateTimeFields{12024, 3, 1, 9, 5, 7, 250}));
    EXPECT_EQ(ReadDateTime("2024-03-01T09:05:07.25"), (DateTimeFields{2024, 3, 1, 9, 5, 7, 2500}));
    EXPECT_EQ(ReadDate("2024-03-01T09:05:07"), std::nullopt);
}

}  // namespace
}  // namespace lumhost::test
