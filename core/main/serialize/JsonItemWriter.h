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
// BeginChild, the scalars, EndChild. At least one item is written, and nobody else touches the
// serializer before End.
//
// A source is a walk over a column: GetValue(), GetKind(), Advance().
//
// Threads: one at a time. Errors: std::length_error beyond the limit of a text, std::bad_alloc, and
// those of the cells; the text is of no use then.
class JsonItemWriter {
public:
    static constexpr lumsize_t kBlock = 512;

    explicit JsonItemWriter(JsonSerializer& serializer);
    JsonItemWriter(const JsonItemWriter&) = delete;
    JsonItemWriter& operator=(const JsonItemWriter&) = delete;

    void BeginChild() { m_place = BeginChild(m_place); }
    void EndChild() { m_place = EndChild(m_place); }
    // A scalar by the rule of its cell.
    template <typename Cell>
    void Append(const typename Cell::Storage& stored) {
        m_place = Append<Cell>(m_place, stored);
    }
    // For a caller that appends a column by itself, before each kBlock of its elements, `left` of
    // them standing out: once the first ones show how long they are, asks for the memory of all.
    void PlanMemory(lumsize_t left);
    // The next `count` elements of a column, without a look at their kinds, or as pairs of value
    // and kind where they are special.
    template <typename Cell, typename Source>
    void AppendColumn(Source source, lumsize_t count);
    template <typename Cell, typename Source>
    void AppendColumnWithKinds(Source source, lumsize_t count);
    // Hands the text over to the serializer.
    void End() { m_room.Commit(m_place.out); }

private:
    static constexpr std::size_t kSeparatorUnits = 2;

    // Where to write, and what stands in front of the next scalar. Passed by value, so that loops
    // keep it in registers. Whether there are items, so that a comma is needed, and whether a blank
    // follows are numbers, 0 or 1, that move the output without a branch.
    struct Place {
        char16_t* out;
        std::size_t hasItems;
        std::size_t isPadded;

        char16_t* WriteSeparator() const noexcept {
            out[0] = u',';
            char16_t* const behind = out + hasItems;
            behind[0] = u' ';
            return behind + isPadded;
        }
    };

    Place BeginChild(Place place);
    Place EndChild(Place place);
    // These are the insides of loops over columns, which compilers would call there since the loops
    // are many.
    template <typename Cell>
    [[gnu::always_inline]] Place Append(Place place, const typename Cell::Storage& stored);
    [[gnu::always_inline]] char16_t* WriteString(const TStringCore& text, Place place);
    char16_t* WriteStringRest(const TStringCore& text, std::size_t done, char16_t* out);
    template <typename Cell>
    [[gnu::noinline]] Place AppendPair(Place place, const typename Cell::Storage& stored,
                                       SpecialKind kind);
    template <typename AppendNext>
    void AppendInBlocks(lumsize_t count, const AppendNext& appendNext);

    const JsonItemLayout m_layout;
    TextRoom m_room;
    Place m_place;
    // The memory plan: where the last block of elements began, and how long the text may become.
    bool m_hasBlock = false;
    std::size_t m_blockStart = 0;
    std::size_t m_plannedLength = 0;
};

template <typename Cell>
inline JsonItemWriter::Place JsonItemWriter::Append(Place place,
                                                    const typename Cell::Storage& stored) {
    if constexpr (std::is_same_v<Cell, StringCell>) {
        place.out = WriteString(stored, place);
    } else {
        place.out = m_room.Ensure(place.out, kSeparatorUnits + Cell::kMaxUnits + kNumberCapacity);
        place.out = Cell::Write(stored, place.WriteSeparator());
    }
    place.hasItems = 1;
    return place;
}

inline char16_t* JsonItemWriter::WriteString(const TStringCore& text, Place place) {
    constexpr std::size_t kQuotes = 2;
    const std::size_t length = text.length();
    place.out = m_room.Ensure(place.out, kSeparatorUnits + kQuotes + length + kCopyTextSlack);
    char16_t* out = place.WriteSeparator();
    *out++ = u'"';
    const std::size_t copied = CopyTextUntilEscape(text, out);
    out += copied;
    if (copied != length) [[unlikely]] {
        out = WriteStringRest(text, copied, out);
    }
    *out++ = u'"';
    return out;
}

template <typename Cell>
JsonItemWriter::Place JsonItemWriter::AppendPair(Place place, const typename Cell::Storage& stored,
                                                 SpecialKind kind) {
    place = BeginChild(place);
    if constexpr (requires { Cell::ToPlaceholder(stored); }) {
        place = Append<Cell>(place, Cell::ToPlaceholder(stored));
    } else {
        place = Append<Cell>(place, stored);
    }
    place = Append<KindCell>(place, kind);
    return EndChild(place);
}

template <typename AppendNext>
inline void JsonItemWriter::AppendInBlocks(lumsize_t count, const AppendNext& appendNext) {
    while (count > 0) {
        PlanMemory(count);
        const lumsize_t length = std::min(count, kBlock);
        Place place = m_place;
        for (lumsize_t i = 0; i < length; ++i) {
            place = appendNext(place);
        }
        m_place = place;
        count -= length;
    }
}

template <typename Cell, typename Source>
void JsonItemWriter::AppendColumn(Source source, lumsize_t count) {
    AppendInBlocks(count, [&](Place place) {
        place = Append<Cell>(place, source.GetValue());
        source.Advance();
        return place;
    });
}

template <typename Cell, typename Source>
void JsonItemWriter::AppendColumnWithKinds(Source source, lumsize_t count) {
    AppendInBlocks(count, [&](Place place) {
        const SpecialKind kind = source.GetKind();
        place = kind == SpecialKind::Normal ? Append<Cell>(place, source.GetValue())
                                            : AppendPair<Cell>(place, source.GetValue(), kind);
        source.Advance();
        return place;
    });
}

}  // namespace lum::core
