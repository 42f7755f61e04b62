#include "CsvReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

#include "CsvText.h"
#include "FileError.h"
#include "tests/support/Random.h"

namespace lumhost::test {
namespace {

// Each row behind its line, with its cells between bars, quoted ones in quotes.
std::string Show(const Reading& reading) {
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

// Wherever the buffer cuts the text.
TEST(CsvReaderTest, ReadsRows) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"\xEF\xBB\xBF", ""},
        {"\xEF\xBB\xBF\"a\",b\n", "1:|\"a\"|b|\n"},
        {"a\n\xEF\xBB\xBF\n", "1:|a|\n2:|\xEF\xBB\xBF|\n"},
        {"a,b\r\n1,2\n3,", "1:|a|b|\n2:|1|2|\n3:|3||\n"},
        {"a\n\n\r\n1\n", "1:|a|\n2:||\n3:||\n4:|1|\n"},
        {" a , b\n,\"\"\n", "1:| a | b|\n2:||\"\"|\n"},
        {"\"\"\"a,\"\"b\"\"\",\"\"\"\"\n", "1:|\"\"a,\"b\"\"|\"\"\"|\n"},
        {"\"a\nb\r\nc\",d\ne,\"\n\"\nf,g\n", "1:|\"a\nb\r\nc\"|d|\n4:|e|\"\n\"|\n6:|f|g|\n"},
        {std::string("a\0b,\"\0\"\n", 8), std::string("1:|a\0b|\"\0\"|\n", 12)},
    };
    for (const auto& [text, expected] : cases) {
        for (std::size_t bufferBytes = 16; bufferBytes < 64; ++bufferBytes) {
            EXPECT_EQ(Show(ReadCsv(text, bufferBytes)), expected)
                << text << "with a buffer of " << bufferBytes << " bytes";
        }
    }
}

std::string FaultOf(CsvReader&& reader) {
    try {
        CsvRows rows;
        while (reader.ReadRows(rows)) {
        }
        return "none";
    } catch (const FileError& error) {
        return error.what();
    }
}

TEST(CsvReaderTest, NamesTheLineAndTheFault) {
    const std::string behindQuote =
        "text stands behind a closing quote (a quote inside quotes is written twice)";
    const std::string insideField = "a quote stands inside a field that does not begin with one";
    const std::string loneReturn = "a carriage return stands without a line feed behind it";
    const std::string neverClosed = "a quote is opened here and never closed";
    const std::pair<std::string, std::string> cases[] = {
        {"a,b\n1,2\n3\n", "3: the row has 1 field, but the first row has 2 fields"},
        {"a\n1,2,3\n", "2: the row has 3 fields, but the first row has 1 field"},
        {"a,b\n1,2\n\n", "3: the line is empty, but the first row has 2 fields"},
        {"a,b\r\n\r\n1,2", "2: the line is empty, but the first row has 2 fields"},
        {"a,b\n\"1\n2\n3\",2\nx\n", "5: the row has 1 field, but the first row has 2 fields"},
        {"a,b\n\"1\" ,2\n", "2: " + behindQuote},
        {"a,b\n\"1\n\n\"x,2\n", "4: " + behindQuote},
        {"a,b\n1, \"2\"\n", "2: " + insideField},
        {"a,b\n1,\"2\n3,4\n5,6\n", "2: " + neverClosed},
        {"a,b\r1,2\r", "1: " + loneReturn},
        {"a\n1\r", "2: " + loneReturn},
        {"a\n\"1\"\r", "2: " + loneReturn},
    };
    for (const auto& [text, fault] : cases) {
        for (std::size_t bufferBytes = 16; bufferBytes < 64; ++bufferBytes) {
            MemorySource source("some.csv", text);
            EXPECT_EQ(FaultOf(CsvReader(source, bufferBytes)), "some.csv:" + fault) << text;
        }
    }
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

TEST(CsvReaderTest, LimitsFieldsAndRows) {
    const std::string commas(CsvReader::kMaxFields, ',');
    EXPECT_EQ(ReadCsv(commas.substr(1), 16).rows.at(0).size(), CsvReader::kMaxFields);
    EXPECT_EQ(ReadCsv(commas, 16).faultLine, 1u);
    EndlessSource source;
    EXPECT_EQ(FaultOf(CsvReader(source, 64, 1000)),
              "endless:1: the row is longer than 1000 bytes (perhaps a quote is not closed)");
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

// Nothing but structure reaches every pair of neighbours, faults above all.
std::string MakeText(lum::test::Random& random) {
    constexpr const char* kPieces[] = {"a", "bcdefghi", ",", ",", "\"", "\"", "\n", "\r\n", "\r"};
    std::string text;
    for (std::size_t left = random.Below(12); left > 0; --left) {
        text += random.OneOf(kPieces);
    }
    return text;
}

// Rows without a fault, which may be longer than the buffer.
std::string MakeRows(lum::test::Random& random) {
    constexpr const char* kCells[] = {"",
                                      "a",
                                      "0123456789 \xC3\xA4",
                                      "\"\"",
                                      "\"b,\n\r\"",
                                      "\"\"\"\"",
                                      "\"\n\"",
                                      "\"\"\"a\"\"\"",
                                      "\" 0123456789\r\n\"\"\""};
    std::string text;
    const std::size_t columns = 1 + random.Below(4);
    for (std::size_t left = random.Below(20); left > 0; --left) {
        for (std::size_t column = 0; column < columns; ++column) {
            text += std::string(column == 0 ? "" : ",") + random.OneOf(kCells);
        }
        text += random.Below(2) == 0 ? "\n" : "\r\n";
    }
    return text;
}

TEST(CsvReaderTest, AgreesWithTheModel) {
    lum::test::Random random;
    for (int round = 0; round < 20000; ++round) {
        const bool isGood = round % 8 == 0;
        const std::string text = isGood ? MakeRows(random) : MakeText(random);
        SCOPED_TRACE(random.Trace() + ": " + testing::PrintToString(text));
        const Reading expected = CsvModel(text).Read();
        ASSERT_EQ(ReadCsv(text, 16 + random.Below(round % 3 == 0 ? 100 : 16)), expected);
        ASSERT_TRUE(expected.faultLine == 0 || !isGood);
    }
}

}  // namespace
}  // namespace lumhost::test
