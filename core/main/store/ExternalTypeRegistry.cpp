#include "lum/core/store/ExternalTypeRegistry.h"

#include <unordered_map>
#include <utility>

#include "core/main/utility/StandardErrors.h"
#include "lum/core/Check.h"

namespace lum::core {
namespace {

struct Registration {
    TStringCore name;
    serializeValueFunction serialize;
    deserializeValueFunction deserialize;
};

struct ExternalTypeRegistry {
    std::unordered_map<TStringCore, unsigned short> m_typeIds;
    std::unordered_map<unsigned short, Registration> m_externalTypeRegistrations;

    static ExternalTypeRegistry& Get() {
        static ExternalTypeRegistry s_registry;
        return s_registry;
    }

    const Registration& At(unsigned short typeId) const {
        return MapAt(m_externalTypeRegistrations, typeId);
    }

    void Register(unsigned short typeId, const TStringCore& typeName,
                  serializeValueFunction&& serializeValueFunction,
                  deserializeValueFunction&& deserializeValueFunction) {
        LUM_CHECK_TEXT(
            "(m_typeIds.find(typeName) == m_typeIds.end() && "
            "m_externalTypeRegistrations.find(typeId) == m_externalTypeRegistrations.end())",
            m_typeIds.find(typeName) == m_typeIds.end() &&
                m_externalTypeRegistrations.find(typeId) == m_externalTypeRegistrations.end(),
            LumError::ExternalTypeExists);
        LUM_CHECK_NOT(typeName.isEmpty(), LumError::EmptyTypeName);
        LUM_CHECK_NOT_NULL(serializeValueFunction, LumError::NullSerializeFunction);
        LUM_CHECK_NOT_NULL(deserializeValueFunction, LumError::NullDeserializeFunction);
        const auto id = m_typeIds.emplace(typeName, typeId).first;
        try {
            m_externalTypeRegistrations.emplace(
                typeId, Registration{typeName, std::move(serializeValueFunction),
                                     std::move(deserializeValueFunction)});
        } catch (...) {
            m_typeIds.erase(id);  // Both maps know a kind, or neither does.
            throw;
        }
    }
};

}  // namespace

void RegisterExternalType(unsigned short typeId, const TStringCore& typeName,
                          serializeValueFunction serialize, deserializeValueFunction deserialize) {
    ExternalTypeRegistry::Get().Register(typeId, typeName, std::move(serialize),
                                         std::move(deserialize));
}

unsigned short GetExternalTypeId(const TStringCore& typeName) {
    return MapAt(ExternalTypeRegistry::Get().m_typeIds, typeName);
}

const TStringCore& GetExternalTypeName(unsigned short typeId) {
    return ExternalTypeRegistry::Get().At(typeId).name;
}

std::vector<unsigned char> SerializeExternalType(const ValueExternal& value) {
    return ExternalTypeRegistry::Get().At(value.GetType()->GetExternalTypeId()).serialize(value);
}

std::shared_ptr<ValueExternal> DeserializeExternalType(
    unsigned short typeId, const ArrayView<const unsigned char>& bytes) {
    return ExternalTypeRegistry::Get().At(typeId).deserialize(bytes);
}

void ClearExternalTypes() {
    ExternalTypeRegistry& registry = ExternalTypeRegistry::Get();
    registry.m_typeIds.clear();
    registry.m_externalTypeRegistrations.clear();
}

}  // namespace lum::core
