#pragma once

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "core/main/serialize/UnitRuns.h"
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
// text. A copy goes on from the same place.
class VtlCursor {
public:
    explicit VtlCursor(std::u16string_view text) noexcept
        : VtlCursor(text, text.data() + text.size()) {}
    // A part of a larger text, which may be read up to `readableEnd`.
    VtlCursor(std::u16string_view text, const char16_t* readableEnd) noexcept
        : m_text(text.data()),
          m_at(m_text),
          m_range{m_text + text.size(), readableEnd},
          m_lastStart(m_range.end) {}

    // The next token that is no white space. End and Invalid come again and again once reached.
    VtlToken Scan() noexcept;

    // Where the next token is looked for, in units from the start of the text.
    std::size_t GetPosition() const noexcept { return static_cast<std::size_t>(m_at - m_text); }
    void SetPosition(std::size_t position) noexcept { m_at = m_text + position; }
    const char16_t* GetReadableEnd() const noexcept { return m_range.readableEnd; }

private:
    VtlToken Finish(VtlTokenKind kind, const char16_t* start, const char16_t* end) noexcept;
    VtlToken FinishInvalid(const char16_t* start, const char16_t* end) noexcept;
    VtlToken FinishWord(const char16_t* start) noexcept;
    VtlToken FinishNumber(const char16_t* start) noexcept;
    VtlToken FinishString(const char16_t* start) noexcept;
    VtlToken FinishStep(const char16_t* start) noexcept;
    char16_t UnitAt(const char16_t* at) const noexcept;
    const char16_t* SkipDigits(const char16_t* at) const noexcept;

    const char16_t* m_text;
    const char16_t* m_at;
    UnitRange m_range;
    // The token that stands at the end: End, or the Invalid that ended the text early.
    const char16_t* m_lastStart;
    VtlTokenKind m_last = VtlTokenKind::End;
    std::size_t m_indentation = 0;  // Of the last step.
};

// A cursor with a current token and as much lookahead as a reader asks for.
//
// Threads: one at a time. References to tokens hold until the next operation that is not const.
class VtlScanner {
public:
    // Where a scanner stands, for going back.
    struct State {
        VtlCursor cursor;
        VtlToken current;
        VtlToken ahead;
        bool hasAhead = false;
        std::vector<VtlToken> further;  // What stands behind `ahead`, the nearest last.
    };

    // Keeps the text.
    explicit VtlScanner(const TStringCore& text)
        : m_ownText(text),
          m_units(m_ownText.view()),
          m_state{VtlCursor(m_units), VtlToken(), VtlToken(), false, {}} {}
    // Over units that the caller keeps, as VtlCursor takes them.
    VtlScanner(std::u16string_view units, const char16_t* readableEnd) noexcept
        : m_units(units),
          m_state{VtlCursor(units, readableEnd), VtlToken(), VtlToken(), false, {}} {}
    VtlScanner(const VtlScanner&) = delete;
    VtlScanner& operator=(const VtlScanner&) = delete;

    // The whole text, for the details of failures. Cost: a copy.
    TStringCore GetText() const { return TStringCore(m_units); }
    const VtlToken& GetCurrent() const noexcept { return m_state.current; }

    // Makes the next token the current one.
    const VtlToken& Next() {
        if (!m_state.hasAhead) {
            return m_state.current = m_state.cursor.Scan();
        }
        m_state.current = m_state.ahead;
        m_state.hasAhead = !m_state.further.empty();
        if (m_state.hasAhead) [[unlikely]] {
            m_state.ahead = m_state.further.back();
            m_state.further.pop_back();
        }
        return m_state.current;
    }
    // The token that Next would give.
    const VtlToken& PeekNext() {
        if (!m_state.hasAhead) {
            m_state.ahead = m_state.cursor.Scan();
            m_state.hasAhead = true;
        }
        return m_state.ahead;
    }
    bool PeekIs(VtlTokenKind kind) { return PeekNext().Is(kind); }
    // The n-th token ahead, 0 being the current one. Behind End or Invalid stand only more of them,
    // so that a large `n` reads no further.
    // Cost: linear in what was not yet looked at, twice what was.
    const VtlToken& Peek(std::size_t n);

