// The grammar of the scanner (core/main/serialize/VtlScanner.h) for re2c.

#include "bench/vtl/VtlPeer.h"

#include <algorithm>
#include <string_view>

using Kind = lum::core::VtlTokenKind;

namespace {

// Whether a number of that many digits fits 63 bits.
bool IsInRange(const char* start, const char* end) {
    std::string_view digits(start, static_cast<std::size_t>(end - start));
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    constexpr std::string_view kLargest = "9223372036854775807";
    return digits.size() < kLargest.size() ||
           (digits.size() == kLargest.size() && digits <= kLargest);
}

}  // namespace

VtlPeer::Token VtlPeer::Scan() {
    const char* cursor = m_cursor;
    const char* marker = nullptr;
    const char* start = nullptr;
    const auto finish = [&](Kind kind) {
        m_cursor = cursor;
        return Token{kind, static_cast<unsigned int>(start - m_text),
                     static_cast<unsigned int>(cursor - m_text)};
    };
    for (;;) {
        start = cursor;
        /*!re2c
            re2c:yyfill:enable = 0;
            re2c:define:YYCTYPE = "unsigned char";
            re2c:define:YYCURSOR = cursor;
            re2c:define:YYMARKER = marker;

            digit = [0-9];
            exponent = [eE] [+-]? digit+;
            word = [A-Za-z^_~=] [A-Za-z0-9^_~=#.?-]*;

            "\x00"                  { cursor = start; return finish(Kind::End); }
            [ \t\v\r]+              { continue; }
            "\r"? "\n" " "*         {
                const auto count = static_cast<std::size_t>(cursor - start) - 1;
                const std::size_t former = m_indentation;
                m_indentation = count;
                if (count == former) {
                    continue;
                }
                return finish(count > former ? Kind::Indent : Kind::Dedent);
            }
            "//" [^\n\x00]*         { return finish(Kind::Comment); }
            "->"                    { return finish(Kind::Arrow); }
            ","                     { return finish(Kind::Comma); }
            ":"                     { return finish(Kind::Colon); }
            "/"                     { return finish(Kind::Slash); }
            "("                     { return finish(Kind::LeftParen); }
            ")"                     { return finish(Kind::RightParen); }
            "{"                     { return finish(Kind::LeftBrace); }
            "}"                     { return finish(Kind::RightBrace); }
            "+"                     { return finish(Kind::Plus); }
            "-"                     { return finish(Kind::Minus); }
            "*"                     { return finish(Kind::Star); }
            "<"                     { return finish(Kind::Less); }
            ">"                     { return finish(Kind::Greater); }
            "true" | "false"        { return finish(Kind::BoolLiteral); }
            "inf" | "nan"           { return finish(Kind::RealLiteral); }
            "Null" | "All" | "Wildcard" | "Skipped" | "NoAccess" | "Ragged" | "Error" |
            "ManyValues" | "Missing"
                                    { return finish(Kind::SpecialLiteral); }
            word                    { return finish(Kind::Identifier); }
            digit{1,18}             { return finish(Kind::IntegerLiteral); }
            digit+                  { return finish(IsInRange(start, cursor) ? Kind::IntegerLiteral
                                                                             : Kind::Invalid); }
            digit+ "." digit* exponent? | "." digit+ exponent? | digit+ exponent
                                    { return finish(Kind::RealLiteral); }
            "'" ([^'\\\n\x00] | "\\" ['\\n])* "'"
                                    { return finish(Kind::StringLiteral); }
            *                       { return finish(Kind::Invalid); }
        */
    }
}
