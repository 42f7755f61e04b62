#pragma once

#include <cstddef>
#include <utility>

#include "lum/core/Check.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/utility/LumString.h"

#include <boost/variant/get.hpp>
#include <boost/variant/variant.hpp>

namespace lum::core {

// What a token is. The numbers are fixed.
enum class VtlTokenKind : unsigned char {
    Invalid = 0,     // No token can stand here; every read behind it gives it again.
    NoToken = 1,     // Nothing was read yet.
    End = 2,         // The end of the text.
    Comment = 3,     // "//" up to the line feed; the text is what follows the two slashes.
    Whitespace = 4,  // Never handed out.
    Indent = 5,      // A line that starts further right than the one before.
    Dedent = 6,      // A line that starts further left.
    Arrow = 7,
    Comma = 8,
    Colon = 9,
    Slash = 10,
    LeftParen = 11,
    RightParen = 12,
    LeftBrace = 13,
    RightBrace = 14,
    Plus = 15,
    Minus = 16,
    Star = 17,
    Less = 18,
    Greater = 19,
    BoolLiteral = 20,
    IntegerLiteral = 21,  // Without a sign: signs are tokens of their own.
    RealLiteral = 22,
    Identifier = 23,
    StringLiteral = 24,
    SpecialLiteral = 25,
};

// A piece of a scanned text: its kind, where it stands, and what it says. Punctuation, identifiers,
// comments and string literals have a text; bool, number and special literals have a value. A token
// of another kind, or one that was scanned without values, has neither.
//
// GetStart() and GetEnd() count UTF-16 units from the start of the scanned text, so that a reader
// can see whether two tokens touch.
class VtlToken {
public:
    VtlTokenKind GetKind() const noexcept { return m_kind; }
    bool Is(VtlTokenKind kind) const noexcept { return m_kind == kind; }
    unsigned int GetStart() const noexcept { return m_start; }
    unsigned int GetEnd() const noexcept { return m_end; }

    const TStringCore& GetText() const noexcept { return m_text; }
    // The values. Errors: LumLogicException with IllegalOperation where the token has no such
    // value.
    bool GetBool() const { return Get<bool>(VtlTokenKind::BoolLiteral); }
    long long GetInteger() const { return Get<long long>(VtlTokenKind::IntegerLiteral); }
    double GetReal() const { return Get<double>(VtlTokenKind::RealLiteral); }
    SpecialKind GetSpecialKind() const { return Get<SpecialKind>(VtlTokenKind::SpecialLiteral); }

    // Each makes this another token, in place, as one token after the other is scanned into the
    // same object. Values have a setter for each type, since the variant would take an int or a
    // pointer for the wrong one.
    void SetPlain(VtlTokenKind kind, unsigned int start, unsigned int end) noexcept {
        m_kind = kind;
        m_start = start;
        m_end = end;
        m_hasValue = false;
        m_text.clear();
    }
    void SetText(VtlTokenKind kind, unsigned int start, unsigned int end, TStringCore&& text) {
        SetPlain(kind, start, end);
        m_text = std::move(text);
    }
    // Written in place: a short text that is made elsewhere and moved here at once stalls on its
    // own stores.
    void SetText(VtlTokenKind kind, unsigned int start, unsigned int end, const char16_t* units,
                 std::size_t count) {
        SetPlain(kind, start, end);
        m_text.append(units, count);
    }
    void SetBool(unsigned int start, unsigned int end, bool value) {
        SetValue(VtlTokenKind::BoolLiteral, start, end, value);
    }
    void SetInteger(unsigned int start, unsigned int end, long long value) {
        SetValue(VtlTokenKind::IntegerLiteral, start, end, value);
    }
    void SetReal(unsigned int start, unsigned int end, double value) {
        SetValue(VtlTokenKind::RealLiteral, start, end, value);
    }
    void SetSpecial(unsigned int start, unsigned int end, SpecialKind value) {
        SetValue(VtlTokenKind::SpecialLiteral, start, end, value);
    }

private:
    template <typename T>
    void SetValue(VtlTokenKind kind, unsigned int start, unsigned int end, T value) {
        SetPlain(kind, start, end);
        m_value = value;
        m_hasValue = true;
    }
    template <typename T>
    T Get(VtlTokenKind kind) const {
        LUM_INVARIANT(m_hasValue && m_kind == kind, LumError::IllegalOperation);
        return boost::get<T>(m_value);
    }

    VtlTokenKind m_kind = VtlTokenKind::NoToken;
    bool m_hasValue = false;
    unsigned int m_start = 0;
    unsigned int m_end = 0;
    boost::variant<bool, long long, double, SpecialKind> m_value;  // Stale without m_hasValue.
    TStringCore m_text;
};

}  // namespace lum::core
