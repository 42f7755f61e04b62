#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "lum/core/utility/LumException.h"
#include "lum/core/utility/LumLog.h"

namespace lum::test {

/// Collects what is logged while it lives, then puts the former logger back.
class LogCapture {
public:
    struct Line {
        core::LumLogLevel level;
        std::string text;
    };

    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const std::vector<Line>& GetLines() const { return *m_lines; }

private:
    std::shared_ptr<std::vector<Line>> m_lines;
    std::shared_ptr<core::LumLogger> m_former;
};

/// What EXPECT_LUM_ERROR and its kin ask of a failure.
struct ExpectedFailure {
    core::LumError error;
    std::string details;         // Behind the code's message; may be empty.
    bool isReported = false;     // Then the log line and the context are looked at.
    std::string condition = {};  // Of the report; empty for an unconditional failure.
    bool isLogic = false;        // LumLogicException instead of LumRuntimeException.
    bool isPlain = false;        // Then there may be neither a report nor a context.
};

testing::AssertionResult FailsAs(const ExpectedFailure& expected,
                                 const std::function<void()>& statement);
testing::AssertionResult FailsForAMissingKey(const std::function<void()>& statement);

}  // namespace lum::test

/// The statement throws LumRuntimeException with the code and, behind its message, the details.
#define EXPECT_LUM_ERROR(code, details, ...)                                 \
    EXPECT_TRUE(::lum::test::FailsAs({::lum::core::LumError::code, details}, \
                                     [&] { static_cast<void>(__VA_ARGS__); }))
/// As above, with neither a report in the log nor a context.
#define EXPECT_LUM_PLAIN_ERROR(code, details, ...)                                           \
    EXPECT_TRUE(                                                                             \
        ::lum::test::FailsAs({::lum::core::LumError::code, details, false, "", false, true}, \
                             [&] { static_cast<void>(__VA_ARGS__); }))
/// As EXPECT_LUM_ERROR, with one report in the log that names the condition, and a context.
#define EXPECT_LUM_REPORT(code, details, condition, ...)                                      \
    EXPECT_TRUE(::lum::test::FailsAs({::lum::core::LumError::code, details, true, condition}, \
                                     [&] { static_cast<void>(__VA_ARGS__); }))
/// As EXPECT_LUM_REPORT, with LumLogicException.
#define EXPECT_LUM_LOGIC_REPORT(code, details, condition, ...)                              \
    EXPECT_TRUE(                                                                            \
        ::lum::test::FailsAs({::lum::core::LumError::code, details, true, condition, true}, \
                             [&] { static_cast<void>(__VA_ARGS__); }))
/// The statement throws std::out_of_range as the standard maps behind some values do.
#define EXPECT_NO_SUCH_KEY(...) \
    EXPECT_TRUE(::lum::test::FailsForAMissingKey([&] { static_cast<void>(__VA_ARGS__); }))
