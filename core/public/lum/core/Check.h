#pragma once

#include "lum/core/Export.h"
#include "lum/core/utility/LumException.h"

/// The failure macros. A failed check first reports to the log ("Validation failed at ..."), then
/// throws with the context "Source: FILE:LINE". LUM_CHECK and its kin throw LumRuntimeException
/// (bad input, wrong use), LUM_INVARIANT throws LumLogicException (a state held to be impossible).
///
/// Every macro takes, behind its own arguments, the LumError code and optionally a TStringCore of
/// details, which is evaluated only after the check has failed.
///
/// The text of the condition reaches the log, and callers match on it: rewording a check changes
/// behaviour. Where the reported text must differ from the code, LUM_CHECK_TEXT and
/// LUM_INVARIANT_TEXT take it.
///
/// Cost: a compare and a jump to an out-of-line function; nothing is formatted on the good path.

#define LUM_CHECK_TEXT(text, condition, ...) \
    (static_cast<bool>(condition)            \
         ? static_cast<void>(0)              \
         : ::lum::core::detail::FailRuntime({__FILE__, __LINE__, text}, __VA_ARGS__))

/// Reports "(condition)".
#define LUM_CHECK(condition, ...) LUM_CHECK_TEXT("(" #condition ")", (condition), __VA_ARGS__)
/// Fails where `condition` holds; reports "!(condition)".
#define LUM_CHECK_NOT(condition, ...) LUM_CHECK_TEXT("!(" #condition ")", !(condition), __VA_ARGS__)
/// Reports "(pointer) != nullptr".
#define LUM_CHECK_NOT_NULL(pointer, ...) \
    LUM_CHECK_TEXT("(" #pointer ") != nullptr", (pointer) != nullptr, __VA_ARGS__)
/// Fails where the two are equal; reports "(a) != (b)".
#define LUM_CHECK_NE(a, b, ...) LUM_CHECK_TEXT("(" #a ") != (" #b ")", (a) != (b), __VA_ARGS__)
/// Fails outside the closed range; reports "(value) >= (low) && (value) <= (high)".
#define LUM_CHECK_RANGE(value, low, high, ...)                                  \
    LUM_CHECK_TEXT("(" #value ") >= (" #low ") && (" #value ") <= (" #high ")", \
                   (value) >= (low) && (value) <= (high), __VA_ARGS__)
/// Reports and fails, with no condition.
#define LUM_FAIL(...) ::lum::core::detail::FailRuntime({__FILE__, __LINE__, ""}, __VA_ARGS__)

#define LUM_INVARIANT_TEXT(text, condition, ...) \
    (static_cast<bool>(condition)                \
         ? static_cast<void>(0)                  \
         : ::lum::core::detail::FailLogic({__FILE__, __LINE__, text}, __VA_ARGS__))

/// Reports "(condition)" and throws LumLogicException.
#define LUM_INVARIANT(condition, ...) \
    LUM_INVARIANT_TEXT("(" #condition ")", (condition), __VA_ARGS__)
/// Reports "(pointer) != nullptr" and throws LumLogicException.
#define LUM_INVARIANT_NOT_NULL(pointer, ...) \
    LUM_INVARIANT_TEXT("(" #pointer ") != nullptr", (pointer) != nullptr, __VA_ARGS__)

namespace lum::core::detail {

/// Where a check stands and what it tests; three words that the compiler keeps as constants.
struct FailureSite {
    const char* file;
    int line;
    const char* condition;
};

[[noreturn, gnu::cold, gnu::noinline]] LUM_CORE_API void FailRuntime(const FailureSite& site,
                                                                     LumError error);
[[noreturn, gnu::cold, gnu::noinline]] LUM_CORE_API void FailRuntime(const FailureSite& site,
                                                                     LumError error,
                                                                     const TStringCore& details);
[[noreturn, gnu::cold, gnu::noinline]] LUM_CORE_API void FailLogic(const FailureSite& site,
                                                                   LumError error);
[[noreturn, gnu::cold, gnu::noinline]] LUM_CORE_API void FailLogic(const FailureSite& site,
                                                                   LumError error,
                                                                   const TStringCore& details);

}  // namespace lum::core::detail
