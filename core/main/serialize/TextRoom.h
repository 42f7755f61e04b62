#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "lum/core/utility/LumString.h"

namespace lum::core {

// Room behind a text for a writer that moves a plain pointer instead of asking the text for each
// piece. The pointer is the writer's own, so that loops keep it in a register: each call takes it
// and gives it back, possibly in other memory. It starts as null, and what was written belongs to
// the text only once Commit was called; until then nobody else touches the text.
//
// Threads: one at a time. Errors: std::length_error beyond the text's limit, std::bad_alloc; the
// text is then cut at some place before.
class TextRoom {
public:
    // What there is room for at least where more is asked for behind a long text.
    static constexpr std::size_t kUsualRoom = 4096;

    explicit TextRoom(TStringCore& text) noexcept : m_text(text) {}
    TextRoom(const TextRoom&) = delete;
    TextRoom& operator=(const TextRoom&) = delete;

    // Where to go on writing, with room for `count` units.
    char16_t* Ensure(char16_t* out, std::size_t count) {
        return static_cast<std::size_t>(m_limit - out) < count ? MakeRoom(out, count) : out;
    }
    // The length of the text up to `out`.
    std::size_t GetLength(const char16_t* out) const noexcept {
        return m_text.length() + static_cast<std::size_t>(out - m_start);
    }
    // Makes the text's memory suffice for `length` units in all; gives null, for a new start.
    char16_t* Reserve(const char16_t* out, std::size_t length) {
        Commit(out);
        m_text.reserve(std::min(length, TStringCore::kMaxLength));
        return nullptr;
    }
    // The text ends at `out`. Goes on from null.
    void Commit(const char16_t* out) noexcept {
        m_text.commitAppend(static_cast<std::size_t>(out - m_start));
        m_start = m_limit = nullptr;
    }

private:
    // More than is asked for, so that the next pieces find room and not each of them makes the text
    // grow; but hardly more than the text's own rule would grow it by, half its length.
    [[gnu::noinline]] char16_t* MakeRoom(const char16_t* out, std::size_t count) {
        constexpr std::size_t kLeastSpare = 64;
        Commit(out);
        const std::size_t length = m_text.length();
        std::size_t room = count;
        if (length + count > TStringCore::kInlineCapacity) {
            room = std::max(count + kLeastSpare, std::min(length / 2, kUsualRoom));
        }
        m_start = m_text.prepareAppend(room);
        m_limit = m_start + room;
        return m_start;
    }

    TStringCore& m_text;
    char16_t* m_start = nullptr;
    char16_t* m_limit = nullptr;
};

// Appends units that have room.
inline char16_t* WriteUnits(std::u16string_view units, char16_t* out) noexcept {
    std::memcpy(out, units.data(), units.size() * sizeof(char16_t));
    return out + units.size();
}

}  // namespace lum::core
