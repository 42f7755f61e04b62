#include "core/main/serialize/VtlScanner.h"

#include <algorithm>
#include <array>
#include <limits>

#include "core/main/serialize/VtlKeywords.h"
#include "lum/core/Check.h"

namespace lum::core {
namespace {

using Kind = VtlTokenKind;

// What a unit may begin, named by the kind of the shortest token. A carriage return counts as white
// space and a line feed as an indent until what stands around them is known.
constexpr std::array<Kind, kVtlClassCount> MakeBeginnings() {
    std::array<Kind, kVtlClassCount> beginnings{};  // Invalid.
    const auto set = [&](std::u16string_view units, Kind begins) {
        for (const char16_t unit : units) {
            beginnings[unit] = begins;
        }
    };
    set(u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz^_~=", Kind::Identifier);
    set(u"0123456789", Kind::IntegerLiteral);
    set(u".", Kind::RealLiteral);
    set(u"-", Kind::Minus);
    set(u"\t\v\r ", Kind::Whitespace);
    set(u"\n", Kind::Indent);
    set(u"'", Kind::StringLiteral);
    set(u",", Kind::Comma);
    set(u":", Kind::Colon);
    set(u"/", Kind::Slash);
    set(u"(", Kind::LeftParen);
    set(u")", Kind::RightParen);
    set(u"{", Kind::LeftBrace);
    set(u"}", Kind::RightBrace);
    set(u"+", Kind::Plus);
    set(u"*", Kind::Star);
    set(u"<", Kind::Less);
    set(u">", Kind::Greater);
    return beginnings;
}

constexpr std::array<Kind, kVtlClassCount> kBeginnings = MakeBeginnings();

Kind BeginningOf(char16_t unit) noexcept {
    return unit < kBeginnings.size() ? kBeginnings[unit] : Kind::Invalid;
}

bool IsDigit(char16_t unit) noexcept {
    return unit >= u'0' && unit <= u'9';
}
bool IsHighSurrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xD800;
}
bool IsLowSurrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xDC00;
}

}  // namespace

// VtlCursor ---------------------------------------------------------------------------------------

// The unit at a place; at the end a unit that belongs to no token.
inline char16_t VtlCursor::UnitAt(const char16_t* at) const noexcept {
    return at < m_range.end ? *at : u'\0';
}

inline const char16_t* VtlCursor::SkipDigits(const char16_t* at) const noexcept {
    while (IsDigit(UnitAt(at))) {
        ++at;
    }
    return at;
}

inline VtlToken VtlCursor::Finish(Kind kind, const char16_t* start, const char16_t* end) noexcept {
    m_at = end;
    return VtlToken(kind, m_text, static_cast<std::size_t>(start - m_text),
                    static_cast<std::size_t>(end - m_text));
}

// The token ends behind the character that made it invalid, and never inside a surrogate pair.
VtlToken VtlCursor::FinishInvalid(const char16_t* start, const char16_t* end) noexcept {
    const bool splitsPair = IsHighSurrogate(end[-1]) && IsLowSurrogate(UnitAt(end));
    m_range.end = splitsPair ? end + 1 : end;
    m_lastStart = start;
    m_last = Kind::Invalid;
    return Finish(m_last, start, m_range.end);
}

VtlToken VtlCursor::Scan() noexcept {
    const char16_t* at = m_at;
    // Before most tokens there is one blank or none.
    if (UnitAt(at) == u' ') {
        ++at;
    }
    for (;;) {
        if (at == m_range.end) {
            return Finish(m_last, m_lastStart, at);
        }
        const Kind begins = BeginningOf(*at);
        if (begins == Kind::Identifier) {
            return FinishWord(at);
        }
        switch (begins) {
            case Kind::IntegerLiteral:
            case Kind::RealLiteral:
                return FinishNumber(at);
            case Kind::StringLiteral:
                return FinishString(at);
            case Kind::Whitespace:
                // Within a run a carriage return is a blank like any other, even the one before a
                // line feed.
                if (at != m_at || *at != u'\r' || UnitAt(at + 1) != u'\n') {
                    do {
                        ++at;
                    } while (BeginningOf(UnitAt(at)) == Kind::Whitespace);
                    m_at = at;
                    continue;
                }
                [[fallthrough]];
            case Kind::Indent: {
                const VtlToken step = FinishStep(at);
                if (!step.Is(Kind::Whitespace)) {
                    return step;
                }
                at = m_at;
                continue;
            }
            case Kind::Slash:
                if (UnitAt(at + 1) == u'/') {
                    return Finish(Kind::Comment, at, SkipRun<IsNoneOf<u'\n'>>(at + 2, m_range));
                }
                return Finish(Kind::Slash, at, at + 1);
            case Kind::Minus:
                return UnitAt(at + 1) == u'>' ? Finish(Kind::Arrow, at, at + 2)
                                              : Finish(Kind::Minus, at, at + 1);
            case Kind::Invalid:
                return FinishInvalid(at, at + 1);
            default:
                return Finish(begins, at, at + 1);
        }
    }
}

inline VtlToken VtlCursor::FinishWord(const char16_t* start) noexcept {
    const char16_t* const end = SkipRun<IsWordPart>(start + 1, m_range);
    const unsigned int keyword = FindKeyword({start, static_cast<std::size_t>(end - start)});
    const Kind kind = keyword == 0                            ? Kind::Identifier
                      : keyword < kSpecialKindCount           ? Kind::SpecialLiteral
                      : keyword == kTrue || keyword == kFalse ? Kind::BoolLiteral
                                                              : Kind::RealLiteral;
    return Finish(kind, start, end);
}

