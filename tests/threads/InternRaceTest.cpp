#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <vector>

#include "lum/core/utility/RInternString.h"
#include "tests/support/RunTogether.h"

namespace lum::core {
namespace {

constexpr std::size_t kThreads = 4;

// Enough names to make the index of the table grow several times in each test.
constexpr std::size_t kNames = 6000;

TStringCore NameOf(const wchar_t* group, std::size_t i) {
    return TStringCore(group) + TStringCore::number(static_cast<unsigned long long>(i));
}

TEST(InternRaceTest, OneIdForOneText) {
    std::vector<std::array<RInternString, kThreads>> names(kNames);
    const uint64 before = RInternString(L"before the race").GetStringId();
    test::RunTogether(kThreads, [&](std::size_t thread) {
        for (std::size_t i = 0; i < kNames; ++i) {
            // Neighbouring threads go through the names in opposite orders.
            const std::size_t at = thread % 2 == 0 ? i : kNames - 1 - i;
            names[at][thread] = RInternString(NameOf(L"raced ", at));
        }
    });
    std::vector<bool> seen(kNames);
    for (std::size_t i = 0; i < kNames; ++i) {
        for (const RInternString& name : names[i]) {
            ASSERT_EQ(name, names[i][0]);
            ASSERT_EQ(name.GetValue(), NameOf(L"raced ", i));
        }
        // Dense: each id behind the one before the race is given out once.
        const uint64 order = names[i][0].GetStringId() - before - 1;
        ASSERT_LT(order, kNames);
        ASSERT_FALSE(seen[order]);
        seen[order] = true;
    }
    EXPECT_EQ(RInternString(L"after the race").GetStringId(), before + kNames + 1);
}

TEST(InternRaceTest, TextsAreReadWhileOthersIntern) {
    const RInternString known(L"a name that is known, and longer than its handle");
    const uint64 before = RInternString(L"before reading").GetStringId();
    std::atomic<uint64> published{before};
    std::atomic<bool> isOver{false};
    std::atomic<std::size_t> failures{0};
    test::RunTogether(kThreads, [&](std::size_t thread) {
        if (thread == 0) {
            for (std::size_t i = 0; i < kNames; ++i) {
                published.store(
                    RInternString(NameOf(L"a name that is read, number ", i)).GetStringId(),
                    std::memory_order_relaxed);
            }
            isOver = true;
            return;
        }
        while (!isOver) {
            const uint64 id = published.load(std::memory_order_relaxed);
            if (id != before &&
                RInternString(id).GetValue() != NameOf(L"a name that is read, number ",
                                                       static_cast<std::size_t>(id - before - 1))) {
                ++failures;
            }
            if (RInternString(L"a name that is known, and longer than its handle") != known) {
                ++failures;
            }
        }
    });
    EXPECT_EQ(failures, 0u);
}

}  // namespace
}  // namespace lum::core
