#include "lum/core/utility/LumLog.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

TEST(LumLogTest, ReportLines) {
    struct Case {
        const char* condition;
        const char* message;
        const char* expected;
    };
    const Case cases[] = {
        {"", "", "illegal element type"},
        {"(a) != nullptr", "", "illegal element type (condition \"(a) != nullptr\" failed)"},
        {"", "the message", "the message(illegal element type)"},
        {"(a)", "the message", "the message (condition \"(a)\" failed) (illegal element type)"},
    };
    LumSetDebugReportMode(LumDebugReportMode::Log);
    for (const Case& c : cases) {
        const test::LogCapture capture;
        PerformLumDebugReport("f", 51, c.condition, LumError::IllegalElementType, c.message);
        ASSERT_EQ(capture.GetLines().size(), 1u);
        EXPECT_EQ(capture.GetLines()[0].text,
                  std::string("Validation failed at f:51 -- ") + c.expected);
        EXPECT_EQ(static_cast<int>(capture.GetLines()[0].level), 4);
    }
}

TEST(LumLogTest, EachSinkGetsItsOwn) {
    std::string seen;
    const auto logger = std::make_shared<LumLogger>(
        [&](LumLogLevel level, const wchar_t* text) {
            seen += "w" + std::to_string(int{static_cast<unsigned char>(level)}) +
                    TStringCore(text).toStdString();
        },
        [&](LumLogLevel level, const TStringCore& text) {
            seen +=
                "s" + std::to_string(int{static_cast<unsigned char>(level)}) + text.toStdString();
        },
        [](LumLogLevel level) { return level == LumLogLevel::Notice; });
    LumLogger* const before = &GetLumLogger();
    const std::shared_ptr<LumLogger> former = SetLumLogger(logger);
    EXPECT_EQ(former.get(), before);
    EXPECT_EQ(&GetLumLogger(), logger.get());
    LumLog(LumLogLevel::Diagnostic, L"a ");  // The filter is not asked.
    LumLog(static_cast<LumLogLevel>(200), TStringCore(L"b"));
    EXPECT_EQ(seen, "w0a s200b");
    EXPECT_TRUE(GetLumLogger().AcceptsLogLevel(LumLogLevel::Notice));
    EXPECT_FALSE(GetLumLogger().AcceptsLogLevel(LumLogLevel::Failure));
    EXPECT_EQ(SetLumLogger(former), logger);
}

TEST(LumLogTest, AnEmptyLoggerIsReplacedByASilentOne) {
    const std::shared_ptr<LumLogger> former = SetLumLogger(nullptr);
    LumLog(LumLogLevel::Failure, L"nobody hears");
    LumLog(LumLogLevel::Failure, TStringCore(L"nobody hears"));
    EXPECT_FALSE(GetLumLogger().AcceptsLogLevel(LumLogLevel::Failure));
    EXPECT_NE(SetLumLogger(former), nullptr);
}

TEST(LumLogTest, WhatASinkThrowsPassesThrough) {
    const std::shared_ptr<LumLogger> former = SetLumLogger(std::make_shared<LumLogger>(
        LumLogger::WideSink(),
        [](LumLogLevel, const TStringCore&) { throw std::runtime_error("sink"); },
        LumLogger::LevelFilter()));
    EXPECT_THROW(PerformLumDebugReport("f", 1, "", LumError::InvalidKey, ""), std::runtime_error);
    SetLumLogger(former);
}

}  // namespace
}  // namespace lum::core
