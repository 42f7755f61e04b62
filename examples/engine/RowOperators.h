#pragma once

#include <vector>

#include "Statement.h"
#include "lum/core/store/StoreValueFwd.h"

/// The operators that choose, order and join elements of arrays and rows of tables. Each gives the
/// value of the statement's one output, and changes nothing.
///
/// Threads: any. Errors: LumRuntimeException; docs/vtl.md lists the codes of each operator.
namespace lumengine {

lum::core::SV RunFilter(const Statement& statement);
lum::core::SV RunDistinct(const Statement& statement);
lum::core::SV RunReverse(const Statement& statement);
lum::core::SV RunSlice(const Statement& statement);
lum::core::SV RunIndex(const Statement& statement);
lum::core::SV RunConcat(const Statement& statement);
lum::core::SV RunCreateTable(const Statement& statement);
lum::core::SV RunMultiSort(const Statement& statement);

}  // namespace lumengine
