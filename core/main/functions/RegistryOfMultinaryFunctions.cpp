#include "lum/core/functions/RegistryOfMultinaryFunctions.h"

#include <utility>

#include "lum/core/Check.h"

namespace lum::core {

RegistryOfMultinaryFunctions::RegistryOfMultinaryFunctions(AddedCallback onAdded)
    : m_onAdded(std::move(onAdded)) {}

RegistryOfMultinaryFunctions::~RegistryOfMultinaryFunctions() = default;

void RegistryOfMultinaryFunctions::Register(FunctionKey&& key, OptionalTypeRef outputType,
                                            FunctionPointer function) {
    LUM_CHECK(outputType.HasType(), LumError::EmptyOutputType, key.GetName());
    key.SetInputArgContainer(FunctionKey::ArgContainer::Vector);
    m_onAdded(key, FunctionInfo(outputType, /*isCreator=*/false, /*isStateful=*/false));
    RegisteredFunctions functions(key.GetName(), outputType, /*isCreator=*/false,
                                  /*isStateful=*/true);
    functions.SetFunction(function);
    m_functions.Insert(std::move(key), functions);
}

}  // namespace lum::core
