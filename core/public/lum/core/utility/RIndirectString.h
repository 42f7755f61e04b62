#pragma once

#include <functional>
#include <string>
#include <utility>

#include "lum/core/utility/LumString.h"

namespace lum::core {

/// The shared string of string values and cells: a TStringCore, and nothing else.
///
/// Comparisons are a plain order by code unit, independent of any collation; comparison under a
/// collation goes through ICollator.
/// Threads, ownership, errors and cost are those of TStringCore: a copy shares the text.
class RIndirectString {
public:
    RIndirectString() noexcept = default;
    RIndirectString(const TStringCore& text) noexcept : m_text(text) {}        // NOLINT
    RIndirectString(TStringCore&& text) noexcept : m_text(std::move(text)) {}  // NOLINT
    /// A null-terminated text; null counts as empty.
    RIndirectString(const wchar_t* text) : m_text(text) {}  // NOLINT

    const TStringCore& GetRString() const noexcept { return m_text; }
    operator const TStringCore&() const noexcept { return m_text; }  // NOLINT
    const TStringCore* operator->() const noexcept { return &m_text; }
    std::string toStdString() const { return m_text.toStdString(); }

    friend bool operator==(const RIndirectString& a, const RIndirectString& b) noexcept {
        return a.m_text == b.m_text;
    }
    friend bool operator==(const RIndirectString& a, const TStringCore& b) noexcept {
        return a.m_text == b;
    }
    friend bool operator==(const RIndirectString& a, const wchar_t* b) {
        return a.m_text == TStringCore(b);
    }
    friend std::strong_ordering operator<=>(const RIndirectString& a,
                                            const RIndirectString& b) noexcept {
        return a.m_text <=> b.m_text;
    }

private:
    TStringCore m_text;
};

static_assert(sizeof(RIndirectString) == 32);

}  // namespace lum::core

template <>
struct std::hash<lum::core::RIndirectString> {
    std::size_t operator()(const lum::core::RIndirectString& text) const {
        return text.GetRString().hash();
    }
};
