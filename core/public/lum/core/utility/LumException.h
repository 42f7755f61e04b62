#pragma once

#include <exception>
#include <string>

#include "lum/core/Export.h"
#include "lum/core/utility/LumError.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

/// The message of `error`, exactly as the table of codes has it, trailing blanks included; that of
/// an unknown code is "unspecified Lumera Runtime error".
/// Threads: no state.
LUM_CORE_API TStringCore ErrorToString(LumError error);

/// The failure of an operation: a code, composed details, and a context that grows on the way up.
///
/// Threads: one thread at a time.
/// Ownership: holds its texts. A copy keeps everything; a move gives the new object an empty
///   context, so the context is read or added to on the object that was caught by reference.
/// Errors: none but std::bad_alloc.
class LUM_CORE_API LumException : public std::exception {
public:
    explicit LumException(LumError error);
    LumException(LumError error, const TStringCore& details);
    LumException(LumError error, const TStringCore& details, const TStringCore& context);
    LumException(const LumException&) = default;
    LumException(LumException&& other) noexcept;
    ~LumException() override;

    /// The message, as UTF-8; never the context.
    const char* what() const noexcept override { return m_what.c_str(); }

    LumError GetError() const noexcept { return m_error; }
    /// The code's message and, behind a line feed, the details that the site gave, if any.
    const TStringCore& GetDetails() const noexcept { return m_details; }
    /// Where the failure arose, and what callers added; may be empty.
    const TStringCore& GetContext() const noexcept { return m_context; }
    /// Adds a line to the context.
    void AppendContext(const TStringCore& text);

private:
    LumError m_error;
    TStringCore m_rawDetails;
    TStringCore m_details;
    TStringCore m_context;
    std::string m_what;
};

/// Bad input or wrong use: the ordinary failure.
class LUM_CORE_API LumRuntimeException : public LumException {
public:
    using LumException::LumException;
    LumRuntimeException(const LumRuntimeException&) = default;
    LumRuntimeException(LumRuntimeException&&) noexcept = default;
    ~LumRuntimeException() override;
};

/// A state that the library holds to be impossible.
class LUM_CORE_API LumLogicException : public LumException {
public:
    using LumException::LumException;
    LumLogicException(const LumLogicException&) = default;
    LumLogicException(LumLogicException&&) noexcept = default;
    ~LumLogicException() override;
};

}  // namespace lum::core
