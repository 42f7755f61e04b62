#pragma once

#include "lum/core/Export.h"
#include "lum/core/store/StoreValueFwd.h"

namespace lum::core {

/// `value` with no more than `count` rows, for a look at it: an array's first elements, a table's
/// first rows, a key map of samples of its members at every depth, and a key set of arrays with
/// every key and a sample under each. Whatever has no rows, sets and special values among it, is
/// cloned whole. Neither samples of tables nor those inside of them state an order.
///
/// The rows are those of IStoreArray::GetRange, so that a `count` of 0 gives all elements of an
/// array with indices.
///
/// Threads: any; a key map must not change meanwhile. Ownership: arrays share their storage with
///   the sample, which keeps it alive.
/// Errors: NotKeyedCollection for a key set of arrays that stores its keys as SV; ExpectedArray for
///   a table with a special value for a column;
///   ColumnSizeMismatch for no rows of a table in which some columns have indices and some have
///   not.
/// Cost: O(columns and members); no element is copied, but for the numbers of runs and indices.
LUM_CORE_API SV SampleStoreValue(const StoreValue& value, unsigned count);

}  // namespace lum::core
