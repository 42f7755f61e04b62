// Sets whose table is made while many threads ask.
#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <vector>

#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/RunTogether.h"

namespace lum::core {
namespace {

TEST(SetThreadsTest, ColumnsAreLookedUpTogether) {
    constexpr std::size_t kThreadCount = 4;
    constexpr unsigned kCount = 1000;
    auto values = std::make_unique<SetContainer<unsigned>>();
    for (unsigned value = 0; value < kCount; value += 2) {
        values->insert(value);
    }
    const SV value = factory::MakeSet<unsigned>(IntType::Get32(), std::move(values), nullptr);
    const auto& set = value->AsTypedSet<unsigned>();
    std::vector<unsigned> wanted(kCount);
    std::iota(wanted.begin(), wanted.end(), 0u);
    std::vector<int> counts(kThreadCount);
    test::RunTogether(kThreadCount, [&](std::size_t thread) {
        std::vector<unsigned char> out(kCount);
        for (int round = 0; round < 4; ++round) {
            set.ContainsEach(wanted, out);
            counts[thread] += std::accumulate(out.begin(), out.end(), 0);
        }
    });
    EXPECT_EQ(counts, std::vector<int>(kThreadCount, 4 * kCount / 2));
}

}  // namespace
}  // namespace lum::core
