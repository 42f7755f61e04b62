#include "lum/core/types/CollectionTypes.h"

#include "core/main/types/Context.h"
#include "lum/core/Check.h"

namespace lum::core {
namespace {

TStringCore CollectionText(const TStringCore& code, const Type* elementType) {
    return code + L"<" + elementType->ToString() + L">";
}

/// The type that `published` holds, or that of `make`, whichever is there first.
template <typename T, typename Make>
const T* GetPublished(std::atomic<const T*>& published, const Make& make) {
    const T* type = published.load(std::memory_order_acquire);
    if (type == nullptr) {
        const T* const made = make();
        if (published.compare_exchange_strong(type, made, std::memory_order_acq_rel)) {
            type = made;
        }
    }
    return type;
}

}  // namespace

const CollectionType* CollectionType::Get(StoreType storeType, const Type* elementType) {
    switch (storeType) {
        case StoreType::Array:
            return ArrayType::Get(elementType);
        case StoreType::Set:
            return SetType::Get(elementType);
        default:
            LUM_FAIL(LumError::TypeMismatchExpected);
    }
}

ArrayType::ArrayType(const Type* elementType) : CollectionType(StoreType::Array, elementType) {
    LUM_CHECK(IsStoreTypeSupportedInArray(elementType->GetStoreType()),
              LumError::IllegalElementType);
}

const ArrayType* ArrayType::Get(const Type* elementType) {
    LUM_CHECK_NOT_NULL(elementType, LumError::IllegalElementType);
    return GetPublished(elementType->m_arrayType,
                        [=] { return Context::Get().MakeArray(elementType); });
}

const Type* ArrayType::GetBaseType() const {
    return Get(GetElementType()->GetBaseType());
}

TStringCore ArrayType::ToString() const {
    return CollectionText(Type::ToString(), GetElementType());
}

const CollectionType* ArrayType::WithElementType(const Type* elementType) const {
    return Get(elementType);
}

SetType::SetType(const Type* elementType) : CollectionType(StoreType::Set, elementType) {
    LUM_CHECK(IsStoreTypeSupportedInSet(elementType->GetStoreType()), LumError::IllegalElementType);
}

const SetType* SetType::Get(const Type* elementType) {
    LUM_CHECK_NOT_NULL(elementType, LumError::IllegalElementType);
    return GetPublished(elementType->m_setType,
                        [=] { return Context::Get().MakeSet(elementType); });
}

const Type* SetType::GetBaseType() const {
    return Get(GetElementType()->GetBaseType());
}

TStringCore SetType::ToString() const {
    return CollectionText(Type::ToString(), GetElementType());
}

const CollectionType* SetType::WithElementType(const Type* elementType) const {
    return Get(elementType);
}

KeySetType::KeySetType(const Type* keyType, const Type* elementType)
    : CollectionType(StoreType::KeySet, elementType), m_keyType(keyType) {
    LUM_CHECK_NOT_NULL(keyType, LumError::IllegalKeyType);
    LUM_CHECK(IsStoreTypeSupportedInKeySetAsKey(keyType->GetStoreType()), LumError::IllegalKeyType);
    LUM_CHECK_NOT_NULL(elementType, LumError::IllegalElementType);
    LUM_CHECK(IsStoreTypeSupportedInKeySet(elementType->GetStoreType()),
              LumError::IllegalElementType);
}

const KeySetType* KeySetType::Get(const Type* keyType, const Type* elementType) {
    return Context::Get().GetKeySet(keyType, elementType);
}

const Type* KeySetType::GetBaseType() const {
    return Get(m_keyType->GetBaseType(), GetElementType()->GetBaseType());
}

TStringCore KeySetType::ToString() const {
    return Type::ToString() + L"<" + m_keyType->ToString() + L"," + GetElementType()->ToString() +
           L">";
}

const CollectionType* KeySetType::WithElementType(const Type* elementType) const {
    return Get(m_keyType, elementType);
}

}  // namespace lum::core
