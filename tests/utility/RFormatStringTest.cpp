#include "lum/core/utility/RFormatString.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

constexpr int kLowestInt = std::numeric_limits<int>::min();

std::string Format(const TStringCore& format, const std::vector<TStringCore>& parameters) {
    return RFormatString(format).arg(parameters).result().toStdString();
}

TEST(RFormatStringTest, ReplacesMarkers) {
    struct Case {
        const wchar_t* format;
        std::vector<TStringCore> parameters;
        const char* expected;
    };
    const Case cases[] = {
        {L"", {}, ""},
        {L"%2 %1", {L"a", L"b"}, "b a"},
        {L"%1%1", {L"a"}, "aa"},
        {L"<%1a>", {L"x"}, "<xa>"},
        {L"%12%1", {L"1", L"", L"", L"", L"", L"", L"", L"", L"", L"", L"", L"12"}, "121"},
        {L"100%%", {}, "100%"},
        {L"%%1%%%1%%%%", {L"a"}, "%1%a%%"},
        {L"no markers", {L"a", L"b", L"c"}, "no markers"},
        {L"%3", {L"a", L"b", L"c"}, "c"},
        {L"%1 and %2", {L"%2 %% %", L"%1"}, "%2 %% % and %1"},
        {L"%1\u0664", {L"a"}, "a\u0664"},  // A digit of another script ends the number.
        {L"%1%2", {L"", L""}, ""},
        {L"%1, %1, %1",
         {L"thirteen or more"},
         "thirteen or more, thirteen or more, "
         "thirteen or more"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Format(c.format, c.parameters), c.expected) << TStringCore(c.format);
    }
}

TEST(RFormatStringTest, HighestMarkerIs99) {
    std::vector<TStringCore> parameters(98);
    parameters.emplace_back(L"last");
    EXPECT_EQ(Format(L"%99%%%98|", parameters), "last%|");
}

TEST(RFormatStringTest, RefusesMalformedTemplatesWithoutReport) {
    const struct {
        LumError error;
        std::vector<const wchar_t*> formats;
    } cases[] = {
        {LumError::FormatIncompleteMarker, {L"%", L"%1%", L"%%%"}},
        {LumError::FormatNumberlessMarker, {L"%x", L"% 1", L"%-1", L"%\u0661", L"%1%x"}},
        {LumError::FormatLeadingZero, {L"%0", L"%01"}},
        {LumError::FormatMarkerTooLarge, {L"%100", L"%99999999999999999999"}},
    };
    const auto check = [](LumError error, const wchar_t* format) {
        const test::LogCapture capture;
        RFormatString kept(L"[%1]");
        kept.arg(L"kept");
        for (const bool isAssigned : {false, true}) {
            try {
                isAssigned ? kept = format : RFormatString(format);
                ADD_FAILURE() << "nothing was thrown for " << TStringCore(format);
            } catch (const RFormatString::Exception& e) {
                EXPECT_EQ(e.GetError(), error) << TStringCore(format);
                EXPECT_EQ(e.GetDetails(), ErrorToString(error));
                EXPECT_TRUE(e.GetContext().isEmpty());
            }
        }
        EXPECT_EQ(kept.result().toStdString(), "[kept]");
        EXPECT_TRUE(capture.GetLines().empty());
    };
    for (const auto& [error, formats] : cases) {
        for (const wchar_t* const format : formats) {
            check(error, format);
        }
    }
}

TEST(RFormatStringTest, TooFewParametersFailInResult) {
    RFormatString format(L"%3 %1");
    EXPECT_LUM_ERROR(FormatTooFewParameters, "have 0, need 3: format string = \"%3 %1\"",
                     format.result());
    format.arg(L"a", L"b");
    EXPECT_LUM_ERROR(FormatTooFewParameters, "have 2, need 3: format string = \"%3 %1\"",
                     format.result());
    EXPECT_EQ(format.arg(L"c").result().toStdString(), "c a");
}

