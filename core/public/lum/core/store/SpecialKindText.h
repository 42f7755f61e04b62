#pragma once

#include "lum/core/Export.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

/// The name of a kind. Errors: IllegalSpecialKind for a number without a name.
LUM_CORE_API TStringCore SpecialKindToString(SpecialKind kind);
/// The kind of a name, in its exact case. Errors: CannotParseSpecialKind.
LUM_CORE_API SpecialKind SpecialKindFromString(const TStringCore& name);

}  // namespace lum::core
