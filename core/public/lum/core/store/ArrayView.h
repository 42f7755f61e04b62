#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

#include "lum/core/Check.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

/// A view of elements that stand somewhere else in a row; passed by value.
///
/// Threads: a plain value. Ownership: none; the view is good while the elements live.
/// Units: counts and indices are elements.
/// Errors: OutOfBounds from the checked operations.
template <typename T>
class ArrayView {
public:
    constexpr ArrayView() noexcept = default;
    constexpr ArrayView(T* data, uint64 size) noexcept : m_ptr(data), m_size(size) {}
    /// A view for reading from one for writing.
    template <typename U,
              typename = std::enable_if_t<!std::is_same_v<T, U> && std::is_same_v<T, const U>>>
    constexpr ArrayView(ArrayView<U> other) noexcept  // NOLINT(google-explicit-constructor)
        : m_ptr(other.GetData()), m_size(other.GetSize()) {}
    ArrayView(std::vector<std::remove_const_t<T>>& elements) noexcept  // NOLINT
        : m_ptr(elements.data()), m_size(elements.size()) {}
    ArrayView(const std::vector<std::remove_const_t<T>>& elements) noexcept  // NOLINT
        requires(std::is_const_v<T>)
        : m_ptr(elements.data()), m_size(elements.size()) {}

    constexpr uint64 GetSize() const noexcept { return m_size; }
    constexpr bool IsEmpty() const noexcept { return m_size == 0; }
    constexpr T* GetData() const noexcept { return m_ptr; }
    constexpr T* begin() const noexcept { return m_ptr; }
    constexpr T* end() const noexcept { return m_ptr + m_size; }

    T& operator[](uint64 index) const {
        LUM_CHECK(index < m_size, LumError::OutOfBounds);
        return m_ptr[index];
    }

    /// `count` elements from `index` on.
    ArrayView GetSlice(uint64 index, uint64 count) const {
        const auto address = reinterpret_cast<std::uintptr_t>(m_ptr);
        LUM_CHECK_TEXT("((std::numeric_limits<uint64_t>::max()) - index > (size_t)m_ptr)",
                       std::numeric_limits<uint64>::max() - index > address, LumError::OutOfBounds);
        LUM_CHECK_TEXT("((std::numeric_limits<uint64_t>::max()) - m_size > (size_t)m_ptr)",
                       std::numeric_limits<uint64>::max() - m_size > address,
                       LumError::OutOfBounds);
        LUM_CHECK_TEXT("(ptr + count <= ptrEnd)", index <= m_size && count <= m_size - index,
                       LumError::OutOfBounds);
        return {m_ptr + index, count};
    }

private:
    T* m_ptr = nullptr;
    uint64 m_size = 0;
};

}  // namespace lum::core
