#pragma once

#include <memory>

#include "lum/core/Export.h"
#include "lum/core/store/Containers.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"

namespace lum::core::factory {

/// A key set: an immutable dictionary of elements of one type under keys of one type, and beside
/// these under special keys. `K` and `V` are of the six storage types. Strings as keys must be held
/// under the collation of the key type.
///
/// A key set answers to three interfaces.
/// - IStoreDictionary<K, V>, by StoreValue::AsDictionary: typed keys.
/// - IUniformCollection: the elements without their keys, first those under normal keys.
///   HasSpecialValues is always false: what may be special are the keys.
/// - IStoreCollection: the text of a normal key, as the typed readers take it; strings stand as
///   they are. GetValue fails with the reader's error for what is no such text, with
///   std::out_of_range, "invalid unordered_map<K, T> key", for a key that is not there, and with
///   NotImplemented for keys stored as rows or as SV, which have no text: there TryGetValue gives
///   null and HasKey false.
///
/// Threads: any; a key set is read on any threads at once, without locks.
/// Ownership: the key set takes over both containers. Clones share them.
/// Errors, the containers being lost: IllegalKeyType, IllegalElementType where no key set may have
///   such keys or elements; NullArray for null values; NullSpecials; TypeMismatchExpected where `K`
///   or `V` does not store the type, as SV does any; CollationMismatch; LumLogicException
///   Unspecified where a row is a reference that has no block.
/// Cost: no entry is copied; O(1), but for rows, each of which is looked at. A look-up is one hash
///   probe, and fails as the keys' hash and equality do.
template <StorageType K, StorageType V>
LUM_CORE_API SV MakeKeySet(const Type* keyType, const Type* elementType,
                           std::unique_ptr<MapContainer<K, V>> values,
                           std::unique_ptr<MapContainer<SpecialKind, V>> specials);

}  // namespace lum::core::factory
