#pragma once

#include <cstddef>
#include <deque>
#include <memory>

#include "core/main/serialize/VtlToken.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

// The one grammar of words, numbers and quoted text, wherever the library reads them: in
// statements, key paths, JSON strings and keys.
//
//   word     [A-Za-z^_~=][A-Za-z^_~=0-9#.?-]*   an Identifier, or a keyword: true, false, inf, nan,
//                                               and the names of SpecialKind other than Normal
//   integer  [0-9]+                             Invalid above 2^63 - 1
//   real     digits with a point, with an exponent, or both; "1." and ".5" are reals. An exponent
//            without digits is not one: "1e" is the integer 1 and the word e.
//   string   '...'                              with the escapes \\ \' \n, and no bare line feed
//   comment  //...                              up to the line feed
//   step     \r?\n and the blanks behind it     Indent or Dedent where their number, a carriage
//                                               return counting as one, differs from the last
//                                               step's
//   blanks   runs of blank, tab, vertical tab, carriage return
//
// and the punctuation of VtlTokenKind. The longest match counts. A sign belongs to no number, and a
// word takes in every minus behind it: "a->b" is the word "a-", then Greater. Anything else, the
// form feed and every character above 0x7E included, is Invalid; Invalid ends the text for good.

// Reads tokens from units that somebody else keeps, one after the other, in time linear in the
// text.
class VtlCursor {
public:
    // With `skipValue` tokens have no value and no text, and scanning allocates nothing; kinds and
    // positions are the same.
    VtlCursor(const TStringCore& text, bool skipValue) noexcept;

    // Makes `token` the next one that is no white space. End and Invalid come again and again once
    // reached.
    void Scan(VtlToken& token);

private:
    char16_t UnitAt(std::size_t position) const noexcept;
    void SkipDigits() noexcept;
    void SetPlain(VtlToken& token, VtlTokenKind kind) const noexcept;
    void SetText(VtlToken& token, VtlTokenKind kind, std::size_t textStart,
                 std::size_t textEnd) const;
    void SetKeyword(VtlToken& token, unsigned int keyword) const;
    void SetInvalid(VtlToken& token, std::size_t end) noexcept;
    VtlTokenKind ScanStep() noexcept;
    void ScanPunctuation(VtlToken& token, VtlTokenKind kind);
    void ScanComment(VtlToken& token);
    void ScanWord(VtlToken& token);
    void ScanNumber(VtlToken& token);
    void ScanString(VtlToken& token);
    TStringCore Unescape(std::size_t start, std::size_t end, std::size_t escapeCount) const;

    const char16_t* const m_units;
    const std::size_t m_end;
    const bool m_skipValue;
    bool m_isInvalid = false;
    std::size_t m_start = 0;  // Of the token that is being scanned.
    std::size_t m_position = 0;
    std::size_t m_indentation = 0;  // Of the last step.
};

// A cursor over a text of its own, with a current token and as much lookahead as a reader asks for.
//
// Threads: one at a time. References to tokens hold until the next operation that is not const.
class VtlScanner {
public:
    explicit VtlScanner(const TStringCore& text);
    VtlScanner(const VtlScanner&) = delete;
    VtlScanner& operator=(const VtlScanner&) = delete;

    const TStringCore& GetText() const noexcept { return m_text; }
    const VtlToken& GetCurrent() const noexcept { return m_tokens[m_currentIndex]; }

    // Makes the next token the current one.
    const VtlToken& Next();
    // The n-th token ahead, 0 being the current one. Behind End or Invalid stand only more of them,
    // so that a large `n` reads no further.
    const VtlToken& Peek(std::size_t n);
    bool PeekIs(VtlTokenKind kind) { return Ahead().Is(kind); }
    // Takes the next token if it is of that kind; in the second form, and in AcceptKeyText, the
    // token is handed over as well.
    bool Accept(VtlTokenKind kind);
    bool Accept(VtlTokenKind kind, VtlToken& token);
    // Takes an Identifier or a StringLiteral: a name, bare or quoted.
    bool AcceptKeyText(VtlToken& token);
    // Takes the next token, of whatever kind.
    // Errors: UnexpectedToken with `detail`, reported, where it is not of that kind.
    const VtlToken& Expect(VtlTokenKind kind, const TStringCore& detail);
    // Puts a token in front of those that are to come; the current token stays.
    void PushBack(VtlToken token);

    // Whether `text` is a token of that kind and nothing else but white space around it, which the
    // token's place tells. Gives the first token in any case. What `skipValue` leaves out,
    // VtlCursor says.
    static bool IsSingleToken(const TStringCore& text, VtlTokenKind kind, VtlToken& token,
                              bool skipValue);

private:
    const VtlToken& Ahead();

    const TStringCore m_text;
    VtlCursor m_cursor;  // Over m_text.
    // The current token and, if there is one ahead, the first of the queue. They change places when
    // the scanner moves on, so that a look ahead copies nothing.
    VtlToken m_tokens[2];
    unsigned int m_currentIndex = 0;
    bool m_hasAhead = false;
    // The rest of the queue, whose making allocates and which hardly any reader needs; empty while
    // m_hasAhead is false.
    std::unique_ptr<std::deque<VtlToken>> m_furtherAhead;
};

}  // namespace lum::core
