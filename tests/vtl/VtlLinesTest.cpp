#include "core/main/serialize/VtlLines.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "lum/core/utility/LumString.h"
#include "tests/support/Random.h"

namespace lum::core {
namespace {

std::vector<std::string> LinesOf(const TStringCore& text) {
    std::vector<std::string> lines;
    VtlLines reader(text.view());
    for (std::u16string_view line; reader.Next(line);) {
        lines.push_back(TStringCore(line).toStdString());
    }
    return lines;
}

using Lines = std::vector<std::string>;

struct LinesCase {
    const char* text;
    Lines lines;
};

TEST(VtlLinesTest, Cuts) {
    const LinesCase cases[] = {
        {"", {}},
        {"\n\n", {}},
        {"a", {"a"}},
        {"a\n\n\nb\n", {"a", "b"}},
        {"a\r\nb", {"a\r", "b"}},
        {" \n\t", {" ", "\t"}},
        // In quotes and behind a backslash a line feed is part of the line.
        {"a 'b\nc' d\ne", {"a 'b\nc' d", "e"}},
        {"a\\\nb\nc", {"a\\\nb", "c"}},
        {"'a\\'b\nc'\nd", {"'a\\'b\nc'", "d"}},
        {"\\'a\nb", {"\\'a", "b"}},
        {"'\\\\'\nb", {"'\\\\'", "b"}},
        {"a 'b\nc", {"a 'b\nc"}},
        {"a\\", {"a\\"}},
        // A comment at the very start of a line is without quotes and backslashes.
        {"// it's\na", {"// it's", "a"}},
        {"// a\\\nb", {"// a\\", "b"}},
        {"a\\\n// it's\nb", {"a\\\n// it's", "b"}},
        {" // it's\na\nb'\nc", {" // it's\na\nb'", "c"}},
        {"a // it's\nb'", {"a // it's\nb'"}},
        {"/ / it's\na", {"/ / it's\na"}},
        // Slashes at the start of a line keep quotes from ever closing.
        {"'a\n//b'\nc\n'd'\ne", {"'a\n//b'\nc\n'd'\ne"}},
        {"'a\n //b'\nc", {"'a\n //b'", "c"}},
    };
    for (const LinesCase& row : cases) {
        EXPECT_EQ(LinesOf(TStringCore::fromUtf8(row.text)), row.lines) << row.text;
    }
}

TEST(VtlLinesTest, TakesTheQuotesOffAWord) {
    const LinesCase cases[] = {
        {"'abc'", {"abc"}},     {"'a-b.c;'", {"a-b.c;"}},
        {"'a->b'", {"'a->b'"}}, {"'a\tb'", {"a\tb"}},
        {"'a\nb'", {"a\nb"}},   {"''\na", {"", "a"}},
        {"'", {"'"}},           {"'a' ", {"'a' "}},
        {" 'a'", {" 'a'"}},     {"'a' 'b'", {"'a' 'b'"}},
    };
    for (const LinesCase& row : cases) {
        EXPECT_EQ(LinesOf(TStringCore::fromUtf8(row.text)), row.lines) << row.text;
    }
    for (const char delimiter : std::string(":/{ ()\",")) {
        const std::string line = std::string("'a") + delimiter + "b'";
        EXPECT_EQ(LinesOf(TStringCore::fromUtf8(line)), Lines{line});
    }
    EXPECT_EQ(LinesOf(L"'a\\\\b'"), Lines{"'a\\\\b'"});
}

// The rules, one character at a time.
Lines CutByModel(const std::string& text) {
    Lines lines;
    std::string line;
    bool isInQuotes = false;
    bool isEscaped = false;
    bool isComment = false;
    const auto finish = [&] {
        const bool isQuoted = line.size() >= 2 && line.front() == '\'' && line.back() == '\'';
        if (isQuoted) {
            const std::string inside = line.substr(1, line.size() - 2);
            if (inside.find_first_of(":/\\{' ()\",") == std::string::npos &&
                inside.find("->") == std::string::npos) {
                line = inside;
            }
        }
        lines.push_back(line);
        line.clear();
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((i == 0 || text[i - 1] == '\n') && text.compare(i, 2, "//") == 0) {
            isComment = true;
        }
        if (isEscaped) {
            line += text[i];
            isEscaped = false;
            continue;
        }
        if (!isComment && text[i] == '\\') {
            isEscaped = true;
        }
        if (!isComment && text[i] == '\'') {
            isInQuotes = !isInQuotes;
        }
        if (text[i] != '\n' || isInQuotes) {
            line += text[i];
            continue;
        }
        if (!line.empty()) {
            finish();
        }
        isEscaped = false;
        isComment = false;
    }
    if (!line.empty()) {
        finish();
    }
    return lines;
}

TEST(VtlLinesTest, AgreesWithTheModel) {
    const char* const pieces[] = {"\n", "\n", "\n//", "//", "'",
                                  "'",  "\\", "a",    " ",  "->",
                                  ":",  "/",  "\r",   "\t", "a long piece of text "};
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (std::size_t left = random.Below(16); left > 0; --left) {
            text += random.OneOf(pieces);
        }
        ASSERT_EQ(LinesOf(TStringCore::fromUtf8(text)), CutByModel(text)) << text;
    }
}

}  // namespace
}  // namespace lum::core
