#pragma once

#include <type_traits>
#include <utility>

#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/TypeRef.h"
#include "lum/core/utility/LumColor.h"
#include "lum/core/utility/LumDateTime.h"
#include "lum/core/utility/RIndirectString.h"

namespace lum::core {

/// The types of elements that functions take and give. Dates and date-times share LumDateTime; SV
/// is what columns of collections hold.
template <typename T>
concept FunctionElement = detail::kIsOneOf<T, bool, int, long long, float, double, RIndirectString,
                                           LumDateTime, LumColor, SV>;

/// How an element stands in a column. It stands there as itself, with one exception: a Bool is a
/// byte, and bytes from outside may be any number, of which all but 0 are true. To read such a byte
/// as bool would be undefined.
template <FunctionElement T>
struct Cell {
    using Type = T;
    static const T& Load(const T& cell) noexcept { return cell; }
    static void Store(T& cell, T value) { cell = std::move(value); }
};

template <>
struct Cell<bool> {
    using Type = unsigned char;
    static bool Load(unsigned char cell) noexcept { return cell != 0; }
    static void Store(unsigned char& cell, bool value) noexcept { cell = value ? 1 : 0; }
};

template <FunctionElement T>
using CellT = typename Cell<T>::Type;

/// An element and the kind that it is of, as special forms of functions take and give it. Where the
/// kind is not Normal the element is a placeholder.
template <FunctionElement T>
using ElementWithKind = std::pair<T, SpecialKind>;

namespace detail {
/// Elements that can be masked as an unsigned number of their width.
template <typename T>
inline constexpr bool kHasBits = kIsOneOf<T, int, long long, float, double, LumDateTime, LumColor>;
template <typename T>
using BitsOf = std::conditional_t<sizeof(T) == 4, unsigned int, unsigned long long>;
}  // namespace detail

/// Whether `type` is one whose elements are of type `T`. The wild card AnyType stands for columns
/// of collections, so that it goes with SV.
template <FunctionElement T>
bool IsElementType(const TypeRef& type) noexcept {
    if (type.Get() == nullptr) {
        return std::is_same_v<T, SV>;
    }
    if constexpr (std::is_same_v<T, SV>) {
        return StorageTypeTraits<SV>::IsMatchingType(type.Get());
    } else {
        return TypeTraits<T>::IsMatchingType(type.Get());
    }
}

}  // namespace lum::core
