#pragma once

#include <memory>
#include <type_traits>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/RawData.h"
#include "lum/core/store/SortSpecOrder.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"
#include "lum/core/utility/LumTuple.h"

/// The makers of arrays. `T` is one of the six storage types and has to be named; `elementType` is
/// the type of the elements, for instance IntType::Get32() over unsigned int.
///
/// `indices`: element i is the stored value at indices[i]; an empty vector makes an array without
/// elements, a null pointer one without indices. `specials`: a kind for each stored value. `order`:
/// what the caller states of the elements' order.
///
/// Threads: any. Ownership: the array takes over what it is given; raw storage is shared and must
///   not change any more. No values are copied.
/// Errors, what was moved in being lost: IllegalElementType where no array may have such elements;
///   NullArray for null values; TypeMismatchExpected where `T` does not store the element type, as
///   SV does any; NestedCollectionSpecials for specials of tuples or collections;
///   SpecialsSizeMismatch; IllegalCast where raw storage has elements of another width or kind;
///   LumLogicException Unspecified where a row is a reference that has no block.
namespace lum::core::factory {

template <StorageType T>
LUM_CORE_API SV MakeArray(const Type* elementType, std::vector<T>&& values, SortSpecOrder order);
template <StorageType T>
LUM_CORE_API SV MakeArray(const Type* elementType, std::vector<T>&& values,
                          std::vector<unsigned>&& indices, SortSpecOrder order);
template <StorageType T>
LUM_CORE_API SV MakeArray(const Type* elementType, std::vector<T>&& values,
                          std::vector<unsigned>&& indices, std::vector<SpecialKind>&& specials,
                          SortSpecOrder order);
template <StorageType T>
LUM_CORE_API SV MakeArray(const Type* elementType, std::unique_ptr<std::vector<T>> values,
                          std::unique_ptr<std::vector<unsigned>> indices,
                          std::unique_ptr<std::vector<SpecialKind>> specials, SortSpecOrder order);
template <StorageType T>
LUM_CORE_API SV MakeArray(const Type* elementType, std::shared_ptr<const RawData> values,
                          std::shared_ptr<const RawData> specials, SortSpecOrder order);

/// How a value is handed to the maker of a constant array: numbers by value.
template <StorageType T>
using ConstantParameter = std::conditional_t<std::is_arithmetic_v<T>, T, const T&>;

/// An array of `count` elements that are all `value`, or all specials of `kind`. It costs as much
/// memory as one element, and states ascending order. All boxed elements are one object, and
/// indices only set another count. Element types are primitives and tuples.
/// Errors: IllegalElementType as above; TypeMismatchExpected where the element type is a collection
///   or `T` does not store it; LumLogicException Unspecified as above.
template <StorageType T>
LUM_CORE_API SV MakeConstantArray(const Type* elementType, ConstantParameter<T> value,
                                  unsigned count);
template <StorageType T>
LUM_CORE_API SV MakeConstantArray(const Type* elementType, unsigned count, SpecialKind kind);

}  // namespace lum::core::factory
