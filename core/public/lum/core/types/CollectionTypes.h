#pragma once

#include "lum/core/types/Type.h"

namespace lum::core {

/// The type of a uniform collection: all elements have one type. See Type for threads, ownership.
///
/// Errors: IllegalElementType where the element type is null or may not be an element of such a
/// collection; IllegalKeyType for the key of a key set, which is looked at first.
class LUM_CORE_API CollectionType : public Type {
public:
    /// The array or set type of `elementType`.
    /// Errors: TypeMismatchExpected for any other `storeType`.
    static const CollectionType* Get(StoreType storeType, const Type* elementType);

    /// The same kind of collection over another element type.
    virtual const CollectionType* WithElementType(const Type* elementType) const = 0;

    const Type* GetElementType() const noexcept { return m_elementType; }

protected:
    CollectionType(StoreType storeType, const Type* elementType)
        : Type(storeType), m_elementType(elementType) {}

private:
    const Type* const m_elementType;
};

/// The type of an array. Cost of Get: one load where the type is known.
class LUM_CORE_API ArrayType final : public CollectionType {
public:
    static const ArrayType* Get(const Type* elementType);

    /// The array of the element's base type.
    const Type* GetBaseType() const override;
    /// For instance "A<i>".
    TStringCore ToString() const override;
    const CollectionType* WithElementType(const Type* elementType) const override;

private:
    friend class Context;
    explicit ArrayType(const Type* elementType);
};

/// The type of a set. Cost of Get: one load where the type is known.
class LUM_CORE_API SetType final : public CollectionType {
public:
    static const SetType* Get(const Type* elementType);

    /// The set of the element's base type.
    const Type* GetBaseType() const override;
    /// For instance "S<i>".
    TStringCore ToString() const override;
    const CollectionType* WithElementType(const Type* elementType) const override;

private:
    friend class Context;
    explicit SetType(const Type* elementType);
};

/// The type of a key set: typed keys beside the typed elements.
class LUM_CORE_API KeySetType final : public CollectionType {
public:
    static const KeySetType* Get(const Type* keyType, const Type* elementType);

    const Type* GetKeyType() const noexcept { return m_keyType; }
    /// The key set of the base types of key and element.
    const Type* GetBaseType() const override;
    /// For instance "K<s<ROOT>,i>".
    TStringCore ToString() const override;
    const CollectionType* WithElementType(const Type* elementType) const override;

private:
    friend class Context;
    KeySetType(const Type* keyType, const Type* elementType);

    const Type* const m_keyType;
};

}  // namespace lum::core
