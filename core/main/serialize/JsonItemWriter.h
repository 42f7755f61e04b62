#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "core/main/serialize/JsonBuilder.h"
#include "core/main/serialize/JsonCells.h"
#include "core/main/serialize/JsonEscape.h"
#include "core/main/serialize/TextRoom.h"
#include "lum/core/serialize/JsonSerializer.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

// Writes items of the innermost container of a serializer, an array, straight into the text: the
// same units as a call of the serializer for each item would give. The layout is asked for once,
// numbers are written where they will stand, and the memory for a column is planned ahead.
//
// Items are scalars, where the array stands on one line, and one-line child arrays of scalars:
// BeginChild, the scalars, EndChild. At least one item is written, and while the writer lives nobody
// else touches the serializer.
//
// A source is a walk over a column: GetValue(), GetKind(), Advance().
//
// Threads: one at a time. Errors: std::length_error beyond the limit of a text, std::bad_alloc, and
// those of the cells; the text is of no use then.
class JsonItemWriter {
public:
    explicit JsonItemWriter(JsonSerializer& serializer);

    void BeginChild();
    void EndChild();
    // A scalar by the rule of its cell.
    template <typename Cell>
    void Append(const typename Cell::Storage& stored);
    void AppendString(const TStringCore& text);

    // The next `count` elements of a column, without a look at their kinds, or as pairs of value and
    // kind where they are special.
    template <typename Cell, typename Source>
    void AppendColumn(Source source, lumsize_t count);
    template <typename Cell, typename Source>
    void AppendColumnWithKinds(Source source, lumsize_t count);

private:
    static constexpr std::size_t kSeparatorUnits = 2;

    // What stands in front of a scalar. Numbers that move the output, not conditions: which items
    // come first is then no branch in the loops.
    struct Separator {
        std::size_t hasItems;  // 0 or 1: whether the innermost array has items, so needs a comma.
        std::size_t isPadded;  // 0 or 1: whether a blank follows.

        char16_t* Write(char16_t* out) noexcept {
            out[0] = u',';
            out += hasItems;
            out[0] = u' ';
            hasItems = 1;
            return out + isPadded;
        }
    };

    // Asks for the memory of a column once its first elements show how long they are.
    class MemoryPlan {
    public:
        explicit MemoryPlan(TextRoom& room) : m_room(room), m_lastLength(room.GetLength()) {}
        // How many of the `left` elements to write before the next call.
        lumsize_t StartBlock(lumsize_t left);

    private:
        static constexpr lumsize_t kBlock = 512;
        // The rooms that are asked for at the end of the text must not make it grow once more.
        static constexpr std::size_t kMargin = 2 * TextRoom::kUsualRoom;

        TextRoom& m_room;
        std::size_t m_lastLength;  // Where the last block began.
        std::size_t m_planned = 0;
        bool m_isFirst = true;
    };

    void AppendEscapedRest(const TStringCore& text, std::size_t done, char16_t* out);
    template <typename Cell>
    void AppendPair(const typename Cell::Storage& stored, SpecialKind kind);
    template <typename AppendNext>
    void AppendBlocks(lumsize_t count, const AppendNext& appendNext);

    const JsonItemLayout m_layout;
    TextRoom m_room;
    Separator m_separator;
};

template <typename Cell>
void JsonItemWriter::Append(const typename Cell::Storage& stored) {
    if constexpr (std::is_same_v<Cell, StringCell>) {
        AppendString(stored);
    } else {
        constexpr std::size_t kRoom = kSeparatorUnits + Cell::kMaxUnits + kNumberCapacity;
        m_room.SetEnd(Cell::Write(stored, m_separator.Write(m_room.Ensure(kRoom))));
    }
}

inline void JsonItemWriter::AppendString(const TStringCore& text) {
    constexpr std::size_t kQuotes = 2;
    const std::size_t length = text.length();
    char16_t* out = m_separator.Write(m_room.Ensure(kSeparatorUnits + kQuotes + length));
    *out++ = u'"';
    const std::size_t copied = CopyUntilEscape(text.data(), length, out);
    out += copied;
    if (copied != length) [[unlikely]] {
        AppendEscapedRest(text, copied, out);
        return;
    }
    *out++ = u'"';
    m_room.SetEnd(out);
}

template <typename Cell>
void JsonItemWriter::AppendPair(const typename Cell::Storage& stored, SpecialKind kind) {
    BeginChild();
    if constexpr (requires { Cell::ToPlaceholder(stored); }) {
        Append<Cell>(Cell::ToPlaceholder(stored));
    } else {
        Append<Cell>(stored);
    }
    Append<KindCell>(kind);
    EndChild();
}

template <typename AppendNext>
void JsonItemWriter::AppendBlocks(lumsize_t count, const AppendNext& appendNext) {
    MemoryPlan plan(m_room);
    while (count > 0) {
        const lumsize_t length = plan.StartBlock(count);
        for (lumsize_t i = 0; i < length; ++i) {
            appendNext();
        }
        count -= length;
    }
}

template <typename Cell, typename Source>
void JsonItemWriter::AppendColumn(Source source, lumsize_t count) {
    AppendBlocks(count, [&] {
        Append<Cell>(source.GetValue());
        source.Advance();
    });
}

template <typename Cell, typename Source>
void JsonItemWriter::AppendColumnWithKinds(Source source, lumsize_t count) {
    AppendBlocks(count, [&] {
        const SpecialKind kind = source.GetKind();
        if (kind == SpecialKind::Normal) {
            Append<Cell>(source.GetValue());
        } else {
            AppendPair<Cell>(source.GetValue(), kind);
        }
        source.Advance();
    });
}

}  // namespace lum::core
