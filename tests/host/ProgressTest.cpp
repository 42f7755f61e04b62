#include "Progress.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <sstream>
#include <string>

namespace lumhost::test {
namespace {

std::string Bar(unsigned filled, const std::string& percent) {
    return "\rReading [" + std::string(filled, '#') + std::string(40 - filled, '.') + "] " +
           percent + "%";
}

class ProgressTest : public testing::Test {
protected:
    std::unique_ptr<Progress> Make(bool isTerminal) {
        return std::make_unique<Progress>(m_out, isTerminal, "Reading", [this] { return m_now; });
    }
    // What is written when so many milliseconds have passed.
    std::string UpdateAfter(int wait, unsigned long long done, unsigned long long all) {
        m_now += std::chrono::milliseconds(wait);
        m_out.str("");
        m_progress->Update(done, all);
        return m_out.str();
    }

    std::chrono::steady_clock::time_point m_now{};
    std::ostringstream m_out;
    std::unique_ptr<Progress> m_progress = Make(/*isTerminal=*/true);
};

TEST_F(ProgressTest, DrawsOnATerminalAndWipesTheBar) {
    EXPECT_EQ(UpdateAfter(499, 10, 100), "") << "short work shows nothing";
    EXPECT_EQ(UpdateAfter(1, 50, 100), Bar(20, " 50"));
    EXPECT_EQ(UpdateAfter(99, 60, 100), "") << "drawn more than ten times a second";
    EXPECT_EQ(UpdateAfter(1, 100, 100), Bar(40, "100"));
    EXPECT_EQ(UpdateAfter(100, 150, 100), Bar(40, "100"));
    EXPECT_EQ(UpdateAfter(100, 5, 0), Bar(0, "  0"));
    m_out.str("");
    m_progress = nullptr;
    EXPECT_EQ(m_out.str(), '\r' + std::string(Bar(0, "  0").size() - 1, ' ') + '\r');
}

TEST_F(ProgressTest, WritesNothingElsewhere) {
    m_progress = Make(/*isTerminal=*/false);
    EXPECT_EQ(UpdateAfter(3'600'000, 1, 2), "");
    m_progress = Make(/*isTerminal=*/true);
    m_progress = nullptr;  // Nothing was drawn.
    EXPECT_EQ(m_out.str(), "");
}

}  // namespace
}  // namespace lumhost::test
