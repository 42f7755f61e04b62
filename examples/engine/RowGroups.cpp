#include "RowGroups.h"

#include <unordered_map>

#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/RawDataView.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TemporaryRawData.h"

namespace lumengine {
namespace {

using namespace lum::core;

// Adds the next row to the group of its key.
template <typename Numbers, typename Key>
void AddRow(Numbers& numbers, const Key& key, RowGroups& groups) {
    const auto next = static_cast<unsigned>(groups.firstRows.size());
    const auto [entry, isNew] = numbers.try_emplace(key, next);
    if (isNew) {
        groups.firstRows.push_back(static_cast<unsigned>(groups.groupOfRow.size()));
    }
    groups.groupOfRow.push_back(entry->second);
}

template <StorageType T>
RowGroups GroupElements(const SV& column) {
    const IStoreArray& array = column->AsArray();
    TemporaryRawData scratch;
    const ConstRawDataView view = array.GetValuesView(scratch, 0, array.GetCount());
    const auto values = view.ViewAs<T>();
    const std::vector<SpecialKind> kinds = KindsOf(column);
    MapContainer<T, unsigned> numbers = MakeEmptyMap<T, unsigned>(array.GetElementType());
    std::unordered_map<SpecialKind, unsigned> numbersOfKinds;
    RowGroups groups;
    groups.groupOfRow.reserve(values.GetSize());
    for (lumsize_t row = 0; row < values.GetSize(); ++row) {
        if (kinds.empty() || kinds[row] == SpecialKind::Normal) {
            AddRow(numbers, values[row], groups);
        } else {
            AddRow(numbersOfKinds, kinds[row], groups);
        }
    }
    return groups;
}

// Groups rows that are together in both.
RowGroups Intersect(const RowGroups& some, const RowGroups& others) {
    constexpr unsigned kNone = ~0u;
    Rows firstRowOf(others.firstRows.size(), kNone);  // With a row of the group at hand.
    RowGroups groups;
    groups.groupOfRow.resize(some.groupOfRow.size());
    for (const unsigned row : ListRows(some).rows) {
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
            columns[i]->AsArray().GetElementType()->GetStoreType(),
            [&]<typename T>(StorageTag<T>) { return GroupElements<T>(columns[i]); });
        groups = i == 0 ? std::move(next) : Intersect(groups, next);
    }
    return groups;
}

RowLists ListRows(const RowGroups& groups) {
    RowLists lists{Rows(groups.firstRows.size() + 1), Rows(groups.groupOfRow.size())};
    for (const unsigned group : groups.groupOfRow) {
        ++lists.starts[group + 1];
    }
    for (std::size_t group = 1; group < lists.starts.size(); ++group) {
        lists.starts[group] += lists.starts[group - 1];
    }
    Rows next = lists.starts;
    for (unsigned row = 0; row < groups.groupOfRow.size(); ++row) {
        lists.rows[next[groups.groupOfRow[row]]++] = row;
    }
    return lists;
}

}  // namespace lumengine
