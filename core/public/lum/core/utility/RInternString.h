#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <string_view>
#include <type_traits>

#include "lum/core/Export.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/RIndirectString.h"

namespace lum::core {

class RFormatString;

/// A name: a number in a process-wide table of texts, for the few strings that recur everywhere
/// (key segments, member names, locales). Comparing and hashing are integer operations and a copy
/// is two words; the price is one hash of the text when a name is made from text, so hot paths keep
/// names.
///
/// Threads: names may be made and read on any threads at once. Making one that is known, and
///   reading its text, takes no lock.
/// Ownership: the table keeps every text until the library unloads; no name may outlive that.
/// Units: ids count from 0 in order of first use. They differ from process to process and never
///   leave it. Texts that differ in case are different names.
/// Errors: std::bad_alloc, and std::length_error beyond 2^32 - 1 names; the table stays as it was.
class LUM_CORE_API RInternString {
public:
    /// The empty name.
    RInternString();
    RInternString(TStringCore&& text) : RInternString(Intern(text)) {}                // NOLINT
    RInternString(const TStringCore& text) : RInternString(Intern(text)) {}           // NOLINT
    RInternString(const wchar_t* text);                                               // NOLINT
    RInternString(const RIndirectString& text) : RInternString(text.GetRString()) {}  // NOLINT
    RInternString(const RFormatString& text);                                         // NOLINT
    RInternString(std::nullptr_t) = delete;
    /// A known name is found without making a string of the units.
    explicit RInternString(std::u16string_view units) : RInternString(Intern(units)) {}
    /// A name of one character.
    explicit RInternString(wchar_t character);
    /// The name of an id, unchecked: the text of an id that was never given out is empty.
    explicit RInternString(uint64 id);
    template <std::integral T>
    requires(sizeof(T) == sizeof(uint64) && !std::is_same_v<T, uint64>) explicit RInternString(T id)
        : RInternString(static_cast<uint64>(id)) {}

    uint64 GetStringId() const noexcept { return m_id; }
    /// The text, good until the library unloads.
    const TStringCore& GetValue() const noexcept { return *m_text; }
    operator const TStringCore&() const noexcept { return *m_text; }  // NOLINT

    friend bool operator==(const RInternString& a, const RInternString& b) noexcept {
        return a.m_id == b.m_id;
    }
    friend bool operator==(const RInternString& a, const TStringCore& b) noexcept {
        return *a.m_text == b;
    }
    friend bool operator==(const RInternString& a, const wchar_t* b) {
        return *a.m_text == TStringCore(b);
    }
    friend bool operator==(const RInternString& a, const RIndirectString& b) noexcept {
        return *a.m_text == b.GetRString();
    }

private:
    RInternString(uint64 id, const TStringCore* text) noexcept : m_id(id), m_text(text) {}

    // Comes in two registers: a name that a constructor wrote to memory in two halves and that is
    // copied at once as a whole would wait for both.
    static RInternString Intern(const TStringCore& text);
    static RInternString Intern(std::u16string_view units);

    uint64 m_id;
    const TStringCore* m_text;
};

static_assert(sizeof(RInternString) == 16 && std::is_trivially_copyable_v<RInternString>);

}  // namespace lum::core

template <>
struct std::hash<lum::core::RInternString> {
    std::size_t operator()(const lum::core::RInternString& name) const {
        return name.GetStringId();
    }
};
