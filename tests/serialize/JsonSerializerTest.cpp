#include "lum/core/serialize/JsonSerializer.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

#include "core/main/serialize/JsonEscape.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/Random.h"

namespace lum::core {
namespace {

// Drives a writer by a script of words: "[" and "(" begin an array in lines and on one line, "{" a
// dictionary, their counterparts end them; "key:" is a key, "'text" a string, all else a scalar as
// it stands.
void Drive(JsonSerializer& serializer, const std::string& script) {
    for (const TStringCore& word : TStringCore::fromUtf8(script).split(u' ')) {
        if (word == L"[" || word == L"(") {
            serializer.BeginArray(/*multiline=*/word == L"[");
        } else if (word == L"]" || word == L")") {
            serializer.EndArray();
        } else if (word == L"{") {
            serializer.BeginDictionary();
        } else if (word == L"}") {
            serializer.EndDictionary();
        } else if (word.startsWith(L"'")) {
            serializer.AppendString(word.mid(1));
        } else if (word.length() > 0 && word[word.length() - 1] == u':') {
            serializer.AppendKey(word.left(word.length() - 1));
        } else if (!word.isEmpty()) {
            serializer.AppendUnquotedString(word);
        }
    }
}

TEST(JsonSerializerTest, LayoutOfBothForms) {
    const struct {
        std::string script;
        std::string compact;
        std::string readable;
    } cases[] = {
        {"", "", ""},
        {"( )", "[]", "[ ]"},
        {"[ ]", "[]", "[\n\n]"},
        {"{ }", "{}", "{\n\n}"},
        {"[ 1 'a ]", "[1,\"a\"]", "[\n    1,\n    \"a\"\n]"},
        {"{ a: 1 b: 'x }", R"({"a":1,"b":"x"})", "{\n    \"a\": 1,\n    \"b\": \"x\"\n}"},
        // No blank stands in front of a one-line array inside of one.
        {"( 1 ( 2 3 ) 4 )", "[1,[2,3],4]", "[ 1,[ 2, 3 ], 4 ]"},
        {"( ( 2 3 ) 4 )", "[[2,3],4]", "[[ 2, 3 ], 4 ]"},
        {"( [ 1 ] 2 )", "[[1],2]", "[[\n    1\n], 2 ]"},
        {"( { a: 1 } 2 )", R"([{"a":1},2])", "[{\n    \"a\": 1\n}, 2 ]"},
        {"{ a: { b: [ ] } c: ( 1 ) }", R"({"a":{"b":[]},"c":[1]})",
         "{\n    \"a\": {\n        \"b\": [\n\n        ]\n    },\n    \"c\": [ 1 ]\n}"},
        // Nobody asks a dictionary for its last value.
        {"{ a: }", R"({"a":})", "{\n    \"a\": \n}"},
        // Unfinished documents are given as they stand.
        {"{ a: ( 1", R"({"a":[1)", "{\n    \"a\": [ 1"},
    };
    for (const auto& layout : cases) {
        SCOPED_TRACE(layout.script);
        JsonSerializer compact;
        JsonSerializer readable(JsonSerializerType::Readable);
        Drive(compact, layout.script);
        Drive(readable, layout.script);
        EXPECT_EQ(compact.Build().toStdString(), layout.compact);
        EXPECT_EQ(readable.Build().toStdString(), layout.readable);
    }
}

struct FailureCase {
    std::string before;
    std::string failing;
    LumError error;
    std::string condition;
    std::string goOn = {};  // What the writer still takes.
};

// The text stays as it was.
TEST(JsonSerializerTest, CallsThatAreNotDue) {
    using enum LumError;
    const std::string isSecond = "(m_items == 0)";
    const std::string needsValue = "(m_state == NeedsValue)";
    const FailureCase cases[] = {
        {"", "a:", KeyNotSupported, "", "'x"},
        {"'x", "'y", SecondRootItem, isSecond},
        {"'x", "1", SecondRootItem, isSecond},
        {"( )", "(", SecondRootItem, isSecond},
        {"{ }", "{", SecondRootItem, isSecond},
        {"( 1", "a:", KeyInJsonArray, "", "2 )"},
        {"{ a:", "b:", UnexpectedDictionaryKey, "(m_state == NeedsKey)", "1 }"},
        {"{", "'x", UnexpectedDictionaryValue, needsValue, "}"},
        {"{ a: 1", "2", UnexpectedDictionaryValue, needsValue, "b: 2 }"},
        {"{", "[", DictionaryKeyExpected, needsValue, "a: ( ) }"},
        {"{ a: { }", "{", DictionaryKeyExpected, needsValue},
        // The container is gone after these.
        {"", ")", ArrayNotSupported, ""},
        {"", "}", DictionaryNotSupported, ""},
        {"( {", ")", ArrayNotSupported, ""},
        {"{ a: (", "}", DictionaryNotSupported, ""},
    };
    for (const FailureCase& failure : cases) {
        SCOPED_TRACE(failure.before + " then " + failure.failing);
        JsonSerializer serializer;
        JsonSerializer other;
        Drive(serializer, failure.before);
        Drive(other, failure.before);
        EXPECT_TRUE(test::FailsAs({failure.error, "", true, failure.condition},
                                  [&] { Drive(serializer, failure.failing); }));
        EXPECT_EQ(serializer.Build(), other.Build());
        Drive(serializer, failure.goOn);
        Drive(other, failure.goOn);
        EXPECT_EQ(serializer.Build(), other.Build());
    }
    EXPECT_LUM_REPORT(UnsupportedSerializerType, "", "",
                      JsonSerializer(static_cast<JsonSerializerType>(2)));
}

TEST(JsonSerializerTest, NothingIsLeftAfterTheRootWasEnded) {
    for (const char* const later : {"'x", "1", "a:", "[", "{", ")", "}"}) {
        SCOPED_TRACE(later);
        JsonSerializer serializer;
        Drive(serializer, "'x");
        EXPECT_LUM_ERROR(ArrayNotSupported, "", serializer.EndArray());
        EXPECT_LUM_REPORT(IllegalOperation, "", "!(m_states.empty())", Drive(serializer, later));
        EXPECT_EQ(serializer.Build().toStdString(), "\"x\"");
    }
}

TEST(JsonSerializerTest, MovesWithItsState) {
    JsonSerializer first;
    Drive(first, "{ a:");
    JsonSerializer second(std::move(first));
    first = JsonSerializer(JsonSerializerType::Readable);
    Drive(second, "1 }");
    Drive(first, "( )");
    EXPECT_EQ(second.Build().toStdString(), "{\"a\":1}");
    EXPECT_EQ(first.Build().toStdString(), "[ ]");
}

// A unit as it stands in a string, by the letter of RFC 8259 with the short escapes that we use.
std::u16string EscapedUnit(char16_t unit) {
    constexpr std::u16string_view kUnits = u"\b\t\n\f\r\"\\";
    constexpr std::u16string_view kLetters = u"btnfr\"\\";
    if (const std::size_t place = kUnits.find(unit); place != kUnits.npos) {
        return std::u16string(u"\\") + kLetters[place];
    }
    if (unit >= 32) {
        return std::u16string(1, unit);
    }
    const char16_t* const digits = u"0123456789abcdef";
    return std::u16string(u"\\u00") + digits[unit / 16] + digits[unit % 16];
}

std::u16string QuotedByUnit(std::u16string_view text) {
    std::u16string quoted = u"\"";
    for (const char16_t unit : text) {
        quoted += EscapedUnit(unit);
    }
    return quoted + u"\"";
}

// Escapes at all places of texts around the width of the blocks that are copied at once, in texts
// that stand in the object, in a block, and in a block although they are short.
TEST(JsonSerializerTest, EscapesAtEveryPlace) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    // Every unit of ASCII, and others whose halves look like such that are escaped.
    const auto chooseUnit = [&random] {
        const char16_t others[] = {0x2022, 0x225c, 0x5c22, 0xd800, 0xffff, 0x8000};
        return random.Below(4) == 0 ? random.OneOf(others)
                                    : static_cast<char16_t>(random.Below(0x80));
    };
    for (std::size_t length = 0; length < 70; ++length) {
        for (int round = 0; round < 40; ++round) {
            const bool isMostlyPlain = round % 4 != 0;
            TStringCore text;
            if (round % 2 == 0) {
                text.reserve(100);
            }
            for (std::size_t i = 0; i < length; ++i) {
                text += isMostlyPlain && random.Below(40) != 0 ? u'x' : chooseUnit();
            }
            const std::u16string expected = QuotedByUnit(text.view());
            JsonSerializer serializer;
            serializer.AppendString(text);
            ASSERT_TRUE(serializer.Build().view() == expected) << text << " " << length;

            std::u16string copied(length + kCopyTextSlack, u'?');
            const std::size_t plain = CopyTextUntilEscape(text, copied.data());
            std::size_t first = 0;
            while (first < length && EscapedUnit(text[first]).size() == 1) {
                ++first;
            }
            ASSERT_EQ(plain, first) << text << " " << length;
            ASSERT_TRUE(copied.starts_with(text.view().substr(0, plain)));
        }
    }
}

TEST(JsonSerializerTest, TakesItsOwnText) {
    for (const std::string& start :
         {std::string("ab"), std::string(30, 'a'), std::string(99, '"')}) {
        JsonSerializer own;
        JsonSerializer other;
        Drive(own, "( " + start);
        Drive(other, "( " + start);
        for (int round = 0; round < 3; ++round) {
            other.AppendString(TStringCore(other.Build().view()));
            own.AppendString(own.Build());
            other.AppendUnquotedString(TStringCore(other.Build().view()));
            own.AppendUnquotedString(own.Build());
        }
        EXPECT_EQ(own.Build(), other.Build());
    }
}

TEST(JsonSerializerTest, Unescapes) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {R"(\b\f\n\r\t)", "\b\f\n\r\t"},
        {R"(\\n)", R"(\n)"},
        {R"(\\\n)", "\\\n"},
        {R"(\"quoted\")", "\"quoted\""},
        {R"(\u0041\/\x)", "u0041/x"},
    };
    for (const auto& [escaped, text] : cases) {
        EXPECT_EQ(JsonSerializer::UnescapeFromJson(TStringCore::fromUtf8(escaped)).toStdString(),
                  text);
    }
    for (const wchar_t* const open : {L"\\", L"a\\", L"\\\\\\"}) {
        EXPECT_LUM_REPORT(JsonParseFailure, "", "!(isEscaping)",
                          JsonSerializer::UnescapeFromJson(open));
    }
}

}  // namespace
}  // namespace lum::core
