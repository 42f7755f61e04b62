#pragma once

#include "lum/core/Export.h"
#include "lum/core/store/SortSpecOrder.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

/// The name of an order: "UNKNOWN", "ASC", "DESC", "UNORD".
/// Threads: any. Errors: LumLogicException with Unspecified, details "Unknown sort order", for a
/// number without a name.
LUM_CORE_API TStringCore SortSpecOrderToString(SortSpecOrder order);

}  // namespace lum::core
