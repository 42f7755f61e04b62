#include "lum/core/types/ExternalType.h"

#include "core/main/types/Context.h"

namespace lum::core {

const ExternalType* ExternalType::Get(unsigned short typeId) {
    return Context::Get().GetExternal(typeId);
}

const ExternalType* ExternalType::Get(const TStringCore& typeName) {
    return Get(lum::core::GetExternalTypeId(typeName));
}

const TStringCore& ExternalType::GetExternalTypeName() const {
    return lum::core::GetExternalTypeName(m_typeId);
}

TStringCore ExternalType::ToString() const {
    return Type::ToString() + L"<" + GetExternalTypeName() + L">";
}

}  // namespace lum::core
