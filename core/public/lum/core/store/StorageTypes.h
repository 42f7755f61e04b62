#pragma once

#include <type_traits>

#include "lum/core/Export.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"
#include "lum/core/utility/LumColor.h"
#include "lum/core/utility/LumDateTime.h"
#include "lum/core/utility/RIndirectString.h"

namespace lum::core {

class LumTuple;

namespace detail {
template <typename T, typename... Types>
inline constexpr bool kIsOneOf = (std::is_same_v<T, Types> || ...);
template <typename T, typename... Types>
inline constexpr unsigned kPlaceAmong = 0;
template <typename T, typename First, typename... Rest>
inline constexpr unsigned kPlaceAmong<T, First, Rest...> =
    std::is_same_v<T, First> ? 0 : 1 + kPlaceAmong<T, Rest...>;
}  // namespace detail

/// The six types that columns are stored in: unsigned char for Bool; unsigned int for Int32, Real32
/// and Color; unsigned long long for Int64, Real64, Date and DateTime; RIndirectString; LumTuple;
/// and SV for everything else. Note that std::uint64_t is none of them where it is unsigned long.
template <typename T>
concept StorageType = detail::kIsOneOf<T, unsigned char, unsigned int, unsigned long long,
                                       RIndirectString, LumTuple, SV>;

/// The storage type of a collection at run time, for a cast to its typed interface.
enum class StorageKind : unsigned {};
template <StorageType T>
inline constexpr StorageKind kStorageKind{
    detail::kPlaceAmong<T, unsigned char, unsigned int, unsigned long long, RIndirectString,
                        LumTuple, SV>};

/// Whether `T` is the storage of a type. Arrays and sets of SV hold elements of any type all the
/// same.
template <StorageType T>
struct StorageTypeTraits {
    static bool IsMatchingType(const Type* type) noexcept {
        switch (type->GetStoreType()) {
            case StoreType::Bool:
                return std::is_same_v<T, unsigned char>;
            case StoreType::Int32:
            case StoreType::Real32:
            case StoreType::Color:
                return std::is_same_v<T, unsigned int>;
            case StoreType::Int64:
            case StoreType::Real64:
            case StoreType::Date:
            case StoreType::DateTime:
                return std::is_same_v<T, unsigned long long>;
            case StoreType::String:
                return std::is_same_v<T, RIndirectString>;
            case StoreType::Tuple:
                return std::is_same_v<T, LumTuple>;
            default:
                return std::is_same_v<T, SV>;
        }
    }
};

/// The C++ type of an element as a caller reads it, the storage under it, and which types of value
/// it can be. A storage type is its own element type and matches every type that it stores; SV
/// matches any type.
template <typename T>
struct TypeTraits;

template <StorageType T>
struct TypeTraits<T> {
    using Storage = T;
    static bool IsMatchingType(const Type* type) noexcept {
        return std::is_same_v<T, SV> || StorageTypeTraits<T>::IsMatchingType(type);
    }
};

namespace detail {
template <typename T, StoreType... kTypes>
struct ElementTraits {
    using Storage = T;
    static bool IsMatchingType(const Type* type) noexcept { return (type->Is(kTypes) || ...); }
};
}  // namespace detail

template <>
struct TypeTraits<bool> : detail::ElementTraits<unsigned char, StoreType::Bool> {};
template <>
struct TypeTraits<int> : detail::ElementTraits<unsigned int, StoreType::Int32> {};
template <>
struct TypeTraits<float> : detail::ElementTraits<unsigned int, StoreType::Real32> {};
template <>
struct TypeTraits<LumColor> : detail::ElementTraits<unsigned int, StoreType::Color> {};
template <>
struct TypeTraits<long long> : detail::ElementTraits<unsigned long long, StoreType::Int64> {};
template <>
struct TypeTraits<double> : detail::ElementTraits<unsigned long long, StoreType::Real64> {};
template <>
struct TypeTraits<LumDateTime>
    : detail::ElementTraits<unsigned long long, StoreType::Date, StoreType::DateTime> {};

}  // namespace lum::core
