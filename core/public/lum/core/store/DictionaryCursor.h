#pragma once

#include <bit>
#include <iterator>
#include <type_traits>
#include <utility>

#include "lum/core/Check.h"
#include "lum/core/store/Containers.h"
#include "lum/core/store/MemberMap.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/types/Type.h"

namespace lum::core {

namespace detail {

/// How a cursor reads one side of the entries: `T` is a storage type, an element type of it, or a
/// type that only stands for itself, as RInternString and SpecialKind do.
template <typename T>
struct DictionarySide {
    using Storage = T;
    using Reference = const T&;
    static const T& Read(const T& stored) noexcept { return stored; }
};
template <typename T>
requires(!StorageType<T> &&
         requires { typename TypeTraits<T>::Storage; }) struct DictionarySide<T> {
    using Storage = typename TypeTraits<T>::Storage;
    using Reference = T;
    static T Read(const Storage& stored) noexcept {
        if constexpr (std::is_same_v<T, bool>) {
            return stored != 0;
        } else {
            return std::bit_cast<T>(stored);
        }
    }
};

}  // namespace detail

/// A walk over the entries of a dictionary, in the order of its container. By value, and its own
/// range of pairs:
///
///     for (const auto& [key, value] : keyMap.GetEntries()) { ... }
///
/// `K` and `V` are storage types or element types of them (see TypeTraits); `K` is RInternString in
/// a key map, and SpecialKind for the entries under special keys.
/// Threads: one at a time. Ownership: the dictionary must stay alive, and unchanged.
/// Errors: IteratorOutOfBounds at the end. Cost: nothing is allocated.
template <typename K, typename V>
class DictionaryCursor {
    using KeySide = detail::DictionarySide<K>;
    using ValueSide = detail::DictionarySide<V>;
    static constexpr bool kReadsStorage = std::is_same_v<K, typename KeySide::Storage> &&
                                          std::is_same_v<V, typename ValueSide::Storage>;

public:
    using Container =
        std::conditional_t<std::is_same_v<K, RInternString>, MemberMap,
                           MapContainer<typename KeySide::Storage, typename ValueSide::Storage>>;
    using value_type = std::pair<const K, V>;
    using difference_type = std::ptrdiff_t;
    /// The entry itself, or a pair made from it where a side is read as an element type.
    using Reference =
        std::conditional_t<kReadsStorage, const value_type&,
                           std::pair<typename KeySide::Reference, typename ValueSide::Reference>>;

    /// `keyType` and `valueType` say what the stored keys and values are; null where keys only
    /// stand for themselves, and where the values have no type in common.
    DictionaryCursor(const Type* keyType, const Type* valueType, const Container& entries)
        : DictionaryCursor(keyType, valueType, entries, entries.begin()) {}
    DictionaryCursor(const Type* keyType, const Container& entries)
        : DictionaryCursor(keyType, nullptr, entries) {}

    const Type* GetKeyType() const noexcept { return m_keyType; }
    const Type* GetValueType() const noexcept { return m_valueType; }
    bool IsAtEnd() const { return m_pos == m_entries->end(); }
    Reference operator*() const {
        CheckPosition();
        if constexpr (kReadsStorage) {
            return *m_pos;
        } else {
            return {KeySide::Read(m_pos->first), ValueSide::Read(m_pos->second)};
        }
    }
    typename KeySide::Reference GetKey() const {
        CheckPosition();
        return KeySide::Read(m_pos->first);
    }
    typename ValueSide::Reference GetValue() const {
        CheckPosition();
        return ValueSide::Read(m_pos->second);
    }
    DictionaryCursor& operator++() {
        CheckPosition();
        ++m_pos;
        return *this;
    }
    void operator++(int) { ++*this; }
    void Advance() { ++*this; }

    DictionaryCursor begin() const { return *this; }
    std::default_sentinel_t end() const { return {}; }
    friend bool operator==(const DictionaryCursor& cursor, std::default_sentinel_t) {
        return cursor.IsAtEnd();
    }

    /// This cursor, reading the keys, or the values, as another element type of the same storage.
    /// Errors: TypeMismatchExpected where they are of another type.
    template <typename NewKeyType>
    DictionaryCursor<NewKeyType, V> CastKeyTo() const {
        static_assert(
            std::is_same_v<typename TypeTraits<NewKeyType>::Storage, typename KeySide::Storage>);
        LUM_CHECK_TEXT("(TypeTraits<NewKeyType>::IsMatchingType(m_type->GetKeyType()))",
                       TypeTraits<NewKeyType>::IsMatchingType(m_keyType),
                       LumError::TypeMismatchExpected);
        return {m_keyType, m_valueType, *m_entries, m_pos};
    }
    template <typename NewValueType>
    DictionaryCursor<K, NewValueType> CastValueTo() const {
        static_assert(std::is_same_v<typename TypeTraits<NewValueType>::Storage,
                                     typename ValueSide::Storage>);
        LUM_CHECK_TEXT("(TypeTraits<NewValueType>::IsMatchingType(m_type->GetElementType()))",
                       TypeTraits<NewValueType>::IsMatchingType(m_valueType),
                       LumError::TypeMismatchExpected);
        return {m_keyType, m_valueType, *m_entries, m_pos};
    }

private:
    template <typename OtherK, typename OtherV>
    friend class DictionaryCursor;

    DictionaryCursor(const Type* keyType, const Type* valueType, const Container& entries,
                     typename Container::const_iterator position)
        : m_keyType(keyType), m_valueType(valueType), m_entries(&entries), m_pos(position) {}

    void CheckPosition() const {
        LUM_CHECK_TEXT("(m_pos != m_values->end())", !IsAtEnd(), LumError::IteratorOutOfBounds);
    }

    const Type* m_keyType;
    const Type* m_valueType;
    const Container* m_entries;
    typename Container::const_iterator m_pos;
};

}  // namespace lum::core
