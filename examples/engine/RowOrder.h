#pragma once

#include <vector>

#include "Columns.h"
#include "lum/core/store/SortSpecOrder.h"
#include "lum/core/store/StoreValueFwd.h"

namespace lumengine {

/// The orders that the texts ASC and DESC name. Errors: InvalidSortOrderOption for any other value.
std::vector<lum::core::SortSpecOrder> ReadSortOrders(const std::vector<lum::core::SV>& options);

/// The positions of the rows as they stand when sorted by the first column, among equals by the
/// second, and so on; rows that are equal in all keep their order. The columns are arrays of
/// primitives of one length, with an order each. Values come before specials, whatever the order
/// of the column, and specials are ordered by kind; NaN comes behind all other reals. Strings are
/// compared by their collation. Without `includeSpecials` rows with a special are left out.
///
/// Threads: any. Cost: for each column n log n comparisons.
/// Errors: std::bad_alloc; those of the collator pool.
Rows SortRows(const std::vector<lum::core::SV>& columns,
              const std::vector<lum::core::SortSpecOrder>& orders, bool includeSpecials);

}  // namespace lumengine
