#include "lum/core/utility/Fnv.h"

#include <gtest/gtest.h>

namespace lum::core {
namespace {

// A change of the bytes or of their order would change every hash of the library.
TEST(FnvTest, HashesBytesLeastSignificantFirst) {
    EXPECT_EQ(FnvHash(static_cast<unsigned char>('a')), 0xaf63dc4c8601ec8c);  // Published: "a".
    EXPECT_EQ(FnvHash(static_cast<unsigned short>('a' | 'b' << 8)),           // Published: "ab".
              0x089c4407b545986a);
    EXPECT_EQ(FnvHash(5u), 0x2d401a55eec16520);
    EXPECT_EQ(FnvHash(0x0123456789abcdefULL), 0x37eb3f3347761c55);
}

TEST(FnvTest, CombinesInOrder) {
    EXPECT_EQ(HashCombine(0, 0), 0x9e3779b9u);
    EXPECT_EQ(HashCombine(0x0123456789abcdef, 0xfedcba9876543210), 0x46d5a0b2e841d6eb);
}

}  // namespace
}  // namespace lum::core
