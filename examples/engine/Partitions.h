#pragma once

#include <functional>

#include "Statement.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/StoreValueFwd.h"

namespace lumengine {

/// What a groupBy or applyByPartition gives. `run` runs the statements below it, once in a store of
/// each partition: the rows with equal keys, as a table under the table's own key, of those columns
/// that the statements read. What they write below the output is collected.
///
/// Threads: any. Ownership: shares the table's storage; `run` is not kept.
/// Errors: LumRuntimeException; docs/vtl.md lists the codes; what `run` throws.
lum::core::SV RunByPartition(const Statement& statement,
                             const std::function<void(lum::core::IDataStore&)>& run);

}  // namespace lumengine
