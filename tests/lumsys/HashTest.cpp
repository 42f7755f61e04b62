#include "lumsys/Hash.h"

#include <gtest/gtest.h>

#include "lumsys/TStringCore.h"

namespace lumsys {
namespace {

TEST(HashTest, KnownTexts) {
    struct Case {
        const wchar_t* text;
        unsigned int expected;
    };
    const Case cases[] = {{L"", 0x1153f4be},
                          {L"a", 0x8b7fb86f},
                          {L"ROOT", 0x2f6fd662},
                          {L"Hello, world", 0x3d4b0af7},
                          {L"abcdefghijklmnopqrstuvwxyz", 0x72ada8da}};
    for (const Case& c : cases) {
        EXPECT_EQ(std::hash<TStringCore>()(c.text), c.expected) << TStringCore(c.text);
    }
    EXPECT_EQ(Hash(nullptr, 0, 0), 0xbd49d10du);
}

// The bytes 0xE0, 0xE1, ... in every kind of last block, the values from another implementation.
TEST(HashTest, LastBlocks) {
    unsigned char bytes[24];
    for (unsigned char i = 0; i < sizeof(bytes); ++i) {
        bytes[i] = static_cast<unsigned char>(0xE0 + i);
    }
    struct Case {
        std::size_t length;
        unsigned int expected;
    };
    const Case cases[] = {{1, 0x1629b17a},  {4, 0x8e7bd1df},  {5, 0x2573a111},  {8, 0xf08960ca},
                          {9, 0x6577676f},  {10, 0x195c1190}, {11, 0x65b630d5}, {12, 0xd07f142a},
                          {13, 0x6dca9354}, {23, 0x827f190a}, {24, 0xdc550cd7}};
    for (const Case& c : cases) {
        EXPECT_EQ(Hash(bytes, c.length, 7), c.expected) << c.length << " bytes";
    }
}

}  // namespace
}  // namespace lumsys
