#include "lum/core/utility/RInternString.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "lum/core/utility/RFormatString.h"
#include "tests/support/AllocationCounter.h"

namespace lum::core {
namespace {

using namespace std::string_view_literals;

TEST(RInternStringTest, AllConstructorsGiveOneName) {
    const RInternString name(L"a");
    const TStringCore text(L"a");
    const RInternString same[] = {text,
                                  TStringCore(text),
                                  RIndirectString(L"a"),
                                  RInternString(L'a'),
                                  RFormatString(L"%1").arg(L"a", 0),
                                  RInternString(name.GetStringId()),
                                  RInternString(static_cast<unsigned long>(name.GetStringId())),
                                  RInternString(static_cast<long long>(name.GetStringId()))};
    for (const RInternString& other : same) {
        EXPECT_EQ(other, name);
        EXPECT_EQ(&other.GetValue(), &name.GetValue());
        EXPECT_EQ(std::hash<RInternString>()(other), name.GetStringId());
    }
    EXPECT_EQ(RInternString(), RInternString(L""));
    EXPECT_EQ(RInternString(static_cast<const wchar_t*>(nullptr)), RInternString());
    EXPECT_NE(RInternString(L"A"), name);
    static_assert(!std::is_constructible_v<RInternString, std::nullptr_t> &&
                  !std::is_convertible_v<uint64, RInternString> &&
                  !std::is_convertible_v<wchar_t, RInternString>);
}

TEST(RInternStringTest, ComparesWithOtherStringsByText) {
    const RInternString name(L"name");
    EXPECT_TRUE(name == TStringCore(L"name") && TStringCore(L"name") == name);
    EXPECT_TRUE(name == L"name" && L"name" == name);
    EXPECT_TRUE(name == RIndirectString(L"name") && RIndirectString(L"name") == name);
    EXPECT_TRUE(name != TStringCore(L"Name") && name != L"nam" && name != RIndirectString(L""));
    EXPECT_TRUE(RIndirectString(L"x") == TStringCore(L"x") && RIndirectString(L"x") == L"x");
    // By unit, whatever collation the type of the string may have.
    EXPECT_TRUE(RIndirectString(L"B") < RIndirectString(L"a"));
    EXPECT_EQ(std::hash<RIndirectString>()(L"ROOT"), 0x2f6fd662u);
}

TEST(RInternStringTest, TextsOfEveryShapeAreKept) {
    const std::wstring sixtyFour(64, L'n');
    const TStringCore texts[] = {TStringCore(u"zero\0inside"sv),
                                 TStringCore(u"zero"sv),
                                 TStringCore(u"\xD800"sv),
                                 L"\U0001f600",
                                 sixtyFour.c_str(),
                                 (sixtyFour + L"n").c_str(),
                                 (sixtyFour + L"\U0001f600").c_str()};
    for (const TStringCore& text : texts) {
        const RInternString name(text);
        EXPECT_EQ(name.GetValue(), text);
        EXPECT_EQ(RInternString(TStringCore(text.view())), name);
    }
    // The look-up of wide text without a string in between.
    for (const std::wstring& wide :
         {sixtyFour, sixtyFour + L"n", sixtyFour.substr(1) + L"\U0001f600"}) {
        EXPECT_EQ(RInternString(wide.c_str()), RInternString(TStringCore(wide.c_str())));
    }
}

// A name differs from those that are one unit longer, or other in any one place.
TEST(RInternStringTest, EveryUnitCounts) {
    for (std::size_t length = 1; length <= 40; ++length) {
        std::u16string units(length, u'x');
        const RInternString name{std::u16string_view(units)};
        EXPECT_EQ(name, RInternString(TStringCore(units)));
        EXPECT_EQ(name.GetValue(), TStringCore(units));
        for (char16_t& unit : units) {
            unit = u'y';
            EXPECT_EQ(RInternString(std::u16string_view(units)).GetValue(), TStringCore(units));
            EXPECT_FALSE(RInternString(std::u16string_view(units)) == name);
            unit = u'x';
        }
        units += u'x';
        EXPECT_FALSE(RInternString(TStringCore(units)) == name);
    }
}

TEST(RInternStringTest, IdsAreDenseAndTextsStayWhereTheyAre) {
    const RInternString first(L"the first of many names");
    const TStringCore* const place = &first.GetValue();
    const auto nameOf = [](int i) { return L"many " + TStringCore::number(i); };
    constexpr int kCount = 20000;  // Makes the index grow several times.
    for (int i = 0; i < kCount; ++i) {
        ASSERT_EQ(RInternString(nameOf(i)).GetStringId(), first.GetStringId() + 1 + unsigned(i));
    }
    for (int i = 0; i < kCount; ++i) {
        const RInternString name(first.GetStringId() + 1 + unsigned(i));
        ASSERT_EQ(name.GetValue(), nameOf(i));
        ASSERT_EQ(RInternString(nameOf(i)), name);
    }
    EXPECT_EQ(place, &RInternString(L"the first of many names").GetValue());
}

TEST(RInternStringTest, AnIdThatWasNeverGivenOutReadsEmpty) {
    const uint64 next = RInternString(L"the latest name").GetStringId() + 1;
    for (const uint64 id : {next, next + 1, std::numeric_limits<uint64>::max()}) {
        EXPECT_TRUE(RInternString(id).GetValue().isEmpty()) << id;
        EXPECT_EQ(RInternString(id).GetStringId(), id);
    }
}

TEST(RInternStringTest, KnownNamesTakeNoMemory) {
    const TStringCore longText(100, u'n');
    const RInternString names[] = {longText, L"a name of more than twelve units", L"\u00e9"};
    const test::AllocationCounter counter;
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(RInternString(longText), names[0]);
        EXPECT_EQ(RInternString(L"a name of more than twelve units"), names[1]);
        EXPECT_EQ(RInternString(L'\u00e9'), names[2]);
        EXPECT_EQ(RInternString(), RInternString(L""));
    }
    EXPECT_EQ(counter.GetCount(), 0u);
}

}  // namespace
}  // namespace lum::core
