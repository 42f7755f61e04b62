#include "lum/core/utility/LumLog.h"

#include <utility>

#include "lum/core/utility/LumException.h"

namespace lum::core {
namespace {

std::shared_ptr<LumLogger> MakeSilentLogger() {
    return std::make_shared<LumLogger>(LumLogger::WideSink(), LumLogger::StringSink(),
                                       LumLogger::LevelFilter());
}

/// The holder is never destroyed: a value that dies while the process ends may still log.
std::shared_ptr<LumLogger>& LoggerHolder() {
    static auto& s_holder = *new std::shared_ptr<LumLogger>(MakeSilentLogger());
    return s_holder;
}

}  // namespace

LumLogger::LumLogger(WideSink&& wideSink, StringSink&& stringSink, LevelFilter&& levelFilter)
    : m_wideSink(std::move(wideSink)),
      m_stringSink(std::move(stringSink)),
      m_levelFilter(std::move(levelFilter)) {}

void LumLogger::Log(LumLogLevel level, const wchar_t* message) const {
    if (m_wideSink) {
        m_wideSink(level, message);
    }
}

void LumLogger::Log(LumLogLevel level, const TStringCore& message) const {
    if (m_stringSink) {
        m_stringSink(level, message);
    }
}

bool LumLogger::AcceptsLogLevel(LumLogLevel level) const {
    return m_levelFilter && m_levelFilter(level);
}

LumLogger& GetLumLogger() {
    return *LoggerHolder();
}

std::shared_ptr<LumLogger> SetLumLogger(std::shared_ptr<LumLogger> logger) {
    if (!logger) {
        logger = MakeSilentLogger();
    }
    return std::exchange(LoggerHolder(), std::move(logger));
}

void LumLog(LumLogLevel level, const TStringCore& message) {
    GetLumLogger().Log(level, message);
}
void LumLog(LumLogLevel level, const wchar_t* message) {
    GetLumLogger().Log(level, message);
}

void LumSetDebugReportMode(LumDebugReportMode /*mode*/) {}

void PerformLumDebugReport(const std::string& file, int line, const std::string& condition,
                           LumError error, const std::string& message) {
    const std::string text = ErrorToString(error).toStdString();
    std::string body = message.empty() ? text : message;
    if (!condition.empty()) {
        body += " (condition \"" + condition + "\" failed)";
        body += message.empty() ? "" : " ";
    }
    if (!message.empty()) {
        body += "(" + text + ")";
    }
    LumLog(LumLogLevel::Failure, TStringCore::fromUtf8("Validation failed at " + file + ":" +
                                                       std::to_string(line) + " -- " + body));
}

}  // namespace lum::core
