#pragma once

#include <bit>
#include <iterator>
#include <type_traits>

#include "lum/core/Check.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/store/ValueCompositeArrayRange.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core {

namespace detail {

/// Where a cursor stands, and what it walks over: values that stand in a row, or runs. With indices
/// element i is the value, or the run, at indices[i]; runs without indices are walked one after the
/// other, so a step costs O(1) however many there are.
template <typename Storage>
class ArrayPlace {
public:
    using Run = ValueCompositeArrayRange<Storage>;

    ArrayPlace() = default;
    ArrayPlace(ArrayView<const Storage> values, const SpecialKind* kinds, const unsigned* indices,
               lumsize_t size)
        : m_values(values.GetData()),
          m_kinds(kinds),
          m_indices(indices),
          m_storedCount(values.GetSize()),
          m_size(size) {}
    /// Without indices `size` is the sum of the runs' counts.
    ArrayPlace(ArrayView<const Run> runs, bool readsKinds, const unsigned* indices, lumsize_t size)
        : m_runs(runs.GetData()),
          m_indices(indices),
          m_storedCount(runs.GetSize()),
          m_size(size),
          m_readsKinds(readsKinds) {
        if (m_indices == nullptr && m_size > 0) {
            EnterRun(0);
        }
    }

    lumsize_t GetPosition() const noexcept { return m_pos; }
    lumsize_t GetSize() const noexcept { return m_size; }

    const Storage& GetValue() const {
        LUM_CHECK(m_pos < m_size, LumError::IteratorOutOfBounds);
        if (m_runs != nullptr) [[unlikely]] {
            return GetRun().value;
        }
        return m_values[GetStoredPosition()];
    }
    SpecialKind GetKind() const {
        LUM_CHECK(m_pos < m_size, LumError::IteratorOutOfBounds);
        if (m_runs != nullptr) [[unlikely]] {
            const SpecialKind kind = GetRun().kind;
            return m_readsKinds ? kind : SpecialKind::Normal;
        }
        const uint64 position = GetStoredPosition();
        return m_kinds == nullptr ? SpecialKind::Normal : m_kinds[position];
    }

    void Advance() {
        LUM_CHECK(m_pos < m_size, LumError::IteratorOutOfBounds);
        ++m_pos;
        // Out of the way, so that loops over stored values compile as if there were no runs.
        if (m_runs != nullptr) [[unlikely]] {
            if (m_indices == nullptr && --m_leftInRun == 0 && m_pos < m_size) {
                EnterRun(m_run + 1);
            }
        }
    }

private:
    uint64 GetStoredPosition() const {
        if (m_indices == nullptr) {
            return m_pos;
        }
        const unsigned index = m_indices[m_pos];
        LUM_CHECK_TEXT("(index < m_size)", index < m_storedCount, LumError::OutOfBounds);
        return index;
    }
    const Run& GetRun() const { return m_runs[m_indices == nullptr ? m_run : GetStoredPosition()]; }
    /// The first run from `run` on that has elements; there is one.
    void EnterRun(lumsize_t run) {
        m_run = SkipEmptyRuns(m_runs, run);
        m_leftInRun = m_runs[m_run].count;
    }
    [[gnu::noinline, gnu::pure]] static lumsize_t SkipEmptyRuns(const Run* runs, lumsize_t run) {
        while (runs[run].count == 0) {
            ++run;
        }
        return run;
    }

    const Storage* m_values = nullptr;
    const SpecialKind* m_kinds = nullptr;
    const Run* m_runs = nullptr;
    const unsigned* m_indices = nullptr;
    uint64 m_storedCount = 0;  // Of the values, or of the runs.
    lumsize_t m_pos = 0;
    lumsize_t m_size = 0;
    lumsize_t m_run = 0;        // Of a walk along the runs, and
    lumsize_t m_leftInRun = 0;  // how many of its elements come from here on.
    bool m_readsKinds = false;
};

}  // namespace detail

/// A walk over the typed elements of an array, of whatever form, indices respected, by value. `T`
/// is a storage type or an element type of it (see TypeTraits). It is its own range:
///
///     for (const double value : array.GetAdapter().CastTo<double>()) { ... }
///
/// Threads: one at a time. Ownership: holds views; the array must stay alive.
/// Errors: IteratorOutOfBounds at the end; OutOfBounds where an index lies outside the storage.
/// Cost: O(1) a step, in runs as well; nothing is allocated.
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
        : m_type(type), m_place(values, specials, indices, size) {}
    /// Over runs, of which `indices` name one for each element; or over the elements of the runs in
    /// order, of which there are `size`, where they are null. No element is special unless
    /// `readsKinds`.
    ArrayCursor(const CollectionType* type, ArrayView<const ValueCompositeArrayRange<Storage>> runs,
                bool readsKinds, const unsigned* indices, lumsize_t size)
        : m_type(type), m_place(runs, readsKinds, indices, size) {}

    lumsize_t GetPosition() const noexcept { return m_place.GetPosition(); }
    lumsize_t GetSize() const noexcept { return m_place.GetSize(); }
    bool IsAtEnd() const noexcept { return GetPosition() >= GetSize(); }

    Reference operator*() const {
        const Storage& stored = m_place.GetValue();
        if constexpr (std::is_same_v<T, Storage>) {
            return stored;
        } else if constexpr (std::is_same_v<T, bool>) {
            return stored != 0;
        } else {
            return std::bit_cast<T>(stored);
        }
    }
    /// Normal everywhere if the cursor was made without specials.
    SpecialKind GetSpecialKind() const { return m_place.GetKind(); }
    bool IsSpecial() const { return GetSpecialKind() != SpecialKind::Normal; }

    ArrayCursor& operator++() {
        m_place.Advance();
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
        ArrayCursor<NewCastType> cursor;
        cursor.m_type = m_type;
        cursor.m_place = m_place;
        return cursor;
    }

private:
    template <typename U>
    friend class ArrayCursor;

    const CollectionType* m_type = nullptr;
    detail::ArrayPlace<Storage> m_place;
};

}  // namespace lum::core
