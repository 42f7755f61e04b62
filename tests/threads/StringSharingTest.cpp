#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <vector>

#include "lumsys/Hash.h"
#include "lumsys/TStringCore.h"
#include "tests/support/RunTogether.h"

namespace lumsys {
namespace {

constexpr std::size_t kThreads = 4;

// Each round the threads share one block, hash it for the first time, change their copies and let
// go of them; the last one frees it.
TEST(StringSharingTest, CopiesOfOneTextAreIndependent) {
    std::atomic<std::size_t> failures{0};
    for (int round = 0; round < 300; ++round) {
        TStringCore text(40, static_cast<char16_t>(u'a' + round % 26));
        text.reserve(200);
        const std::u16string expected(text.view());
        const std::size_t hash = Hash(expected.data(), expected.size() * 2, 0xDEADBEEF);
        std::vector<TStringCore> copies(kThreads, text);
        text.clear();
        lum::test::RunTogether(kThreads, [&](std::size_t thread) {
            const TStringCore held = copies[thread];
            TStringCore changed = std::move(copies[thread]);
            failures += changed.hash() == hash ? 0 : 1;
            for (int i = 0; i < 20; ++i) {
                changed += static_cast<char16_t>(u'0' + thread);
            }
            failures += held.view() == expected && held.hash() == hash ? 0 : 1;
            failures +=
                changed.left(40) == held &&
                        changed.mid(40) == TStringCore(20, static_cast<char16_t>(u'0' + thread))
                    ? 0
                    : 1;
        });
    }
    EXPECT_EQ(failures, 0u);
}

// A text that is alone again is written in place, also where another thread had the other copy.
TEST(StringSharingTest, TheLastOwnerWritesInPlace) {
    for (int round = 0; round < 300; ++round) {
        TStringCore texts[2] = {TStringCore(40, u'x'), {}};
        texts[0].reserve(100);
        texts[1] = texts[0];
        lum::test::RunTogether(2, [&](std::size_t thread) {
            if (thread == 0 && texts[0].view().back() != u'x') {
                ADD_FAILURE();
            }
            TStringCore mine = std::move(texts[thread]);
            mine += thread == 0 ? u'0' : u'1';
            if (mine.view().back() != (thread == 0 ? u'0' : u'1')) {
                ADD_FAILURE();
            }
        });
    }
}

}  // namespace
}  // namespace lumsys
