#include "core/main/serialize/VtlLines.h"

#include <algorithm>
#include <cstddef>

#include "core/main/serialize/UnitRuns.h"

namespace lum::core {
namespace {

bool BeginsComment(const char16_t* at, const char16_t* end) noexcept {
    return end - at >= 2 && at[0] == u'/' && at[1] == u'/';
}

// The inside of a line in quotes, where it reads the same without them.
std::u16string_view Unquoted(std::u16string_view line) noexcept {
    if (line.size() < 2 || line.front() != u'\'' || line.back() != u'\'') {
        return line;
    }
    const std::u16string_view inside = line.substr(1, line.size() - 2);
    const bool needsQuotes = inside.find_first_of(u":/\\{' ()\",") != std::u16string_view::npos ||
                             inside.find(u"->") != std::u16string_view::npos;
    return needsQuotes ? line : inside;
}

}  // namespace

// The place of the line feed that ends the line, or the end of the text.
const char16_t* VtlLines::FindLineEnd(const char16_t* start) const noexcept {
    const UnitRange range{m_end, m_end};
    if (BeginsComment(start, m_end)) {
        return SkipRun<IsNoneOf<u'\n'>>(start, range);
    }
    bool isInQuotes = false;
    for (const char16_t* at = start;;) {
        at = SkipRun<IsNoneOf<u'\n', u'\'', u'\\'>>(at, range);
        if (at == m_end) {
            return m_end;
        }
        if (*at == u'\'') {
            isInQuotes = !isInQuotes;
            ++at;
            continue;
        }
        if (*at == u'\n') {
            if (!isInQuotes) {
                return at;
            }
        } else {
            ++at;
            if (at == m_end) {
                return m_end;
            }
            if (*at != u'\n') {
                ++at;
                continue;
            }
        }
        ++at;
        // Behind a line feed that belongs to the line.
        if (BeginsComment(at, m_end)) {
            return isInQuotes ? m_end : SkipRun<IsNoneOf<u'\n'>>(at, range);
        }
    }
}

bool VtlLines::Next(std::u16string_view& line) noexcept {
    while (m_at != m_end && *m_at == u'\n') {
        ++m_at;
    }
    if (m_at == m_end) {
        return false;
    }
    const char16_t* const lineEnd = FindLineEnd(m_at);
    line = Unquoted({m_at, static_cast<std::size_t>(lineEnd - m_at)});
    m_at = lineEnd == m_end ? m_end : lineEnd + 1;
    return true;
}

}  // namespace lum::core
