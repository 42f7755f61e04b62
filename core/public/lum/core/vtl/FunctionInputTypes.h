#pragma once

#include <vector>

#include "lum/core/Export.h"

namespace lum::core {

class FunctionSpec;
class ITypeLookup;
class Type;

/// The types of a function's operands, in their order: of a key what `lookup` says, of a literal
/// its own. FunctionKey::FromNonVariableInputs makes of them the key by which a registry finds the
/// function.
/// Threads: those of `lookup`. Errors: those of ITypeLookup::GetType; ValueSpec::IsKey's for an
/// operand that is neither key nor literal.
LUM_CORE_API std::vector<const Type*> GetFunctionInputTypes(const FunctionSpec& function,
                                                            const ITypeLookup& lookup);

}  // namespace lum::core
