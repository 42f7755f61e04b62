#include "lumsys/Hash.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "lumsys/TStringCore.h"
#include "tests/support/Random.h"

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

/// The same hash, byte by byte.
unsigned int SlowHash(const std::vector<unsigned char>& bytes, unsigned int seed) {
    const int shifts[] = {13, 8, 13, 12, 16, 5, 3, 10, 15};
    std::uint32_t words[3] = {0x9e3779b9, 0x9e3779b9, seed};
    const auto mix = [&] {
        for (int i = 0; i < 9; ++i) {
            const std::uint32_t last = words[(i + 2) % 3];
            words[i % 3] -= words[(i + 1) % 3] + last;
            words[i % 3] ^= i % 3 == 1 ? last << shifts[i] : last >> shifts[i];
        }
    };
    const std::size_t inBlocks = bytes.size() / 12 * 12;
    for (std::size_t i = 0; i < inBlocks; ++i) {
        words[i % 12 / 4] += std::uint32_t{bytes[i]} << i % 4 * 8;
        if (i % 12 == 11) {
            mix();
        }
    }
    words[2] += static_cast<std::uint32_t>(bytes.size());
    for (std::size_t i = inBlocks; i < bytes.size(); ++i) {
        const std::size_t at = i % 12 >= 8 ? i % 12 + 1 : i % 12;  // The length has the ninth byte.
        words[at / 4] += std::uint32_t{bytes[i]} << at % 4 * 8;
    }
    mix();
    return words[2];
}

TEST(HashTest, AgreesWithTheByteWiseForm) {
    lum::test::Random random;
    for (std::size_t length = 0; length < 60; ++length) {
        std::vector<unsigned char> bytes(length);
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(random.Bits());
        }
        const auto seed = static_cast<unsigned int>(random.Bits());
        EXPECT_EQ(Hash(bytes.data(), length, seed), SlowHash(bytes, seed))
            << length << " bytes, " << random.Trace();
    }
}

}  // namespace
}  // namespace lumsys
