#include <algorithm>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include "Columns.h"
#include "Operators.h"
#include "RowGroups.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/store/ValueUtil.h"

namespace lumengine {
namespace {

using namespace lum::core;

// One of the two tables, and the columns that its rows are found by.
struct Side {
    SV table;
    std::vector<RInternString> names;
    std::vector<SV> keys;

    // The row that stands for none: the one behind the last.
    unsigned GetNoRow() const { return CountRows(table); }
};

Side ReadSide(const Statement& statement, std::size_t begin, std::size_t end) {
    Side side;
    const std::vector<KeyPath>& inputs = statement.GetSpec().GetInputs();
    for (std::size_t i = begin; i < end; ++i) {
        const KeyPath& key = inputs[i];
        Require(key.GetCount() > 1 && key.GetParent() == inputs[begin].GetParent(),
                LumError::JoinKeyNotColumn, key.ToString());
        side.table = statement.GetStore().TryGetValue(key.GetParent());
        Require(side.table != nullptr && IsTable(side.table) &&
                    side.table->AsTable().HasColumn(key.GetLeaf()),
                LumError::JoinKeyNotColumn, key.ToString());
        side.names.push_back(key.GetLeaf());
        side.keys.push_back(side.table->AsTable().GetColumn(key.GetLeaf()));
        Require(IsPrimitive(side.keys.back()->AsArray().GetElementType()),
                LumError::JoinTypeUnsupported);
    }
    return side;
}

// Finds the rows of the right table that have the keys of a row of the left one. What is special is
// equal to nothing.
class Partners {
public:
    // `keys` are the columns of the left table, with those of the right one behind them.
    Partners(const std::vector<SV>& keys, unsigned leftCount)
        : m_leftCount(leftCount),
          m_groups(GroupRows(keys)),
          m_lists(ListRows(m_groups)),
          m_firstRight(m_lists.starts),
          m_isSpecial(m_groups.firstRows.size()) {
        for (unsigned row = 0; row < leftCount; ++row) {
            ++m_firstRight[m_groups.groupOfRow[row]];
        }
        for (unsigned& row : m_lists.rows) {
            row -= row < leftCount ? 0 : leftCount;
        }
        for (const SV& key : keys) {
            const std::vector<SpecialKind> kinds = KindsOf(key);
            for (std::size_t row = 0; row < kinds.size(); ++row) {
                if (kinds[row] != SpecialKind::Normal) {
                    m_isSpecial[m_groups.groupOfRow[row]] = true;
                }
            }
        }
    }

