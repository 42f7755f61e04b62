// TStringCore from and to UTF-8 and wide text.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lumsys/TStringCore.h"

namespace lumsys {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

TEST(UtfTest, FromUtf8) {
    struct Case {
        std::string bytes;
        std::u16string_view expected;
    };
    const Case cases[] = {
        {"", u""},
        {"a\0b"s, u"a\0b"sv},
        {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", u"\u00e9\u20ac\U0001f600"},
        {"\xF4\x8F\xBF\xBF", u"\U0010ffff"},
        {"\xEF\xBF\xBF", u"\uffff"},
        {"\xEF\xBB\xBFx", u"\ufeffx"},
        // Bytes that cannot begin or go on: each its own part.
        {"\x80", u"\ufffd"},
        {"\xFF\xFE\xF5\x80", u"\ufffd\ufffd\ufffd\ufffd"},
        // Overlong forms, surrogates, and what lies above U+10FFFF, with their neighbours.
        {"\xC0\x80\xC1\xBF\xC2\x80", u"\ufffd\ufffd\ufffd\ufffd\u0080"},
        {"\xE0\x9F\xBF\xE0\xA0\x80", u"\ufffd\ufffd\ufffd\u0800"},
        {"\xED\xA0\x80\xED\xBF\xBF", u"\ufffd\ufffd\ufffd\ufffd\ufffd\ufffd"},
        {"\xED\x9F\xBF\xEE\x80\x80", u"\ud7ff\ue000"},
        {"\xF0\x8F\xBF\xBF\xF0\x90\x80\x80", u"\ufffd\ufffd\ufffd\ufffd\U00010000"},
        {"\xF4\x90\x80\x80", u"\ufffd\ufffd\ufffd\ufffd"},
        // A sequence that breaks off is one part up to there.
        {"\xF0\x9F\x98", u"\ufffd"},
        {"\xF0\x9F\x98z\xE2\x82", u"\ufffdz\ufffd"},
        {"\xE2\xC3\xA9\xF0\x9F\xE2\x82\xAC", u"\ufffd\u00e9\ufffd\u20ac"},
        {"\xDF\xDF\xBF", u"\ufffd\u07ff"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(TStringCore::fromUtf8(c.bytes).view(), c.expected)
            << testing::PrintToString(c.bytes);
    }
}

TEST(UtfTest, ToUtf8) {
    struct Case {
        std::u16string units;
        std::string expected;
    };
    const Case cases[] = {
        {u"a\0b"s, "a\0b"s},
        {u"\u007f\u0080\u07ff\u0800\uffff", "\x7f\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
        {u"\U00010000\U0010ffff", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {{0xD800}, "\xEF\xBF\xBD"},
        {{0xDC00, 0xD800}, "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {{0xD800, 0xD83D, 0xDE00, u'x'}, "\xEF\xBF\xBD\xF0\x9F\x98\x80x"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(TStringCore(c.units).toStdString(), c.expected);
    }
}

TEST(UtfTest, FromWideText) {
    struct Case {
        std::wstring text;
        std::u16string expected;
    };
    const auto wide = [](std::vector<unsigned> codes) {
        return std::wstring(codes.begin(), codes.end());
    };
    const Case cases[] = {
        {L"", u""},
        {L"ab\u00e9", u"ab\u00e9"},
        {wide({0xD800, 0xDFFF, 0xFFFF}), {0xD800, 0xDFFF, 0xFFFF}},
        {wide({0x10000, 0x1F600, 0x10FFFF}), u"\U00010000\U0001f600\U0010ffff"},
        {wide({0x110000, 0x7FFFFFFF, 0xFFFFFFFF}), u"\ufffd\ufffd\ufffd"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(TStringCore(c.text.c_str()).view(), c.expected);
        EXPECT_EQ((TStringCore(L"0123456789") += c.text.c_str()).view(),
                  u"0123456789" + c.expected);
    }
    EXPECT_TRUE(TStringCore(static_cast<const wchar_t*>(nullptr)).isEmpty());
    EXPECT_EQ(TStringCore(wchar_t{0x1F600}).view(), u"\U0001f600");
    EXPECT_EQ(TStringCore(L'\0').view(), u"\0"sv);
}

bool IsScalarValue(char32_t code) {
    return code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

std::string Encode(char32_t code) {
    const auto byte = [](char32_t value) { return static_cast<char>(value & 0xFF); };
    if (code < 0x80) {
        return {byte(code)};
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    std::string bytes = {byte(char32_t{0xFF} << (7 - more) | code >> 6 * more)};
    for (int i = more - 1; i >= 0; --i) {
        bytes += byte(0x80 | (code >> 6 * i & 0x3F));
    }
    return bytes;
}

TEST(UtfTest, PlainRunsOfAnyLengthBesideOtherText) {
    // Plain text is taken by words and by longer pieces, which end anywhere.
    const std::pair<std::string, std::u16string> others[] = {
        {"", u""}, {"\xC3\xA9", u"\u00E9"}, {"\xF0\x9F\x98\x80", u"\U0001F600"}};
    std::vector<std::size_t> lengths{4095, 4096, 4097, 8200};
    for (std::size_t length = 0; length <= 40; ++length) {
        lengths.push_back(length);
    }
    for (const std::size_t length : lengths) {
        SCOPED_TRACE(length);
        std::string plain;
        for (std::size_t i = 0; i < length; ++i) {
            plain += static_cast<char>(i % 0x80);
        }
        for (const auto& [frontBytes, frontUnits] : others) {
            for (const auto& [backBytes, backUnits] : others) {
                const std::string bytes = frontBytes + plain + backBytes;
                const TStringCore text = TStringCore::fromUtf8(bytes);
                EXPECT_EQ(text.view(),
                          frontUnits + std::u16string(plain.begin(), plain.end()) + backUnits);
                EXPECT_EQ(text.toStdString(), bytes);
            }
        }
    }
}

TEST(UtfTest, EveryCodePointGoesThereAndBack) {
    std::string bytes;
    std::u16string units;
    for (char32_t code = 0; code <= 0x10FFFF; ++code) {
        if (IsScalarValue(code)) {
            bytes += Encode(code);
            units += TStringCore(static_cast<wchar_t>(code)).view();
        }
    }
    EXPECT_TRUE(TStringCore(units).toStdString() == bytes);
    EXPECT_TRUE(TStringCore::fromUtf8(bytes).view() == units);
}

}  // namespace
}  // namespace lumsys
