#pragma once

#include <atomic>
#include <cstdint>
#include <typeinfo>

#include "lum/core/Export.h"
#include "lum/core/types/StoreType.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

class ArrayType;
class Context;
class SetType;

/// The type of a value: one canonical, immutable object for each type, made on first request and
/// kept until the library unloads. Two types are the same exactly when their pointers are equal.
///
/// Threads: every operation, and every Get of the derived classes, may run on any threads at once.
///   A Get that finds its type takes no lock.
/// Ownership: a `const Type*` owns nothing and never dangles while the library is loaded.
/// Errors: a Get that is asked for an impossible type fails as the derived class says; nothing is
///   left behind.
class LUM_CORE_API Type {
public:
    virtual ~Type();
    Type(const Type&) = delete;
    Type& operator=(const Type&) = delete;

    /// The type without its parameters: precision and scale, collation. This type itself where it
    /// has none.
    virtual const Type* GetBaseType() const = 0;
    /// The text of the type: its one-letter code, and its parameters as the derived class says.
    virtual TStringCore ToString() const;

    StoreType GetStoreType() const noexcept { return m_storeType; }
    bool Is(StoreType storeType) const noexcept { return m_storeType == storeType; }
    /// The object's address as a number: stable within the process only.
    uint64 GetHashValue() const noexcept { return reinterpret_cast<std::uintptr_t>(this); }

    /// This type as a class of the tree; null where it is none.
    template <typename T>
    const T* TryAs() const {
        // Mostly asked for by its own class, which one comparison tells; addresses may differ
        // between libraries that know the class, and then the cast decides.
        return &typeid(*this) == &typeid(T) ? static_cast<const T*>(this)
                                            : dynamic_cast<const T*>(this);
    }
    /// Errors: InvalidTypeClassCast where this type is no T.
    template <typename T>
    const T& As() const {
        const T* const type = TryAs<T>();
        if (type == nullptr) {
            FailClassCast();
        }
        return *type;
    }

protected:
    explicit Type(StoreType storeType) noexcept : m_storeType(storeType) {}

    /// The one-letter code of the store type.
    char16_t GetCode() const;

private:
    friend class ArrayType;
    friend class SetType;

    [[noreturn]] static void FailClassCast();

    const StoreType m_storeType;
    // The collections of this type, once they have been asked for: the look-up of an array type
    // then costs one load. The registry owns them.
    mutable std::atomic<const ArrayType*> m_arrayType{nullptr};
    mutable std::atomic<const SetType*> m_setType{nullptr};
};

}  // namespace lum::core
