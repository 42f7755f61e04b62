#pragma once

#include <functional>

#include "lum/core/Export.h"
#include "lum/core/functions/FunctionFactories.h"
#include "lum/core/functions/FunctionInfo.h"
#include "lum/core/functions/FunctionKey.h"
#include "lum/core/functions/FunctionRegistryMap.h"
#include "lum/core/functions/RegisteredFunctions.h"

namespace lum::core {

/// The functions that compute one value from a vector of values, by key. What is registered is no
/// factory but the function itself, a MultinaryFunction of the output type, given through
/// ToFunctionPointer and had back through GetMultinaryFunction.
///
/// Threads: filled once, on one thread, then read on any threads at once; no operation takes a
///   lock, and none may run beside a registration.
/// Ownership: owns its entries. References to them stay good as long as the registry.
/// Errors: LumRuntimeException as told.
class LUM_CORE_API RegistryOfMultinaryFunctions {
public:
    using FunctionPointer = RegisteredFunctions::FunctionPointer;
    /// Is told each key and what it promises before its entry is made, and refuses, by an
    /// exception, keys that it has.
    using AddedCallback = std::function<void(const FunctionKey&, FunctionInfo&&)>;
    using Visitor = std::function<void(const FunctionKey&, const RegisteredFunctions&)>;

    /// `onAdded` must not be empty.
    explicit RegistryOfMultinaryFunctions(AddedCallback onAdded);
    ~RegistryOfMultinaryFunctions();
    RegistryOfMultinaryFunctions(const RegistryOfMultinaryFunctions&) = delete;
    RegistryOfMultinaryFunctions& operator=(const RegistryOfMultinaryFunctions&) = delete;

    /// Adds a function under the key with its container set to Vector, as queries must have it too.
    /// Its entry says that it has state, so that nobody shares it between columns; what the
    /// callback is told does not.
    /// Errors, each with the function's name and without an entry: EmptyOutputType without an
    ///   output type; those of the callback; NullTransformFunction for null, of which the callback
    ///   has then been told.
    void Register(FunctionKey&& key, OptionalTypeRef outputType, FunctionPointer function);

    /// The entry that the query finds, as FunctionOverloads tells.
    /// Errors: AmbiguousOverload, FunctionNotFound, with the text of the query.
    const RegisteredFunctions& GetFunctions(const FunctionKey& query) const {
        return m_functions.Find(query);
    }
    /// Calls `visit` with each entry, in the order in which they were registered.
    void VisitFunctions(const Visitor& visit) const { m_functions.ForEach(visit); }

private:
    const AddedCallback m_onAdded;
    FunctionRegistryMap<RegisteredFunctions> m_functions;
};

}  // namespace lum::core
