#pragma once

#include "lum/core/Check.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/StoreValue.h"

namespace lum::core {

/// A set value as a range of typed values, which it keeps alive. `T` is a storage type or an
/// element type of it.
///
/// Threads: those of the set. Ownership: holds a share of the value.
/// Errors: NotTypedSet where the value has not the storage of `T`; TypeMismatchExpected where its
///   elements are of another type.
template <typename T>
class SetAdapter {
public:
    using Storage = typename TypeTraits<T>::Storage;

    explicit SetAdapter(const SV& value) : m_value(value), m_set(&value->AsTypedSet<Storage>()) {
        const Type* const elementType = m_set->GetElementType();
        LUM_CHECK(TypeTraits<T>::IsMatchingType(elementType), LumError::TypeMismatchExpected);
    }

    const ITypedSet<Storage>& GetSet() const noexcept { return *m_set; }
    SetCursor<T> begin() const { return m_set->GetValuesCursor().template CastTo<T>(); }
    std::default_sentinel_t end() const { return {}; }

private:
    SV m_value;
    const ITypedSet<Storage>* m_set;
};

}  // namespace lum::core
