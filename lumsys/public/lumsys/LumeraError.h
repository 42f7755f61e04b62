#pragma once

#include <exception>
#include <string>

#include "lumsys/Export.h"
#include "lumsys/TStringCore.h"

namespace lumsys {

namespace TError {

/// Where a keyed error arose: source file, line and the text of the tested condition.
struct ErrorInfo {
    std::string file;
    int line = 0;
    std::string condition;
};

}  // namespace TError

/// The keyed errors of the platform layer: each site has a number of its own, and a name that
/// spells it. They are raised by the task primitives and never carry a LumError code.
///
/// Threads: one thread at a time. Ownership: holds copies of its texts.
/// Errors: none but std::bad_alloc.
class LUM_CORE_API LumeraError : public std::exception {
public:
    static LumeraError MakeError(unsigned int key, TStringCore name);
    static LumeraError MakeError(unsigned int key, TStringCore name, TStringCore message);

    unsigned int GetKey() const noexcept { return m_key; }
    const TStringCore& GetName() const noexcept { return m_name; }
    /// What the site had to tell; may be empty.
    const TStringCore& GetMessage() const noexcept { return m_message; }
    const TError::ErrorInfo& GetInfo() const noexcept { return m_info; }
    void SetInfo(TError::ErrorInfo info) { m_info = std::move(info); }

    /// The message where there is one, else the name, as UTF-8.
    const char* what() const noexcept override { return m_what.c_str(); }

protected:
    LumeraError(unsigned int key, TStringCore name, TStringCore message);

private:
    unsigned int m_key;
    TStringCore m_name;
    TStringCore m_message;
    TError::ErrorInfo m_info;
    std::string m_what;
};

/// A keyed error that marks a state held to be impossible.
class LUM_CORE_API LogicException : public LumeraError {
public:
    explicit LogicException(const LumeraError& error) : LumeraError(error) {}
};

/// Throws `error` as a LogicException with where it arose.
[[noreturn]] LUM_CORE_API void ThrowLogicException(const std::string& file, int line,
                                                   const std::string& condition,
                                                   const LumeraError& error);

}  // namespace lumsys
