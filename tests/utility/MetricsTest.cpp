#include "lummetrics/Metrics.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

#include "lum/core/utility/MetricsFilter.h"

namespace lum::core {
namespace {

using MetricsFilter::Bits;

constexpr unsigned int NumberOf(Bits bits) {
    return static_cast<unsigned int>(bits);
}

static_assert(!MetricsFilter::PassesFilter(Bits::None));
static_assert(MetricsFilter::PassesFilter(Bits::Vtl));

/// Collects the names of scopes while it lives.
class Listener {
public:
    explicit Listener(unsigned int bits = Metrics::kAllBits)
        : m_former(Metrics::SetSink(
              std::make_shared<const Metrics::Sink>([this](const Metrics::ScopeRecord& record) {
                  // What the sink does itself is not heard, or this would not end.
                  const Metrics::Scope own("own");
                  m_mayHearItself |= Metrics::TestBitsAndContext(Metrics::kAllBits);
                  m_names += std::string(m_names.empty() ? "" : " ") + record.name;
                  m_last = record;
              }),
              bits)) {}
    ~Listener() { Metrics::SetSink(m_former); }
    const std::string& GetNames() const { return m_names; }
    const Metrics::ScopeRecord& GetLast() const { return m_last; }
    bool MayHearItself() const { return m_mayHearItself; }

private:
    std::string m_names;
    Metrics::ScopeRecord m_last{};
    bool m_mayHearItself = false;
    std::shared_ptr<const Metrics::Sink> m_former;
};

TEST(MetricsTest, ScopesAreToldFromTheInsideOut) {
    const Listener listener;
    const auto before = Metrics::Clock::now();
    {
        const Metrics::Scope outer("outer");
        {
            const Metrics::Scope inner("inner");
            const Metrics::Scope silent;
        }
        EXPECT_EQ(listener.GetNames(), "inner");
        EXPECT_LE(before, listener.GetLast().start);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    EXPECT_EQ(listener.GetNames(), "inner outer");
    const Metrics::ScopeRecord& last = listener.GetLast();
    EXPECT_GE(last.end - last.start, std::chrono::milliseconds(2));
    EXPECT_LE(last.end, Metrics::Clock::now());
    EXPECT_FALSE(listener.MayHearItself());
}

TEST(MetricsTest, GuardedScopesFollowTheBitsOfTheSink) {
    struct Case {
        unsigned int asked;
        const char* heard;
    };
    const Case cases[] = {
        {0, ""},
        {NumberOf(Bits::Functions), "functions"},
        {NumberOf(Bits::Vtl), "vtl"},
        {Metrics::kAllBits, "functions vtl"},
    };
    for (const Case& c : cases) {
        const Listener listener(c.asked);
        for (const Bits bits : {Bits::None, Bits::Functions, Bits::Vtl}) {
            EXPECT_EQ(Metrics::TestBitsAndContext(NumberOf(bits)), (c.asked & NumberOf(bits)) != 0);
        }
        { const Metrics::Scope scope = MetricsFilter::OpenScope(Bits::None, "none"); }
        { const Metrics::Scope scope = MetricsFilter::OpenScope(Bits::Functions, "functions"); }
        { const Metrics::Scope scope = MetricsFilter::OpenScope(Bits::Vtl, "vtl"); }
        EXPECT_EQ(listener.GetNames(), c.heard) << c.asked;
    }
}

TEST(MetricsTest, AScopeEndsAtTheSinkUnderWhichItBegan) {
    const Listener first;
    {
        const Metrics::Scope begunUnderFirst("first");
        const Listener second;
        { const Metrics::Scope begunUnderSecond("second"); }
        EXPECT_EQ(second.GetNames(), "second");
    }
    EXPECT_EQ(first.GetNames(), "first");
    {
        const auto sink = Metrics::SetSink(std::make_shared<const Metrics::Sink>());
        EXPECT_FALSE(Metrics::TestBitsAndContext(Metrics::kAllBits));
        const Metrics::Scope begunUnderNone("none");
        EXPECT_EQ(Metrics::SetSink(sink), nullptr);
    }
    EXPECT_EQ(first.GetNames(), "first");
}

}  // namespace
}  // namespace lum::core
