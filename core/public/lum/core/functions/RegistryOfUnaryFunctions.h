#pragma once

#include "lum/core/Export.h"
#include "lum/core/functions/FunctionFactories.h"
#include "lum/core/functions/FunctionFormRegistry.h"
#include "lum/core/functions/LumRawFunctions.h"

namespace lum::core {

/// The functions of one input, by key. A factory is a UnaryFunctionFactory, or that of a creator a
/// UnaryCreatorFactory, given through ToFunctionPointer.
///
/// Threads, ownership, errors: those of FunctionFormRegistry.
class LUM_CORE_API RegistryOfUnaryFunctions : public FunctionFormRegistry {
public:
    /// `onAdded` must not be empty.
    explicit RegistryOfUnaryFunctions(AddedCallback onAdded);
    ~RegistryOfUnaryFunctions();

    /// Adds a form to the entry of the key, whose first registration makes the entry, fixes its
    /// output type and flags, and tells the callback. `creatorInputTypes` are those of the values
    /// that a creator takes.
    /// A second form is not compared with the first: it has to be of the same kind, creator or not,
    /// and of the same output type, or calling it is undefined.
    /// Errors, nothing being registered: UnaryInputCount unless the key has one input;
    ///   EmptyOutputType without an output type; FunctionExists, SpecialFunctionExists where the
    ///   entry has that form. Where the callback throws, or the factory is null, which is
    ///   NullTransformFunction, a new entry stays without a function.
    void Register(FunctionKey&& key, OptionalTypeRef outputType,
                  TypeRefVec<VariableTypeRef>&& creatorInputTypes, FunctionType functionType,
                  bool isStateful, FunctionPointer factory);
    /// The same without creator inputs and without state.
    void Register(FunctionKey&& key, OptionalTypeRef outputType, FunctionType functionType,
                  FunctionPointer factory);
    /// The same for a key of separate inputs.
    void Register(const RInternString& name, VariableTypeRef inputType, OptionalTypeRef outputType,
                  FunctionType functionType, FunctionPointer factory);

    /// The contents of the entry that the query finds.
    /// Errors: as GetFunctions; NullTransformFunction where the entry has no function.
    LumRawUnaryFunctions GetRawFunctions(const FunctionKey& query) const {
        return LumRawUnaryFunctions(GetFunctions(query));
    }
};

}  // namespace lum::core
