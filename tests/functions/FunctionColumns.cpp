#include "tests/functions/FunctionColumns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <iomanip>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "lum/core/store/ValueUtil.h"
#include "tests/support/ColumnText.h"

namespace lum::core::functions_test {
namespace {

constexpr lumsize_t kBehind = 9;

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

template <typename Cell>
Cell Unwritten() {
    if constexpr (std::is_trivially_copyable_v<Cell>) {
        return std::bit_cast<Cell>(static_cast<BitsOfCell<Cell>>(0xA5A5A5A5A5A5A5A5));
    } else {
        return Cell();
    }
}

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

}  // namespace

template <typename Cell>
const std::vector<Cell>& Column<Cell>::EdgeCells() {
    using Limits = std::numeric_limits<Cell>;
    if constexpr (std::is_same_v<Cell, unsigned char>) {
        static const std::vector<Cell> cells = {0, 1, 2, 128, 254, 255};
        return cells;
    } else if constexpr (std::is_same_v<Cell, SpecialKind>) {
        static const std::vector<Cell> cells = [] {
            std::vector<Cell> kinds;
            for (const int byte : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 64, 127, 128, 255}) {
                kinds.push_back(static_cast<SpecialKind>(byte));
            }
            return kinds;
        }();
        return cells;
    } else if constexpr (std::is_integral_v<Cell>) {
        static const std::vector<Cell> cells = [] {
            std::vector<Cell> numbers;
            for (const long long number :
                 {0LL, 1LL, -1LL, 4LL, 16777217LL, 0x180000001LL, -0x80000001LL}) {
                numbers.push_back(static_cast<Cell>(number));
            }
            for (const Cell step : {0, 1}) {
                numbers.push_back(Limits::min() + step);
                numbers.push_back(Limits::max() - step);
            }
            return numbers;
        }();
        return cells;
    } else if constexpr (std::is_floating_point_v<Cell>) {
        static const std::vector<Cell> cells = [] {
            // The neighbours of the limits of integers, halves that rounding could mistake, and a
            // signalling and a quiet NaN, each with a payload.
            std::vector<Cell> magnitudes;
            for (const double number :
                 {0.0, 1.0, 2.9, 0.5, 0.49999999999999994, 0x1p52 + 1.5, 0x1p31 - 1, 0x1p31,
                  0x1p31 + 1, 0x1p63 - 1024, 0x1p63, 0x1p63 + 2048}) {
                magnitudes.push_back(static_cast<Cell>(number));
            }
            using Bits = BitsOfCell<Cell>;
            const Bits infinity = std::bit_cast<Bits>(Limits::infinity());
            const Bits nan = std::bit_cast<Bits>(Limits::quiet_NaN());
            magnitudes.insert(
                magnitudes.end(),
                {Limits::infinity(), Limits::quiet_NaN(), Limits::min(), Limits::denorm_min(),
                 Limits::max(), Limits::epsilon(), std::bit_cast<Cell>(infinity | 0x123),
                 std::bit_cast<Cell>(nan | 0x456)});
            std::vector<Cell> numbers;
            for (const Cell magnitude : magnitudes) {
                numbers.push_back(magnitude);
                numbers.push_back(-magnitude);
            }
            return numbers;
        }();
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
    } else if constexpr (std::is_same_v<Cell, LumColor>) {
        static const std::vector<Cell> cells = {LumColor::FromInt32(0), LumColor::FromInt32(-1)};
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

template <typename Cell>
Cell Column<Cell>::AnyCell(test::Random& random, Palette palette) {
    if constexpr (std::is_floating_point_v<Cell>) {
        if (palette == Palette::Specks) {
            const Cell specks[] = {0, -Cell{0}, 0, -Cell{0},
                                   std::numeric_limits<Cell>::quiet_NaN()};
            return random.OneOf(specks);
        }
    }
    const std::vector<Cell>& edges = EdgeCells();
    const bool isEdge =
        palette == Palette::Edges || (palette == Palette::RareEdges && random.Below(300) == 0);
    if constexpr (std::is_trivially_copyable_v<Cell>) {
        if (palette == Palette::Bits) {
            return std::bit_cast<Cell>(static_cast<BitsOfCell<Cell>>(random.Bits()));
        }
    }
    if constexpr (std::is_arithmetic_v<Cell> || std::is_same_v<Cell, LumDateTime>) {
        if (!isEdge) {
            return TameCell<Cell>(random);
        }
    }
    return edges[random.Below(edges.size())];
}

template <typename Cell>
std::vector<Cell> Column<Cell>::AnyCells(test::Random& random,
                                         const std::vector<SpecialKind>& kinds, Palette palette,
                                         Domain domain) {
    Cell filling = AnyCell(random, palette);
    if constexpr (std::is_floating_point_v<Cell>) {
        filling = static_cast<Cell>(random.Below(2) == 0 ? 2 : -2);
    }
    constexpr std::size_t kRarities[] = {20, 100, 500};
    const std::size_t rarity = random.OneOf(kRarities);
    const auto next = [&] {
        const bool isFilling = palette == Palette::Specks && random.Below(rarity) != 0;
        return isFilling ? filling : AnyCell(random, palette);
    };
    std::vector<Cell> cells;
    cells.reserve(kinds.size());
    for (const SpecialKind kind : kinds) {
        Cell cell = next();
        while (kind == SpecialKind::Normal && !IsIn(domain, cell)) {
            cell = AnyCell(random, palette);
        }
        cells.push_back(std::move(cell));
    }
    return cells;
}

std::vector<SpecialKind> AnyKinds(test::Random& random, lumsize_t count) {
    const std::size_t density = random.Below(4);
    std::vector<SpecialKind> kinds(count, SpecialKind::Normal);
    for (SpecialKind& kind : kinds) {
        if (density == 1 ? random.Below(10) == 0 : density >= 2) {
            kind = Column<SpecialKind>::AnyCell(random, Palette::Edges);
        }
        if (density == 2 && kind == SpecialKind::Normal) {
            kind = SpecialKind::Null;
        }
    }
    return kinds;
}

template <typename Cell>
Column<Cell>::Column(test::Random& random, lumsize_t count)
    : m_start(static_cast<lumsize_t>(1 + random.Below(8))), m_count(count) {
    using Storage = typename StorageOfCell<Cell>::Type;
    m_block =
        std::make_unique<VectorRawData<Storage>>(m_start + count + kBehind, Unwritten<Storage>());
}

template <typename Cell>
RawDataView Column<Cell>::View() {
    return {*m_block, m_start, m_count};
}

template <typename Cell>
ConstRawDataView Column<Cell>::PayloadView() {
    using Storage = typename StorageOfCell<Cell>::Type;
    if constexpr (std::is_trivially_copyable_v<Cell>) {
        m_payload = std::make_unique<UnmanagedRawData<Storage>>(
            nullptr, std::as_const(*m_block).template ViewAs<Storage>());
        return {*m_payload, m_start, m_count};
    } else {
        return View();
    }
}

template <typename Cell>
void Column<Cell>::Fill(test::Random& random, const std::vector<SpecialKind>& kinds,
                        Palette palette, Domain domain) {
    const std::vector<Cell> cells = AnyCells(random, kinds, palette, domain);
    std::copy(cells.begin(), cells.end(), Cells().begin());
}

template <typename Cell>
void Column<Cell>::Assign(const ConstRawDataView& cells) {
    const ArrayView<const Cell> view = cells.ViewAs<Cell>();
    std::copy(view.begin(), view.end(), Cells().begin());
}

template <typename Cell>
void Column<Cell>::Reverse() {
    const ArrayView<Cell> cells = Cells();
    std::reverse(cells.begin(), cells.end());
}

template <typename Cell>
void Column<Cell>::Expect(const char* what, const ConstRawDataView& expected, bool isAnyNaN) const {
    const ArrayView<const Cell> block = std::as_const(*m_block).template ViewAs<Cell>();
    const ArrayView<const Cell> cells = expected.ViewAs<Cell>();
    for (lumsize_t i = 0; i < block.GetSize(); ++i) {
        const bool isInside = i >= m_start && i < m_start + m_count;
        const Cell& wanted = isInside ? cells[i - m_start] : Unwritten<Cell>();
        if (!AreSame(block[i], wanted, isAnyNaN)) {
            std::ostringstream text;
            text << what << (isInside ? ": cell " : ": wrote beside the column, to cell ")
                 << static_cast<long long>(i) - m_start << " of " << m_count << " is "
                 << Show(block[i]) << ", expected " << Show(wanted);
            throw std::runtime_error(text.str());
        }
    }
}

template <typename Cell>
std::unique_ptr<AnyColumn> Column<Cell>::Make(test::Random& random, lumsize_t count) {
    return std::make_unique<Column>(random, count);
}

template <typename Cell>
bool Column<Cell>::AreSame(const Cell& a, const Cell& b, bool isAnyNaN) {
    if constexpr (std::is_floating_point_v<Cell>) {
        if (isAnyNaN && std::isnan(a) && std::isnan(b)) {
            return true;
        }
    }
    if constexpr (std::is_trivially_copyable_v<Cell>) {
        return std::memcmp(&a, &b, sizeof(Cell)) == 0;
    } else {
        return a == b;
    }
}

template <typename Cell>
std::string Column<Cell>::Show(const Cell& cell) {
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

void ForEachColumn(test::Random& random, const std::function<void(lumsize_t, Palette)>& check) {
    constexpr Palette kPalettes[] = {Palette::Tame, Palette::RareEdges, Palette::Edges,
                                     Palette::Bits, Palette::Specks};
    for (lumsize_t count = 0; count <= 70; ++count) {
        check(count, random.OneOf(kPalettes));
    }
    for (const lumsize_t count : {255U, 256U, 257U, 1023U, 1024U, 1025U, 4096U}) {
        const lumsize_t more = count == 4096 ? static_cast<lumsize_t>(random.Below(70)) : 0;
        for (const Palette palette : kPalettes) {
            check(count + more, palette);
        }
    }
    for (int round = 0; round < 20; ++round) {
        check(static_cast<lumsize_t>(300 + random.Below(1000)), Palette::Specks);
    }
}

template class Column<unsigned char>;
template class Column<int>;
template class Column<long long>;
template class Column<float>;
template class Column<double>;
template class Column<RIndirectString>;
template class Column<LumDateTime>;
template class Column<LumColor>;
template class Column<SV>;
template class Column<SpecialKind>;

}  // namespace lum::core::functions_test
