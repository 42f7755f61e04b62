#pragma once

#include <vector>

#include "lum/core/types/Type.h"

namespace lum::core {

/// A type that may be missing: a null pointer with a name for it.
/// Threads, ownership: those of Type. Errors: none.
class TypeRef {
public:
    TypeRef() noexcept = default;
    TypeRef(const Type* type) noexcept : m_type(type) {}  // NOLINT(google-explicit-constructor)

    const Type* Get() const noexcept { return m_type; }
    operator const Type*() const noexcept { return m_type; }  // NOLINT
    const Type* operator->() const noexcept { return m_type; }

    friend bool operator==(const TypeRef& a, const TypeRef& b) noexcept {
        return a.m_type == b.m_type;
    }
    friend bool operator==(const TypeRef& a, const Type* b) noexcept { return a.m_type == b; }

    /// The base type, or null for null.
    TypeRef GetBaseType() const {
        return m_type == nullptr ? TypeRef() : TypeRef(m_type->GetBaseType());
    }
    /// The type's hash, or 0 for null.
    uint64 GetHashValue() const noexcept { return m_type == nullptr ? 0 : m_type->GetHashValue(); }

private:
    const Type* m_type = nullptr;
};

/// A type that may lawfully be missing.
class OptionalTypeRef : public TypeRef {
public:
    /// The missing type.
    static const OptionalTypeRef NoType;

    OptionalTypeRef() noexcept = default;
    OptionalTypeRef(const Type* type) noexcept : TypeRef(type) {}  // NOLINT
    bool HasType() const noexcept { return Get() != nullptr; }
};

/// A type in whose place null stands for any type at all.
class VariableTypeRef : public TypeRef {
public:
    /// The wild card.
    static const VariableTypeRef AnyType;

    VariableTypeRef() noexcept = default;
    VariableTypeRef(const Type* type) noexcept : TypeRef(type) {}  // NOLINT
    bool IsAnyType() const noexcept { return Get() == nullptr; }
};

// Defined here, and not in a source, so that they are constants at compile time.
inline constexpr OptionalTypeRef OptionalTypeRef::NoType{};
inline constexpr VariableTypeRef VariableTypeRef::AnyType{};

/// References to types in the order of what they describe, such as the inputs of a function.
template <typename Ref>
using TypeRefVec = std::vector<Ref>;

}  // namespace lum::core