VtlToken VtlCursor::FinishStep(const char16_t* start) noexcept {
    const char16_t* const feed = *start == u'\r' ? start + 1 : start;
    const char16_t* const end = SkipRun<IsBlank>(feed + 1, m_range);
    const auto indentation = static_cast<std::size_t>(end - start) - 1;
    const std::size_t former = std::exchange(m_indentation, indentation);
    return Finish(indentation > former   ? Kind::Indent
                  : indentation < former ? Kind::Dedent
                                         : Kind::Whitespace,
                  start, end);
}

VtlToken VtlCursor::FinishNumber(const char16_t* start) noexcept {
    const char16_t* const integerEnd = SkipDigits(start);
    const char16_t* at = integerEnd;
    if (UnitAt(at) == u'.') {
        at = SkipDigits(at + 1);
        if (at - start == 1) {
            return FinishInvalid(start, at);  // A point and no digit on either side.
        }
    }
    if (UnitAt(at) == u'e' || UnitAt(at) == u'E') {
        const char16_t sign = UnitAt(at + 1);
        const char16_t* const digits = at + (sign == u'+' || sign == u'-' ? 2 : 1);
        if (IsDigit(UnitAt(digits))) {
            at = SkipDigits(digits);
        }
    }
    if (at != integerEnd) {
        return Finish(Kind::RealLiteral, start, at);
    }
    constexpr std::ptrdiff_t kSafeDigits = std::numeric_limits<long long>::digits10;
    constexpr unsigned long long kLargest = std::numeric_limits<long long>::max();
    if (integerEnd - start > kSafeDigits) {
        unsigned long long value = 0;
        for (const char16_t* digit = start; digit < integerEnd; ++digit) {
            if (value > kLargest / 10) {
                return FinishInvalid(start, digit + 1);
            }
            value = value * 10 + static_cast<unsigned int>(*digit - u'0');
            if (value > kLargest) {
                return FinishInvalid(start, digit + 1);
            }
        }
    }
    return Finish(Kind::IntegerLiteral, start, integerEnd);
}

VtlToken VtlCursor::FinishString(const char16_t* start) noexcept {
    const char16_t* at = start + 1;
    for (;;) {
        at = SkipRun<IsNoneOf<u'\'', u'\\', u'\n'>>(at, m_range);
        if (at == m_range.end) {
            return FinishInvalid(start, at);  // No closing quote.
        }
        if (*at == u'\'') {
            return Finish(Kind::StringLiteral, start, at + 1);
        }
        if (*at == u'\n') {
            return FinishInvalid(start, at + 1);
        }
        ++at;
        if (at == m_range.end) {
            return FinishInvalid(start, at);
        }
        if (*at != u'\\' && *at != u'\'' && *at != u'n') {
            return FinishInvalid(start, at + 1);
        }
        ++at;
    }
}

// VtlScanner --------------------------------------------------------------------------------------

const VtlToken& VtlScanner::Peek(std::size_t n) {
    if (n == 0) {
        return GetCurrent();
    }
    const VtlToken* last = &PeekNext();
    std::vector<VtlToken>& further = m_state.further;
    if (n > further.size() + 1) {
        std::reverse(further.begin(), further.end());
        last = further.empty() ? last : &further.back();
        while (n > further.size() + 1 && !last->Is(Kind::End) && !last->Is(Kind::Invalid)) {
            last = &further.emplace_back(m_state.cursor.Scan());
        }
        std::reverse(further.begin(), further.end());
    }
    // The farthest one stands first.
    const std::size_t distance = std::min(n - 1, further.size());
    return distance == 0 ? m_state.ahead : further[further.size() - distance];
}

bool VtlScanner::Accept(VtlTokenKind kind, VtlToken& token) {
    if (!Accept(kind)) {
        return false;
    }
    token = GetCurrent();
    return true;
}

bool VtlScanner::AcceptKeyText(VtlToken& token) {
    return Accept(Kind::Identifier, token) || Accept(Kind::StringLiteral, token);
}

const VtlToken& VtlScanner::Expect(VtlTokenKind kind) {
    const VtlToken& token = Next();
    if (!token.Is(kind)) [[unlikely]] {
        LUM_FAIL(LumError::UnexpectedToken, GetText());
    }
    return token;
}

const VtlToken& VtlScanner::Expect(VtlTokenKind kind, const TStringCore& detail) {
    const VtlToken& token = Next();
    if (!token.Is(kind)) [[unlikely]] {
        LUM_FAIL(LumError::UnexpectedToken, detail);
    }
    return token;
}

void VtlScanner::PushBack(const VtlToken& token) {
    const VtlToken pushed = token;  // It may be one that changes below.
    if (m_state.hasAhead) {
        m_state.further.push_back(m_state.ahead);
    }
    m_state.ahead = pushed;
    m_state.hasAhead = true;
}

bool VtlScanner::IsSingleToken(const TStringCore& text, VtlTokenKind kind,
                               VtlToken& token) noexcept {
    VtlCursor cursor(text.view());
    token = cursor.Scan();
    return token.Is(kind) && cursor.Scan().Is(Kind::End);
}

}  // namespace lum::core
