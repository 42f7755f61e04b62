// Any text: the scanner ends, gives tokens that lie in the text one behind the other with nothing
// but white space between them, each of which reads as itself when it stands alone; what it says
// does not depend on how a reader looks ahead; and the readers over a text and their try forms
// agree.
//
// The input is UTF-8, or UTF-16 with a byte order mark, which can spell broken surrogate pairs.

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "core/main/serialize/VtlScanner.h"
#include "core/main/utility/Parser.h"
#include "fuzz/FuzzAssert.h"
#include "fuzz/FuzzNames.h"
#include "lum/core/utility/LumException.h"

namespace {

using lum::core::LumColor;
using lum::core::LumDateTime;
using lum::core::LumException;
using lum::core::TStringCore;
using lum::core::VtlCursor;
using lum::core::VtlScanner;
using lum::core::VtlToken;
using lumfuzz::MakeText;
using Kind = lum::core::VtlTokenKind;

bool IsSameValue(double left, double right) {
    return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
}
bool IsSameValue(float left, float right) {
    return std::bit_cast<std::uint32_t>(left) == std::bit_cast<std::uint32_t>(right);
}
template <typename T>
bool IsSameValue(const T& left, const T& right) {
    return left == right;
}

bool IsSameContent(const VtlToken& left, const VtlToken& right) {
    if (left.GetKind() != right.GetKind() || left.GetText() != right.GetText()) {
        return false;
    }
    switch (left.GetKind()) {
        case Kind::BoolLiteral:
            return left.GetBool() == right.GetBool();
        case Kind::IntegerLiteral:
            return left.GetInteger() == right.GetInteger();
        case Kind::RealLiteral:
            return IsSameValue(left.GetReal(), right.GetReal());
        case Kind::SpecialLiteral:
            return left.GetSpecialKind() == right.GetSpecialKind();
        default:
            return true;
    }
}

bool IsSameToken(const VtlToken& left, const VtlToken& right) {
    return IsSameContent(left, right) && left.GetStart() == right.GetStart() &&
           left.GetEnd() == right.GetEnd();
}

bool IsLast(const VtlToken& token) {
    return token.Is(Kind::End) || token.Is(Kind::Invalid);
}

// The tokens up to End or Invalid.
std::vector<VtlToken> ScanAll(const TStringCore& text) {
    std::vector<VtlToken> tokens;
    VtlCursor cursor(text.view());
    do {
        tokens.push_back(cursor.Scan());
        LUM_FUZZ_ASSERT(tokens.size() <= text.length() + 1, text);
    } while (!IsLast(tokens.back()));
    LUM_FUZZ_ASSERT(IsSameToken(cursor.Scan(), tokens.back()), text);
    return tokens;
}

void CheckPlaces(const TStringCore& text, const std::vector<VtlToken>& tokens) {
    std::size_t end = 0;
    for (const VtlToken& token : tokens) {
        LUM_FUZZ_ASSERT(token.GetStart() >= end && token.GetEnd() >= token.GetStart() &&
                            token.GetEnd() <= text.length(),
                        text);
        LUM_FUZZ_ASSERT(token.Is(Kind::End) == (token.GetStart() == token.GetEnd()), text);
        for (; end < token.GetStart(); ++end) {
            LUM_FUZZ_ASSERT(text[end] == u' ' || (text[end] >= u'\t' && text[end] <= u'\r'), text);
        }
        end = token.GetEnd();
    }
    LUM_FUZZ_ASSERT(tokens.back().Is(Kind::Invalid) || end == text.length(), text);
}

TStringCore Quote(const TStringCore& text) {
    TStringCore quoted = L"'";
    for (const char16_t unit : text) {
        if (unit == u'\\' || unit == u'\'') {
            quoted += u'\\';
        }
        if (unit == u'\n') {
            quoted += L"\\n";
        } else {
            quoted += unit;
        }
    }
    return quoted + L"'";
}

void CheckAlone(const TStringCore& text, const VtlToken& token) {
    const bool isStep = token.Is(Kind::Indent) || token.Is(Kind::Dedent);
    if (IsLast(token) || isStep) {
        return;
    }
    const TStringCore part = text.mid(token.GetStart(), token.GetEnd() - token.GetStart());
    VtlToken alone;
    LUM_FUZZ_ASSERT(
        VtlScanner::IsSingleToken(part, token.GetKind(), alone) && IsSameContent(alone, token),
        part);
    LUM_FUZZ_ASSERT(alone.GetStart() == 0 && alone.GetEnd() == part.length(), part);
    if (token.Is(Kind::StringLiteral)) {
        const TStringCore quoted = Quote(token.GetText());
        LUM_FUZZ_ASSERT(VtlScanner::IsSingleToken(quoted, Kind::StringLiteral, alone) &&
                            alone.GetText() == token.GetText(),
                        part);
    }
}

// A text that is part of a larger one, which may be read, scans as it does alone.
void CheckPart(const TStringCore& text, const std::vector<VtlToken>& tokens) {
    const TStringCore larger = text + L"'larger text' 1.5e";
    VtlCursor cursor(larger.view().substr(0, text.length()), larger.end());
    for (const VtlToken& expected : tokens) {
        LUM_FUZZ_ASSERT(IsSameToken(cursor.Scan(), expected), text);
    }
}

// Looks ahead, or takes tokens and pushes them back, as far as the text's own units say.
void CheckLookahead(const TStringCore& text, const std::vector<VtlToken>& tokens) {
    VtlScanner scanner(text);
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        const unsigned int choice = text.isEmpty() ? 0u : text[at % text.length()];
        const std::size_t distance = 1 + choice / 2 % 8;
        if (choice % 2 == 0) {
            const std::size_t last = std::min(at + distance, tokens.size()) - 1;
            LUM_FUZZ_ASSERT(IsSameToken(scanner.Peek(distance), tokens[last]), text);
        } else {
            std::vector<VtlToken> taken;
            for (std::size_t i = 0; i < distance; ++i) {
                taken.push_back(scanner.Next());
            }
            for (; !taken.empty(); taken.pop_back()) {
                scanner.PushBack(taken.back());
            }
        }
        LUM_FUZZ_ASSERT(IsSameToken(scanner.Next(), tokens[at]), text);
    }
}

