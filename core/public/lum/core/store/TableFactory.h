#pragma once

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/MemberMap.h"
#include "lum/core/store/SortSpecOrder.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/RInternString.h"

/// The makers of tables. `sortColumns` states by which columns, and in which order, the rows are
/// sorted; the statement is not checked.
///
/// Threads: any. Ownership: the table takes over both, and shares the columns' storage. No values
///   are copied.
/// Errors: NullArgument for a column without a value; TableColumnNotArray for one that is no array;
///   ColumnSizeMismatch for columns of unlike lengths, which are logged as a diagnostic first.
namespace lum::core::factory {

LUM_CORE_API SV MakeTable(std::unordered_map<RInternString, SV>&& columns,
                          std::vector<std::pair<RInternString, SortSpecOrder>>&& sortColumns);
/// A null pointer for the columns makes a table of none, one for the statement states nothing.
LUM_CORE_API SV
MakeTable(std::unique_ptr<std::unordered_map<RInternString, SV>> columns,
          std::unique_ptr<std::vector<std::pair<RInternString, SortSpecOrder>>> sortColumns);
/// The one that costs least: the others put their columns into such a map.
LUM_CORE_API SV
MakeTable(MemberMap&& columns,
          std::unique_ptr<std::vector<std::pair<RInternString, SortSpecOrder>>> sortColumns);

}  // namespace lum::core::factory
