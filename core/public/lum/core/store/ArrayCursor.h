#pragma once

#include <bit>
#include <iterator>
#include <type_traits>

#include "lum/core/Check.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core {

/// A walk over the typed elements of an array, indices respected, by value. `T` is a storage type
/// or an element type of it (see TypeTraits). It is its own range:
///
///     for (const double value : array.GetAdapter().CastTo<double>()) { ... }
///
/// Threads: one at a time. Ownership: holds views; the array must stay alive.
/// Errors: IteratorOutOfBounds at the end; OutOfBounds where an index lies outside the storage.
/// Cost: nothing is allocated.
template <typename T>
class ArrayCursor {
public:
    using Storage = typename TypeTraits<T>::Storage;
    using Reference = std::conditional_t<std::is_same_v<T, Storage>, const T&, T>;
    using value_type = T;
    using difference_type = std::ptrdiff_t;

    ArrayCursor() = default;
    /// `indices` and `specials` may be null; then elements stand as stored, and none is special.
    ArrayCursor(const CollectionType* type, ArrayView<const Storage> values,
                const SpecialKind* specials, const unsigned* indices, lumsize_t size)
        : m_type(type),
          m_values(values),
          m_specials(specials),
          m_indices(indices),
          m_pos(0),
          m_size(size) {}

    lumsize_t GetPosition() const noexcept { return m_pos; }
    lumsize_t GetSize() const noexcept { return m_size; }
    bool IsAtEnd() const noexcept { return m_pos >= m_size; }

    Reference operator*() const {
        const Storage& stored = m_values.GetData()[GetStoredPosition()];
        if constexpr (std::is_same_v<T, Storage>) {
            return stored;
        } else if constexpr (std::is_same_v<T, bool>) {
            return stored != 0;
        } else {
            return std::bit_cast<T>(stored);
        }
    }
    /// Normal everywhere if the cursor was made without specials.
    SpecialKind GetSpecialKind() const {
        const uint64 position = GetStoredPosition();
        return m_specials == nullptr ? SpecialKind::Normal : m_specials[position];
    }
    bool IsSpecial() const { return GetSpecialKind() != SpecialKind::Normal; }

    ArrayCursor& operator++() {
        LUM_CHECK(m_pos < m_size, LumError::IteratorOutOfBounds);
        ++m_pos;
        return *this;
    }
    void operator++(int) { ++*this; }
    void Advance() { ++*this; }

    ArrayCursor begin() const { return *this; }
    std::default_sentinel_t end() const { return {}; }
    friend bool operator==(const ArrayCursor& cursor, std::default_sentinel_t) {
        return cursor.IsAtEnd();
    }

    /// This cursor, reading another element type of the same storage.
    /// Errors: TypeMismatchExpected where elements are of another type.
    template <typename NewCastType>
    ArrayCursor<NewCastType> CastTo() const {
        static_assert(std::is_same_v<typename TypeTraits<NewCastType>::Storage, Storage>);
        LUM_CHECK(TypeTraits<NewCastType>::IsMatchingType(m_type->GetElementType()),
                  LumError::TypeMismatchExpected);
        ArrayCursor<NewCastType> cursor(m_type, m_values, m_specials, m_indices, m_size);
        cursor.m_pos = m_pos;
        return cursor;
    }

private:
    template <typename U>
    friend class ArrayCursor;

    uint64 GetStoredPosition() const {
        LUM_CHECK(m_pos < m_size, LumError::IteratorOutOfBounds);
        if (m_indices == nullptr) {
            return m_pos;
        }
        const unsigned index = m_indices[m_pos];
        LUM_CHECK_TEXT("(index < m_size)", index < m_values.GetSize(), LumError::OutOfBounds);
        return index;
    }

    const CollectionType* m_type = nullptr;
    ArrayView<const Storage> m_values;
    const SpecialKind* m_specials = nullptr;
    const unsigned* m_indices = nullptr;
    lumsize_t m_pos = 0;
    lumsize_t m_size = 0;
};

}  // namespace lum::core
