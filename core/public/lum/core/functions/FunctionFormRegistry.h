#pragma once

#include <functional>

#include "lum/core/Export.h"
#include "lum/core/functions/FunctionInfo.h"
#include "lum/core/functions/FunctionKey.h"
#include "lum/core/functions/FunctionRegistryMap.h"
#include "lum/core/functions/RegisteredFunctions.h"

namespace lum::core {

/// What the registries of unary and of binary functions share: entries of two forms, each put in by
/// a registration of its own under the same key.
///
/// Threads: filled once, on one thread, then read on any threads at once; no operation takes a
///   lock, and none may run beside a registration.
/// Ownership: owns its entries. References to them stay good as long as the registry.
/// Errors: LumRuntimeException as told, with the function's name where nothing else is said.
class LUM_CORE_API FunctionFormRegistry {
public:
    using FunctionPointer = RegisteredFunctions::FunctionPointer;
    /// Is told each new key and what it promises, after the entry was made. Where it throws, the
    /// entry stays without a function.
    using AddedCallback = std::function<void(const FunctionKey&, FunctionInfo&&)>;
    using Visitor = std::function<void(const FunctionKey&, const RegisteredFunctions&)>;

    /// The form, and the kind of its factory: creators are given values.
    enum class FunctionType : unsigned int {
        Regular = 0,
        Special = 1,
        CreatorRegular = 2,
        CreatorSpecial = 3,
    };

    FunctionFormRegistry(const FunctionFormRegistry&) = delete;
    FunctionFormRegistry& operator=(const FunctionFormRegistry&) = delete;

    /// The entry that the query finds, as FunctionOverloads tells.
    /// Errors: AmbiguousOverload, FunctionNotFound, with the text of the query.
    const RegisteredFunctions& GetFunctions(const FunctionKey& query) const {
        return m_functions.Find(query);
    }
    /// Calls `visit` with each entry, in the order in which their keys were first registered.
    void VisitFunctions(const Visitor& visit) const { m_functions.ForEach(visit); }

protected:
    explicit FunctionFormRegistry(AddedCallback&& onAdded);
    ~FunctionFormRegistry();

    /// Register of the derived classes, behind their test of the number of inputs.
    void RegisterForm(FunctionKey&& key, OptionalTypeRef outputType,
                      TypeRefVec<VariableTypeRef>&& creatorInputTypes, FunctionType functionType,
                      bool isStateful, FunctionPointer factory);

private:
    RegisteredFunctions& FindOrInsert(FunctionKey&& key, OptionalTypeRef outputType,
                                      TypeRefVec<VariableTypeRef>&& creatorInputTypes,
                                      FunctionType functionType, bool isStateful);

    const AddedCallback m_onAdded;
    FunctionRegistryMap<RegisteredFunctions> m_functions;
};

}  // namespace lum::core
