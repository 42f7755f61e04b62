#pragma once

#include <memory>
#include <unordered_set>

#include "lum/core/Export.h"
#include "lum/core/store/Containers.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"

namespace lum::core::factory {

/// A set of `values`, and of the special kinds `specials`, which may be null for none. `T` is one
/// of the six storage types. Strings must be held under the collation of the element type.
///
/// Threads: any. Ownership: the set takes over both containers.
/// Errors, the containers being lost: IllegalElementType where no set may have such elements;
///   NullSet for null values; CollationMismatch; TypeMismatchExpected where `T` does not store the
///   element type, as SV does any; NestedCollectionSpecials for special members beside tuples.
template <StorageType T>
LUM_CORE_API SV MakeSet(const Type* elementType, std::unique_ptr<SetContainer<T>> values,
                        std::unique_ptr<std::unordered_set<SpecialKind>> specials);

}  // namespace lum::core::factory
