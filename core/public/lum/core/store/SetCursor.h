#pragma once

#include <bit>
#include <iterator>
#include <type_traits>

#include "lum/core/Check.h"
#include "lum/core/store/Containers.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core {

/// A walk over the typed values of a set, in the order of its container; special members are not
/// visited. By value, and its own range. `T` is a storage type or an element type of it.
///
/// Threads: one at a time. Ownership: the set must stay alive.
/// Errors: IteratorOutOfBounds at the end. Cost: nothing is allocated.
template <typename T>
class SetCursor {
public:
    using Storage = typename TypeTraits<T>::Storage;
    using Reference = std::conditional_t<std::is_same_v<T, Storage>, const T&, T>;
    using value_type = T;
    using difference_type = std::ptrdiff_t;

    SetCursor(const CollectionType* type, const SetContainer<Storage>& values)
        : SetCursor(type, values, values.begin()) {}

    bool IsAtEnd() const { return m_pos == m_values->end(); }
    Reference operator*() const {
        LUM_CHECK(m_pos != m_values->end(), LumError::IteratorOutOfBounds);
        if constexpr (std::is_same_v<T, Storage>) {
            return *m_pos;
        } else if constexpr (std::is_same_v<T, bool>) {
            return *m_pos != 0;
        } else {
            return std::bit_cast<T>(*m_pos);
        }
    }
    SetCursor& operator++() {
        LUM_CHECK(m_pos != m_values->end(), LumError::IteratorOutOfBounds);
        ++m_pos;
        return *this;
    }
    void operator++(int) { ++*this; }
    void Advance() { ++*this; }

    SetCursor begin() const { return *this; }
    std::default_sentinel_t end() const { return {}; }
    friend bool operator==(const SetCursor& cursor, std::default_sentinel_t) {
        return cursor.IsAtEnd();
    }

    /// This cursor, reading another element type of the same storage.
    /// Errors: TypeMismatchExpected where elements are of another type.
    template <typename NewCastType>
    SetCursor<NewCastType> CastTo() const {
        static_assert(std::is_same_v<typename TypeTraits<NewCastType>::Storage, Storage>);
        LUM_CHECK(TypeTraits<NewCastType>::IsMatchingType(m_type->GetElementType()),
                  LumError::TypeMismatchExpected);
        return {m_type, *m_values, m_pos};
    }

private:
    template <typename U>
    friend class SetCursor;

    SetCursor(const CollectionType* type, const SetContainer<Storage>& values,
              typename SetContainer<Storage>::const_iterator position)
        : m_type(type), m_values(&values), m_pos(position) {}

    const CollectionType* m_type;
    const SetContainer<Storage>* m_values;
    typename SetContainer<Storage>::const_iterator m_pos;
};

}  // namespace lum::core
