#pragma once

#include <string_view>

namespace lum::core {

// Cuts a program into its lines. A line feed within single quotes ends no line, nor does one behind
// a backslash, which counts outside quotes as well. A line that begins with "//" is a comment, in
// which neither means anything; one with blanks before the slashes is none here, so that an
// apostrophe in it opens a quote. Where a line begins with "//" that stands within quotes, nothing
// can close the quotes any more, and the rest of the text is one line.
//
// Lines are parts of the text, so that cutting copies nothing. They come without their line feed,
// and without the quotes around a line that is one quoted word.
//
// Cost: linear in the text, for all the lines together.
class VtlLines {
public:
    explicit VtlLines(std::u16string_view text) noexcept
        : m_at(text.data()), m_end(text.data() + text.size()) {}

    // The next line that is not empty before its quotes are taken away. False at the end.
    bool Next(std::u16string_view& line) noexcept;

private:
    const char16_t* FindLineEnd(const char16_t* start) const noexcept;

    const char16_t* m_at;
    const char16_t* const m_end;
};

}  // namespace lum::core
