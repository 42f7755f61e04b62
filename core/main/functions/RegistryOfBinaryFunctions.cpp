#include "lum/core/functions/RegistryOfBinaryFunctions.h"

#include <utility>

#include "lum/core/Check.h"

namespace lum::core {

RegistryOfBinaryFunctions::RegistryOfBinaryFunctions(AddedCallback onAdded)
    : FunctionFormRegistry(std::move(onAdded)) {}

RegistryOfBinaryFunctions::~RegistryOfBinaryFunctions() = default;

void RegistryOfBinaryFunctions::Register(FunctionKey&& key, OptionalTypeRef outputType,
                                         TypeRefVec<VariableTypeRef>&& creatorInputTypes,
                                         FunctionType functionType, bool isStateful,
                                         FunctionPointer factory) {
    LUM_CHECK(key.GetInputTypes().size() == 2, LumError::BinaryInputCount, key.GetName());
    RegisterForm(std::move(key), outputType, std::move(creatorInputTypes), functionType, isStateful,
                 factory);
}

void RegistryOfBinaryFunctions::Register(FunctionKey&& key, OptionalTypeRef outputType,
                                         FunctionType functionType, FunctionPointer factory) {
    Register(std::move(key), outputType, {}, functionType, /*isStateful=*/false, factory);
}

void RegistryOfBinaryFunctions::Register(const RInternString& name, VariableTypeRef firstType,
                                         VariableTypeRef secondType, OptionalTypeRef outputType,
                                         FunctionType functionType, FunctionPointer factory) {
    Register(FunctionKey(name, firstType, secondType, FunctionKey::ArgContainer::Separate),
             outputType, functionType, factory);
}

}  // namespace lum::core