    // Takes the next token if it is of that kind; in the second form, and in AcceptKeyText, the
    // token is handed over as well.
    bool Accept(VtlTokenKind kind) {
        if (!PeekIs(kind)) {
            return false;
        }
        Next();
        return true;
    }
    bool Accept(VtlTokenKind kind, VtlToken& token);
    // Takes an Identifier or a StringLiteral: a name, bare or quoted.
    bool AcceptKeyText(VtlToken& token);
    // Takes the next token, of whatever kind.
    // Errors: UnexpectedToken, reported, where it is not of that kind, with the whole text or with
    // `detail`.
    const VtlToken& Expect(VtlTokenKind kind);
    const VtlToken& Expect(VtlTokenKind kind, const TStringCore& detail);
    // Puts a token of this text in front of those that are to come; the current token stays.
    void PushBack(const VtlToken& token);

    // The units from the next token on. Nothing where tokens behind it were looked at or pushed
    // back, since they need not be those that stand there.
    std::u16string_view PeekUnits() {
        const VtlToken& next = PeekNext();
        if (!m_state.further.empty() || next.GetEnd() != m_state.cursor.GetPosition()) {
            return {};
        }
        return m_units.substr(next.GetStart());
    }
    // The units behind the current token; nothing where tokens behind it were looked at. And going
    // on behind the first `count` of them, which end there with a token, as Skip does.
    std::u16string_view GetRest() const noexcept {
        return m_state.hasAhead ? std::u16string_view()
                                : m_units.substr(m_state.cursor.GetPosition());
    }
    void SkipRest(std::size_t count) noexcept { GoTo(m_state.cursor.GetPosition() + count); }
    // Up to where the text's memory may be read, as UnitRange takes it.
    const char16_t* GetReadableEnd() const noexcept { return m_state.cursor.GetReadableEnd(); }
    // Goes on behind the first `count` of the units that PeekUnits has just given, which end there
    // with a token; the current token stays. Unskip goes back to the place where they start, as
    // long as no more than one token was looked at, which is one of the same line.
    void Skip(std::size_t count) noexcept { GoTo(m_state.ahead.GetStart() + count); }
    void Unskip(std::size_t start) noexcept { GoTo(start); }

    // What `read` makes of a token of this text, which it takes as if it came next, and no other.
    // The scanner then stands where it stood.
    template <typename Read>
    auto ReadAgain(const VtlToken& token, const Read& read) {
        const VtlToken current = std::exchange(m_state.current, VtlToken());
        const VtlToken ahead = std::exchange(m_state.ahead, token);
        const bool hadAhead = std::exchange(m_state.hasAhead, true);
        std::vector<VtlToken> further = std::exchange(m_state.further, {});
        auto value = read();
        m_state.current = current;
        m_state.ahead = ahead;
        m_state.hasAhead = hadAhead;
        m_state.further = std::move(further);
        return value;
    }
    // What is read between the two is read again.
    State GetState() const { return m_state; }
    void SetState(State&& state) noexcept { m_state = std::move(state); }

    // Whether `text` is a token of that kind and nothing else but white space around it, which the
    // token's place tells. Gives the first token in any case; it is good as long as `text`.
    static bool IsSingleToken(const TStringCore& text, VtlTokenKind kind, VtlToken& token) noexcept;

private:
    void GoTo(std::size_t position) noexcept {
        m_state.cursor.SetPosition(position);
        m_state.hasAhead = false;
    }

    const TStringCore m_ownText;  // Empty where the caller keeps the text.
    const std::u16string_view m_units;
    State m_state;
};

}  // namespace lum::core
