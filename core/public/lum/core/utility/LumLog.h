#pragma once

#include <functional>
#include <memory>
#include <string>

#include "lum/core/Export.h"
#include "lum/core/utility/LumError.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

/// How severe a message is; higher is more severe. Any number of 8 bits is a level: these are the
/// ones that the library itself uses.
enum class LumLogLevel : unsigned char { Diagnostic = 0, Notice = 1, Failure = 4 };

/// Where the library's messages go: three functions of the host, each of which may be empty.
///
/// Threads: a sink is called on the thread that logs; it guards what it shares. Sinks are called
///   with no lock of the library held.
/// Errors: what a sink throws passes through the operation that logged.
class LUM_CORE_API LumLogger {
public:
    using WideSink = std::function<void(LumLogLevel, const wchar_t*)>;
    using StringSink = std::function<void(LumLogLevel, const TStringCore&)>;
    using LevelFilter = std::function<bool(LumLogLevel)>;

    LumLogger(WideSink&& wideSink, StringSink&& stringSink, LevelFilter&& levelFilter);

    /// Hands the message to the sink of its kind, if there is one. The filter is not asked.
    void Log(LumLogLevel level, const wchar_t* message) const;
    void Log(LumLogLevel level, const TStringCore& message) const;
    /// The filter's answer; false without one.
    bool AcceptsLogLevel(LumLogLevel level) const;

private:
    WideSink m_wideSink;
    StringSink m_stringSink;
    LevelFilter m_levelFilter;
};

/// The global logger. At load it has no sinks, so that messages are discarded.
LUM_CORE_API LumLogger& GetLumLogger();
/// Installs `logger` and gives back the one before it; an empty pointer installs a logger without
/// sinks. A start-up operation: not synchronised with threads that log.
LUM_CORE_API std::shared_ptr<LumLogger> SetLumLogger(std::shared_ptr<LumLogger> logger);
/// Logs through the global logger.
LUM_CORE_API void LumLog(LumLogLevel level, const TStringCore& message);
LUM_CORE_API void LumLog(LumLogLevel level, const wchar_t* message);

/// Accepted by LumSetDebugReportMode.
enum class LumDebugReportMode : int { Log };

/// Has no effect: reports always go to the log.
LUM_CORE_API void LumSetDebugReportMode(LumDebugReportMode mode);

/// Logs, at level Failure, that a check failed: "Validation failed at FILE:LINE -- BODY", the body
/// being `message`, the condition where there is one, and the code's text. Does not throw.
LUM_CORE_API void PerformLumDebugReport(const std::string& file, int line,
                                        const std::string& condition, LumError error,
                                        const std::string& message);

}  // namespace lum::core
