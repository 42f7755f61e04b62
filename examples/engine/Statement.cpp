#include "Statement.h"

#include <algorithm>
#include <iterator>

#include "lum/core/store/StoreValue.h"
#include "lum/core/types/TypeUtil.h"
#include "lum/core/utility/LumException.h"

namespace lumengine {

using namespace lum::core;

std::vector<SV> Statement::ReadInputs() const {
    std::vector<SV> values;
    for (const KeyPath& input : m_spec.GetInputs()) {
        values.push_back(m_store.GetValue(input));
    }
    return values;
}

SV Statement::ReadOneInput() const {
    Require(m_spec.GetInputs().size() == 1, LumError::OneInputNeeded);
    return m_store.GetValue(m_spec.GetInputs()[0]);
}

const RInternString& Statement::GetFunctionName() const {
    Require(m_spec.GetFunctionSpec() != nullptr, LumError::FunctionNeeded);
    const RInternString& name = m_spec.GetFunctionSpec()->GetName();
    Require(!name.GetValue().isEmpty(), LumError::EmptyFunctionName);
    return name;
}

std::vector<SV> Statement::ReadArguments() const {
    Require(m_spec.GetFunctionSpec() != nullptr, LumError::FunctionNeeded);
    std::vector<SV> values;
    for (const ValueSpec& argument : m_spec.GetFunctionSpec()->GetArgs()) {
        values.push_back(argument.IsKey() ? m_store.GetValue(argument.GetKeyPath())
                                          : argument.GetValue());
    }
    return values;
}

bool Statement::GetFlag(LumError missing) const {
    const SV& value = m_spec.GetValue();
    Require(value != nullptr && value->GetStoreType() == StoreType::Bool && !value->IsSpecial(),
            missing);
    return value->AsBool();
}

void Statement::ExpectNoFunction() const {
    Require(m_spec.GetFunctionSpec() == nullptr, LumError::FunctionNotUsed);
}

void Statement::ExpectNoLiteral() const {
    Require(m_spec.GetValue() == nullptr, LumError::UnexpectedOperatorArgument);
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

SV ShareValue(const SV& value) {
    return value->GetStoreType() == StoreType::KeyMap ? SV(value->Clone()) : value;
}

bool IsPrimitive(const Type* type) {
    switch (type->GetStoreType()) {
        case StoreType::Bool:
        case StoreType::Int32:
        case StoreType::Int64:
        case StoreType::Real32:
        case StoreType::Real64:
        case StoreType::String:
        case StoreType::Date:
        case StoreType::DateTime:
        case StoreType::Color:
            return true;
        default:
            return false;
    }
}

}  // namespace lumengine
