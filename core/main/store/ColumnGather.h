#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <vector>

#include "lum/core/store/ArrayView.h"

namespace lum::core {

// Reads of storage through indices. Arrays never look at their indices when they are made, so a
// bulk read first asks whether all are in range, which is one vector pass, and then either reads
// without a test a cell, or with one.

/// Whether every index is below `bound`.
inline bool AllBelow(ArrayView<const unsigned> indices, uint64 bound) noexcept {
    unsigned highest = 0;
    for (const unsigned index : indices) {
        highest = std::max(highest, index);
    }
    return indices.IsEmpty() || highest < bound;
}

/// Walks stored values through indices, for containers that are built from a range in one pass.
template <typename T, bool kIsChecked>
class GatherIterator {
public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = const T*;
    using reference = const T&;

    GatherIterator(ArrayView<const T> values, const unsigned* index) noexcept
        : m_values(values), m_index(index) {}

    reference operator*() const {
        if constexpr (kIsChecked) {
            return m_values[*m_index];
        } else {
            return m_values.GetData()[*m_index];
        }
    }
    GatherIterator& operator++() noexcept {
        ++m_index;
        return *this;
    }
    GatherIterator operator++(int) noexcept { return {m_values, m_index++}; }
    friend difference_type operator-(const GatherIterator& a, const GatherIterator& b) noexcept {
        return a.m_index - b.m_index;
    }
    friend bool operator==(const GatherIterator& a, const GatherIterator& b) noexcept {
        return a.m_index == b.m_index;
    }

private:
    ArrayView<const T> m_values;
    const unsigned* m_index;
};

/// Calls `function` with the two ends of values[indices[0]], values[indices[1]], ... With
/// `isInRange` the indices are known to be so, and are not tested.
/// Errors: OutOfBounds for an index outside `values`.
template <typename T, typename F>
decltype(auto) WithGathered(ArrayView<const T> values, ArrayView<const unsigned> indices,
                            bool isInRange, const F& function) {
    if (isInRange) {
        return function(GatherIterator<T, false>(values, indices.begin()),
                        GatherIterator<T, false>(values, indices.end()));
    }
    return function(GatherIterator<T, true>(values, indices.begin()),
                    GatherIterator<T, true>(values, indices.end()));
}

template <typename T>
std::vector<T> GatherColumn(ArrayView<const T> values, ArrayView<const unsigned> indices,
                            bool isInRange) {
    return WithGathered(values, indices, isInRange,
                        [](auto first, auto last) { return std::vector<T>(first, last); });
}

template <typename T>
void GatherColumn(ArrayView<const T> values, ArrayView<const unsigned> indices, bool isInRange,
                  T* out) {
    WithGathered(values, indices, isInRange,
                 [&](auto first, auto last) { std::copy(first, last, out); });
}

}  // namespace lum::core
