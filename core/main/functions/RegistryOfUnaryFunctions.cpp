#include "lum/core/functions/RegistryOfUnaryFunctions.h"

#include <utility>

#include "lum/core/Check.h"

namespace lum::core {

RegistryOfUnaryFunctions::RegistryOfUnaryFunctions(AddedCallback onAdded)
    : FunctionFormRegistry(std::move(onAdded)) {}

RegistryOfUnaryFunctions::~RegistryOfUnaryFunctions() = default;

void RegistryOfUnaryFunctions::Register(FunctionKey&& key, OptionalTypeRef outputType,
                                        TypeRefVec<VariableTypeRef>&& creatorInputTypes,
                                        FunctionType functionType, bool isStateful,
                                        FunctionPointer factory) {
    LUM_CHECK(key.GetInputTypes().size() == 1, LumError::UnaryInputCount, key.GetName());
    RegisterForm(std::move(key), outputType, std::move(creatorInputTypes), functionType, isStateful,
                 factory);
}

void RegistryOfUnaryFunctions::Register(FunctionKey&& key, OptionalTypeRef outputType,
                                        FunctionType functionType, FunctionPointer factory) {
    Register(std::move(key), outputType, {}, functionType, /*isStateful=*/false, factory);
}

void RegistryOfUnaryFunctions::Register(const RInternString& name, VariableTypeRef inputType,
                                        OptionalTypeRef outputType, FunctionType functionType,
                                        FunctionPointer factory) {
    Register(FunctionKey(name, inputType), outputType, functionType, factory);
}

}  // namespace lum::core
