#pragma once

#include <utility>

#include "core/main/store/UnorderedMapUtil.h"
#include "core/main/store/ValueKeySet.h"
#include "lum/core/Check.h"
#include "lum/core/store/KeySetFactory.h"

namespace lum::core {

/// Steps through the elements under normal keys.
template <StorageType K, StorageType V>
class ValueKeySet<K, V>::KeySetStoreValueIterator final : public KeySetElementWalk<V> {
public:
    KeySetStoreValueIterator(const Type* elementType, const Values& values,
                             typename Values::const_iterator value, const Specials& specials,
                             typename Specials::const_iterator special)
        : KeySetElementWalk<V>(elementType, special, specials.end()),
          m_value(value),
          m_valueEnd(values.end()) {
        this->MoveTo(GetElement());
    }

    std::unique_ptr<IStoreValueIterator> Clone() const override {
        return std::make_unique<KeySetStoreValueIterator>(*this);
    }

protected:
    const V* StepNormal() override {
        ++m_value;
        return GetElement();
    }

private:
    const V* GetElement() const { return m_value == m_valueEnd ? nullptr : &m_value->second; }

    typename Values::const_iterator m_value;
    typename Values::const_iterator m_valueEnd;
};

/// Rows make their blocks when they are first read, which must not happen on two threads.
template <typename T>
void PrepareForReading([[maybe_unused]] const T& stored) {
    if constexpr (std::is_same_v<T, LumTuple>) {
        stored.GetTupleData().EnsureBlock();
    }
}

template <StorageType K, StorageType V>
ValueKeySet<K, V>::ValueKeySet(const KeySetType* type, std::unique_ptr<Values>&& values,
                               std::unique_ptr<Specials>&& specials)
    : KeySetOverKeys<K>(type, EraseContainer(std::move(values)),
                        ElementUtil::Erase(std::move(specials))),
      m_values(static_cast<const Values*>(this->GetValuesAddress())),
      m_specials(static_cast<const Specials*>(this->GetSpecialsAddress())) {
    this->CheckKeyType();
    ElementUtil::CheckElementType(type);
    if constexpr (std::is_same_v<K, RIndirectString>) {
        this->CheckCollations(m_values->hash_function(), m_values->key_eq());
    }
    if constexpr (std::is_same_v<K, LumTuple> || std::is_same_v<V, LumTuple>) {
        for (const auto& [key, value] : *m_values) {
            PrepareForReading(key);
            PrepareForReading(value);
        }
        for (const auto& [kind, value] : *m_specials) {
            PrepareForReading(value);
        }
    }
    this->SetElements(
        std::make_unique<KeySetStoreValueIterator>(
            type->GetElementType(), *m_values, m_values->begin(), *m_specials, m_specials->begin()),
        std::make_unique<KeySetStoreValueIterator>(
            type->GetElementType(), *m_values, m_values->end(), *m_specials, m_specials->end()));
}

template <StorageType K, StorageType V>
std::unique_ptr<StoreValue> ValueKeySet<K, V>::Clone() const {
    return std::make_unique<ValueKeySet>(*this);
}

template <StorageType K, StorageType V>
lumsize_t ValueKeySet<K, V>::GetCount() const {
    return this->NarrowCount(uint64{m_values->size()} + m_specials->size());
}

template <StorageType K, StorageType V>
lumsize_t ValueKeySet<K, V>::GetSpecialKeyCount() const {
    return this->NarrowCount(m_specials->size());
}

template <StorageType K, StorageType V>
const V& ValueKeySet<K, V>::GetValue(const K& key) const {
    return UnorderedMapUtil::At(m_values, key);
}

template <StorageType K, StorageType V>
bool ValueKeySet<K, V>::HasKey(const K& key) const {
    return UnorderedMapUtil::Contains(m_values, key);
}

template <StorageType K, StorageType V>
bool ValueKeySet<K, V>::FindElement(const K& key, SV* element) const {
    return ElementUtil::BoxFound(this->GetElementType(), UnorderedMapUtil::Find(m_values, key),
                                 element);
}

template <StorageType K, StorageType V>
DictionaryCursor<K, V> ValueKeySet<K, V>::GetEntries() const {
    return {GetKeyType(), this->GetElementType(), *m_values};
}

template <StorageType K, StorageType V>
DictionaryCursor<SpecialKind, V> ValueKeySet<K, V>::GetSpecialEntries() const {
    return {nullptr, this->GetElementType(), *m_specials};
}

template <StorageType K, StorageType V>
SV factory::MakeKeySet(const Type* keyType, const Type* elementType,
                       std::unique_ptr<MapContainer<K, V>> values,
                       std::unique_ptr<MapContainer<SpecialKind, V>> specials) {
    const KeySetType* const type = KeySetType::Get(keyType, elementType);
    return KeySetBase::Share(
        std::make_unique<ValueKeySet<K, V>>(type, std::move(values), std::move(specials)));
}

// A class and its maker for one pair of storage types.
#define LUM_INSTANTIATE_VALUE_KEY_SET(K, V)                            \
    template class ValueKeySet<K, V>;                                  \
    template LUM_CORE_API SV factory::MakeKeySet<K, V>(                \
        const Type*, const Type*, std::unique_ptr<MapContainer<K, V>>, \
        std::unique_ptr<MapContainer<SpecialKind, V>>);

// All key sets whose keys are stored as `K`.
#define LUM_INSTANTIATE_VALUE_KEY_SETS_BY(K)             \
    LUM_INSTANTIATE_VALUE_KEY_SET(K, unsigned char)      \
    LUM_INSTANTIATE_VALUE_KEY_SET(K, unsigned int)       \
    LUM_INSTANTIATE_VALUE_KEY_SET(K, unsigned long long) \
    LUM_INSTANTIATE_VALUE_KEY_SET(K, RIndirectString)    \
    LUM_INSTANTIATE_VALUE_KEY_SET(K, LumTuple)           \
    LUM_INSTANTIATE_VALUE_KEY_SET(K, SV)

}  // namespace lum::core
