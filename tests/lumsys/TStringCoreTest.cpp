#include "lumsys/TStringCore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "lumsys/Hash.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/Random.h"

namespace lumsys {
namespace {

using namespace std::string_view_literals;

static_assert(std::is_nothrow_copy_constructible_v<TStringCore> &&
              std::is_nothrow_move_constructible_v<TStringCore> &&
              std::is_nothrow_copy_assignable_v<TStringCore> &&
              std::is_nothrow_move_assignable_v<TStringCore>);
static_assert(!std::is_convertible_v<int, TStringCore> &&
              !std::is_convertible_v<char16_t, TStringCore> &&
              !std::is_convertible_v<wchar_t, TStringCore> &&
              !std::is_constructible_v<TStringCore, const char*>);

/// A text and what it should be.
struct Modelled {
    TStringCore text;
    std::u16string model;
};

/// One random change of `a`, which may take from `b`; both may be the same.
void ChangeRandomly(lum::test::Random& random, Modelled& a, Modelled& b) {
    const char16_t units[] = {0, u'a', u'b', u' ', 0xD800, 0xFFFF};
    const char16_t unit = random.OneOf(units);
    const std::size_t count = random.Below(15);
    const std::size_t position = random.Below(a.model.size() + 1);
    switch (random.Below(15)) {
        case 0:
            a.text += b.text;
            a.model += std::u16string(b.model);
            break;
        case 1:
            a.text += unit;
            a.model += unit;
            break;
        case 2: {  // A part of itself.
            const std::size_t taken = std::min(count, a.model.size() - position);
            a.text.append(a.text.data() + position, taken);
            a.model += a.model.substr(position, taken);
            break;
        }
        case 3:
            a.text = b.text;
            a.model = b.model;
            break;
        case 4:
            a.text = std::move(b.text);
            if (&a != &b) {
                a.model = std::exchange(b.model, {});
            }
            break;
        case 5:
            a.text = b.text.mid(position, count);
            a.model = position < b.model.size() ? b.model.substr(position, count) : u"";
            break;
        case 6:
            a.text.reserve(count * 3);
            break;
        case 7:
            a.text.clear();
            a.model.clear();
            break;
        case 8:
            a.text.swap(b.text);
            std::swap(a.model, b.model);
            break;
        case 9: {  // Room is asked for, and less is used.
            char16_t* const room = a.text.prepareAppend(count + 5);
            std::fill_n(room, count + 5, u'?');
            std::fill_n(room, count, unit);
            a.text.commitAppend(count);
            a.model.append(count, unit);
            break;
        }
        case 10:
            a.text = a.text + b.text;
            a.model += std::u16string(b.model);
            break;
        case 11:
            a.text = b.text.rightJustified(count, unit);
            a.model = std::u16string(count - std::min(count, b.model.size()), unit) + b.model;
            break;
        case 12:
            a.text = b.text.leftJustified(count, unit);
            a.model = b.model + std::u16string(count - std::min(count, b.model.size()), unit);
            break;
        case 13:
            a.text = TStringCore(count, unit);
            a.model.assign(count, unit);
            break;
        case 14: {
            TStringCore copy(b.text);  // Shares the block for a while.
            const TStringCore moved(std::move(copy));
            a.text = a.text.left(count) + moved + copy;
            a.model = a.model.substr(0, count) + b.model;
            break;
        }
    }
}

TEST(TStringCoreTest, BehavesAsTheModelDoes) {
    lum::test::Random random;
    Modelled texts[5];
    for (int step = 0; step < 50000; ++step) {
        Modelled& changed = texts[random.Below(5)];
        ChangeRandomly(random, changed, texts[random.Below(5)]);
        for (Modelled& t : texts) {
            ASSERT_EQ(t.text.view(), t.model) << "step " << step << ", " << random.Trace();
            ASSERT_EQ(t.text.hash(), Hash(t.model.data(), t.model.size() * 2, 0xDEADBEEF));
            ASSERT_EQ(t.text == changed.text, t.model == changed.model);
            ASSERT_EQ(t.text < changed.text, t.model < changed.model);
            if (t.model.size() > 200) {
                t = {};
            }
        }
    }
}

TEST(TStringCoreTest, ShortTextAndCopiesTakeNoMemory) {
    const TStringCore longText(1000, u'x');
    TStringCore grown;
    grown.reserve(100);
    const lum::test::AllocationCounter counter;

    TStringCore texts[] = {TStringCore(L"twelve units"),
                           TStringCore(u"twelve units", 12),
                           TStringCore(L"\U0001f600\U0001f600\U0001f600\U0001f600\U0001f600x"),
                           TStringCore(12, u'x'),
                           TStringCore::fromUtf8("twelve units", 12),
                           TStringCore::number(-12345678901LL),
                           TStringCore::number(0xFFF, 2)};
    texts[0] = texts[1] + L"";
    texts[1].append(texts[0].left(0)).append(L"");
    texts[2] = longText;
    texts[3] = longText.mid(0, 2000);
    texts[4] = std::move(texts[3]);
    texts[5] = texts[4].mid(100, 12);
    for (int i = 0; i < 100; ++i) {
        grown += u'y';
    }
    EXPECT_EQ(counter.GetCount(), 0u);
    EXPECT_EQ(texts[4].data(), longText.data());
    const lum::test::AllocationCounter another;
    texts[6] = TStringCore(13, u'x');
    EXPECT_EQ(another.GetCount(), 1u);
}

// Plain text and text with one other character in each place, of all lengths about that of a
// handle.
TEST(TStringCoreTest, ReadsShortUtf8) {
    for (std::size_t count = 0; count <= 14; ++count) {
        const std::string plain = std::string("twelve units, ").substr(0, count);
        const TStringCore text = TStringCore::fromUtf8(plain);
        EXPECT_EQ(text, TStringCore(std::u16string(plain.begin(), plain.end())));
        EXPECT_EQ(text.toStdString(), plain);
        for (std::size_t i = 0; i < count; ++i) {
            std::u16string units(plain.begin(), plain.end());
            units[i] = u'\u00e9';
            std::string bytes = plain;
            bytes.replace(i, 1, "\u00e9");
            EXPECT_EQ(TStringCore::fromUtf8(bytes), TStringCore(units)) << bytes;
        }
    }
}

TEST(TStringCoreTest, GrowsByHalf) {
    TStringCore text;
    const lum::test::AllocationCounter counter;
    for (int i = 0; i < 1000000; ++i) {
        text += u'x';
    }
    EXPECT_LT(counter.GetCount(), 35u);  // ln(1e6 / 12) / ln(1.5) is 28.
}

TEST(TStringCoreTest, ASharedBlockIsNeverWritten) {
    TStringCore text(20, u'x');
    text.reserve(100);
    const TStringCore copy = text;
    text += u'y';
    EXPECT_EQ(copy, TStringCore(20, u'x'));
    EXPECT_NE(copy.data(), text.data());
    const char16_t* const place = text.data();
    text += u'z';  // Alone again.
    EXPECT_EQ(text.data(), place);
}

TEST(TStringCoreTest, RefusesTextThatIsTooLong) {
    constexpr std::size_t kTooLong = TStringCore::kMaxLength + 1;
    constexpr std::size_t kHuge = std::numeric_limits<std::size_t>::max();
    TStringCore text(L"kept");
    EXPECT_THROW(TStringCore(kTooLong, u'x'), std::length_error);
    EXPECT_THROW(TStringCore(kHuge, u'x'), std::length_error);
    EXPECT_THROW(text.reserve(kTooLong), std::length_error);
    EXPECT_THROW(text.append(text.data(), kHuge), std::length_error);
    EXPECT_THROW(text.append(text.data(), kTooLong - 4), std::length_error);
    EXPECT_THROW(text.prepareAppend(kHuge - 3), std::length_error);
    EXPECT_THROW(text.rightJustified(kHuge, u' '), std::length_error);
    EXPECT_THROW(TStringCore::fromUtf8("", kTooLong), std::length_error);
    EXPECT_EQ(text, L"kept");
}

TEST(TStringCoreTest, Compares) {
    // In ascending order, by unit: a surrogate pair stands before U+FFFF.
    const TStringCore ordered[] = {L"",
                                   TStringCore(1, 0),
                                   L"A",
                                   L"a",
                                   TStringCore(u"a\0", 2),
                                   L"aa",
                                   L"aa shared text of many units",
                                   L"b",
                                   L"\u0100",
                                   L"\U00010000",
                                   L"\uFFFF"};
    const int count = static_cast<int>(std::size(ordered));
    for (int i = 0; i < count; ++i) {
        for (int k = 0; k < count; ++k) {
            const int expected = i < k ? -1 : i > k ? 1 : 0;
            EXPECT_EQ(ordered[i].compare(ordered[k]), expected) << i << ' ' << k;
            EXPECT_EQ(ordered[i] == ordered[k], expected == 0);
            EXPECT_EQ(ordered[i] < ordered[k], expected < 0);
            EXPECT_EQ(ordered[i] >= ordered[k], expected >= 0);
        }
    }
    // Equal texts, one inline and one in a block.
    TStringCore reserved(L"short");
    reserved.reserve(50);
    EXPECT_EQ(reserved, L"short");
    EXPECT_EQ(TStringCore(L"short"), reserved);
    EXPECT_EQ(reserved.hash(), TStringCore(L"short").hash());
}

TEST(TStringCoreTest, Finds) {
    const TStringCore text(u"abcabc\0x", 8);
    EXPECT_EQ(text.find(L"bc"), 1);
    EXPECT_EQ(text.find(L"bc", 2), 4);
    EXPECT_EQ(text.find(L"bc", 5), -1);
    EXPECT_EQ(text.find(L"", 8), 8);
    EXPECT_EQ(text.find(L"", 9), -1);
    EXPECT_EQ(text.find(u'\0'), 6);
    EXPECT_EQ(text.find(u'a', 100), -1);
    EXPECT_TRUE(text.contains(L"cab"));
    EXPECT_FALSE(text.contains(L"cb"));
    EXPECT_TRUE(text.startsWith(L"abc"));
    EXPECT_TRUE(text.startsWith(L""));
    EXPECT_FALSE(text.startsWith(text + L"y"));
}

TEST(TStringCoreTest, SplitsAndJoins) {
    struct Case {
        const wchar_t* text;
        std::vector<TStringCore> parts;
    };
    const Case cases[] = {{L"", {L""}},
                          {L"a", {L"a"}},
                          {L"a,,b,", {L"a", L"", L"b", L""}},
                          {L",a part of some length,", {L"", L"a part of some length", L""}}};
    for (const Case& c : cases) {
        EXPECT_EQ(TStringCore(c.text).split(u','), c.parts);
        EXPECT_EQ(TStringCore::join(c.parts, L","), c.text);
    }
    EXPECT_EQ(TStringCore::join({L"a", L"b"}, L" and "), L"a and b");
    EXPECT_EQ(TStringCore::join({}, L","), L"");
}

TEST(TStringCoreTest, Trims) {
    EXPECT_EQ(TStringCore(L" \t\n\v\f\ra b\r ").trimmed(), L"a b");
    EXPECT_EQ(TStringCore(L" \n ").trimmed(), L"");
    EXPECT_EQ(TStringCore(L"\u00a0x\b").trimmed(), L"\u00a0x\b");
}

TEST(TStringCoreTest, PrintsAsUtf8) {
    std::ostringstream stream;
    stream << TStringCore(L"\u00e9");
    EXPECT_EQ(stream.str(), "\xC3\xA9");
}

}  // namespace
}  // namespace lumsys
