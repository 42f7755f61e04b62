#pragma once

#include "lum/core/Check.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreValue.h"

namespace lum::core {

/// An array value as a range of typed elements, which it keeps alive. `T` is a storage type or an
/// element type of it.
///
///     for (const int value : ArrayAdapter<int>(column)) { ... }
///
/// Threads: those of the array. Ownership: holds a share of the value.
/// Errors: NotTypedArray where the value has not the storage of `T`; TypeMismatchExpected where its
///   elements are of another type.
template <typename T>
class ArrayAdapter {
public:
    using Storage = typename TypeTraits<T>::Storage;

    explicit ArrayAdapter(const SV& value)
        : m_value(value), m_array(&value->AsTypedArray<Storage>()) {
        const Type* const elementType = m_array->GetElementType();
        LUM_CHECK(TypeTraits<T>::IsMatchingType(elementType), LumError::TypeMismatchExpected);
    }

    const ITypedArray<Storage>& GetArray() const noexcept { return *m_array; }
    lumsize_t GetCount() const { return m_array->GetCount(); }
    /// Cursors at the first element.
    ArrayCursor<T> GetAdapter() const { return m_array->GetAdapter().template CastTo<T>(); }
    ArrayCursor<T> GetAdapterWithSpecials() const {
        return m_array->GetAdapterWithSpecials().template CastTo<T>();
    }
    ArrayCursor<T> begin() const { return GetAdapter(); }
    std::default_sentinel_t end() const { return {}; }

private:
    SV m_value;
    const ITypedArray<Storage>* m_array;
};

}  // namespace lum::core
