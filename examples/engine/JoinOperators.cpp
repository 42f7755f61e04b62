#include <algorithm>
#include <memory>
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

// The rows of the result: in each, a row of the left table beside one of the right, or none.
struct RowPairs {
    Rows left;
    Rows right;
};

// Pairs each row of the left table, in order, with those of the right one in its group. Errors:
// those of LumSizeCastSafe, before anything is allocated.
RowPairs PairRows(ArrayView<const unsigned> groupOfLeftRow, const RowLists& rightRows,
                  bool keepsLeft) {
    const auto noRow = static_cast<unsigned>(rightRows.rows.size());
    const auto find = [&](unsigned group) {
        const ArrayView<const unsigned> found = rightRows[group];
        return keepsLeft && found.IsEmpty() ? ArrayView<const unsigned>(&noRow, 1) : found;
    };
    unsigned long long count = 0;
    for (const unsigned group : groupOfLeftRow) {
        count += find(group).GetSize();
    }
    RowPairs pairs;
    pairs.right.reserve(LumSizeCastSafe(count));
    pairs.left.reserve(pairs.right.capacity());
    unsigned row = 0;
    for (const unsigned group : groupOfLeftRow) {
        const ArrayView<const unsigned> found = find(group);
        pairs.left.insert(pairs.left.end(), found.GetSize(), row++);
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

    RowGroups groups = GroupRows(keys);
    // What is special is equal to nothing, so that such rows of either table stand alone.
    const auto aloneOnLeft = static_cast<unsigned>(groups.firstRows.size());
    const unsigned aloneOnRight = aloneOnLeft + 1;
    const unsigned leftCount = left.GetNoRow();
    for (const SV& key : keys) {
        const std::vector<SpecialKind> kinds = KindsOf(key);
        for (std::size_t row = 0; row < kinds.size(); ++row) {
            if (kinds[row] != SpecialKind::Normal) {
                groups.groupOfRow[row] = row < leftCount ? aloneOnLeft : aloneOnRight;
            }
        }
    }
    const ArrayView<const unsigned> groupOfRow(groups.groupOfRow);
    const auto groupOfLeftRow = groupOfRow.GetSlice(0, leftCount);
    const auto groupOfRightRow = groupOfRow.GetSlice(leftCount, right.GetNoRow());
    RowPairs pairs =
        PairRows(groupOfLeftRow, ListRows(groupOfRightRow, aloneOnRight + 1), keepsLeft);
    if (keepsRight) {
        std::vector<bool> isMet(aloneOnRight + 1);
        for (const unsigned group : groupOfLeftRow) {
            isMet[group] = true;
        }
        for (unsigned row = 0; row < groupOfRightRow.GetSize(); ++row) {
            if (!isMet[groupOfRightRow[row]]) {
                pairs.left.push_back(leftCount);
                pairs.right.push_back(row);
            }
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

SV RunCrossJoin(const Statement& statement) {
    const std::vector<SV> inputs = statement.ReadInputs();
    Require(inputs.size() == 2, LumError::TwoInputsNeeded);
    Require(IsTable(inputs[0]) && IsTable(inputs[1]), LumError::CrossJoinInputType);
    const Side left{inputs[0], {}, {}};
    const Side right{inputs[1], {}, {}};
    CheckNames(left, right);
    // All rows are of one group.
    const RowPairs pairs = PairRows(Rows(left.GetNoRow()), ListRows(Rows(right.GetNoRow()), 1),
                                    /*keepsLeft=*/false);
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

constexpr Operator kOperators[] = {
    {OperatorType::CrossJoin, Parts::None, RunCrossJoin},
    {OperatorType::FullOuterJoin, Parts::None, RunFullOuterJoin},
    {OperatorType::InnerJoin, Parts::None, RunInnerJoin},
    {OperatorType::LeftOuterJoin, Parts::None, RunLeftOuterJoin},
};

}  // namespace

const std::span<const Operator> kJoinOperators = kOperators;

}  // namespace lumengine
