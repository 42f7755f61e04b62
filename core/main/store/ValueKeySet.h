#pragma once

#include <memory>

#include "core/main/store/KeySetBase.h"
#include "lum/core/store/IStoreDictionary.h"
#include "lum/core/types/StringType.h"

namespace lum::core {

/// An empty container for entries under keys of `keyType`, with room for `count` of them.
template <StorageType K, StorageType V>
std::unique_ptr<MapContainer<K, V>> MakeMapContainer([[maybe_unused]] const Type* keyType,
                                                     lumsize_t count) {
    if constexpr (std::is_same_v<K, RIndirectString>) {
        const Collation& collation = keyType->As<StringType>().GetCollation();
        return std::make_unique<MapContainer<K, V>>(count, CollatorHash(collation),
                                                    CollatorEqualTo(collation));
    } else {
        return std::make_unique<MapContainer<K, V>>(count);
    }
}

/// A key set over shared containers. See factory::MakeKeySet, and IStoreDictionary for the
/// operations. A text as a key is ambiguous here where keys are strings: callers go through an
/// interface.
template <StorageType K, StorageType V>
class ValueKeySet final : public KeySetOverKeys<K>, public IStoreDictionary<K, V> {
public:
    using Values = MapContainer<K, V>;
    using Specials = MapContainer<SpecialKind, V>;

    /// Errors: those of factory::MakeKeySet.
    ValueKeySet(const KeySetType* type, std::unique_ptr<Values>&& values,
                std::unique_ptr<Specials>&& specials);

    // StoreValue
    std::unique_ptr<StoreValue> Clone() const override;

    using KeySetOverKeys<K>::GetValue;
    using KeySetOverKeys<K>::HasKey;

    // IStoreDictionary
    bool HasSpecialKeys() const override { return !m_specials->empty(); }
    const Type* GetKeyType() const override { return this->GetKeySetType().GetKeyType(); }
    const V& GetValueForSpecialKey(SpecialKind kind) const override {
        return ElementUtil::GetValue(m_specials, kind);
    }
    const V& GetValue(const K& key) const override;
    lumsize_t GetCount() const override;
    lumsize_t GetSpecialKeyCount() const override;
    bool HasSpecialKey(SpecialKind kind) const override {
        return ElementUtil::HasKey(m_specials, kind);
    }
    bool HasKey(const K& key) const override;
    DictionaryCursor<K, V> GetEntries() const override;
    DictionaryCursor<SpecialKind, V> GetSpecialEntries() const override;

protected:
    // KeySetOverKeys
    bool FindElement(const K& key, SV* element) const override;

private:
    class KeySetStoreValueIterator;
    using ElementUtil = KeySetElementUtil<V>;

    // The base holds the shares.
    const Values* const m_values;
    const Specials* const m_specials;
};

}  // namespace lum::core
