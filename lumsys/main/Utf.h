#pragma once

#include <cstddef>
#include <string>

namespace lumsys {

class TStringCore;

/// Appends the text of UTF-8 bytes; each maximal invalid part becomes U+FFFD.
void AppendUtf8(TStringCore& text, const char* bytes, std::size_t count);
/// Appends wide characters of 16 or 32 bits; see TStringCore(const wchar_t*).
void AppendWide(TStringCore& text, const wchar_t* characters, std::size_t count);
/// UTF-16 units as UTF-8; a lone surrogate becomes U+FFFD.
std::string ToUtf8(const char16_t* units, std::size_t count);

}  // namespace lumsys
