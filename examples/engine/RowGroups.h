#pragma once

#include <span>
#include <type_traits>
#include <vector>

#include "Columns.h"
#include "lum/core/store/Containers.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/StringType.h"

namespace lumengine {

/// An empty map under keys of that type, as key sets hold them.
template <lum::core::StorageType K, typename V>
lum::core::MapContainer<K, V> MakeEmptyMap(const lum::core::Type* keyType) {
    if constexpr (std::is_same_v<K, lum::core::RIndirectString>) {
        const lum::core::Collation& collation = keyType->As<lum::core::StringType>().GetCollation();
        return lum::core::MapContainer<K, V>(0, lum::core::CollatorHash(collation),
                                             lum::core::CollatorEqualTo(collation));
    } else {
        return {};
    }
}

/// Rows by equal keys. Groups are numbered in the order of their first rows.
struct RowGroups {
    std::vector<unsigned> groupOfRow;
    Rows firstRows;  ///< of each group
};

/// Groups rows whose elements are equal in each of the columns: values as a set tells them apart,
/// numbers by their bits and strings by their collation; specials by their kind alone. The columns
/// are arrays of one length, one at least.
///
/// Threads: any. Cost: linear; a hash probe a row and column.
/// Errors: those of the values' hash and equality, as for strings without a collator pool.
RowGroups GroupRows(const std::vector<lum::core::SV>& columns);

/// Rows by their groups, in order.
struct RowLists {
    std::span<const unsigned> operator[](std::size_t group) const {
        return std::span(rows).subspan(starts[group], starts[group + 1] - starts[group]);
    }

    Rows starts;  ///< where the rows of each group begin, and behind the last one where they end
    Rows rows;    ///< of each group, one group behind the other
};
RowLists ListRows(std::span<const unsigned> groupOfRow, std::size_t groupCount);

}  // namespace lumengine
