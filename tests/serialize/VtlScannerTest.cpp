#include "core/main/serialize/VtlScanner.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <ostream>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/Random.h"

namespace lum::core {
namespace {

using Kind = VtlTokenKind;

std::string Show(const VtlToken& token) {
    std::string text = token.GetText().toStdString();
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
            return "real:" + TStringCore::number(token.GetReal(), 'g', 17).toStdString();
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
        {u"true false Null All Wildcard Skipped NoAccess Ragged Error ManyValues Missing",
         "bool:true bool:false special:1 special:2 special:3 special:4 special:5 special:6 "
         "special:7 special:8 special:9"},
        {u"inf nan -inf", "real:inf real:nan - real:inf"},
        {u"0 007 9223372036854775807", "int:0 int:7 int:9223372036854775807"},
        {u"000000000000000000000000000000012", "int:12"},
        {u"1. .5 1.5.5", "real:1 real:0.5 real:1.5 real:0.5"},
        {u"1e5 1E+2 1e-2 1.e2 .5e1", "real:100000 real:100 real:0.01 real:100 real:5"},
        {u"1e400 1e-400", "real:inf real:0"},

        {u"'' 'a b' 'it\\'s' '\\\\\\n' 'a''b'c",
         "string: string:a b string:it's string:\\\n string:a string:b word:c"},
        {u"'\t\r\f\x7f\u00e9\U0001F600'", "string:\t\r\f\x7f\u00e9\U0001F600"},
        {u"a//b/ //c\rd", "word:a comment:b/ //c\rd"},
        {u"//a\r\n  b", "comment:a\r indent word:b"},
        {u"a\r\nb\r\nc\nd", "word:a indent word:b word:c dedent word:d"},
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

struct ModelToken {
    Kind kind;
    std::size_t start;
    std::size_t end;

    friend bool operator==(const ModelToken&, const ModelToken&) = default;
    friend std::ostream& operator<<(std::ostream& stream, const ModelToken& token) {
        return stream << static_cast<int>(token.kind) << '[' << token.start << ',' << token.end
                      << ')';
    }
};

Kind KindOfWord(const std::string& word) {
    static const std::set<std::string> s_specials = {"Null",    "All",      "Wildcard",
                                                     "Error",   "Ragged",   "ManyValues",
                                                     "Skipped", "NoAccess", "Missing"};
    return word == "true" || word == "false" ? Kind::BoolLiteral
           : word == "inf" || word == "nan"  ? Kind::RealLiteral
           : s_specials.count(word) != 0     ? Kind::SpecialLiteral
                                             : Kind::Identifier;
}

Kind KindOfInteger(const std::string& digits) {
    long long value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return result.ec == std::errc() ? Kind::IntegerLiteral : Kind::Invalid;
}

// What a line feed and the blanks behind it are.
Kind KindOfStep(std::size_t blanks, std::size_t& indentation) {
    const std::size_t former = std::exchange(indentation, blanks);
    return blanks > former ? Kind::Indent : blanks < former ? Kind::Dedent : Kind::Whitespace;
}

std::vector<ModelToken> ModelScan(const std::string& text) {
    static const std::regex s_token(R"((\r?\n *))"
                                    R"(|([\t\v\r ]+))"
                                    R"(|(//[^\n]*))"
                                    R"(|([A-Za-z^_~=][A-Za-z^_~=0-9#.?-]*))"
                                    R"(|((?:\d+\.\d*|\.\d+)(?:[eE][+-]?\d+)?|\d+[eE][+-]?\d+))"
                                    R"(|(\d+))"
                                    R"(|('(?:[^'\\\n]|\\['\\n])*'))"
                                    R"(|(->|[-,:/(){}+*<>]))");
    static const std::map<std::string, Kind> s_punctuation = {
        {"->", Kind::Arrow},    {",", Kind::Comma},      {":", Kind::Colon},
        {"/", Kind::Slash},     {"(", Kind::LeftParen},  {")", Kind::RightParen},
        {"{", Kind::LeftBrace}, {"}", Kind::RightBrace}, {"+", Kind::Plus},
        {"-", Kind::Minus},     {"*", Kind::Star},       {"<", Kind::Less},
        {">", Kind::Greater},
    };
    std::vector<ModelToken> tokens;
    std::size_t indentation = 0;
    std::size_t start = 0;
    std::smatch match;
    while (std::regex_search(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(), match,
                             s_token, std::regex_constants::match_continuous)) {
        const std::string found = match.str();
        const Kind kind = match[1].matched   ? KindOfStep(found.size() - 1, indentation)
                          : match[2].matched ? Kind::Whitespace
                          : match[3].matched ? Kind::Comment
                          : match[4].matched ? KindOfWord(found)
                          : match[5].matched ? Kind::RealLiteral
                          : match[6].matched ? KindOfInteger(found)
                          : match[7].matched ? Kind::StringLiteral
                                             : s_punctuation.at(found);
        if (kind == Kind::Invalid) {
            break;
        }
        if (kind != Kind::Whitespace) {
            tokens.push_back({kind, start, start + found.size()});
        }
        start += found.size();
    }
    const bool isAtEnd = start == text.size();
    tokens.push_back({isAtEnd ? Kind::End : Kind::Invalid, start, isAtEnd ? start : 0});
    return tokens;
}

std::vector<ModelToken> CursorScan(VtlCursor cursor) {
    std::vector<ModelToken> tokens;
    for (;;) {
        const VtlToken token = cursor.Scan();
        const bool isInvalid = token.Is(Kind::Invalid);
        tokens.push_back({token.GetKind(), token.GetStart(), isInvalid ? 0 : token.GetEnd()});
        if (isInvalid || token.Is(Kind::End)) {
            return tokens;
        }
    }
}

TEST(VtlScannerTest, AgreesWithTheModel) {
    const TStringCore pieces =
        L"a|e|E|-|>|+|.|0|1|23|'|'|\\|n| |  |\n|\n  "
        L"|\r|\r\n|\t|/|//|(|)|{|<|=|#|?|:|,|*|true|inf|_|"
        L"Missing|Null|^|}|~|\v|]|\f|\x7f|9223372036854775807|9223372036854775808";
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
        const std::vector<ModelToken> expected = ModelScan(text);
        ASSERT_EQ(CursorScan(VtlCursor(units.view())), expected) << text;
        // As a part of a larger text, whose units may be looked at and do not count.
        const TStringCore larger =
            units + choices[random.Below(choices.size())] + L"abcdefghijklmnopqrstuvwxyz";
        const std::u16string_view part = larger.view().substr(0, units.length());
        ASSERT_EQ(CursorScan(VtlCursor(part, larger.end())), expected) << text;
        VtlToken first;
        const bool isSingle = VtlScanner::IsSingleToken(units, expected[0].kind, first);
        ASSERT_EQ(isSingle, expected.size() <= 2 && expected.back().kind == Kind::End) << text;
        ASSERT_EQ(first.GetStart(), expected[0].start) << text;
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
    VtlScanner scanner(L"a:'b c' 1");
    VtlToken token;
    EXPECT_FALSE(scanner.Accept(Kind::Colon));
    EXPECT_FALSE(scanner.Accept(Kind::Colon, token));
    EXPECT_EQ(Show(token), "none");
    EXPECT_TRUE(scanner.AcceptKeyText(token));
    EXPECT_EQ(Show(token), "word:a");
    EXPECT_FALSE(scanner.AcceptKeyText(token));
    EXPECT_EQ(Show(scanner.Expect(Kind::Colon, L"detail")), ":");
    EXPECT_TRUE(scanner.PeekIs(Kind::StringLiteral));
    EXPECT_TRUE(scanner.AcceptKeyText(token));
    EXPECT_EQ(Show(token), "string:b c");
    EXPECT_LUM_REPORT(UnexpectedToken, "the line", "", scanner.Expect(Kind::Slash, L"the line"));
    EXPECT_EQ(Show(scanner.GetCurrent()), "int:1");
    EXPECT_LUM_LOGIC_REPORT(IllegalOperation, "", "(m_kind == VtlTokenKind::RealLiteral)",
                            scanner.GetCurrent().GetReal());
    EXPECT_LUM_LOGIC_REPORT(IllegalOperation, "", "(m_kind == VtlTokenKind::BoolLiteral)",
                            scanner.GetCurrent().GetBool());
    EXPECT_LUM_REPORT(UnexpectedToken, "", "", scanner.Expect(Kind::Slash, L""));
    EXPECT_TRUE(scanner.Accept(Kind::End));
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
