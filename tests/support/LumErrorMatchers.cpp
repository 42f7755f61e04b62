#include "tests/support/LumErrorMatchers.h"

#include <stdexcept>
#include <utility>

namespace lum::test {
namespace {

std::string ExpectedReport(const ExpectedFailure& expected) {
    std::string body = core::ErrorToString(expected.error).toStdString();
    if (!expected.condition.empty()) {
        body += " (condition \"" + expected.condition + "\" failed)";
    }
    return body;
}

testing::AssertionResult CheckReport(const ExpectedFailure& expected,
                                     const std::vector<LogCapture::Line>& lines,
                                     const std::string& context) {
    if (!expected.isReported && !expected.isPlain) {
        return testing::AssertionSuccess();
    }
    // Other levels may carry diagnostics of their own; a failure is reported once.
    std::vector<std::string> reports;
    for (const LogCapture::Line& line : lines) {
        if (line.level == core::LumLogLevel::Failure) {
            reports.push_back(line.text);
        }
    }
    if (reports.size() != (expected.isPlain ? 0 : 1)) {
        return testing::AssertionFailure() << reports.size() << " reports in the log";
    }
    if (expected.isPlain) {
        return context.empty() ? testing::AssertionSuccess()
                               : testing::AssertionFailure() << "context is \"" << context << '"';
    }
    const std::string source = "Source: ";
    if (context.rfind(source + "core/", 0) != 0) {
        return testing::AssertionFailure() << "context is \"" << context << "\"";
    }
    const std::string report = "Validation failed at " +
                               context.substr(source.size(), context.find('\n') - source.size()) +
                               " -- " + ExpectedReport(expected);
    if (reports[0] != report) {
        return testing::AssertionFailure()
               << "report is  \"" << reports[0] << "\"\nexpected: \"" << report << "\"";
    }
    return testing::AssertionSuccess();
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
        return CheckReport(expected, capture.GetLines(), e.GetContext().toStdString());
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
