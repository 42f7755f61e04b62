#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "lum/core/utility/LumString.h"

namespace lum::core {

// Room behind a text, in which a writer moves a plain pointer instead of asking the text for each
// piece. What was written belongs to the text once Commit was called or the room is gone; until then
// nothing else may touch the text.
//
// Threads: one at a time. Errors: std::length_error beyond the text's limit, std::bad_alloc; the
// text then ends with what was written before.
class TextRoom {
public:
    // What a room has where it asks the text for more, and the text is long.
    static constexpr std::size_t kUsualRoom = 4096;

    explicit TextRoom(TStringCore& text) noexcept : m_text(text) {}
    TextRoom(const TextRoom&) = delete;
    TextRoom& operator=(const TextRoom&) = delete;
    ~TextRoom() { Commit(); }

    // Where to write next, with room for `count` units. SetEnd says how far the writer came.
    char16_t* Ensure(std::size_t count) {
        if (static_cast<std::size_t>(m_limit - m_out) < count) {
            MakeRoom(count);
        }
        return m_out;
    }
    void SetEnd(char16_t* end) noexcept { m_out = end; }

    void Append(char16_t unit) {
        *Ensure(1) = unit;
        ++m_out;
    }
    void Append(std::u16string_view units) {
        std::memcpy(Ensure(units.size()), units.data(), units.size() * sizeof(char16_t));
        m_out += units.size();
    }

    // The length of the text, with what was written and not committed.
    std::size_t GetLength() const noexcept {
        return m_text.length() + static_cast<std::size_t>(m_out - m_start);
    }
    // Makes the text's memory suffice for `length` units in all.
    void Reserve(std::size_t length) {
        Commit();
        m_text.reserve(std::min(length, TStringCore::kMaxLength));
    }
    void Commit() noexcept {
        m_text.commitAppend(static_cast<std::size_t>(m_out - m_start));
        m_start = m_out = m_limit = nullptr;
    }

private:
    // More than is asked for, so that the next pieces find room, but never so much that the text's
    // memory grows by more than its own rule of half its length.
    void MakeRoom(std::size_t count) {
        Commit();
        const std::size_t room = std::max(count, std::min(m_text.length() / 2, kUsualRoom));
        m_start = m_out = m_text.prepareAppend(room);
        m_limit = m_out + room;
    }

    TStringCore& m_text;
    char16_t* m_start = nullptr;
    char16_t* m_out = nullptr;
    char16_t* m_limit = nullptr;
};

}  // namespace lum::core
