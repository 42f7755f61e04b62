#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string_view>
#include <vector>

#include "lummetrics/Metrics.h"
#include "tests/support/RunTogether.h"

namespace lummetrics::Metrics {
namespace {

// Sinks come and go while scopes are open: none is called after it is gone, and none stays.
TEST(MetricsRaceTest, SinksAreExchangedUnderOpenScopes) {
    constexpr std::size_t kThreads = 3;
    std::atomic<bool> isOver{false};
    std::atomic<int> failures{0};
    std::atomic<int> heard{0};
    std::vector<std::weak_ptr<const Sink>> sinks;
    lum::test::RunTogether(kThreads, [&](std::size_t thread) {
        if (thread != 0) {
            while (!isOver) {
                const Scope outer("outer");
                const Scope inner("inner");
            }
            return;
        }
        for (int i = 0; i < 300 || (heard < 10 && i < 1000000); ++i) {
            // Freed with the sink, so that a call of a sink that is gone reads freed memory.
            const auto expected = std::make_shared<std::vector<std::string_view>>(
                std::vector<std::string_view>{"outer", "inner"});
            const auto sink =
                std::make_shared<const Sink>([&, expected](const ScopeRecord& record) {
                    ++heard;
                    const bool isFine =
                        (record.name == (*expected)[0] || record.name == (*expected)[1]) &&
                        record.start <= record.end;
                    failures += isFine ? 0 : 1;
                });
            if (i < 300) {
                sinks.push_back(sink);
            }
            SetSink(sink);
        }
        SetSink(nullptr);
        isOver = true;
    });
    EXPECT_EQ(failures, 0);
    EXPECT_GE(heard, 10);
    for (const std::weak_ptr<const Sink>& sink : sinks) {
        EXPECT_TRUE(sink.expired());
    }
}

}  // namespace
}  // namespace lummetrics::Metrics
