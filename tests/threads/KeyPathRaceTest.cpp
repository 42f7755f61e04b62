#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "lum/core/store/KeyPath.h"
#include "tests/support/RunTogether.h"

namespace lum::core {
namespace {

// The cached hash is the one thing in a path that reading changes.
TEST(KeyPathRaceTest, OnePathIsReadByAll) {
    constexpr std::size_t kThreads = 4;
    for (int round = 0; round < 100; ++round) {
        const KeyPath path({L"threads", L"share", L"this"});
        std::vector<uint64> hashes(kThreads);
        test::RunTogether(kThreads, [&](std::size_t thread) {
            const KeyPath copy = path;
            const KeyPath later = path.GetHashValue() != 0 ? path : KeyPath();
            hashes[thread] = copy.GetHashValue() == later.GetHashValue() ? later.GetHashValue() : 0;
        });
        EXPECT_EQ(hashes, std::vector<uint64>(kThreads, path.GetHashValue()));
    }
}

}  // namespace
}  // namespace lum::core
