#pragma once

#include <iosfwd>
#include <memory>

#include "lum/core/Export.h"
#include "lum/core/utility/LumLog.h"

namespace lum::core {

/// A ready logger that writes messages to a stream, one a line: the local time, " -- " and the
/// text.
///
///     LumStreamLogger logger(LumLogLevel::Notice, std::cerr);
///     SetLumLogger(logger.GetLumLogger());
///
/// Threads: writes on the thread that logs, without a lock: a host that logs from several threads
///   gives it a stream that guards itself.
/// Ownership: refers to the stream, which lives longer. The logger that GetLumLogger gives refers
///   to this object, which therefore lives until another one is installed.
/// Errors: those of the stream, where the host has made it throw.
class LUM_CORE_API LumStreamLogger {
public:
    /// Messages below `threshold` are dropped.
    LumStreamLogger(LumLogLevel threshold, std::ostream& stream);
    LumStreamLogger(const LumStreamLogger&) = delete;
    LumStreamLogger& operator=(const LumStreamLogger&) = delete;

    bool AcceptsLogLevel(LumLogLevel level) const { return level >= m_threshold; }
    /// Writes "%Y-%m-%d %H:%M:%S -- TEXT" and a line end, and flushes the stream. Where the local
    /// time cannot be told, "(error retrieving time)" stands in its place.
    void LogRString(LumLogLevel level, const TStringCore& message);
    void LogRChar(LumLogLevel level, const wchar_t* message);

    /// The logger to install with SetLumLogger.
    const std::shared_ptr<LumLogger>& GetLumLogger() const { return m_logger; }

private:
    LumLogLevel m_threshold;
    std::ostream& m_stream;
    std::shared_ptr<LumLogger> m_logger;
};

}  // namespace lum::core
