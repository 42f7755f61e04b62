#pragma once

#include "lum/core/types/Type.h"

namespace lum::core {

/// The id that a host registered a kind of value of its own under.
/// Errors: std::out_of_range, "invalid unordered_map<K, T> key", for an unknown name.
LUM_CORE_API unsigned short GetExternalTypeId(const TStringCore& typeName);
/// The name of a registered kind, good until the registrations are cleared.
/// Errors: std::out_of_range, "invalid unordered_map<K, T> key", for an unknown id.
LUM_CORE_API const TStringCore& GetExternalTypeName(unsigned short typeId);

/// The type of values of a kind that the host registered. See Type for threads and ownership.
class LUM_CORE_API ExternalType final : public Type {
public:
    /// The type of an id, which need not be registered.
    static const ExternalType* Get(unsigned short typeId);
    /// The type of a registered name. Errors: those of GetExternalTypeId.
    static const ExternalType* Get(const TStringCore& typeName);

    unsigned short GetExternalTypeId() const noexcept { return m_typeId; }
    /// Errors: those of the free function.
    const TStringCore& GetExternalTypeName() const;
    const Type* GetBaseType() const override { return this; }
    /// For instance "x<name>". Errors: those of GetExternalTypeName.
    TStringCore ToString() const override;

private:
    friend class Context;
    explicit ExternalType(unsigned short typeId) : Type(StoreType::External), m_typeId(typeId) {}

    const unsigned short m_typeId;
};

}  // namespace lum::core
