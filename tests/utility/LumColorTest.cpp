#include "lum/core/utility/LumColor.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

constexpr int kLowestInt = std::numeric_limits<int>::min();

LumColor MakeColor(int red, int green, int blue, int alpha) {
    return LumColor(red, green, blue, alpha);
}

// The layout is that of payloads, and usable where a constant is needed.
static_assert(LumColor{static_cast<unsigned char>(0x12), static_cast<unsigned char>(0x34),
                       static_cast<unsigned char>(0x56), static_cast<unsigned char>(0x78)}
                  .AsInt32() == 0x78123456);
static_assert(LumColor().AsInt32() == 0);

TEST(LumColorTest, ChannelsOfThePackedValue) {
    const LumColor color(0x12, 0x34, 0x56, 0xf8);
    EXPECT_EQ(color.AsInt32(), static_cast<int>(0xf8123456));
    EXPECT_EQ(color.GetR(), 0x12);
    EXPECT_EQ(color.GetG(), 0x34);
    EXPECT_EQ(color.GetB(), 0x56);
    EXPECT_EQ(color.GetA(), 0xf8);
    for (const int packed : {0, 1, -1, 0x7fffffff, kLowestInt, 0x01020304}) {
        EXPECT_EQ(LumColor::FromInt32(packed).AsInt32(), packed);
        LumColor changed = color;
        changed.SetValue(packed);
        EXPECT_EQ(changed, LumColor::FromInt32(packed));
    }
}

TEST(LumColorTest, SettersReplaceOneChannel) {
    LumColor color(1, 2, 3, 4);
    color.SetR(255);
    EXPECT_EQ(color, MakeColor(255, 2, 3, 4));
    color.SetG(254);
    EXPECT_EQ(color, MakeColor(255, 254, 3, 4));
    color.SetB(253);
    EXPECT_EQ(color, MakeColor(255, 254, 253, 4));
    color.SetA(252);
    EXPECT_EQ(color, MakeColor(255, 254, 253, 252));
    color.SetR(0);
    color.SetA(0);
    EXPECT_EQ(color, MakeColor(0, 254, 253, 0));
}

TEST(LumColorTest, ChannelsOutOfRangeAreRefused) {
    const char* const details = "Must be between 0 and 255";
    const char* const condition = "(static_cast<unsigned int>(channel) <= 255)";
    for (const int bad : {256, -1, kLowestInt, std::numeric_limits<int>::max()}) {
        SCOPED_TRACE(bad);
        EXPECT_LUM_REPORT(InvalidRed, details, condition, LumColor(bad, 0, 0, 0));
        EXPECT_LUM_REPORT(InvalidGreen, details, condition, LumColor(255, bad, 0, 0));
        EXPECT_LUM_REPORT(InvalidBlue, details, condition, LumColor(0, 255, bad, 0));
        EXPECT_LUM_REPORT(InvalidAlpha, details, condition, LumColor(0, 0, 255, bad));

        LumColor color(1, 2, 3, 4);
        EXPECT_LUM_REPORT(InvalidRed, details, condition, color.SetR(bad));
        EXPECT_LUM_REPORT(InvalidGreen, details, condition, color.SetG(bad));
        EXPECT_LUM_REPORT(InvalidBlue, details, condition, color.SetB(bad));
        EXPECT_LUM_REPORT(InvalidAlpha, details, condition, color.SetA(bad));
        EXPECT_EQ(color, MakeColor(1, 2, 3, 4));
    }
    // The first bad channel decides.
    EXPECT_LUM_ERROR(InvalidRed, details, LumColor(-1, -1, -1, -1));
    EXPECT_LUM_ERROR(InvalidGreen, details, LumColor(0, -1, -1, -1));
    EXPECT_LUM_ERROR(InvalidBlue, details, LumColor(0, 0, -1, -1));
}

// Strictly ascending: the sign bit of the packed value is the highest bit of alpha.
TEST(LumColorTest, OrdersBySignedPackedValue) {
    const LumColor ascending[] = {
        MakeColor(0, 0, 0, 128),       MakeColor(0, 0, 1, 128), MakeColor(0, 0, 0, 255),
        MakeColor(255, 255, 255, 255), MakeColor(0, 0, 0, 0),   MakeColor(0, 0, 0, 1),
        MakeColor(0, 255, 0, 1),       MakeColor(1, 0, 0, 1),   MakeColor(0, 0, 0, 127)};
    for (const LumColor& left : ascending) {
        for (const LumColor& right : ascending) {
            EXPECT_EQ(left < right, &left < &right);
            EXPECT_EQ(left > right, &left > &right);
            EXPECT_EQ(left == right, &left == &right);
        }
    }
}

TEST(LumColorTest, TextIsAlphaFirst) {
    EXPECT_EQ(MakeColor(255, 0, 0, 255).ToString().toStdString(), "ffff0000");
    EXPECT_EQ(MakeColor(0x0a, 0xb0, 0x0c, 0x0d).ToString().toStdString(), "0d0ab00c");
    EXPECT_EQ(LumColor().ToString().toStdString(), "00000000");
}

TEST(LumColorTest, HashesThePackedBytes) {
    EXPECT_EQ(std::hash<LumColor>()(MakeColor(255, 0, 0, 255)), 0x4a3d077f9b55736b);
}

}  // namespace
}  // namespace lum::core