template <typename T>
void CheckReader(const TStringCore& text, T (*read)(const TStringCore&),
                 std::optional<T> (*tryRead)(const TStringCore&)) {
    std::optional<T> value;
    try {
        value = read(text);
    } catch (const LumException&) {
        // A text that is no such literal; the try form has to say the same.
    }
    const std::optional<T> tried = tryRead(text);
    LUM_FUZZ_ASSERT(value.has_value() == tried.has_value(), text);
    LUM_FUZZ_ASSERT(!value || IsSameValue(*value, *tried), text);
}

void CheckReaders(const TStringCore& text) {
    CheckReader<bool>(text, lum::core::ReadBool, lum::core::TryReadBool);
    CheckReader<int>(text, lum::core::ReadInt32, lum::core::TryReadInt32);
    CheckReader<long long>(text, lum::core::ReadInt64, lum::core::TryReadInt64);
    CheckReader<float>(text, lum::core::ReadReal32, lum::core::TryReadReal32);
    CheckReader<double>(text, lum::core::ReadReal64, lum::core::TryReadReal64);
    CheckReader<TStringCore>(text, lum::core::ReadString, lum::core::TryReadString);
    CheckReader<LumDateTime>(text, lum::core::ReadDateTime, lum::core::TryReadDateTime);
    CheckReader<LumColor>(text, lum::core::ReadColor, lum::core::TryReadColor);
    try {
        LUM_FUZZ_ASSERT(lum::core::ReadHexBytes(text).size() * 2 == text.length(), text);
    } catch (const LumException&) {
        // Refusing other text is its job.
    }
    if (const std::optional<LumDateTime> date = lum::core::TryReadDateTime(text)) {
        LUM_FUZZ_ASSERT(lum::core::TryReadDateTime(date->ToString()) == date, text);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const TStringCore text = MakeText(data, size);
    const std::vector<VtlToken> tokens = ScanAll(text);
    CheckPlaces(text, tokens);
    CheckPart(text, tokens);
    for (const VtlToken& token : tokens) {
        CheckAlone(text, token);
    }
    CheckLookahead(text, tokens);
    CheckReaders(text);
    return 0;
}
