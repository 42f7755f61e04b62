#pragma once

#include <functional>
#include <memory>

#include "lum/core/Export.h"
#include "lum/core/functions/IFunctionLookup.h"

namespace lum::core {

/// The three registries, and one map of all their keys, which they keep up to date themselves.
///
/// Threads: filled once, on one thread, before anybody looks anything up; then as IFunctionLookup.
/// Errors: LumRuntimeException as told; what was registered before stays.
class LUM_CORE_API FunctionRegistry : public IFunctionLookup {
public:
    using Visitor = std::function<void(const FunctionKey&, const FunctionInfo&)>;

    /// An empty registry.
    static std::unique_ptr<FunctionRegistry> Make();

    using IFunctionLookup::GetBinaryFunctions;
    using IFunctionLookup::GetMultinaryFunctions;
    using IFunctionLookup::GetUnaryFunctions;

    /// Makes a key known. Registering a function does this; on its own it serves a host whose
    /// functions run elsewhere.
    /// Errors: FunctionExists, with the function's name, where a key that AreKeysExactlyEqual holds
    /// for is known.
    virtual void AddFunction(const FunctionKey& key, FunctionInfo info) = 0;

    virtual RegistryOfUnaryFunctions& GetUnaryFunctions() = 0;
    virtual RegistryOfBinaryFunctions& GetBinaryFunctions() = 0;
    virtual RegistryOfMultinaryFunctions& GetMultinaryFunctions() = 0;

    /// Calls `visit` with each known key, in the order in which they were added.
    virtual void VisitFunctions(const Visitor& visit) const = 0;
};

}  // namespace lum::core