TEST(RFormatStringTest, EveryTypeOfParameterHasItsOverload) {
    EXPECT_EQ(RFormatString(L"%1 %2 %3 %4 %5 %6 %7 %8")
                  .arg(std::numeric_limits<short>::min())
                  .arg(std::numeric_limits<unsigned short>::max())
                  .arg(std::numeric_limits<int>::min())
                  .arg(std::numeric_limits<unsigned int>::max())
                  .arg(long{-7})
                  .arg(7ul)
                  .arg(std::numeric_limits<long long>::min())
                  .arg(std::numeric_limits<unsigned long long>::max())
                  .result()
                  .toStdString(),
              "-32768 65535 -2147483648 4294967295 -7 7 -9223372036854775808 "
              "18446744073709551615");
    EXPECT_EQ(RFormatString(L"%1 %2 %3 %4 %5")
                  .arg(0.1)
                  .arg(2.5f, 0, 'e', 2)
                  .arg(1.0, 8, 'g', 4, L'*', true)
                  .arg(L'\u00e4')
                  .arg(L'\U0001F600', 4, L'.')
                  .result()
                  .toStdString(),
              "0.1 2.50e+00 ***1.000 \u00e4 ..\U0001F600");
    EXPECT_EQ(RFormatString("%1%2\u00e9").arg(255, 4, 16).arg(-5, 0, 2).result().toStdString(),
              "  ff-101\u00e9");

    // The unit of a string is no number.
    const auto takes = []<typename T>(T value) {
        return requires(RFormatString format) {
            format.arg(value);
        };
    };
    EXPECT_TRUE(takes(L'x'));
    EXPECT_FALSE(takes(u'x'));
}

TEST(RFormatStringTest, SeveralStringsAtOnce) {
    const TStringCore text(L"t");
    EXPECT_EQ(RFormatString(L"%2%1").arg(text, L"a").result().toStdString(), "at");
    EXPECT_EQ(RFormatString(L"%3%2%1").arg(L"a", text, L"c").result().toStdString(), "cta");
    EXPECT_EQ(RFormatString(L"%10%9%8%7%6%5%4%3%2%1")
                  .arg(L"a", L"b", L"c", L"d", L"e", L"f", L"g", L"h", L"i", text)
                  .result()
                  .toStdString(),
              "tihgfedcba");
    EXPECT_EQ(RFormatString(L"%1%2%3").arg({L"a", L"b"}).arg(L"c").result().toStdString(), "abc");
}

TEST(RFormatStringTest, PadsToTheFieldWidth) {
    EXPECT_EQ(RFormatString(L"%1").arg(5, 3, 10, L'0').result().toStdString(), "005");
    EXPECT_EQ(RFormatString(L"%1").arg(L"a", -3, L'.').result().toStdString(), "a..");
    EXPECT_EQ(RFormatString(L"%1").arg(L"a", 3).result().toStdString(), "  a");
    EXPECT_EQ(RFormatString(L"%1").arg(L"long", 3, L'.').result().toStdString(), "long");
    EXPECT_EQ(RFormatString(L"%1").arg(L"long", -4, L'.').result().toStdString(), "long");
    EXPECT_EQ(RFormatString(L"%1").arg(L"a", 2, L'\U0001F600').result().toStdString(), "\uFFFDa");
}

TEST(RFormatStringTest, HugeFieldWidthFailsAndAppendsNothing) {
    RFormatString format(L"%1");
    for (const int width : {std::numeric_limits<int>::max(), kLowestInt, kLowestInt + 1}) {
        EXPECT_THROW(format.arg(L"a", width), std::length_error) << width;
        EXPECT_THROW(format.arg(1, width), std::length_error) << width;
    }
    EXPECT_LUM_ERROR(FormatTooFewParameters, "have 0, need 1: format string = \"%1\"",
                     format.result());
}

TEST(RFormatStringTest, OneTemplateIsFilledAgain) {
    RFormatString format(L"<%1>");
    EXPECT_EQ(format.arg(L"a").result().toStdString(), "<a>");
    format.clearParms();
    const TStringCore text = format.arg(L"b");
    EXPECT_EQ(text.toStdString(), "<b>");

    // A new template starts without parameters, and its own markers count.
    format = TStringCore(L"%2-%1");
    EXPECT_EQ(format.formatString().toStdString(), "%2-%1");
    EXPECT_EQ(format.arg(L"a", L"b").result().toStdString(), "b-a");
    const RFormatString copy = format;
    format = L"%1";
    EXPECT_EQ(format.arg(L"z").result().toStdString(), "z");
    EXPECT_EQ(copy.result().toStdString(), "b-a");
}

TEST(RFormatStringTest, NullTemplatesAreEmpty) {
    EXPECT_EQ(RFormatString(static_cast<const char*>(nullptr)).result().toStdString(), "");
    EXPECT_EQ(RFormatString(static_cast<const wchar_t*>(nullptr)).result().toStdString(), "");
}

}  // namespace
}  // namespace lum::core
