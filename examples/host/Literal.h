#pragma once

#include <string>
#include <vector>

#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"

namespace lumhost {

/// A value of `type`, one of the types that columns can have, from the command line. The text is
/// that of a cell (CellText), or the name of a special kind, as Null. Texts, dates and colours may
/// stand in single quotes, within which \\, \' and \n are a backslash, a quote and a line feed;
/// what is quoted is never special.
/// Errors: UsageError.
lum::core::SV ReadLiteral(const std::string& text, const lum::core::Type* type);

/// The set of the members that such texts are. Errors: UsageError.
lum::core::SV ReadSet(const std::vector<std::string>& texts, const lum::core::Type* elementType);

}  // namespace lumhost
