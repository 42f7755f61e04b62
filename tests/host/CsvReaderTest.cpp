#include "CsvReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "CaseName.h"
#include "CsvText.h"
#include "FileError.h"
#include "RandomTest.h"

namespace lumhost::test {
namespace {

// One row a line, its cells between bars, quoted ones in quotes.
std::string Show(const Reading& reading) {
    if (reading.faultLine != 0) {
        return "fault in line " + std::to_string(reading.faultLine);
    }
    std::string text;
    for (std::size_t row = 0; row < reading.rows.size(); ++row) {
        text += std::to_string(reading.lines[row]) + ':';
        for (const Cell& cell : reading.rows[row]) {
            text += '|' + (cell.isQuoted ? '"' + cell.text + '"' : cell.text);
        }
        text += "|\n";
    }
    return text;
}

struct GoodCase {
    const char* name;
    const char* text;
    const char* expected;
};

class CsvReaderTest : public testing::TestWithParam<GoodCase> {};

TEST_P(CsvReaderTest, ReadsRows) {
    const std::string text = GetParam().text;
    for (std::size_t bufferBytes = 16; bufferBytes < 64; ++bufferBytes) {
        EXPECT_EQ(Show(ReadCsv(text, bufferBytes)), GetParam().expected)
            << "with a buffer of " << bufferBytes << " bytes";
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CsvReaderTest,
    testing::Values(
        GoodCase{"Nothing", "", ""}, GoodCase{"ByteOrderMarkAlone", "\xEF\xBB\xBF", ""},
        GoodCase{"LineFeeds", "a,b\n1,2\n", "1:|a|b|\n2:|1|2|\n"},
        GoodCase{"CarriageReturnsToo", "a,b\r\n1,2\r\n", "1:|a|b|\n2:|1|2|\n"},
        GoodCase{"MixedLineEnds", "a,b\r\n1,2\n3,4\r\n", "1:|a|b|\n2:|1|2|\n3:|3|4|\n"},
        GoodCase{"LastLineWithoutEnd", "a,b\n1,2", "1:|a|b|\n2:|1|2|\n"},
        GoodCase{"LastFieldEmptyWithoutEnd", "a,b\n1,", "1:|a|b|\n2:|1||\n"},
        GoodCase{"LastFieldQuotedWithoutEnd", "a,b\n1,\"2\"", "1:|a|b|\n2:|1|\"2\"|\n"},
        GoodCase{"ByteOrderMark", "\xEF\xBB\xBF\"a\",b\n", "1:|\"a\"|b|\n"},
        GoodCase{"ByteOrderMarkLater", "a\n\xEF\xBB\xBF\n", "1:|a|\n2:|\xEF\xBB\xBF|\n"},
        GoodCase{"EmptyLinesOfOneColumn", "a\n\n\r\n1\n", "1:|a|\n2:||\n3:||\n4:|1|\n"},
        GoodCase{"EmptyFields", ",,\n,\"\",\n", "1:||||\n2:||\"\"||\n"},
        GoodCase{"BlanksBelongToFields", " a , b\n", "1:| a | b|\n"},
        GoodCase{"CommaInQuotes", "\"a,b\",c\n", "1:|\"a,b\"|c|\n"},
        GoodCase{"DoubledQuotes", "\"\"\"a\"\"b\"\"\",\"\"\"\"\n", "1:|\"\"a\"b\"\"|\"\"\"|\n"},
        GoodCase{"LineEndsInQuotes", "\"a\nb\r\nc\",d\ne,\"\n\"\nf,g\n",
                 "1:|\"a\nb\r\nc\"|d|\n4:|e|\"\n\"|\n6:|f|g|\n"},
        GoodCase{"CarriageReturnInQuotes", "\"a\rb\"\n", "1:|\"a\rb\"|\n"},
        GoodCase{
            "FieldLongerThanTheBuffer",
            "a,\"0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 \"\"\"\nb,c\n",
            "1:|a|\"0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 \"\"|\n"
            "2:|b|c|\n"}),
    CaseName());

TEST(CsvReaderTest, ZeroBytesAreOrdinary) {
    const std::string text("a\0b,\"\0\"\n", 8);
    EXPECT_EQ(Show(ReadCsv(text, 16)), std::string("1:|a\0b|\"\0\"|\n", 12));
}

struct BadCase {
    const char* name;
    const char* text;
    unsigned long long line;
    const char* message;
};

class CsvReaderErrorTest : public testing::TestWithParam<BadCase> {};

TEST_P(CsvReaderErrorTest, NamesTheLine) {
    const BadCase& bad = GetParam();
    for (std::size_t bufferBytes = 16; bufferBytes < 64; ++bufferBytes) {
        MemorySource source("some.csv", bad.text);
        try {
            CsvReader reader(source, bufferBytes);
            CsvRows rows;
            while (reader.ReadRows(rows)) {
            }
            ADD_FAILURE() << "read with a buffer of " << bufferBytes << " bytes";
        } catch (const FileError& error) {
            EXPECT_EQ(std::string(error.what()),
                      "some.csv:" + std::to_string(bad.line) + ": " + bad.message);
            EXPECT_EQ(error.GetLine(), bad.line);
        }
    }
}

constexpr const char* kTextBehindQuote =
    "text stands behind a closing quote (a quote inside quotes is written twice)";
constexpr const char* kQuoteInField = "a quote stands inside a field that does not begin with one";
constexpr const char* kLoneReturn = "a carriage return stands without a line feed behind it";
constexpr const char* kNeverClosed = "a quote is opened here and never closed";

INSTANTIATE_TEST_SUITE_P(
    Texts, CsvReaderErrorTest,
    testing::Values(BadCase{"TooFewFields", "a,b\n1,2\n3\n", 3,
                            "the row has 1 field, but the first row has 2 fields"},
                    BadCase{"TooManyFields", "a\n1,2,3\n", 2,
                            "the row has 3 fields, but the first row has 1 field"},
                    BadCase{"TooManyQuotedFields", "a\n\"1\",\"\"\"\",3\n", 2,
                            "the row has 3 fields, but the first row has 1 field"},
                    BadCase{"EmptyLine", "a,b\n1,2\n\n", 3,
                            "the line is empty, but the first row has 2 fields"},
                    BadCase{"EmptyLineOfCarriageReturn", "a,b\r\n\r\n1,2", 2,
                            "the line is empty, but the first row has 2 fields"},
                    BadCase{"WrongCountBehindLongField", "a,b\n\"1\n2\n3\",2\nx\n", 5,
                            "the row has 1 field, but the first row has 2 fields"},
                    BadCase{"TextBehindQuote", "a,b\n\"1\"x,2\n", 2, kTextBehindQuote},
                    BadCase{"BlankBehindQuote", "a,b\n\"1\" ,2\n", 2, kTextBehindQuote},
                    BadCase{"TextBehindQuoteOverLines", "a,b\n\"1\n\n\"x,2\n", 4, kTextBehindQuote},
                    BadCase{"QuoteInField", "a,b\n1,2\"\n", 2, kQuoteInField},
                    BadCase{"QuoteBehindBlank", "a,b\n1, \"2\"\n", 2, kQuoteInField},
                    BadCase{"NeverClosed", "a,b\n1,\"2\n3,4\n5,6\n", 2, kNeverClosed},
                    BadCase{"NeverClosedAfterDoubledQuote", "a\n\"\"\"", 2, kNeverClosed},
                    BadCase{"NeverClosedAtTheEnd", "a\n\"", 2, kNeverClosed},
                    BadCase{"LoneReturn", "a,b\r1,2\r", 1, kLoneReturn},
                    BadCase{"LoneReturnAtTheEnd", "a\n1\r", 2, kLoneReturn},
                    BadCase{"LoneReturnBehindQuote", "a\n\"1\"\rx", 2, kLoneReturn},
                    BadCase{"LoneReturnBehindLastQuote", "a\n\"1\"\r", 2, kLoneReturn}),
    CaseName());

TEST(CsvReaderTest, LimitsTheNumberOfFields) {
    const std::string commas(CsvReader::kMaxFields, ',');
    EXPECT_EQ(ReadCsv(commas.substr(1), 16).rows.at(0).size(), CsvReader::kMaxFields);
    EXPECT_EQ(ReadCsv(commas, 16).faultLine, 1u);
}

// A source that never ends, of one row that never ends.
class EndlessSource : public TextSource {
public:
    EndlessSource() : TextSource("endless") {}
    std::size_t Read(char* buffer, std::size_t size) override {
        std::fill_n(buffer, size, 'x');
        return size;
    }
    void Rewind() override {}
    unsigned long long GetSize() const override { return 0; }
};

TEST(CsvReaderTest, LimitsTheLengthOfARow) {
    EndlessSource source;
    CsvReader reader(source, 64, 1000);
    CsvRows rows;
    try {
        reader.ReadRows(rows);
        FAIL() << "an endless row was read";
    } catch (const FileError& error) {
        EXPECT_STREQ(
            error.what(),
            "endless:1: the row is longer than 1000 bytes (perhaps a quote is not closed)");
    }
}

TEST(CsvReaderTest, PositionFollowsTheRows) {
    MemorySource source("text.csv", "a,b\n1,2\n33,44\n");
    CsvReader reader(source);
    CsvRows rows;
    for (const unsigned long long expected : {4u, 8u, 14u}) {
        ASSERT_TRUE(reader.ReadRows(rows, 1));
        EXPECT_EQ(rows.GetRowCount(), 1u);
        EXPECT_EQ(reader.GetPosition(), expected);
    }
    EXPECT_FALSE(reader.ReadRows(rows, 1));
}

using CsvReaderRandomTest = RandomTest;

// Texts made of nothing but structure reach every pair of neighbours, faults above all.
TEST_F(CsvReaderRandomTest, AgreesWithTheModel) {
    constexpr const char* kPieces[] = {"a", "bcdefghi", ",", ",", "\"", "\"", "\n", "\r\n", "\r"};
    int goodTexts = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (std::size_t pieces = Below(12); pieces > 0; --pieces) {
            text += OneOf(kPieces);
        }
        const Reading expected = CsvModel(text).Read();
        ASSERT_EQ(ReadCsv(text, 16 + Below(16)), expected) << Trace(text);
        goodTexts += expected.faultLine == 0 ? 1 : 0;
    }
    EXPECT_GT(goodTexts, 2000) << "the texts are nearly all faulty, which tests too little";
}

TEST_F(CsvReaderRandomTest, ReadsBackWhatWasWritten) {
    constexpr const char* kParts[] = {"a",  "0123456789", ",",        "\"", "\n",
                                      "\r", " ",          "\xC3\xA4", ""};
    for (int round = 0; round < 2000; ++round) {
        const std::size_t columns = 1 + Below(4);
        Reading expected;
        unsigned long long line = 1;
        for (std::size_t row = Below(20); row > 0; --row) {
            expected.lines.push_back(line++);
            std::vector<Cell>& cells = expected.rows.emplace_back(columns);
            for (Cell& cell : cells) {
                for (std::size_t parts = Below(4); parts > 0; --parts) {
                    cell.text += OneOf(kParts);
                }
                cell.isQuoted =
                    cell.text.find_first_of(",\"\r\n") != std::string::npos || Below(4) == 0;
                line += static_cast<unsigned>(std::count(cell.text.begin(), cell.text.end(), '\n'));
            }
        }
        const std::string text = WriteCsv(expected.rows, Below(2) == 0 ? "\n" : "\r\n");
        ASSERT_EQ(ReadCsv(text, 16 + Below(100)), expected) << Trace(text);
    }
}

}  // namespace
}  // namespace lumhost::test
