#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <iomanip>
#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "lum/core/functions/ElementTypes.h"
#include "lum/core/store/RawData.h"
#include "lum/core/store/RawDataView.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/ColumnText.h"
#include "tests/support/Random.h"

/// Columns for functors: their memory, and cells that functions could mistake.

namespace lum::core::functions_test {

template <typename Cell>
struct StorageOfCell {
    using Type = typename TypeTraits<Cell>::Storage;
};
template <>
struct StorageOfCell<SpecialKind> {
    using Type = SpecialKind;
};

/// The unsigned number of a cell's width.
template <typename Cell>
using BitsOfCell =
    std::conditional_t<sizeof(Cell) == 1, unsigned char,
                       std::conditional_t<sizeof(Cell) == 4, unsigned, unsigned long long>>;

/// A column of `Cell`s inside a block of others, at any alignment, that are found changed where a
/// functor wrote beside the column.
template <typename Cell>
class Column {
public:
    using Storage = typename StorageOfCell<Cell>::Type;

    /// Cells that no function leaves behind.
    Column(test::Random& random, lumsize_t count)
        : m_start(static_cast<lumsize_t>(1 + random.Below(8))),
          m_count(count),
          m_block(count + m_start + kBehind, Unwritten()) {}
    Column(test::Random& random, const std::vector<Cell>& cells)
        : Column(random, static_cast<lumsize_t>(cells.size())) {
        std::copy(cells.begin(), cells.end(), Cells().begin());
    }

    ArrayView<Cell> Cells() { return View().template ViewAs<Cell>(); }
    RawDataView View() { return RawDataView(m_block, m_start, m_count); }
    /// The column as one that stands in a payload, where numbers can stand there.
    ConstRawDataView PayloadView() {
        if constexpr (std::is_trivially_copyable_v<Cell>) {
            m_payload = std::make_unique<UnmanagedRawData<Storage>>(nullptr, m_block.GetView());
            return ConstRawDataView(*m_payload, m_start, m_count);
        } else {
            return View();
        }
    }

    /// Throws, with `what`, unless the column has these cells, bit for bit, and nothing was written
    /// beside it. Where several NaN meet in a sum the processor keeps one of them; `isAnyNaN` lets
    /// it be any.
    void Expect(const char* what, const std::vector<Cell>& expected, bool isAnyNaN = false) {
        std::ostringstream text;
        const ArrayView<const Storage> block = std::as_const(m_block).GetView();
        for (lumsize_t i = 0; i < block.GetSize(); ++i) {
            const bool isInside = i >= m_start && i < m_start + m_count;
            if (!isInside && !AreSame(block[i], Unwritten())) {
                text << what << ": wrote beside the column, to " << i << " of the block";
                throw std::runtime_error(text.str());
            }
        }
        const ArrayView<const Cell> cells = Cells();
        for (lumsize_t i = 0; i < m_count; ++i) {
            if (!AreSame(cells[i], expected[i], isAnyNaN)) {
                text << what << ": cell " << i << " of " << m_count << " is " << Show(cells[i])
                     << ", expected " << Show(expected[i]);
                throw std::runtime_error(text.str());
            }
        }
    }

    template <typename T>
    static bool AreSame(const T& a, const T& b, bool isAnyNaN = false) {
        if constexpr (std::is_floating_point_v<T>) {
            if (isAnyNaN && std::isnan(a) && std::isnan(b)) {
                return true;
            }
        }
        if constexpr (std::is_trivially_copyable_v<T>) {
            return std::memcmp(&a, &b, sizeof(T)) == 0;
        } else {
            return a == b;
        }
    }
    static std::string Show(const Cell& cell) {
        std::ostringstream text;
        if constexpr (std::is_trivially_copyable_v<Cell>) {
            text << std::hex << "0x" << +std::bit_cast<BitsOfCell<Cell>>(cell) << std::dec;
            if constexpr (std::is_arithmetic_v<Cell>) {
                text << " = " << std::setprecision(17) << +cell;
            }
        } else {
            text << testing::PrintToString(cell);
        }
        return text.str();
    }

private:
    static constexpr lumsize_t kBehind = 9;

    static Storage Unwritten() {
        Storage cell{};
        if constexpr (std::is_trivially_copyable_v<Storage>) {
            std::memset(&cell, 0xA5, sizeof(cell));
        }
        return cell;
    }

