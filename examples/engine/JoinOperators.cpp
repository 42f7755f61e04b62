#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "Columns.h"
#include "Operators.h"
#include "RowGroups.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/store/ValueUtil.h"

namespace lumengine {
namespace {

using namespace lum::core;

// Which rows a join keeps: those that have partners, also the others of the left table, or all.
enum class Keeps { Partners, RowsOfLeft, RowsOfBoth };

// One of the two tables, and the columns that its rows are found by.
struct Side {
    SV table;
    std::vector<SV> keys;

    // The row that stands for none: the one behind the last.
    unsigned GetNoRow() const { return CountRows(table); }
};

Side ReadSide(const Statement& statement, std::size_t begin, std::size_t end) {
    Side side;
    const std::vector<KeyPath>& inputs = statement.spec.GetInputs();
    for (std::size_t i = begin; i < end; ++i) {
        const KeyPath& key = inputs[i];
        Require(key.GetCount() > 1 && key.GetParent() == inputs[begin].GetParent(),
                LumError::JoinKeyNotColumn, key.ToString());
        side.table = statement.store.TryGetValue(key.GetParent());
        Require(side.table != nullptr && IsTable(side.table) &&
                    side.table->AsTable().HasColumn(key.GetLeaf()),
                LumError::JoinKeyNotColumn, key.ToString());
        side.keys.push_back(side.table->AsTable().GetColumn(key.GetLeaf()));
        Require(IsPrimitive(ElementTypeOf(side.keys.back())), LumError::JoinTypeUnsupported);
    }
    return side;
}

// `shared` are the keys that stand in both tables under one name. Other names must differ.
void CheckNames(const Side& left, const Side& right, const IStoreTable::Columns& shared) {
    for (const auto& [name, column] : right.table->AsTable().GetColumns()) {
        Require(shared.count(name) != 0 || !left.table->AsTable().HasColumn(name),
                LumError::JoinColumnNameClash, name);
    }
}

// The rows of the result: in each, a row of the left table beside one of the right, or none.
struct RowPairs {
    Rows left;
    Rows right;
};

// Pairs each row of the left table, in order, with those of the right one in its group. Errors:
// those of LumSizeCastSafe, before anything is allocated.
RowPairs PairRows(std::span<const unsigned> groupOfLeftRow, const RowLists& rightRows,
                  bool keepsLeft) {
    const auto noRow = static_cast<unsigned>(rightRows.rows.size());
    const auto find = [&](unsigned group) {
        const std::span<const unsigned> found = rightRows[group];
        return keepsLeft && found.empty() ? std::span<const unsigned>(&noRow, 1) : found;
    };
    unsigned long long count = 0;
    for (const unsigned group : groupOfLeftRow) {
        count += find(group).size();
    }
    RowPairs pairs;
    pairs.right.reserve(LumSizeCastSafe(count));
    pairs.left.reserve(pairs.right.capacity());
    unsigned row = 0;
    for (const unsigned group : groupOfLeftRow) {
        const std::span<const unsigned> found = find(group);
        pairs.left.insert(pairs.left.end(), found.size(), row++);
        pairs.right.insert(pairs.right.end(), found.begin(), found.end());
    }
    return pairs;
}

// The rows of a table; a row of Null where there is none.
SV PickRows(const Side& side, const Rows& rows) {
    SV table = side.table;
    if (std::find(rows.begin(), rows.end(), side.GetNoRow()) != rows.end()) {
        IStoreTable::Columns columns;
        for (const auto& [name, column] : table->AsTable().GetColumns()) {
            const Type* const type = ElementTypeOf(column);
            const SV null = ColumnOf({factory::MakeSpecial(type, SpecialKind::Null)});
            columns.emplace(name,
                            ConcatenateArrays({column, null}, nullptr, SortSpecOrder::UNKNOWN));
        }
        table = factory::MakeTable(std::move(columns), {});
    }
    return SelectRows(table, Rows(rows));
}

SV MakeJoined(const Side& left, const Side& right, const RowPairs& pairs) {
    auto columns = PickRows(left, pairs.left)->AsTable().CopyColumns();
    columns->merge(*PickRows(right, pairs.right)->AsTable().CopyColumns());
    return factory::MakeTable(std::move(*columns),
                              IStoreTable::SortColumns(left.table->AsTable().GetSortColumns()));
}

// The pairs of rows that are equal in the keys: columns of the left table, with those of the right
// one behind them.
RowPairs FindPairs(const std::vector<SV>& keys, unsigned leftCount, Keeps keeps) {
    RowGroups groups = GroupRows(keys);
    // What is special is equal to nothing, so that such rows of either table stand alone.
    const auto aloneOnLeft = static_cast<unsigned>(groups.firstRows.size());
    const unsigned aloneOnRight = aloneOnLeft + 1;
    for (const SV& key : keys) {
        const std::vector<SpecialKind> kinds = KindsOf(key);
        for (std::size_t row = 0; row < kinds.size(); ++row) {
            if (kinds[row] != SpecialKind::Normal) {
                groups.groupOfRow[row] = row < leftCount ? aloneOnLeft : aloneOnRight;
            }
        }
    }
    const std::span<const unsigned> all(groups.groupOfRow);
    const RowLists rightRows = ListRows(all.subspan(leftCount), aloneOnRight + 1);
    RowPairs pairs = PairRows(all.first(leftCount), rightRows, keeps != Keeps::Partners);
    if (keeps == Keeps::RowsOfBoth) {
        std::vector<bool> isMet(aloneOnRight + 1);
        for (const unsigned group : all.first(leftCount)) {
            isMet[group] = true;
        }
        for (std::size_t row = leftCount; row < all.size(); ++row) {
            if (!isMet[all[row]]) {
                pairs.left.push_back(leftCount);
                pairs.right.push_back(static_cast<unsigned>(row - leftCount));
            }
        }
    }
    return pairs;
}

template <Keeps kKeeps>
SV RunJoin(const Statement& statement) {
    const std::vector<KeyPath>& inputs = statement.spec.GetInputs();
    Require(!inputs.empty() && inputs.size() % 2 == 0, LumError::InvalidInputCount);
    const std::size_t count = inputs.size() / 2;
    const Side left = ReadSide(statement, 0, count);
    const Side right = ReadSide(statement, count, 2 * count);
    std::vector<SV> keys;
    IStoreTable::Columns shared;
    for (std::size_t i = 0; i < count; ++i) {
        Require(ElementTypeOf(left.keys[i]) == ElementTypeOf(right.keys[i]),
                LumError::JoinKeyTypesDiffer);
        keys.push_back(
            ConcatenateArrays({left.keys[i], right.keys[i]}, nullptr, SortSpecOrder::UNKNOWN));
        if (inputs[i].GetLeaf() == inputs[count + i].GetLeaf()) {
            shared.emplace(inputs[i].GetLeaf(), keys.back());
        }
    }
    CheckNames(left, right, shared);
    const RowPairs pairs = FindPairs(keys, left.GetNoRow(), kKeeps);
    const SV joined = MakeJoined(left, right, pairs);
    if (kKeeps != Keeps::RowsOfBoth) {
        return joined;
    }
    // A key of both tables comes from the one that has the row.
    Rows rows = pairs.left;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        rows[row] += rows[row] == left.GetNoRow() ? pairs.right[row] : 0;
    }
    const auto columns = joined->AsTable().CopyColumns();
    for (const auto& [name, key] : shared) {
        (*columns)[name] = SelectRows(key, Rows(rows));
    }
    return factory::MakeTable(std::move(*columns), {});
}

SV RunCrossJoin(const Statement& statement) {
    const std::vector<SV> inputs = statement.ReadInputs();
    Require(inputs.size() == 2, LumError::TwoInputsNeeded);
    Require(IsTable(inputs[0]) && IsTable(inputs[1]), LumError::CrossJoinInputType);
    const Side left{inputs[0], {}};
    const Side right{inputs[1], {}};
    CheckNames(left, right, {});
    // All rows are of one group.
    const RowPairs pairs = PairRows(Rows(left.GetNoRow()), ListRows(Rows(right.GetNoRow()), 1),
                                    /*keepsLeft=*/false);
    return MakeJoined(left, right, pairs);
}

constexpr Operator kOperators[] = {
    {OperatorType::CrossJoin, Parts::None, RunCrossJoin},
    {OperatorType::FullOuterJoin, Parts::None, RunJoin<Keeps::RowsOfBoth>},
    {OperatorType::InnerJoin, Parts::None, RunJoin<Keeps::Partners>},
    {OperatorType::LeftOuterJoin, Parts::None, RunJoin<Keeps::RowsOfLeft>},
};

}  // namespace

const std::span<const Operator> kJoinOperators = kOperators;

}  // namespace lumengine
