#pragma once

#include <cstddef>
#include <string_view>

#include "lum/core/store/SpecialKind.h"
#include "lum/core/utility/LumString.h"

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

// A piece of a scanned text: its kind, and where it stands. What it says is read from the text only
// when somebody asks, so that scanning allocates nothing and converts nothing.
//
// Ownership: a token points into the scanned text and is good as long as that.
// Units: GetStart() and GetEnd() count UTF-16 units from the start of the scanned text, so that a
// reader can see whether two tokens touch.
class VtlToken {
public:
    VtlToken() = default;
    // The units [start, end) of `text`, which have that form.
    VtlToken(VtlTokenKind kind, const char16_t* text, std::size_t start, std::size_t end) noexcept
        : m_text(text),
          m_start(static_cast<unsigned int>(start)),  // Texts have at most 2^30 units.
          m_end(static_cast<unsigned int>(end)),
          m_kind(kind) {}

    VtlTokenKind GetKind() const noexcept { return m_kind; }
    bool Is(VtlTokenKind kind) const noexcept { return m_kind == kind; }
    unsigned int GetStart() const noexcept { return m_start; }
    unsigned int GetEnd() const noexcept { return m_end; }
    // The units as they stand, quotes and all.
    std::u16string_view GetUnits() const noexcept { return {m_text + m_start, m_end - m_start}; }

    // The text of an identifier, of punctuation, of a comment without its slashes, and of a string
    // literal without quotes and escapes; empty for other tokens.
    TStringCore GetText() const;
    // The values. Errors: LumLogicException with IllegalOperation where the token has no such
    // value.
    bool GetBool() const;
    long long GetInteger() const;
    double GetReal() const;
    SpecialKind GetSpecialKind() const;

private:
    const char16_t* m_text = nullptr;
    unsigned int m_start = 0;
    unsigned int m_end = 0;
    VtlTokenKind m_kind = VtlTokenKind::NoToken;
};

}  // namespace lum::core
