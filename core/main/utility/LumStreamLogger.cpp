#include "lum/core/utility/LumStreamLogger.h"

#include <time.h>

#include <ctime>
#include <iomanip>
#include <ostream>

namespace lum::core {

LumStreamLogger::LumStreamLogger(LumLogLevel threshold, std::ostream& stream)
    : m_threshold(threshold),
      m_stream(stream),
      m_logger(std::make_shared<LumLogger>(
          [this](LumLogLevel level, const wchar_t* message) { LogRChar(level, message); },
          [this](LumLogLevel level, const TStringCore& message) { LogRString(level, message); },
          [this](LumLogLevel level) { return AcceptsLogLevel(level); })) {}

void LumStreamLogger::LogRString(LumLogLevel level, const TStringCore& message) {
    if (!AcceptsLogLevel(level)) {
        return;
    }
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    // The plain localtime shares its result between threads.
    if (localtime_r(&now, &local) != nullptr) {
        m_stream << std::put_time(&local, "%Y-%m-%d %H:%M:%S");
    } else {
        m_stream << "(error retrieving time)";
    }
    m_stream << " -- " << message.toStdString() << std::endl;
}

void LumStreamLogger::LogRChar(LumLogLevel level, const wchar_t* message) {
    LogRString(level, TStringCore(message));
}

}  // namespace lum::core
