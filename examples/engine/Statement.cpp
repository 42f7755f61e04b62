#include "Statement.h"

#include <unordered_map>

#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumException.h"

namespace lumengine {

using namespace lum::core;

std::vector<SV> Statement::ReadInputs() const {
    std::vector<SV> values;
    for (const KeyPath& input : spec.GetInputs()) {
        values.push_back(ReadValue(store, input));
    }
    return values;
}

std::vector<SV> Statement::ReadArrays(LumError otherwise) const {
    std::vector<SV> values = ReadInputs();
    for (const SV& value : values) {
        Require(value->GetStoreType() == StoreType::Array, otherwise);
    }
    return values;
}

SV Statement::ReadOneInput() const {
    Require(spec.GetInputs().size() == 1, LumError::OneInputNeeded);
    return ReadValue(store, spec.GetInputs()[0]);
}

const RInternString& Statement::GetFunctionName() const {
    Require(spec.GetFunctionSpec() != nullptr, LumError::FunctionNeeded);
    const RInternString& name = spec.GetFunctionSpec()->GetName();
    Require(!name.GetValue().isEmpty(), LumError::EmptyFunctionName);
    return name;
}

std::vector<SV> Statement::ReadArguments() const {
    Require(spec.GetFunctionSpec() != nullptr, LumError::FunctionNeeded);
    std::vector<SV> values;
    for (const ValueSpec& argument : spec.GetFunctionSpec()->GetArgs()) {
        values.push_back(argument.IsKey() ? ReadValue(store, argument.GetKeyPath())
                                          : argument.GetValue());
    }
    return values;
}

bool Statement::GetFlag(LumError missing) const {
    const SV& value = spec.GetValue();
    Require(IsNormal(value, StoreType::Bool), missing);
    return value->AsBool();
}

void Statement::ExpectNoneBut(Parts parts) const {
    const bool mayHaveBoth = parts == Parts::LiteralAndFunction;
    Require(mayHaveBoth || parts == Parts::Function || spec.GetFunctionSpec() == nullptr,
            LumError::FunctionNotUsed);
    Require(mayHaveBoth || parts == Parts::Literal || spec.GetValue() == nullptr,
            LumError::UnexpectedOperatorArgument);
}

void Require(bool condition, LumError error) {
    if (!condition) {
        throw LumRuntimeException(error);
    }
}

void Require(bool condition, LumError error, const TStringCore& details) {
    if (!condition) {
        throw LumRuntimeException(error, details);
    }
}

std::unique_ptr<IDataStore> MakeEmptyStore() {
    return factory::MakeDataStore(std::unordered_map<RInternString, SV>());
}

SV ReadValue(const IDataStore& store, const KeyPath& key) {
    SV value = store.TryGetValue(key);
    Require(value != nullptr, LumError::KeyNotFound, key.ToString());
    return value;
}

SV ShareValue(const SV& value) {
    return value->GetStoreType() == StoreType::KeyMap ? SV(value->Clone()) : value;
}

bool IsPrimitive(const Type* type) {
    return IsPrimitiveStoreType(type->GetStoreType()) && !type->Is(StoreType::External);
}

bool IsNormal(const SV& value, StoreType type) {
    return value != nullptr && value->GetStoreType() == type && !value->IsSpecial();
}

}  // namespace lumengine
