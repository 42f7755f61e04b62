#include "tests/support/LumErrorMatchers.h"

#include <stdexcept>
#include <utility>

namespace lum::test {
namespace {

testing::AssertionResult CheckReport(const ExpectedFailure& expected,
                                     const std::vector<LogCapture::Line>& lines,
                                     const std::string& context) {
    const std::string source = "Source: ";
    std::vector<std::string> expectedReports;
    if (expected.isReported) {
        const bool isNamed = context.starts_with(source + "core/");
        const std::string place = context.substr(0, context.find('\n'));
        const std::string condition =
            expected.condition.empty() ? "" : " (condition \"" + expected.condition + "\" failed)";
        expectedReports.push_back(
            "Validation failed at " + (isNamed ? place.substr(source.size()) : "a place in core/") +
            " -- " + core::ErrorToString(expected.error).toStdString() + condition);
    }
    // Other levels may carry diagnostics of their own; a failure is reported once.
    std::vector<std::string> reports;
    for (const LogCapture::Line& line : lines) {
        if (line.level == core::LumLogLevel::Failure) {
            reports.push_back(line.text);
        }
    }
    if (reports == expectedReports && reports.empty() == context.empty()) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << "context is \"" << context << "\", reported was " << testing::PrintToString(reports)
           << ", expected " << testing::PrintToString(expectedReports);
}

}  // namespace

LogCapture::LogCapture() : m_lines(std::make_shared<std::vector<Line>>()) {
    m_former = core::SetLumLogger(std::make_shared<core::LumLogger>(
        core::LumLogger::WideSink(),
        [lines = m_lines](core::LumLogLevel level, const core::TStringCore& text) {
            lines->push_back({level, text.toStdString()});
        },
        [](core::LumLogLevel) { return true; }));
}

LogCapture::~LogCapture() {
    core::SetLumLogger(std::move(m_former));
}

testing::AssertionResult FailsAs(const ExpectedFailure& expected,
                                 const std::function<void()>& statement) {
    const LogCapture capture;
    try {
        statement();
    } catch (const core::LumException& e) {
        const bool isLogic = dynamic_cast<const core::LumLogicException*>(&e) != nullptr;
        std::string details = core::ErrorToString(expected.error).toStdString();
        if (!expected.details.empty()) {
            details += "\n" + expected.details;
        }
        if (e.GetError() != expected.error || e.GetDetails().toStdString() != details ||
            isLogic != expected.isLogic) {
            return testing::AssertionFailure()
                   << "failed with " << (isLogic ? "logic error " : "")
                   << static_cast<int>(e.GetError()) << " \"" << e.what() << "\", expected "
                   << (expected.isLogic ? "logic error " : "") << static_cast<int>(expected.error)
                   << " \"" << details << "\"";
        }
        return expected.isReported || expected.isPlain
                   ? CheckReport(expected, capture.GetLines(), e.GetContext().toStdString())
                   : testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "nothing was thrown";
}

testing::AssertionResult FailsForAMissingKey(const std::function<void()>& statement) {
    try {
        statement();
    } catch (const std::out_of_range& e) {
        const bool isExact = e.what() == std::string("invalid unordered_map<K, T> key");
        return (isExact ? testing::AssertionSuccess() : testing::AssertionFailure()) << e.what();
    }
    return testing::AssertionFailure() << "nothing was thrown";
}

}  // namespace lum::test
