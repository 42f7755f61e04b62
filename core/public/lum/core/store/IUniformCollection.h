#pragma once

#include <memory>

#include "lum/core/Export.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

/// A place in a walk over boxed elements.
///
/// Threads: one at a time. Ownership: holds no share of the collection, which must stay alive.
/// Errors: IteratorOutOfBounds from Advance and Dereference at the end; OutOfBounds from
///   Dereference where an array's index lies outside its storage.
/// Cost: Dereference allocates a value.
class LUM_CORE_API IStoreValueIterator {
public:
    virtual ~IStoreValueIterator() = default;
    virtual std::unique_ptr<IStoreValueIterator> Clone() const = 0;
    /// Whether the two stand at different places of one walk. False where `other` is empty or
    /// belongs to another kind of collection, so that a loop against it ends at once.
    virtual bool operator!=(const std::unique_ptr<IStoreValueIterator>& other) const = 0;
    virtual void Advance() = 0;
    /// The element; a special value where it is special.
    virtual SV Dereference() const = 0;
};

/// A collection whose elements have one type.
///
/// Threads: every operation runs on any threads at once.
/// Ownership: references are good while the collection lives.
/// Units: counts are elements.
class LUM_CORE_API IUniformCollection {
public:
    /// The elements as boxed values:
    ///
    ///     for (auto it = x.begin()->Clone(); *it != x.end(); it->Advance()) { it->Dereference(); }
    class LUM_CORE_API StoreValueIterable {
    public:
        virtual ~StoreValueIterable() = default;
        virtual const std::unique_ptr<IStoreValueIterator>& begin() const = 0;
        virtual const std::unique_ptr<IStoreValueIterator>& end() const = 0;
    };

    virtual ~IUniformCollection() = default;
    /// Special elements of an array count, and so do the special members of a set.
    virtual lumsize_t GetCount() const = 0;
    virtual const Type* GetType() const = 0;
    virtual const Type* GetElementType() const = 0;
    /// Whether all elements are one value, stored once.
    virtual bool IsConstant() const = 0;
    /// Whether elements may be special: true also where there is room for kinds but all are Normal.
    virtual bool HasSpecialValues() const = 0;
    /// The elements as boxed values; lives as long as the collection.
    virtual const StoreValueIterable& GetStoreValueIterable() const = 0;
};

}  // namespace lum::core
