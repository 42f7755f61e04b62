#pragma once

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "lum/core/functions/ElementTypes.h"
#include "lum/core/store/RawData.h"
#include "lum/core/store/RawDataView.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/Random.h"

/// Columns for functors: their memory, and cells that functions could mistake. What is here for a
/// type of cell is compiled once, in FunctionColumns.cpp.

namespace lum::core::functions_test {

/// What a column is made of. Sums of edge cells are NaN soon, and those of tame ones never. Specks
/// are a few cells in a column of one other cell: loops that take several cells at once must notice
/// a zero, of either sign, or a NaN among them.
enum class Palette { Tame, RareEdges, Edges, Bits, Specks };
/// What a function can bear, and its model: not all dates, of which early ones are of another
/// calendar, and not all divisors.
enum class Domain { All, GregorianDates, Divisors };

/// Kinds of a column: of none, a few, all or any of the cells.
std::vector<SpecialKind> AnyKinds(test::Random& random, lumsize_t count);

/// A column inside a block of other cells, at any alignment, that are found changed where a functor
/// wrote beside the column.
class AnyColumn {
public:
    virtual ~AnyColumn() = default;

    virtual RawDataView View() = 0;
    /// The column as one that stands in a payload, where numbers can stand there.
    virtual ConstRawDataView PayloadView() = 0;
    virtual void Fill(test::Random& random, const std::vector<SpecialKind>& kinds, Palette palette,
                      Domain domain) = 0;
    /// The first cells become these.
    virtual void Assign(const ConstRawDataView& cells) = 0;
    virtual void Reverse() = 0;
    /// Throws, with `what`, unless the column has the cells `expected`, bit for bit, and nothing
    /// was written beside it. Where several NaN meet in a sum the processor keeps one of them;
    /// `isAnyNaN` lets it be any.
    virtual void Expect(const char* what, const ConstRawDataView& expected,
                        bool isAnyNaN) const = 0;
};

template <typename Cell>
class Column : public AnyColumn {
public:
    /// Cells that no function leaves behind.
    Column(test::Random& random, lumsize_t count);

    ArrayView<Cell> Cells() { return View().template ViewAs<Cell>(); }
    RawDataView View() override;
    ConstRawDataView PayloadView() override;
    void Fill(test::Random& random, const std::vector<SpecialKind>& kinds, Palette palette,
              Domain domain) override;
    void Assign(const ConstRawDataView& cells) override;
    void Reverse() override;
    void Expect(const char* what, const ConstRawDataView& expected, bool isAnyNaN) const override;

    static std::unique_ptr<AnyColumn> Make(test::Random& random, lumsize_t count);
    /// Cells where functions go wrong: limits, both zeros, NaN with payloads, Bool bytes that are
    /// neither 0 nor 1, kinds that nobody knows.
    static const std::vector<Cell>& EdgeCells();
    static Cell AnyCell(test::Random& random, Palette palette);
    /// Cells for these kinds; outside of `domain` only where a special hides it.
    static std::vector<Cell> AnyCells(test::Random& random, const std::vector<SpecialKind>& kinds,
                                      Palette palette, Domain domain = Domain::All);
    static bool AreSame(const Cell& a, const Cell& b, bool isAnyNaN = false);
    static std::string Show(const Cell& cell);

private:
    lumsize_t m_start;
    lumsize_t m_count;
    std::unique_ptr<RawData> m_block;
    std::unique_ptr<const RawData> m_payload;
};

extern template class Column<unsigned char>;
extern template class Column<int>;
extern template class Column<long long>;
extern template class Column<float>;
extern template class Column<double>;
extern template class Column<RIndirectString>;
extern template class Column<LumDateTime>;
extern template class Column<LumColor>;
extern template class Column<SV>;
extern template class Column<SpecialKind>;

/// Calls `check(count, palette)` for columns of every length around the widths of vectors and of
/// blocks.
void ForEachColumn(test::Random& random, const std::function<void(lumsize_t, Palette)>& check);

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

/// Names elements of `T...` for the rows of a table.
template <FunctionElement... T, typename Action>
void ForTypes(Action action) {
    (action.template operator()<T>(), ...);
}

}  // namespace lum::core::functions_test
