#include "core/main/serialize/VtlLines.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lum/core/utility/LumString.h"
#include "tests/support/Random.h"

namespace lum::core {
namespace {

using Lines = std::vector<std::string>;

Lines LinesOf(const TStringCore& text) {
    Lines lines;
    VtlLines reader(text.view());
    for (std::u16string_view line; reader.Next(line);) {
        lines.push_back(TStringCore(line).toStdString());
    }
    return lines;
}

TEST(VtlLinesTest, Cuts) {
    const std::pair<const char*, Lines> cases[] = {
        {"", {}},
        {"a\n\n\nb\n", {"a", "b"}},
        // In quotes and behind a backslash a line feed is part of the line.
        {"a 'b\nc' d\ne", {"a 'b\nc' d", "e"}},
        {"'a\\'b\nc'\nd", {"'a\\'b\nc'", "d"}},
        {"a\\\nb\nc", {"a\\\nb", "c"}},
        // A comment at the very start of a line is without quotes and backslashes.
        {"// it's\na", {"// it's", "a"}},
        {" // it's\na\nb'\nc", {" // it's\na\nb'", "c"}},
        // Slashes at the start of a line keep quotes from ever closing.
        {"'a\n//b'\nc\n'd'\ne", {"'a\n//b'\nc\n'd'\ne"}},
        // A word loses its quotes.
        {"'a-b.c;'", {"a-b.c;"}},
        {"'a\nb'", {"a\nb"}},
        {"''\na", {"", "a"}},
        {"'a' 'b'", {"'a' 'b'"}},
    };
    for (const auto& [text, lines] : cases) {
        EXPECT_EQ(LinesOf(TStringCore::fromUtf8(text)), lines) << text;
    }
}

// The rules, one character at a time.
Lines CutByModel(const std::string& text) {
    Lines lines(1);
    bool isInQuotes = false;
    bool isEscaped = false;
    bool isComment = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((i == 0 || text[i - 1] == '\n') && text.compare(i, 2, "//") == 0) {
            isComment = true;
        }
        if (!isEscaped && !isInQuotes && text[i] == '\n') {
            isComment = false;
            lines.emplace_back();
            continue;
        }
        lines.back() += text[i];
        if (isEscaped) {
            isEscaped = false;
        } else if (!isComment) {
            isEscaped = text[i] == '\\';
            isInQuotes = isInQuotes != (text[i] == '\'');
        }
    }
    std::erase(lines, "");
    for (std::string& line : lines) {
        const std::string inside = line.substr(1, line.size() < 2 ? 0 : line.size() - 2);
        if (line == "'" + inside + "'" && inside.find("->") == std::string::npos &&
            inside.find_first_of(":/\\{' ()\",") == std::string::npos) {
            line = inside;
        }
    }
    return lines;
}

TEST(VtlLinesTest, AgreesWithTheModel) {
    const char* const pieces[] = {
        "\n", "\n", "\n//", "//", "'",  "'", "\\", "a",  " ",  "->",
        ":",  "/",  "(",    ")",  "\"", ",", "{",  "\r", "\t", "a long piece of text "};
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
