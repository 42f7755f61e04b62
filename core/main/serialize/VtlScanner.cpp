#include "core/main/serialize/VtlScanner.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

#include "lum/core/Check.h"
#include "lum/core/serialize/SpecialKindUtil.h"

namespace lum::core {
namespace {

using Kind = VtlTokenKind;

// Characters --------------------------------------------------------------------------------------

// What a character may begin, named by the kind of the shortest token, and whether a word goes on
// with it. A carriage return counts as white space and a line feed as an indent until what stands
// around them is known.
struct CharacterClass {
    Kind begins = Kind::Invalid;
    bool isWordPart = false;
};

constexpr std::array<CharacterClass, 128> MakeCharacterClasses() {
    std::array<CharacterClass, 128> classes;
    const auto set = [&](std::u16string_view units, Kind begins, bool isWordPart) {
        for (const char16_t unit : units) {
            classes[unit] = {begins, isWordPart};
        }
    };
    set(u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz^_~=", Kind::Identifier, true);
    set(u"0123456789", Kind::IntegerLiteral, true);
    set(u".", Kind::RealLiteral, true);
    set(u"#?", Kind::Invalid, true);
    set(u"-", Kind::Minus, true);
    set(u"\t\v\r ", Kind::Whitespace, false);
    set(u"\n", Kind::Indent, false);
    set(u"'", Kind::StringLiteral, false);
    set(u",", Kind::Comma, false);
    set(u":", Kind::Colon, false);
    set(u"/", Kind::Slash, false);
    set(u"(", Kind::LeftParen, false);
    set(u")", Kind::RightParen, false);
    set(u"{", Kind::LeftBrace, false);
    set(u"}", Kind::RightBrace, false);
    set(u"+", Kind::Plus, false);
    set(u"*", Kind::Star, false);
    set(u"<", Kind::Less, false);
    set(u">", Kind::Greater, false);
    return classes;
}

constexpr std::array<CharacterClass, 128> kCharacterClasses = MakeCharacterClasses();

CharacterClass ClassOf(char16_t unit) noexcept {
    return unit < kCharacterClasses.size() ? kCharacterClasses[unit] : CharacterClass();
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

// Keywords ----------------------------------------------------------------------------------------

// The names of the special kinds, under their numbers, and behind them the other keywords. The name
// of Normal is none: 0 stands for no keyword.
constexpr unsigned int kTrue = kSpecialKindCount;
constexpr unsigned int kFalse = kTrue + 1;
constexpr unsigned int kInf = kTrue + 2;
constexpr unsigned int kNan = kTrue + 3;
constexpr unsigned int kKeywordCount = kTrue + 4;

constexpr std::array<std::u16string_view, kKeywordCount> MakeKeywords() {
    std::array<std::u16string_view, kKeywordCount> keywords;
    for (unsigned int i = 1; i < kSpecialKindCount; ++i) {
        keywords[i] = kSpecialKindNames[i];
    }
    keywords[kTrue] = u"true";
    keywords[kFalse] = u"false";
    keywords[kInf] = u"inf";
    keywords[kNan] = u"nan";
    return keywords;
}

constexpr std::array<std::u16string_view, kKeywordCount> kKeywords = MakeKeywords();

// The only keyword that a word of that first unit and length may be.
constexpr unsigned int KeywordLike(char16_t first, std::size_t length) noexcept {
    const auto number = [](SpecialKind kind) { return static_cast<unsigned int>(kind); };
    switch (first) {
        case u't':
            return kTrue;
        case u'f':
            return kFalse;
        case u'i':
            return kInf;
        case u'n':
            return kNan;
        case u'N':
            return number(length == 4 ? SpecialKind::Null : SpecialKind::NoAccess);
        case u'A':
            return number(SpecialKind::All);
        case u'W':
            return number(SpecialKind::Wildcard);
        case u'S':
            return number(SpecialKind::Skipped);
        case u'R':
            return number(SpecialKind::Ragged);
        case u'E':
            return number(SpecialKind::Error);
        case u'M':
            return number(length == 7 ? SpecialKind::Missing : SpecialKind::ManyValues);
        default:
            return 0;
    }
}

constexpr bool IsEachKeywordFound() noexcept {
    for (unsigned int i = 1; i < kKeywordCount; ++i) {
        if (KeywordLike(kKeywords[i][0], kKeywords[i].size()) != i) {
            return false;
        }
    }
    return true;
}
static_assert(IsEachKeywordFound());

// Reals -------------------------------------------------------------------------------------------

// Whether a decimal text says a number of at least 1: what tells those beyond the largest real from
// those below the smallest.
bool IsLarge(std::string_view text) noexcept {
    const std::size_t exponentStart = std::min(text.find_first_of("eE"), text.size());
    const std::string_view mantissa = text.substr(0, exponentStart);
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t firstDigit = mantissa.find_first_not_of("0.");
    if (firstDigit == std::string_view::npos) {
        return false;
    }
    // The power of ten of the first digit, without the exponent; -1 is the first behind the point.
    long long power = static_cast<long long>(point) - static_cast<long long>(firstDigit);
    if (firstDigit < point) {
        --power;
    }
    constexpr long long kFarAbove = 1LL << 40;  // No text has so many digits.
    long long exponent = 0;
    const bool isNegative = exponentStart + 1 < text.size() && text[exponentStart + 1] == '-';
    for (const char digit : text.substr(exponentStart)) {
        if (digit >= '0' && digit <= '9') {
            exponent = std::min(exponent * 10 + (digit - '0'), kFarAbove);
        }
    }
    return power + (isNegative ? -exponent : exponent) >= 0;
}

// The real nearest to a decimal text; beyond the range of reals infinity or zero.
double RealOf(std::string_view text) noexcept {
    double value = 0;
    const std::from_chars_result result =
        std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        return IsLarge(text) ? std::numeric_limits<double>::infinity() : 0.0;
    }
    return value;
}

double RealOf(const char16_t* units, std::size_t count) {
    const auto narrow = [](char16_t unit) { return static_cast<char>(unit); };
    std::array<char, 64> buffer;
    if (count <= buffer.size()) {
        std::transform(units, units + count, buffer.begin(), narrow);
        return RealOf({buffer.data(), count});
    }
    std::string text(count, '\0');
    std::transform(units, units + count, text.begin(), narrow);
    return RealOf(text);
}

}  // namespace

// VtlCursor ---------------------------------------------------------------------------------------

VtlCursor::VtlCursor(const TStringCore& text, bool skipValue) noexcept
    : m_units(text.data()), m_end(text.length()), m_skipValue(skipValue) {}

// The unit at a position; beyond the end a unit that belongs to no token.
inline char16_t VtlCursor::UnitAt(std::size_t position) const noexcept {
    return position < m_end ? m_units[position] : u'\0';
}

inline void VtlCursor::SkipDigits() noexcept {
    while (IsDigit(UnitAt(m_position))) {
        ++m_position;
    }
}

// Texts have at most 2^30 units.
inline void VtlCursor::SetPlain(VtlToken& token, Kind kind) const noexcept {
    token.SetPlain(kind, static_cast<unsigned int>(m_start), static_cast<unsigned int>(m_position));
}

inline void VtlCursor::SetText(VtlToken& token, Kind kind, std::size_t textStart,
                               std::size_t textEnd) const {
    if (m_skipValue) {
        SetPlain(token, kind);
        return;
    }
    token.SetText(kind, static_cast<unsigned int>(m_start), static_cast<unsigned int>(m_position),
                  m_units + textStart, textEnd - textStart);
}

// The token ends behind the character that made it invalid, and never inside a surrogate pair.
void VtlCursor::SetInvalid(VtlToken& token, std::size_t end) noexcept {
    const bool splitsPair =
        end < m_end && IsHighSurrogate(m_units[end - 1]) && IsLowSurrogate(m_units[end]);
    m_position = splitsPair ? end + 1 : end;
    m_isInvalid = true;
    SetPlain(token, Kind::Invalid);
}

void VtlCursor::Scan(VtlToken& token) {
    if (m_isInvalid) {
        return SetPlain(token, Kind::Invalid);
    }
    for (;;) {
        m_start = m_position;
        if (m_position == m_end) {
            return SetPlain(token, Kind::End);
        }
        const Kind begins = ClassOf(m_units[m_position]).begins;
        switch (begins) {
            case Kind::Identifier:
                return ScanWord(token);
            case Kind::IntegerLiteral:
            case Kind::RealLiteral:
                return ScanNumber(token);
            case Kind::StringLiteral:
                return ScanString(token);
            case Kind::Whitespace:
                if (m_units[m_position] != u'\r' || UnitAt(m_position + 1) != u'\n') {
                    // Within a run a carriage return is a blank like any other, even the one before
                    // a line feed.
                    do {
                        ++m_position;
                    } while (ClassOf(UnitAt(m_position)).begins == Kind::Whitespace);
                    continue;
                }
                [[fallthrough]];
            case Kind::Indent: {
                const Kind step = ScanStep();
                if (step == Kind::Whitespace) {
                    continue;
                }
                return SetPlain(token, step);
            }
            case Kind::Slash:
                if (UnitAt(m_position + 1) == u'/') {
                    return ScanComment(token);
                }
                return ScanPunctuation(token, Kind::Slash);
            case Kind::Minus:
                return ScanPunctuation(token,
                                       UnitAt(m_position + 1) == u'>' ? Kind::Arrow : Kind::Minus);
            case Kind::Invalid:
                return SetInvalid(token, m_position + 1);
            default:
                return ScanPunctuation(token, begins);
        }
    }
}

VtlTokenKind VtlCursor::ScanStep() noexcept {
    std::size_t indentation = 0;
    if (m_units[m_position] == u'\r') {
        ++indentation;
        ++m_position;
    }
    ++m_position;
    while (UnitAt(m_position) == u' ') {
        ++indentation;
        ++m_position;
    }
    const std::size_t former = m_indentation;
    m_indentation = indentation;
    return indentation > former   ? Kind::Indent
           : indentation < former ? Kind::Dedent
                                  : Kind::Whitespace;
}

inline void VtlCursor::ScanPunctuation(VtlToken& token, Kind kind) {
    m_position += kind == Kind::Arrow ? 2 : 1;
    SetText(token, kind, m_start, m_position);
}

void VtlCursor::ScanComment(VtlToken& token) {
    const std::u16string_view units(m_units, m_end);
    m_position = std::min(units.find(u'\n', m_start), m_end);
    SetText(token, Kind::Comment, m_start + 2, m_position);
}

void VtlCursor::ScanWord(VtlToken& token) {
    // The position is a local in this loop, which the compiler would else store at every unit.
    std::size_t at = m_start + 1;
    while (at < m_end && ClassOf(m_units[at]).isWordPart) {
        ++at;
    }
    m_position = at;
    const std::u16string_view word(m_units + m_start, m_position - m_start);
    const unsigned int keyword = KeywordLike(word[0], word.size());
    if (keyword != 0 && word == kKeywords[keyword]) {
        SetKeyword(token, keyword);
    } else {
        SetText(token, Kind::Identifier, m_start, m_position);
    }
}

void VtlCursor::SetKeyword(VtlToken& token, unsigned int keyword) const {
    const Kind kind = keyword < kSpecialKindCount             ? Kind::SpecialLiteral
                      : keyword == kTrue || keyword == kFalse ? Kind::BoolLiteral
                                                              : Kind::RealLiteral;
    if (m_skipValue) {
        return SetPlain(token, kind);
    }
    const auto start = static_cast<unsigned int>(m_start);
    const auto end = static_cast<unsigned int>(m_position);
    switch (keyword) {
        case kTrue:
        case kFalse:
            return token.SetBool(start, end, keyword == kTrue);
        case kInf:
            return token.SetReal(start, end, std::numeric_limits<double>::infinity());
        case kNan:
            return token.SetReal(start, end, std::numeric_limits<double>::quiet_NaN());
        default:
            return token.SetSpecial(start, end, static_cast<SpecialKind>(keyword));
    }
}

void VtlCursor::ScanNumber(VtlToken& token) {
    SkipDigits();
    const std::size_t integerEnd = m_position;
    bool isReal = false;
    if (UnitAt(m_position) == u'.') {
        ++m_position;
        SkipDigits();
        if (m_position - m_start == 1) {
            return SetInvalid(token, m_position);  // A point and no digit on either side.
        }
        isReal = true;
    }
    if (UnitAt(m_position) == u'e' || UnitAt(m_position) == u'E') {
        const std::size_t marker = m_position;
        const char16_t sign = UnitAt(m_position + 1);
        m_position += sign == u'+' || sign == u'-' ? 2 : 1;
        if (IsDigit(UnitAt(m_position))) {
            SkipDigits();
            isReal = true;
        } else {
            m_position = marker;
        }
    }

    const auto start = static_cast<unsigned int>(m_start);
    const auto end = static_cast<unsigned int>(m_position);
    if (isReal) {
        return m_skipValue
                   ? SetPlain(token, Kind::RealLiteral)
                   : token.SetReal(start, end, RealOf(m_units + m_start, m_position - m_start));
    }
    // The range is tested without values as well, since it decides on the kind.
    constexpr unsigned long long kLargest = std::numeric_limits<long long>::max();
    unsigned long long value = 0;
    for (std::size_t at = m_start; at < integerEnd; ++at) {
        if (value > kLargest / 10) {
            return SetInvalid(token, at + 1);
        }
        value = value * 10 + static_cast<unsigned int>(m_units[at] - u'0');
        if (value > kLargest) {
            return SetInvalid(token, at + 1);
        }
    }
    return m_skipValue ? SetPlain(token, Kind::IntegerLiteral)
                       : token.SetInteger(start, end, static_cast<long long>(value));
}

void VtlCursor::ScanString(VtlToken& token) {
    std::size_t escapeCount = 0;
    std::size_t at = m_start + 1;
    for (; at < m_end && m_units[at] != u'\''; ++at) {
        if (m_units[at] == u'\n') {
            return SetInvalid(token, at + 1);
        }
        if (m_units[at] == u'\\') {
            ++escapeCount;
            ++at;
            if (at == m_end) {
                break;
            }
            if (m_units[at] != u'\\' && m_units[at] != u'\'' && m_units[at] != u'n') {
                return SetInvalid(token, at + 1);
            }
        }
    }
    if (at == m_end) {
        return SetInvalid(token, m_end);  // No closing quote.
    }
    m_position = at + 1;
    if (escapeCount == 0 || m_skipValue) {
        return SetText(token, Kind::StringLiteral, m_start + 1, at);
    }
    token.SetText(Kind::StringLiteral, static_cast<unsigned int>(m_start),
                  static_cast<unsigned int>(m_position), Unescape(m_start + 1, at, escapeCount));
}

TStringCore VtlCursor::Unescape(std::size_t start, std::size_t end, std::size_t escapeCount) const {
    const std::size_t length = end - start - escapeCount;
    TStringCore text;
    char16_t* out = text.prepareAppend(length);
    for (std::size_t at = start; at < end; ++at) {
        char16_t unit = m_units[at];
        if (unit == u'\\') {
            ++at;
            unit = m_units[at] == u'n' ? u'\n' : m_units[at];
        }
        *out++ = unit;
    }
    text.commitAppend(length);
    return text;
}

// VtlScanner --------------------------------------------------------------------------------------

VtlScanner::VtlScanner(const TStringCore& text)
    : m_text(text), m_cursor(m_text, /*skipValue=*/false) {}

const VtlToken& VtlScanner::Next() {
    if (!m_hasAhead) {
        m_cursor.Scan(m_tokens[m_currentIndex]);
        return m_tokens[m_currentIndex];
    }
    m_currentIndex ^= 1;
    m_hasAhead = m_furtherAhead != nullptr && !m_furtherAhead->empty();
    if (m_hasAhead) {
        m_tokens[m_currentIndex ^ 1] = std::move(m_furtherAhead->front());
        m_furtherAhead->pop_front();
    }
    return m_tokens[m_currentIndex];
}

const VtlToken& VtlScanner::Ahead() {
    VtlToken& ahead = m_tokens[m_currentIndex ^ 1];
    if (!m_hasAhead) {
        m_cursor.Scan(ahead);
        m_hasAhead = true;
    }
    return ahead;
}

const VtlToken& VtlScanner::Peek(std::size_t n) {
    if (n == 0) {
        return GetCurrent();
    }
    const VtlToken& first = Ahead();
    if (n == 1) {
        return first;
    }
    if (m_furtherAhead == nullptr) {
        m_furtherAhead = std::make_unique<std::deque<VtlToken>>();
    }
    std::deque<VtlToken>& further = *m_furtherAhead;
    while (further.size() < n - 1) {
        const VtlToken& last = further.empty() ? first : further.back();
        if (last.Is(Kind::End) || last.Is(Kind::Invalid)) {
            return last;
        }
        VtlToken token;
        m_cursor.Scan(token);
        further.push_back(std::move(token));
    }
    return further[n - 2];
}

bool VtlScanner::Accept(VtlTokenKind kind) {
    if (!PeekIs(kind)) {
        return false;
    }
    Next();
    return true;
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

const VtlToken& VtlScanner::Expect(VtlTokenKind kind, const TStringCore& detail) {
    const VtlToken& token = Next();
    if (!token.Is(kind)) {
        LUM_FAIL(LumError::UnexpectedToken, detail);
    }
    return token;
}

void VtlScanner::PushBack(VtlToken token) {
    VtlToken& ahead = m_tokens[m_currentIndex ^ 1];
    if (m_hasAhead) {
        if (m_furtherAhead == nullptr) {
            m_furtherAhead = std::make_unique<std::deque<VtlToken>>();
        }
        m_furtherAhead->push_front(std::move(ahead));
    }
    ahead = std::move(token);
    m_hasAhead = true;
}

bool VtlScanner::IsSingleToken(const TStringCore& text, VtlTokenKind kind, VtlToken& token,
                               bool skipValue) {
    VtlCursor cursor(text, skipValue);
    cursor.Scan(token);
    if (!token.Is(kind)) {
        return false;
    }
    VtlToken following;
    cursor.Scan(following);
    return following.Is(Kind::End);
}

}  // namespace lum::core
