#pragma once

#include <memory>
#include <unordered_map>

#include "lum/core/store/Containers.h"
#include "lum/core/store/DictionaryCursor.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/IUniformCollection.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/CollectionTypes.h"

// There are 36 classes of key sets. What they have in common stands here, by what it depends on:
//
//   KeySetBase              nothing
//   KeySetOverKeys<K>       the storage of the keys
//   KeySetElementUtil<V>    the storage of the elements: checks, and entries under special keys
//   KeySetElementWalk<V>    likewise: the walk over boxed elements
//
// and is compiled once, or six times, in KeySetBase.cpp. Only what touches a container of both is
// left for ValueKeySet.

namespace lum::core {

/// A container whose type only the function that frees it knows.
using ErasedContainer = std::unique_ptr<const void, void (*)(const void*)>;

template <typename Map>
ErasedContainer EraseContainer(std::unique_ptr<Map>&& map) {
    return {map.release(), [](const void* erased) { delete static_cast<const Map*>(erased); }};
}

/// A key set as far as neither the storage of its keys nor that of its elements matters.
class KeySetBase : public StoreValue, public IStoreCollection, public IUniformCollection {
public:
    ~KeySetBase() override;
    static SV Share(std::unique_ptr<KeySetBase>&& keySet);

    // StoreValue
    const Type* GetType() const final { return m_type; }
    const IStoreCollection& AsCollection() const final { return *this; }
    const IUniformCollection& AsUniformCollection() const final { return *this; }

    // IUniformCollection
    const Type* GetElementType() const final { return m_type->GetElementType(); }
    bool IsConstant() const final { return false; }
    /// The specials of a key set are its keys.
    bool HasSpecialValues() const final { return false; }
    const StoreValueIterable& GetStoreValueIterable() const final { return m_elements; }

protected:
    /// Takes over the two containers. Errors: NullArray, NullSpecials.
    KeySetBase(const KeySetType* type, ErasedContainer&& values, ErasedContainer&& specials);
    KeySetBase(const KeySetBase& other);

    const KeySetType& GetKeySetType() const noexcept { return *m_type; }
    const void* GetValuesAddress() const noexcept { return m_values.get(); }
    const void* GetSpecialsAddress() const noexcept { return m_specials.get(); }
    /// Errors: CollationMismatch where either is of another collation than the key type.
    void CheckCollations(const CollatorHash& hash, const CollatorEqualTo& equality) const;
    /// The two ends of the walk over the elements.
    void SetElements(std::unique_ptr<IStoreValueIterator> begin,
                     std::unique_ptr<IStoreValueIterator> end);
    /// Errors: those of LumSizeCastSafe.
    static lumsize_t NarrowCount(uint64 count);

private:
    class Elements final : public StoreValueIterable {
    public:
        const std::unique_ptr<IStoreValueIterator>& begin() const override { return m_begin; }
        const std::unique_ptr<IStoreValueIterator>& end() const override { return m_end; }

        std::unique_ptr<IStoreValueIterator> m_begin;
        std::unique_ptr<IStoreValueIterator> m_end;
    };

    const KeySetType* const m_type;
    // Without their types, so that the sharing is compiled once.
    const std::shared_ptr<const void> m_values;
    const std::shared_ptr<const void> m_specials;
    Elements m_elements;
};

/// Reads the text of keys.
template <StorageType K>
class KeySetOverKeys : public KeySetBase {
public:
    // IStoreCollection
    SV GetValue(const RInternString& key) const final;
    SV TryGetValue(const RInternString& key) const final;
    bool HasKey(const RInternString& key) const final;

protected:
    using KeySetBase::KeySetBase;

    /// Errors: TypeMismatchExpected where `K` does not store the key type.
    void CheckKeyType() const;
    /// Whether the key is there. Boxes its element into `element`, which may be null.
    virtual bool FindElement(const K& key, SV* element) const = 0;
};

/// What depends on the storage of the elements alone.
template <StorageType V>
struct KeySetElementUtil {
    using Specials = MapContainer<SpecialKind, V>;

    static ErasedContainer Erase(std::unique_ptr<Specials>&& specials);
    /// Errors: TypeMismatchExpected where `V` does not store the element type.
    static void CheckElementType(const KeySetType* type);
    static bool HasKey(const Specials* specials, SpecialKind kind);
    /// Errors: that of ThrowInvalidMapKey.
    static const V& GetValue(const Specials* specials, SpecialKind kind);
    /// The answer of KeySetOverKeys::FindElement.
    static bool BoxFound(const Type* elementType, const V* found, SV* element);
};

/// A walk over the elements of a key set: those under normal keys, which only a derived class can
/// step through, then those under special keys.
template <StorageType V>
class KeySetElementWalk : public IStoreValueIterator {
public:
    bool operator!=(const std::unique_ptr<IStoreValueIterator>& other) const final;
    void Advance() final;
    SV Dereference() const final;

protected:
    using SpecialPosition = typename KeySetElementUtil<V>::Specials::const_iterator;

    KeySetElementWalk(const Type* elementType, SpecialPosition special, SpecialPosition specialEnd);
    KeySetElementWalk(const KeySetElementWalk&) = default;

    /// The next element under a normal key; null behind the last.
    virtual const V* StepNormal() = 0;
    /// Stands at `normal` or, where it is null, at the next element under a special key.
    void MoveTo(const V* normal);

private:
    void FailAtEnd() const;

    const Type* m_elementType;
    const V* m_element = nullptr;  // Null at the end.
    SpecialPosition m_special;
    SpecialPosition m_specialEnd;
    bool m_isAtNormal = false;
};

}  // namespace lum::core