    ArrayView<const unsigned> FindRight(unsigned leftRow) const {
        const unsigned group = m_groups.groupOfRow[leftRow];
        const unsigned begin = m_firstRight[group];
        return {m_lists.rows.data() + begin,
                m_isSpecial[group] ? 0 : m_lists.starts[group + 1] - begin};
    }
    bool HasLeft(unsigned rightRow) const {
        const unsigned group = m_groups.groupOfRow[m_leftCount + rightRow];
        return !m_isSpecial[group] && m_firstRight[group] > m_lists.starts[group];
    }

private:
    unsigned m_leftCount;
    RowGroups m_groups;
    RowLists m_lists;   // In each group, rows of the left table before those of the right one.
    Rows m_firstRight;  // Where the latter begin.
    std::vector<bool> m_isSpecial;
};

// The rows of the result: in each, a row of the left table beside one of the right, or none.
struct RowPairs {
    Rows left;
    Rows right;
};

// Pairs each row of the left table with all that `find` gives for it. Errors: those of
// LumSizeCastSafe, before anything is allocated.
template <typename Find>
RowPairs PairRows(unsigned leftCount, const Find& find) {
    unsigned long long count = 0;
    for (unsigned row = 0; row < leftCount; ++row) {
        count += find(row).GetSize();
    }
    RowPairs pairs;
    pairs.right.reserve(LumSizeCastSafe(count));
    pairs.left.reserve(pairs.right.capacity());
    for (unsigned row = 0; row < leftCount; ++row) {
        const ArrayView<const unsigned> found = find(row);
        pairs.left.insert(pairs.left.end(), found.GetSize(), row);
        pairs.right.insert(pairs.right.end(), found.begin(), found.end());
    }
    return pairs;
}

// Names that both tables have are those of keys that belong together.
void CheckNames(const Side& left, const Side& right) {
    for (const auto& [name, column] : right.table->AsTable().GetColumns()) {
        bool isKey = false;
        for (std::size_t i = 0; i < left.names.size(); ++i) {
            isKey = isKey || (left.names[i] == name && right.names[i] == name);
        }
        Require(isKey || !left.table->AsTable().HasColumn(name), LumError::JoinColumnNameClash,
                name);
    }
}

// The rows of a table; a row of Null where there is none.
SV PickRows(const Side& side, const Rows& rows) {
    SV table = side.table;
    if (std::find(rows.begin(), rows.end(), side.GetNoRow()) != rows.end()) {
        IStoreTable::Columns columns;
        for (const auto& [name, column] : table->AsTable().GetColumns()) {
            const Type* const type = column->AsArray().GetElementType();
            const SV null = ColumnOf({factory::MakeSpecial(type, SpecialKind::Null)});
            columns.emplace(name,
                            ConcatenateArrays({column, null}, nullptr, SortSpecOrder::UNKNOWN));
        }
        table = factory::MakeTable(std::move(columns), {});
    }
    return SelectRows(table, Rows(rows), /*keepsOrder=*/false);
}

std::unique_ptr<IStoreTable::Columns> PutTogether(const Side& left, const Side& right,
                                                  const RowPairs& pairs) {
    auto columns = PickRows(left, pairs.left)->AsTable().CopyColumns();
    columns->merge(*PickRows(right, pairs.right)->AsTable().CopyColumns());
    return columns;
}

SV Join(const Statement& statement, bool keepsLeft, bool keepsRight) {
    statement.ExpectKeysAlone();
    const std::size_t count = statement.GetSpec().GetInputs().size();
    Require(count > 0 && count % 2 == 0, LumError::InvalidInputCount);
    const Side left = ReadSide(statement, 0, count / 2);
    const Side right = ReadSide(statement, count / 2, count);
    std::vector<SV> keys;
    for (std::size_t i = 0; i < count / 2; ++i) {
        Require(
            left.keys[i]->AsArray().GetElementType() == right.keys[i]->AsArray().GetElementType(),
            LumError::JoinKeyTypesDiffer);
        keys.push_back(
            ConcatenateArrays({left.keys[i], right.keys[i]}, nullptr, SortSpecOrder::UNKNOWN));
    }
    CheckNames(left, right);

    const Partners partners(keys, left.GetNoRow());
    const unsigned none = right.GetNoRow();
    RowPairs pairs = PairRows(left.GetNoRow(), [&](unsigned row) {
        const ArrayView<const unsigned> found = partners.FindRight(row);
        return keepsLeft && found.IsEmpty() ? ArrayView<const unsigned>(&none, 1) : found;
    });
    for (unsigned row = 0; keepsRight && row < right.GetNoRow(); ++row) {
        if (!partners.HasLeft(row)) {
            pairs.left.push_back(left.GetNoRow());
            pairs.right.push_back(row);
        }
    }
    const auto columns = PutTogether(left, right, pairs);
    if (!keepsRight) {
        return factory::MakeTable(std::move(*columns),
                                  IStoreTable::SortColumns(left.table->AsTable().GetSortColumns()));
    }
    // A key of both tables comes from the one that has the row.
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (left.names[i] == right.names[i]) {
            Rows rows = pairs.left;
            for (std::size_t row = 0; row < rows.size(); ++row) {
                if (rows[row] == left.GetNoRow()) {
                    rows[row] += pairs.right[row];
                }
            }
            (*columns)[left.names[i]] = SelectRows(keys[i], std::move(rows), /*keepsOrder=*/false);
        }
    }
    return factory::MakeTable(std::move(*columns), {});
}

}  // namespace

SV RunCrossJoin(const Statement& statement) {
    statement.ExpectKeysAlone();
    const std::vector<SV> inputs = statement.ReadInputs();
    Require(inputs.size() == 2, LumError::TwoInputsNeeded);
    Require(IsTable(inputs[0]) && IsTable(inputs[1]), LumError::CrossJoinInputType);
    const Side left{inputs[0], {}, {}};
    const Side right{inputs[1], {}, {}};
    CheckNames(left, right);
    Rows all(right.GetNoRow());
    std::iota(all.begin(), all.end(), 0u);
    const RowPairs pairs =
        PairRows(left.GetNoRow(), [&](unsigned) { return ArrayView<const unsigned>(all); });
    return factory::MakeTable(std::move(*PutTogether(left, right, pairs)),
                              IStoreTable::SortColumns(left.table->AsTable().GetSortColumns()));
}

SV RunFullOuterJoin(const Statement& statement) {
    return Join(statement, /*keepsLeft=*/true, /*keepsRight=*/true);
}

SV RunInnerJoin(const Statement& statement) {
    return Join(statement, /*keepsLeft=*/false, /*keepsRight=*/false);
}

SV RunLeftOuterJoin(const Statement& statement) {
    return Join(statement, /*keepsLeft=*/true, /*keepsRight=*/false);
}

}  // namespace lumengine
