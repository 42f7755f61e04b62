#include "core/main/serialize/VtlScanner.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <regex>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/Random.h"

namespace lum::core {
namespace {

using Kind = VtlTokenKind;

std::string ShowReal(double value) {
    return "real:" + TStringCore::number(value, 'g', 17).toStdString();
}

std::string Show(const VtlToken& token) {
    const std::string text = token.GetText().toStdString();
    switch (token.GetKind()) {
        case Kind::Invalid:
            return "![" + std::to_string(token.GetStart()) + ',' + std::to_string(token.GetEnd()) +
                   ')';
        case Kind::NoToken:
            return "none";
        case Kind::End:
            return "end";
        case Kind::Indent:
            return "indent";
        case Kind::Dedent:
            return "dedent";
        case Kind::BoolLiteral:
            return token.GetBool() ? "bool:true" : "bool:false";
        case Kind::IntegerLiteral:
            return "int:" + std::to_string(token.GetInteger());
        case Kind::RealLiteral:
            return ShowReal(token.GetReal());
        case Kind::Identifier:
            return "word:" + text;
        case Kind::StringLiteral:
            return "string:" + text;
        case Kind::Comment:
            return "comment:" + text;
        case Kind::SpecialLiteral:
            return "special:" + std::to_string(static_cast<int>(token.GetSpecialKind()));
        default:
            return text;
    }
}

// The tokens of a text up to its end, separated by blanks; Invalid ends a text too.
std::string ShowAll(const TStringCore& text) {
    VtlScanner scanner(text);
    std::string shown;
    while (!scanner.Next().Is(Kind::End)) {
        shown += (shown.empty() ? "" : " ") + Show(scanner.GetCurrent());
        if (scanner.GetCurrent().Is(Kind::Invalid)) {
            const std::string invalid = Show(scanner.GetCurrent());
            EXPECT_EQ(Show(scanner.Next()), invalid);
            EXPECT_EQ(Show(scanner.Peek(1000000000)), invalid);
            break;
        }
    }
    return shown;
}

// What the model below does not tell: values, where Invalid ends, and units beyond ASCII.
TEST(VtlScannerTest, Tokens) {
    const std::pair<std::u16string, const char*> cases[] = {
        {u"a/b c -> map (f x :1:i) -> d",
         "word:a / word:b word:c -> word:map ( word:f word:x : int:1 : word:i ) -> word:d"},
        {u"000000000000000000000000000000012", "int:12"},
        {u"1e400 1e-400", "real:inf real:0"},

        {u"'\t\r\f\x7f\u00e9\U0001F600'", "string:\t\r\f\x7f\u00e9\U0001F600"},
        {u"a//b/ //c\rd", "word:a comment:b/ //c\rd"},
        {u"a \r\nb", "word:a word:b"},  // Within blanks a carriage return is one of them.

        // Invalid ends behind the character that broke the token, never within a pair.
        {u"9223372036854775808", "![0,19)"},
        {u"99999999999999999999999", "![0,19)"},
        {u"a ..5", "word:a ![2,3)"},
        {u"a\u00e9x", "word:a ![1,2)"},
        {u"\xD83D\xDE00x", "![0,2)"},  // A pair counts as one character,
        {u"\xD83Dx", "![0,1)"},        // half a pair too,
        {u"\xDE00\xDE00", "![0,1)"},   // and so does its other half.
        {u"'\\\xD83D\xDE00'", "![0,4)"},
        {u"'\\\xD83D'", "![0,3)"},
        {u"'\\t'", "![0,3)"},
        {u"'ab\ncd'", "![0,4)"},
        {u"'abc", "![0,4)"},
        {u"'abc\\", "![0,5)"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(ShowAll(TStringCore(text)), expected) << TStringCore(text);
    }
    // A zero is a unit like any other.
    EXPECT_EQ(ShowAll(TStringCore(u"a\0b", 3)), "word:a ![1,2)");
    EXPECT_EQ(ShowAll(TStringCore(u"'a\0b'", 5)), std::string("string:a\0b", 10));
}

TEST(VtlScannerTest, RealsAreTheNearest) {
    const std::string zeros(400, '0');
    const std::string ones(400, '1');
    std::vector<std::string> texts = {
        "0.0", "0e99999999999999999999", "4.9e-324", "2.4703282292062327e-324",
        "2.4703282292062328e-324", "1.7976931348623157e308", "1.7976931348623159e308",
        "1e99999999999999999999", "1e-99999999999999999999", "1e0000000000000000000000000005",
        "9007199254740993.0", "0.1", "2.2250738585072011e-308", "9223372036854775808.",
        // The digits alone leave the range, or come back into it.
        "0." + zeros + "1", ones + ".", "0." + zeros + "1e401", ones + "e-399",
        "0." + zeros + "1e10", zeros + "1e-400",
        // Longer than what is read without allocating, with a digit that decides far behind.
        "1." + std::string(61, '0'), "1." + std::string(62, '0'), "1." + std::string(63, '0'),
        "9007199254740993." + std::string(900, '0') + "1"};
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (int i = 0; i < 5000; ++i) {
        char text[64];
        const double value = std::ldexp(static_cast<double>(random.Bits()),
                                        static_cast<int>(random.Below(2000)) - 1000);
        std::snprintf(text, sizeof(text), i % 2 == 0 ? "%.17g" : "%.3e", value);
        texts.emplace_back(text);
    }
    for (const std::string& text : texts) {
        VtlToken token;
        const TStringCore scanned = TStringCore::fromUtf8(text);
        if (VtlScanner::IsSingleToken(scanned, Kind::IntegerLiteral, token)) {
            continue;
        }
        ASSERT_TRUE(token.Is(Kind::RealLiteral)) << text;
        ASSERT_EQ(std::bit_cast<long long>(token.GetReal()),
                  std::bit_cast<long long>(std::strtod(text.c_str(), nullptr)))
            << text;
    }
}

// Against a model ---------------------------------------------------------------------------------

std::string ShowWord(const std::string& word) {
    static const std::map<std::string, std::string> s_keywords = {
        {"true", "bool:true"},     {"false", "bool:false"},  {"inf", "real:inf"},
        {"nan", "real:nan"},       {"Null", "special:1"},    {"All", "special:2"},
        {"Wildcard", "special:3"}, {"Skipped", "special:4"}, {"NoAccess", "special:5"},
        {"Ragged", "special:6"},   {"Error", "special:7"},   {"ManyValues", "special:8"},
        {"Missing", "special:9"},
    };
    const auto keyword = s_keywords.find(word);
    return keyword == s_keywords.end() ? "word:" + word : keyword->second;
}

std::string Unescape(const std::string& quoted) {
    std::string text;
    for (std::size_t i = 1; i + 1 < quoted.size(); ++i) {
        const bool isEscape = quoted[i] == '\\';
        i += isEscape ? 1 : 0;
        text += isEscape && quoted[i] == 'n' ? '\n' : quoted[i];
    }
    return text;
}

// Where a token starts and ends, and what it is. Where Invalid ends the model does not tell.
using ShownToken = std::tuple<std::size_t, std::size_t, std::string>;

std::vector<ShownToken> ModelScan(const std::string& text) {
    static const std::regex s_token(R"((\r?\n *))"
                                    R"(|([\t\v\r ]+))"
                                    R"(|//([^\n]*))"
                                    R"(|([A-Za-z^_~=][A-Za-z^_~=0-9#.?-]*))"
                                    R"(|((?:\d+\.\d*|\.\d+)(?:[eE][+-]?\d+)?|\d+[eE][+-]?\d+))"
                                    R"(|(\d+))"
                                    R"(|('(?:[^'\\\n]|\\['\\n])*'))"
                                    R"(|(->|[-,:/(){}+*<>]))");
    std::vector<ShownToken> tokens;
    std::size_t indentation = 0;
    std::size_t start = 0;
    std::smatch match;
    while (std::regex_search(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(), match,
                             s_token, std::regex_constants::match_continuous)) {
        const std::string found = match.str();
        std::string shown;
        if (match[1].matched) {
            const std::size_t former = std::exchange(indentation, found.size() - 1);
            shown = indentation > former ? "indent" : indentation < former ? "dedent" : "";
        } else if (match[3].matched) {
            shown = "comment:" + match.str(3);
        } else if (match[4].matched) {
            shown = ShowWord(found);
        } else if (match[5].matched) {
            shown = ShowReal(std::strtod(found.c_str(), nullptr));
        } else if (match[6].matched) {
            long long value = 0;
            if (std::from_chars(found.data(), found.data() + found.size(), value).ec !=
                std::errc()) {
                break;
            }
            shown = "int:" + std::to_string(value);
        } else if (match[7].matched) {
            shown = "string:" + Unescape(found);
        } else {
            shown = match.str(8);
        }
        if (!shown.empty()) {
            tokens.emplace_back(start, start + found.size(), shown);
        }
        start += found.size();
    }
    const bool isAtEnd = start == text.size();
    tokens.emplace_back(start, isAtEnd ? start : 0, isAtEnd ? "end" : "!");
    return tokens;
}

std::vector<ShownToken> CursorScan(VtlCursor cursor) {
    std::vector<ShownToken> tokens;
    for (;;) {
        const VtlToken token = cursor.Scan();
        const bool isInvalid = token.Is(Kind::Invalid);
        tokens.emplace_back(token.GetStart(), isInvalid ? 0 : token.GetEnd(),
                            isInvalid ? "!" : Show(token));
        if (isInvalid || token.Is(Kind::End)) {
            return tokens;
        }
    }
}

TEST(VtlScannerTest, AgreesWithTheModel) {
    const TStringCore pieces =
        L"a|e|E|-|>|+|.|0|1|23|'|'|\\|n| |  |\n|\n  "
        L"|\r|\r\n|\t|/|//|(|)|{|<|=|#|?|:|,|*|true|inf|_|"
        L"false|nan|Null|All|Wildcard|Skipped|NoAccess|Ragged|Error|ManyValues|Missing|^|}|~|\v|]|"
        L"\f|\x7f|9223372036854775807|9223372036854775808";
    const auto choices = pieces.split(u'|');
    test::Random random;
    SCOPED_TRACE(random.Trace());
    std::size_t tokenCount = 0;
    for (int i = 0; i < 20000; ++i) {
        TStringCore units;
        for (std::size_t left = random.Below(16); left > 0; --left) {
            units += choices[random.Below(choices.size())];
        }
        const std::string text = units.toStdString();
        const std::vector<ShownToken> expected = ModelScan(text);
        ASSERT_EQ(CursorScan(VtlCursor(units.view())), expected) << text;
        // As a part of a larger text, whose units may be looked at and do not count.
        const TStringCore larger =
            units + choices[random.Below(choices.size())] + L"abcdefghijklmnopqrstuvwxyz";
        const std::u16string_view part = larger.view().substr(0, units.length());
        ASSERT_EQ(CursorScan(VtlCursor(part, larger.end())), expected) << text;
        VtlToken first = VtlCursor(units.view()).Scan();
        const bool isSingle = VtlScanner::IsSingleToken(units, first.GetKind(), first);
        ASSERT_EQ(isSingle, expected.size() <= 2 && std::get<2>(expected.back()) == "end") << text;
        ASSERT_EQ(first.GetStart(), std::get<0>(expected[0])) << text;
        ASSERT_FALSE(VtlScanner::IsSingleToken(units, Kind::NoToken, first)) << text;
        tokenCount += expected.size();
    }
    EXPECT_GT(tokenCount, 50000u);
}

// Lookahead ---------------------------------------------------------------------------------------

TEST(VtlScannerTest, PeeksAndPushesBack) {
    VtlScanner scanner(L"a b c d");
    EXPECT_EQ(Show(scanner.Peek(0)), "none");
    EXPECT_EQ(Show(scanner.Peek(3)), "word:c");
    EXPECT_EQ(Show(scanner.Peek(1)), "word:a");
    EXPECT_EQ(Show(scanner.GetCurrent()), "none");
    const VtlToken a = scanner.Next();
    const VtlToken b = scanner.Next();
    EXPECT_EQ(Show(scanner.Peek(0)), "word:b");
    scanner.PushBack(b);
    scanner.PushBack(a);
    EXPECT_EQ(Show(scanner.GetCurrent()), "word:b");
    EXPECT_EQ(Show(scanner.Peek(4)), "word:d");
    for (const char* expected : {"word:a", "word:b", "word:c", "word:d", "end", "end"}) {
        EXPECT_EQ(Show(scanner.Next()), expected);
    }
    // What was pushed back comes first, even behind the end.
    scanner.PushBack(a);
    EXPECT_EQ(Show(scanner.Peek(1000000000)), "end");
    EXPECT_EQ(Show(scanner.Next()), "word:a");
    EXPECT_EQ(Show(scanner.Next()), "end");
}

TEST(VtlScannerTest, AcceptsAndExpects) {
    VtlScanner scanner(L"a 1");
    VtlToken token;
    EXPECT_FALSE(scanner.Accept(Kind::Colon, token));
    EXPECT_EQ(Show(token), "none");
    EXPECT_TRUE(scanner.AcceptKeyText(token));
    EXPECT_EQ(Show(token), "word:a");
    EXPECT_FALSE(scanner.AcceptKeyText(token));
    EXPECT_LUM_REPORT(UnexpectedToken, "the line", "", scanner.Expect(Kind::Slash, L"the line"));
    EXPECT_EQ(Show(scanner.GetCurrent()), "int:1");
    EXPECT_LUM_LOGIC_REPORT(IllegalOperation, "", "(m_kind == VtlTokenKind::RealLiteral)",
                            scanner.GetCurrent().GetReal());
    EXPECT_LUM_LOGIC_REPORT(IllegalOperation, "", "(m_kind == VtlTokenKind::BoolLiteral)",
                            scanner.GetCurrent().GetBool());
}

// Short tokens are read one after the other without allocating, and a name of any length is tested
// so.
TEST(VtlScannerTest, AllocatesNothingForShortTokens) {
    const TStringCore line = L"abc/'de f' -> filter :true:b + 1.5e3 Null // short";
    const TStringCore name = L"a_name_that_is_longer_than_what_stands_inline";
    const TStringCore quoted = L"'a name that is longer than what stands inline'";
    const test::AllocationCounter allocations;
    VtlScanner scanner(line);
    while (!scanner.PeekIs(Kind::End)) {
        scanner.Next();
    }
    VtlToken token;
    const bool isWord = VtlScanner::IsSingleToken(name, Kind::Identifier, token);
    const bool isString = VtlScanner::IsSingleToken(quoted, Kind::StringLiteral, token);
    EXPECT_EQ(allocations.GetCount(), 0u);
    EXPECT_TRUE(isWord && isString);
}

}  // namespace
}  // namespace lum::core
