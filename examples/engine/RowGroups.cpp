#include "RowGroups.h"

#include <numeric>
#include <unordered_map>

#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"

namespace lumengine {
namespace {

using namespace lum::core;

template <StorageType T>
RowGroups GroupElements(const SV& column) {
    const ColumnViews views(column);
    const auto values = views.GetValues().ViewAs<T>();
    const std::vector<SpecialKind> kinds = KindsOf(column);
    MapContainer<T, unsigned> numbers = MakeEmptyMap<T, unsigned>(ElementTypeOf(column));
    std::unordered_map<SpecialKind, unsigned> numbersOfKinds;
    RowGroups groups;
    groups.groupOfRow.reserve(values.GetSize());
    for (unsigned row = 0; row < values.GetSize(); ++row) {
        const auto next = static_cast<unsigned>(groups.firstRows.size());
        const bool isNormal = kinds.empty() || kinds[row] == SpecialKind::Normal;
        const unsigned group = isNormal
                                   ? numbers.try_emplace(values[row], next).first->second
                                   : numbersOfKinds.try_emplace(kinds[row], next).first->second;
        if (group == next) {
            groups.firstRows.push_back(row);
        }
        groups.groupOfRow.push_back(group);
    }
    return groups;
}

// Groups rows that are together in both.
RowGroups Intersect(const RowGroups& some, const RowGroups& others) {
    constexpr unsigned kNone = ~0u;
    Rows firstRowOf(others.firstRows.size(), kNone);  // With a row of the group at hand.
    RowGroups groups;
    groups.groupOfRow.resize(some.groupOfRow.size());
    for (const unsigned row : ListRows(some.groupOfRow, some.firstRows.size()).rows) {
        unsigned& first = firstRowOf[others.groupOfRow[row]];
        if (first == kNone || some.groupOfRow[first] != some.groupOfRow[row]) {
            first = row;
        }
        groups.groupOfRow[row] = first;
    }
    for (unsigned row = 0; row < groups.groupOfRow.size(); ++row) {
        unsigned& group = groups.groupOfRow[row];
        if (group == row) {
            group = static_cast<unsigned>(groups.firstRows.size());
            groups.firstRows.push_back(row);
        } else {
            group = groups.groupOfRow[group];  // Its first row has its number by now.
        }
    }
    return groups;
}

}  // namespace

RowGroups GroupRows(const std::vector<SV>& columns) {
    RowGroups groups;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        RowGroups next = DispatchStorage(
            ElementTypeOf(columns[i])->GetStoreType(),
            [&]<typename T>(StorageTag<T>) { return GroupElements<T>(columns[i]); });
        groups = i == 0 ? std::move(next) : Intersect(groups, next);
    }
    return groups;
}

RowLists ListRows(std::span<const unsigned> groupOfRow, std::size_t groupCount) {
    RowLists lists{Rows(groupCount + 1), Rows(groupOfRow.size())};
    for (const unsigned group : groupOfRow) {
        ++lists.starts[group + 1];
    }
    std::partial_sum(lists.starts.begin(), lists.starts.end(), lists.starts.begin());
    Rows next = lists.starts;
    unsigned row = 0;
    for (const unsigned group : groupOfRow) {
        lists.rows[next[group]++] = row++;
    }
    return lists;
}

}  // namespace lumengine
