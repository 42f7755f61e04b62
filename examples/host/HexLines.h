#pragma once

#include <string>

#include "lum/core/store/ArrayView.h"
#include "lum/core/utility/LumSize.h"

namespace lumhost {

/// The bytes of a file, line by line with what they mean:
///
///     0034  29                       list: array, specials, ascending
///
/// Threads: one thread at a time. Ownership: the bytes have to outlive the object.
/// Units: positions are bytes from the start of the file.
class HexLines {
public:
    using Position = lum::core::uint64;

    explicit HexLines(lum::core::ArrayView<const unsigned char> bytes);

    /// A line for the bytes from `begin` to `end`, of which the first ones are shown. Bytes between
    /// the last line and `begin` get a line of their own: padding, where they are fewer than 8.
    void Add(Position begin, Position end, const std::string& meaning);
    /// The lines from here on stand so many levels deeper, or higher.
    void Indent(int levels) { m_level += levels; }
    /// Whether lines are added; where not, Add does nothing.
    void SetQuiet(bool isQuiet) { m_isQuiet = isQuiet; }
    bool IsQuiet() const { return m_isQuiet; }

    const std::string& GetText() const { return m_text; }
    Position GetEndOfLast() const { return m_next; }
    /// A position as the lines show it.
    std::string Format(Position position) const;

private:
    void AddLine(Position begin, Position end, const std::string& meaning);

    lum::core::ArrayView<const unsigned char> m_bytes;
    std::size_t m_digits;  // Of a position in the file.
    int m_level = 0;
    bool m_isQuiet = false;
    Position m_next = 0;
    std::string m_text;
};

}  // namespace lumhost
