#include "Progress.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace lumhost::test {
namespace {

using std::chrono::milliseconds;

// A clock that is set by hand.
struct HandClock {
    std::chrono::steady_clock::time_point now{};

    Progress::Clock Get() {
        return [this] { return now; };
    }
};

std::string Bar(unsigned filled, const std::string& percent) {
    return "\rReading [" + std::string(filled, '#') + std::string(40 - filled, '.') + "] " +
           percent + "%";
}

TEST(ProgressTest, DrawsOnATerminalAndWipesTheBar) {
    std::ostringstream out;
    HandClock clock;
    {
        Progress progress(out, true, "Reading", clock.Get());
        clock.now += milliseconds(499);
        progress.Update(10, 100);
        EXPECT_EQ(out.str(), "") << "short work shows nothing";

        clock.now += milliseconds(1);
        progress.Update(50, 100);
        EXPECT_EQ(out.str(), Bar(20, " 50"));
        clock.now += milliseconds(99);
        progress.Update(60, 100);
        EXPECT_EQ(out.str(), Bar(20, " 50")) << "drawn more than ten times a second";

        clock.now += milliseconds(1);
        progress.Update(100, 100);
        clock.now += milliseconds(100);
        progress.Update(150, 100);
        clock.now += milliseconds(100);
        progress.Update(5, 0);
        EXPECT_EQ(out.str(), Bar(20, " 50") + Bar(40, "100") + Bar(40, "100") + Bar(0, "  0"));
        out.str("");
    }
    EXPECT_EQ(out.str(), '\r' + std::string(Bar(0, "  0").size() - 1, ' ') + '\r');
}

TEST(ProgressTest, WritesNothingElsewhere) {
    std::ostringstream out;
    HandClock clock;
    {
        Progress progress(out, false, "Reading", clock.Get());
        clock.now += std::chrono::hours(1);
        progress.Update(1, 2);
    }
    { const Progress unused(out, true, "Reading", clock.Get()); }
    EXPECT_EQ(out.str(), "");
}

}  // namespace
}  // namespace lumhost::test
