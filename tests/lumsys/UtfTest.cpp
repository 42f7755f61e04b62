// TStringCore from and to UTF-8 and wide text.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "lumsys/TStringCore.h"
#include "tests/support/Random.h"

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
        {"\x80", u"\ufffd"},
        {"\xC0\x80", u"\ufffd\ufffd"},                      // Overlong.
        {"\xE0\x9F\xBF", u"\ufffd\ufffd\ufffd"},            // Overlong.
        {"\xED\xA0\x80", u"\ufffd\ufffd\ufffd"},            // A surrogate.
        {"\xF4\x90\x80\x80", u"\ufffd\ufffd\ufffd\ufffd"},  // Above U+10FFFF.
        {"\xF0\x9F\x98", u"\ufffd"},                        // Cut off: one maximal part.
        {"\xF0\x9F\x98z\xE2\x82", u"\ufffdz\ufffd"},
        {"\xE2\xC3\xA9", u"\ufffd\u00e9"},
        {"\xFF\xFE", u"\ufffd\ufffd"},
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

/// Every beginning of a sequence that lacks at least one byte.
std::set<std::string> MakeBeginnings() {
    std::set<std::string> beginnings;
    for (char32_t code = 0x80; code <= 0x10FFFF; code += 0x40) {
        for (std::string bytes = Encode(code); IsScalarValue(code) && bytes.size() > 1;) {
            bytes.pop_back();
            beginnings.insert(bytes);
        }
    }
    return beginnings;
}

std::u16string SlowDecode(const std::string& bytes, const std::set<std::string>& beginnings) {
    std::u16string units;
    for (std::size_t i = 0, taken = 0; i < bytes.size(); i += taken) {
        char32_t code = 0xFFFD;
        taken = 0;
        for (std::size_t count = 1; taken == 0 && count <= 4 && i + count <= bytes.size();
             ++count) {
            const std::string sequence = bytes.substr(i, count);
            char32_t value =
                static_cast<unsigned char>(sequence[0]) & (count == 1 ? 0xFF : 0x7F >> count);
            for (const char byte : sequence.substr(1)) {
                value = value << 6 | (static_cast<unsigned char>(byte) & 0x3F);
            }
            if (IsScalarValue(value) && Encode(value) == sequence) {
                code = value;
                taken = count;
            }
        }
        if (taken == 0) {
            taken = 1;
            while (i + taken < bytes.size() && beginnings.contains(bytes.substr(i, taken + 1))) {
                ++taken;
            }
        }
        units += TStringCore(static_cast<wchar_t>(code)).view();
    }
    return units;
}

TEST(UtfTest, InvalidBytesAsTheSlowDecoderReadsThem) {
    const std::set<std::string> beginnings = MakeBeginnings();
    const unsigned char choices[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF,
                                     0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE,
                                     0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF};
    lum::test::Random random;
    for (int i = 0; i < 20000; ++i) {
        std::string bytes;
        for (std::size_t count = random.Below(14); count != 0; --count) {
            bytes += static_cast<char>(random.OneOf(choices));
        }
        ASSERT_EQ(TStringCore::fromUtf8(bytes).view(), SlowDecode(bytes, beginnings))
            << testing::PrintToString(bytes) << ' ' << random.Trace();
    }
}

}  // namespace
}  // namespace lumsys
