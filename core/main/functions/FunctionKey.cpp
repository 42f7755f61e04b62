#include "lum/core/functions/FunctionKey.h"

#include <algorithm>

namespace lum::core {
namespace {

TStringCore TextOf(const VariableTypeRef& type) {
    return type.IsAnyType() ? TStringCore(L"AnyType") : type->ToString();
}

}  // namespace

FunctionKey FunctionKey::FromNonVariableInputs(const RInternString& name,
                                               const std::vector<const Type*>& inputTypes,
                                               ArgContainer container) {
    return FunctionKey(name, TypeRefVec<VariableTypeRef>(inputTypes.begin(), inputTypes.end()),
                       container);
}

bool FunctionKey::AreKeysExactlyEqual(const FunctionKey& other) const {
    return IsPotentialOverloadCandidate(other) &&
           std::equal(m_inputTypes.begin(), m_inputTypes.end(), other.m_inputTypes.begin(),
                      [](const VariableTypeRef& a, const VariableTypeRef& b) {
                          return a.GetBaseType() == b.GetBaseType();
                      });
}

TStringCore FunctionKey::ToString() const {
    std::vector<TStringCore> types;
    types.reserve(m_inputTypes.size());
    for (const VariableTypeRef& type : m_inputTypes) {
        types.push_back(TextOf(type));
    }
    const bool isVector = m_container == ArgContainer::Vector;
    TStringCore text = m_name.GetValue();
    text += isVector ? L"(vector {" : L"(";
    text += TStringCore::join(types, L", ");
    text += isVector ? L"})" : L")";
    return text;
}

}  // namespace lum::core
