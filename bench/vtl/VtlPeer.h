#pragma once

#include <cstddef>

#include "core/main/serialize/VtlToken.h"

/// The scanner that re2c makes of the same grammar, over bytes: no values, kinds and places alone.
class VtlPeer {
public:
    struct Token {
        lum::core::VtlTokenKind kind;
        unsigned int start;
        unsigned int end;
    };

    /// `text` is ASCII and ends in a zero, which is not part of it.
    explicit VtlPeer(const char* text) : m_text(text), m_cursor(text) {}

    /// The next token; behind End and Invalid the scanner may not be used.
    Token Scan();

private:
    const char* const m_text;
    const char* m_cursor;
    std::size_t m_indentation = 0;
};
