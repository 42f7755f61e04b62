#include "lum/core/functions/FunctionFormRegistry.h"

#include <utility>

#include "lum/core/Check.h"

namespace lum::core {
namespace {

using FunctionType = FunctionFormRegistry::FunctionType;

bool IsSpecial(FunctionType type) {
    return type == FunctionType::Special || type == FunctionType::CreatorSpecial;
}

bool IsCreator(FunctionType type) {
    return type == FunctionType::CreatorRegular || type == FunctionType::CreatorSpecial;
}

}  // namespace

FunctionFormRegistry::FunctionFormRegistry(AddedCallback&& onAdded)
    : m_onAdded(std::move(onAdded)) {}

FunctionFormRegistry::~FunctionFormRegistry() = default;

void FunctionFormRegistry::RegisterForm(FunctionKey&& key, OptionalTypeRef outputType,
                                        TypeRefVec<VariableTypeRef>&& creatorInputTypes,
                                        FunctionType functionType, bool isStateful,
                                        FunctionPointer factory) {
    LUM_CHECK(outputType.HasType(), LumError::EmptyOutputType, key.GetName());
    RegisteredFunctions& functions = FindOrInsert(
        std::move(key), outputType, std::move(creatorInputTypes), functionType, isStateful);
    if (IsSpecial(functionType)) {
        functions.SetSpecialFunction(factory);
    } else {
        functions.SetFunction(factory);
    }
}

RegisteredFunctions& FunctionFormRegistry::FindOrInsert(
    FunctionKey&& key, OptionalTypeRef outputType, TypeRefVec<VariableTypeRef>&& creatorInputTypes,
    FunctionType functionType, bool isStateful) {
    if (RegisteredFunctions* const functions = m_functions.FindExact(key)) {
        if (IsSpecial(functionType)) {
            LUM_CHECK_NOT(functions->HasSpecialFunction(), LumError::SpecialFunctionExists,
                          key.GetName());
        } else {
            LUM_CHECK_NOT(functions->HasFunction(), LumError::FunctionExists, key.GetName());
        }
        return *functions;
    }
    const bool isCreator = IsCreator(functionType);
    RegisteredFunctions functions(key.GetName(), outputType, isCreator, isStateful);
    const auto [storedKey, stored] = m_functions.Insert(std::move(key), functions);
    m_onAdded(storedKey,
              FunctionInfo(std::move(creatorInputTypes), outputType, isCreator, isStateful));
    return stored;
}

}  // namespace lum::core
