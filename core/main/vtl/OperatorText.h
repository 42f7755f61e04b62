#pragma once

#include <string_view>

#include "lum/core/serialize/OperatorTypeSerializeUtils.h"
#include "lum/core/utility/LumString.h"
#include "lum/core/vtl/OperatorType.h"
#include "lum/core/vtl/OperatorTypeText.h"

namespace lum::core {

// The operator of a name, whose case counts; what an operator takes behind its name,
// OperatorHasFixedArgumentType and its neighbours say.
// Threads: any. Errors: UnknownTypeName with the text, without a report.
OperatorType OperatorTypeFromString(std::u16string_view text);
inline OperatorType OperatorTypeFromString(const TStringCore& text) {
    return OperatorTypeFromString(text.view());
}

}  // namespace lum::core
