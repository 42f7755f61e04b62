#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <locale>
#include <memory>
#include <string>
#include <vector>

#include "lum/core/serialize/IJsonObject.h"
#include "tests/serialize/JsonForms.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

std::shared_ptr<IJsonObject> Parse(const std::string& text) {
    return GetRootJsonObject(TStringCore::fromUtf8(text));
}

// The global locale of a host that writes 1.000,5 or, without groups, 1000,5.
class CommaLocale {
public:
    explicit CommaLocale(bool hasGroups)
        : m_former(std::locale::global(
              std::locale(std::locale::classic(), new Punctuation(hasGroups)))) {}
    ~CommaLocale() { std::locale::global(m_former); }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    class Punctuation : public std::numpunct<char> {
    public:
        explicit Punctuation(bool hasGroups) : m_grouping(hasGroups ? "\3" : "") {}

    protected:
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return m_grouping; }

    private:
        std::string m_grouping;
    };

    std::locale m_former;
};

TEST(JsonObjectTest, RefusedTexts) {
    for (const char* const text : {"", " ", "nope", "[1", "[1 2]", R"({"a":})", R"({1:2})", R"(")",
                                   "'a'", "nan", "1e400", R"("\ud800")", R"("\u12")", "\xff"}) {
        SCOPED_TRACE(text);
        EXPECT_LUM_REPORT(JsonParseFailure, "", "", Parse(text));
    }
    EXPECT_LUM_REPORT(JsonParseFailure, "", "", Parse(std::string(100'000, '[')));
    EXPECT_LUM_REPORT(JsonParseFailure, "", "", Parse(std::string(1, '\0')));
}

// What the parser lets pass stays passed: hosts have such texts.
TEST(JsonObjectTest, Leniencies) {
    EXPECT_EQ(Parse("5")->AsInt32(), 5);
    EXPECT_EQ(Parse("[1.5,] // rest")->AsArray().begin().operator*()->AsReal64(), 1.5);
    EXPECT_EQ(Parse("{} x")->IsDictionary(), true);
    EXPECT_EQ(Parse("\xEF\xBB\xBF 2.5")->AsReal64(), 2.5);
    EXPECT_EQ(Parse("\"a\tb\"")->AsString(), TStringCore(L"a\tb"));
    EXPECT_EQ(Parse(std::string(200, '[') + std::string(200, ']'))->IsArray(), true);
}

TEST(JsonObjectTest, Kinds) {
    for (const std::string text : {"null", "true", "1", "\"a\"", "[]", "{}"}) {
        SCOPED_TRACE(text);
        const auto object = Parse(text);
        EXPECT_EQ(object->IsArray(), text == "[]");
        EXPECT_EQ(object->IsDictionary(), text == "{}");
        EXPECT_EQ(object->IsString(), text == "\"a\"");
        EXPECT_EQ(object->IsPrimitive(), text != "[]" && text != "{}");
    }
}

// The conversions of scalars, whatever the global locale: with groups the parser may refuse a
// number, but none may come back wrong.
TEST(JsonObjectTest, Numbers) {
    const struct {
        const char* text;
        bool asBool;
        int asInt32;
        double asReal64;
    } cases[] = {
        {"null", false, 0, 0.0},
        {"true", true, 1, 1.0},
        {"-7", true, -7, -7.0},
        {"+5", true, 5, 5.0},
        {"007", true, 7, 7.0},
        {"1.500", true, 1, 1.5},
        {"-1.9", true, -1, -1.9},
        {"1.234.5", true, 1, 1.234},  // What follows the root is not looked at.
        {"12.5e2", true, 1250, 1250.0},
        {"-0", false, 0, -0.0},
        {"-", false, 0, 0.0},
        {"-1e-400", false, 0, -0.0},
        {"4.9e-324", true, 0, std::numeric_limits<double>::denorm_min()},
        {"0.1000000000000000055511151231257827021181583404541015625", true, 0, 0.1},
    };
    const auto checkAll = [&](bool mayRefuse) {
        for (const auto& expected : cases) {
            SCOPED_TRACE(expected.text);
            std::shared_ptr<IJsonObject> object;
            try {
                object = Parse(expected.text);
            } catch (const LumRuntimeException& error) {
                EXPECT_EQ(error.GetError(), LumError::JsonParseFailure);
                EXPECT_TRUE(mayRefuse);
                continue;
            }
            EXPECT_EQ(object->AsBool(), expected.asBool);
            EXPECT_EQ(object->AsInt32(), expected.asInt32);
            EXPECT_EQ(object->AsInt64(), expected.asInt32);
            EXPECT_EQ(std::bit_cast<unsigned long long>(object->AsReal64()),
                      std::bit_cast<unsigned long long>(expected.asReal64));
            EXPECT_EQ(std::bit_cast<unsigned>(object->AsReal32()),
                      std::bit_cast<unsigned>(static_cast<float>(expected.asReal64)));
        }
    };
    checkAll(/*mayRefuse=*/false);
    {
        const CommaLocale locale(/*hasGroups=*/false);
        checkAll(/*mayRefuse=*/false);
        // The parser stops at the point, where it cannot see that the rest is no number.
        EXPECT_LUM_REPORT(JsonParseFailure, "", "", Parse("1.5e")->AsReal64());
        EXPECT_LUM_REPORT(JsonParseFailure, "", "", Parse("1.5e999")->AsReal64());
    }
    const CommaLocale locale(/*hasGroups=*/true);
    checkAll(/*mayRefuse=*/true);
}

TEST(JsonObjectTest, RefusedConversions) {
    using Read = void (*)(const IJsonObject&);
    const Read asInt32 = [](const IJsonObject& object) { object.AsInt32(); };
    const Read asInt64 = [](const IJsonObject& object) { object.AsInt64(); };
    const std::pair<const char*, Read> cases[] = {
        {R"("1")", asInt32},
        {"2147483648", asInt32},
        {"2147483648.0", asInt32},
        {"9223372036854775808", asInt64},
        {"1e300", asInt64},
        {"[]", [](const IJsonObject& object) { object.AsReal64(); }},
        {"{}", [](const IJsonObject& object) { object.AsBool(); }},
        {"5", [](const IJsonObject& object) { object.AsString(); }},
    };
    for (const auto& refused : cases) {
        const auto object = Parse(refused.first);
        EXPECT_TRUE(test::FailsAsForeign([&] { refused.second(*object); })) << refused.first;
    }
    EXPECT_EQ(Parse("-9223372036854775808")->AsInt64(), std::numeric_limits<int64>::min());
}

TEST(JsonObjectTest, Strings) {
    EXPECT_EQ(Parse(R"("\ud83d\ude00\u00e4")")->AsString(), TStringCore(L"\U0001F600\u00e4"));
    EXPECT_EQ(Parse(R"("a\u0000b")")->AsString(), TStringCore(L"a"));
    // Half a pair cannot be told in UTF-8: a value, but not the same.
    const char16_t lone[] = {u'"', 0xD800, u'"'};
    EXPECT_EQ(GetRootJsonObject(TStringCore(lone, 3))->AsString(), TStringCore(L"\uFFFD"));
    EXPECT_EQ(Parse(R"("\udc00")")->AsString(), TStringCore(L"\uFFFD\uFFFD\uFFFD"));
}

// Items stay what they are when the loop goes on, and when the root is gone.
TEST(JsonObjectTest, Items) {
    std::vector<std::shared_ptr<IJsonObject>> kept;
    auto root = Parse("[1,[2],3,4]");
    for (const auto& item : root->AsArray()) {
        if (kept.size() < 3) {
            kept.push_back(item);
        }
    }
    root.reset();
    ASSERT_EQ(kept.size(), 3u);
    EXPECT_EQ(kept[0]->AsInt32(), 1);
    EXPECT_EQ((*kept[1]->AsArray().begin())->AsInt32(), 2);
    EXPECT_EQ(kept[2]->AsInt32(), 3);
}

TEST(JsonObjectTest, Entries) {
    const auto root = Parse(R"({"b":1,"a\u0000":2,"":3,"b":4,"ä":5})");
    std::string text;
    std::vector<std::shared_ptr<IJsonObject>> values;
    for (const auto& [key, value] : root->AsDictionary()) {
        text += key.toStdString() + "=";
        values.push_back(value);
    }
    EXPECT_EQ(text, std::string("=a\0=b=ä=", 9));  // By bytes; of two "b" the last.
    ASSERT_EQ(values.size(), 4u);
    EXPECT_EQ(values[0]->AsInt32(), 3);
    EXPECT_EQ(values[2]->AsInt32(), 4);
}

TEST(JsonObjectTest, EndOfIteration) {
    for (const char* const text : {"[]", "{}", "5", "null"}) {
        const auto root = Parse(text);
        auto item = root->AsArray().begin();
        EXPECT_TRUE(item == root->AsArray().end());
        EXPECT_EQ(root->AsArray().GetCount(), 0u);
        EXPECT_LUM_REPORT(IteratorOutOfBounds, "", "(!m_isAtEnd)", *item);
        EXPECT_LUM_REPORT(IteratorOutOfBounds, "", "(!m_isAtEnd)", ++item);
        EXPECT_TRUE(root->AsDictionary().begin() == root->AsDictionary().end());
    }
}

}  // namespace
}  // namespace lum::core
