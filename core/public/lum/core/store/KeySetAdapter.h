#pragma once

#include "lum/core/Check.h"
#include "lum/core/store/IStoreDictionary.h"
#include "lum/core/store/IUniformCollection.h"
#include "lum/core/store/StoreValue.h"

namespace lum::core {

/// A key set value as a range of typed entries, which it keeps alive. `K` and `V` are storage types
/// or element types of them.
///
///     for (const auto& [key, value] : KeySetAdapter<int, double>(keySet)) { ... }
///
/// Threads: those of the key set. Ownership: holds a share of the value.
/// Errors: NotKeyedCollection where the value has not the storage of `K` and `V`;
///   TypeMismatchExpected where its keys or elements are of another type.
template <typename K, typename V>
class KeySetAdapter {
public:
    using KeyStorage = typename TypeTraits<K>::Storage;
    using ValueStorage = typename TypeTraits<V>::Storage;

    explicit KeySetAdapter(const SV& value)
        : m_value(value), m_keySet(&value->AsDictionary<KeyStorage, ValueStorage>()) {
        const Type* const keyType = m_keySet->GetKeyType();
        const Type* const elementType = value->AsUniformCollection().GetElementType();
        LUM_CHECK(TypeTraits<K>::IsMatchingType(keyType), LumError::TypeMismatchExpected);
        LUM_CHECK(TypeTraits<V>::IsMatchingType(elementType), LumError::TypeMismatchExpected);
    }

    const IStoreDictionary<KeyStorage, ValueStorage>& GetKeySet() const noexcept {
        return *m_keySet;
    }
    /// A cursor at the first entry under a normal key, and under a special one.
    DictionaryCursor<K, V> GetEntries() const {
        return m_keySet->GetEntries().template CastKeyTo<K>().template CastValueTo<V>();
    }
    DictionaryCursor<SpecialKind, V> GetSpecialEntries() const {
        return m_keySet->GetSpecialEntries().template CastValueTo<V>();
    }
    DictionaryCursor<K, V> begin() const { return GetEntries(); }
    std::default_sentinel_t end() const { return {}; }

private:
    SV m_value;
    const IStoreDictionary<KeyStorage, ValueStorage>* m_keySet;
};

}  // namespace lum::core
