#pragma once

#include "lum/core/Export.h"
#include "lum/core/functions/FunctionInfo.h"
#include "lum/core/functions/FunctionKey.h"
#include "lum/core/functions/RegistryOfBinaryFunctions.h"
#include "lum/core/functions/RegistryOfMultinaryFunctions.h"
#include "lum/core/functions/RegistryOfUnaryFunctions.h"

namespace lum::core {

/// The functions that a caller may use: what an engine asks before it builds a call.
///
/// Threads: every operation may run on any threads at once; none takes a lock.
/// Ownership: what is given belongs to the object and stays good as long as it.
/// Errors: LumRuntimeException as told.
class LUM_CORE_API IFunctionLookup {
public:
    virtual ~IFunctionLookup();

    virtual const RegistryOfUnaryFunctions& GetUnaryFunctions() const = 0;
    virtual const RegistryOfBinaryFunctions& GetBinaryFunctions() const = 0;
    virtual const RegistryOfMultinaryFunctions& GetMultinaryFunctions() const = 0;

    /// Whether GetFunction would find the query; false where it is ambiguous.
    virtual bool HasFunction(const FunctionKey& query) const = 0;
    /// What the query finds among the functions of all registries, as FunctionOverloads tells.
    /// Errors: AmbiguousOverload, FunctionNotFound, with the text of the query; instead of either,
    /// what FunctionKey::ToString throws for a query that has no text.
    virtual const FunctionInfo& GetFunction(const FunctionKey& query) const = 0;
};

}  // namespace lum::core
