#include "lum/core/utility/LumStreamLogger.h"

#include <gtest/gtest.h>

#include <ctime>
#include <iomanip>
#include <sstream>
#include <string>

namespace lum::core {
namespace {

/// Installs a logger while it lives.
class Installation {
public:
    explicit Installation(const LumStreamLogger& logger)
        : m_former(SetLumLogger(logger.GetLumLogger())) {}
    ~Installation() { SetLumLogger(m_former); }
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;

private:
    std::shared_ptr<LumLogger> m_former;
};

TEST(LumStreamLoggerTest, DropsWhatIsBelowTheThreshold) {
    std::ostringstream stream;
    LumStreamLogger logger(static_cast<LumLogLevel>(2), stream);
    const Installation installation(logger);
    for (const int level : {0, 1, 2, 4, 255}) {
        EXPECT_EQ(GetLumLogger().AcceptsLogLevel(static_cast<LumLogLevel>(level)), level >= 2);
    }
    LumLog(LumLogLevel::Notice, L"dropped");
    LumLog(LumLogLevel::Notice, TStringCore(L"dropped"));
    EXPECT_EQ(stream.str(), "");
}

// A stream that notes when it is flushed.
class FlushCounter : public std::stringbuf {
public:
    int GetFlushes() const { return m_flushes; }

private:
    int sync() override {
        ++m_flushes;
        return 0;
    }
    int m_flushes = 0;
};

TEST(LumStreamLoggerTest, WritesTimeAndTextOnALine) {
    FlushCounter buffer;
    std::ostream stream(&buffer);
    LumStreamLogger logger(static_cast<LumLogLevel>(2), stream);
    const Installation installation(logger);
    const std::time_t before = std::time(nullptr);
    LumLog(LumLogLevel::Failure, L"wide \u00e9");
    LumLog(static_cast<LumLogLevel>(2), TStringCore(L"two\nlines"));
    PerformLumDebugReport("f", 51, "(a)", LumError::IllegalElementType, "");
    const std::time_t after = std::time(nullptr);
    EXPECT_EQ(buffer.GetFlushes(), 3);

    const std::string texts[] = {
        "wide \u00e9\n", "two\nlines\n",
        "Validation failed at f:51 -- illegal element type (condition \"(a)\" failed)\n"};
    std::string rest = buffer.str();
    for (const std::string& text : texts) {
        constexpr std::size_t kTimeLength = 19;
        ASSERT_GE(rest.size(), kTimeLength + 4 + text.size());
        std::tm local{};
        std::istringstream time(rest.substr(0, kTimeLength));
        time >> std::get_time(&local, "%Y-%m-%d %H:%M:%S");
        ASSERT_FALSE(time.fail()) << time.str();
        local.tm_isdst = -1;
        const std::time_t told = std::mktime(&local);
        EXPECT_GE(told, before);
        EXPECT_LE(told, after);
        EXPECT_EQ(rest.substr(kTimeLength, 4 + text.size()), " -- " + text);
        rest.erase(0, kTimeLength + 4 + text.size());
    }
    EXPECT_EQ(rest, "");
}

}  // namespace
}  // namespace lum::core
