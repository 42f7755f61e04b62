#pragma once

#include "lum/core/Export.h"
#include "lum/core/utility/LumString.h"
#include "lum/core/vtl/OperatorType.h"

namespace lum::core {

/// The name of an operator in Vtl, good until the library unloads.
/// Threads: any. Errors: InvalidOperatorValue, details "type", for a number without a name.
LUM_CORE_API const TStringCore& OperatorTypeToString(OperatorType type);

}  // namespace lum::core