    lumsize_t m_start;
    lumsize_t m_count;
    VectorRawData<Storage> m_block;
    std::unique_ptr<const RawData> m_payload;
};

/// The type that a column of `T` has in the tables of functions. LumDateTime is that of DateTime.
template <FunctionElement T>
VariableTypeRef TypeFor() {
    if constexpr (std::is_same_v<T, bool>) {
        return BoolType::Get();
    } else if constexpr (std::is_same_v<T, int>) {
        return IntType::Get32();
    } else if constexpr (std::is_same_v<T, long long>) {
        return IntType::Get64();
    } else if constexpr (std::is_same_v<T, float>) {
        return RealType::Get32();
    } else if constexpr (std::is_same_v<T, double>) {
        return RealType::Get64();
    } else if constexpr (std::is_same_v<T, RIndirectString>) {
        return StringType::Get();
    } else if constexpr (std::is_same_v<T, LumDateTime>) {
        return DateTimeType::Get();
    } else if constexpr (std::is_same_v<T, LumColor>) {
        return ColorType::Get();
    } else {
        return VariableTypeRef::AnyType;
    }
}

/// Cells where functions go wrong: limits, both zeros, NaN with payloads, Bool bytes that are
/// neither 0 nor 1.
template <typename Cell>
const std::vector<Cell>& EdgeCells() {
    using Limits = std::numeric_limits<Cell>;
    if constexpr (std::is_same_v<Cell, unsigned char>) {
        static const std::vector<Cell> cells = {0, 1, 2, 128, 254, 255};
        return cells;
    } else if constexpr (std::is_integral_v<Cell>) {
        static const std::vector<Cell> cells = {Limits::min(),
                                                Limits::min() + 1,
                                                Limits::max(),
                                                Limits::max() - 1,
                                                0,
                                                1,
                                                -1,
                                                static_cast<Cell>(0x180000001LL),
                                                static_cast<Cell>(-0x80000001LL),
                                                16777217,
                                                4};
        return cells;
    } else if constexpr (std::is_floating_point_v<Cell>) {
        using Bits = detail::BitsOf<Cell>;
        // A signalling NaN and a quiet one, each with a payload.
        constexpr Bits kInfinity = std::bit_cast<Bits>(Limits::infinity());
        constexpr Bits kNegativeNaN = std::bit_cast<Bits>(-Limits::quiet_NaN());
        static const std::vector<Cell> cells = {0,
                                                -Cell{0},
                                                1,
                                                -1,
                                                Limits::infinity(),
                                                -Limits::infinity(),
                                                Limits::quiet_NaN(),
                                                std::bit_cast<Cell>(kInfinity | 0x123),
                                                std::bit_cast<Cell>(kNegativeNaN | 0x456),
                                                Limits::min(),
                                                -Limits::denorm_min(),
                                                Limits::lowest(),
                                                Limits::max(),
                                                Limits::epsilon(),
                                                Cell(2.9),
                                                Cell(-2.9),
                                                Cell(-0.5),
                                                Cell(2147483648.0),
                                                Cell(2147483647.0),
                                                Cell(-2147483648.0),
                                                Cell(-2147483649.0),
                                                Cell(9223372036854775808.0),
                                                Cell(9223372036854774784.0),
                                                Cell(-9223372036854775808.0),
                                                Cell(-9223372036854777856.0),
                                                Cell(0.49999999999999994),
                                                Cell(4503599627370497.5)};
        return cells;
    } else if constexpr (std::is_same_v<Cell, LumDateTime>) {
        static const std::vector<Cell> cells = {LumDateTime(),
                                                LumDateTime::DateTimeMinimum,
                                                LumDateTime::DateTimeMaximum,
                                                LumDateTime::FromValue(0),
                                                LumDateTime::FromValue(~0ULL),
                                                LumDateTime(1582, 10, 4, 23, 59, 59, 9999),
                                                LumDateTime(1582, 10, 15, 0, 0, 0, 0)};
        return cells;
    } else if constexpr (std::is_same_v<Cell, SV>) {
        static const std::vector<Cell> cells = {
            MakeStoreValue(IntType::Get32(), 1), MakeStoreValue(IntType::Get32(), 1),
            MakeStoreValue(IntType::Get32(), 2), MakeStoreValue(IntType::Get64(), 1LL), SV()};
        return cells;
    } else {
        static const std::vector<Cell> cells = {
            L"", L"a", L"A", L"\u00e4", L"a text that is too long to stand inline", L" a"};
        return cells;
    }
}

/// What a column is made of. Sums of edge cells are NaN soon, and those of tame ones never.
enum class Palette { Tame, RareEdges, Edges, Bits };
/// What a function can bear, and its model: not all dates, of which early ones are of another
/// calendar, and not all divisors.
enum class Domain { All, GregorianDates, Divisors };

template <typename Cell>
bool IsIn(Domain domain, const Cell& cell) {
    if constexpr (std::is_same_v<Cell, LumDateTime>) {
        return domain != Domain::GregorianDates || (cell >= LumDateTime(1584, 1, 1, 0, 0, 0, 0) &&
                                                    cell <= LumDateTime::DateTimeMaximum);
    } else if constexpr (std::is_arithmetic_v<Cell>) {
        // The lowest integer has no quotient by -1.
        return domain != Domain::Divisors ||
               (cell != 0 && (std::is_floating_point_v<Cell> || cell != static_cast<Cell>(-1)));
    } else {
        return true;
    }
}

// Of numbers ties, both zeros among them, are half of what goes wrong.
template <typename Cell>
Cell TameCell(test::Random& random) {
    if constexpr (std::is_same_v<Cell, LumDateTime>) {
        const unsigned long long first = LumDateTime::DateTimeMinimum.GetValue();
        const unsigned long long range = LumDateTime::DateTimeMaximum.GetValue() - first;
        return LumDateTime::FromValue(first + random.Bits() % range);
    } else if constexpr (std::is_floating_point_v<Cell>) {
        const Cell number = static_cast<Cell>(random.Below(9)) / 2;
        return random.Below(2) == 0 ? number : -number;
    } else if constexpr (std::is_signed_v<Cell>) {
        return static_cast<Cell>(random.Below(9)) - 4;
    } else {
        return static_cast<Cell>(random.Below(2));
    }
}

template <typename Cell>
Cell AnyCell(test::Random& random, Palette palette) {
    const std::vector<Cell>& edges = EdgeCells<Cell>();
    const bool isEdge =
        palette == Palette::Edges || (palette == Palette::RareEdges && random.Below(300) == 0);
    if constexpr (std::is_trivially_copyable_v<Cell>) {
        if (palette == Palette::Bits) {
            return std::bit_cast<Cell>(static_cast<BitsOfCell<Cell>>(random.Bits()));
        }
        if (!isEdge) {
            return TameCell<Cell>(random);
        }
    }
    return edges[random.Below(edges.size())];
}

template <typename Cell>
std::vector<Cell> AnyCells(test::Random& random, lumsize_t count, Palette palette,
                           Domain domain = Domain::All) {
    std::vector<Cell> cells;
    cells.reserve(count);
    while (cells.size() < count) {
        Cell cell = AnyCell<Cell>(random, palette);
        while (!IsIn(domain, cell)) {
            cell = AnyCell<Cell>(random, palette);
        }
        cells.push_back(std::move(cell));
    }
    return cells;
}

inline SpecialKind AnyKind(test::Random& random) {
    // Bytes from outside may be kinds that nobody knows.
    static constexpr int kUnknown[] = {10, 11, 64, 127, 128, 255};
    const std::size_t choice = random.Below(16);
    return static_cast<SpecialKind>(choice < kSpecialKindCount ? static_cast<int>(choice)
                                                               : kUnknown[choice - 10]);
}

/// Kinds of a column: of none, a few, all or any of the cells.
inline std::vector<SpecialKind> AnyKinds(test::Random& random, lumsize_t count) {
    const std::size_t density = random.Below(4);
    std::vector<SpecialKind> kinds(count, SpecialKind::Normal);
    for (SpecialKind& kind : kinds) {
        if (density == 1 ? random.Below(10) == 0 : density >= 2) {
            kind = AnyKind(random);
        }
        if (density == 2 && kind == SpecialKind::Normal) {
            kind = SpecialKind::Null;
        }
    }
    return kinds;
}

/// Calls `check(count, palette)` for columns of every length around the widths of vectors and of
/// blocks.
template <typename Check>
void ForEachColumn(test::Random& random, Check check) {
    constexpr Palette kPalettes[] = {Palette::Tame, Palette::RareEdges, Palette::Edges,
                                     Palette::Bits};
    for (lumsize_t count = 0; count <= 70; ++count) {
        check(count, random.OneOf(kPalettes));
    }
    for (const lumsize_t count : {255U, 256U, 257U, 1023U, 1024U, 1025U, 4096U}) {
        for (const Palette palette : kPalettes) {
            const bool isLong = count == 4096;
            check(count + static_cast<lumsize_t>(isLong ? random.Below(70) : 0), palette);
        }
    }
}

/// Names elements of `T...` for the rows of a table.
template <FunctionElement... T, typename Action>
void ForTypes(Action action) {
    (action.template operator()<T>(), ...);
}

}  // namespace lum::core::functions_test
