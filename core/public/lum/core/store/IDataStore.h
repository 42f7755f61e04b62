#pragma once

#include <memory>
#include <unordered_map>

#include "lum/core/Export.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/store/StoreValueFwd.h"

namespace lum::core {

class ValueKeyMap;

/// The addressable home of values: a tree of key maps in which a key path names a value. A read
/// walks every collection that has string keys, so a path also leads into tables, key sets and
/// arrays. A write walks key maps alone, and makes those that are missing. The types of a path's
/// segments are not looked at. A path whose last name but one is empty is written as its last name
/// alone, into the root.
///
/// Threads: any number may read while none writes; there is no lock.
/// Ownership: values are shared with whoever put them there or got them.
/// Errors: NotStringAccessible, with the path as details, where something on the way is no
///   collection; from a write also EmptyKeyPath for a path without segments and where the name of a
///   new member is empty, CollectionNotMutable on the way through a collection that is no key map,
///   and NullArgument for an empty value; and as told. Key maps that a write made before it failed
///   stay.
/// Cost: a read is one hash look-up and one copy of a shared pointer a segment.
class LUM_CORE_API IDataStore {
public:
    virtual ~IDataStore();
    /// The value; the root for a path without segments.
    /// Errors: that of the collection without such a key: KeyNotFound for a key map.
    virtual SV GetValue(const KeyPath& path) const = 0;
    /// Errors: ValueAlreadySet with the path as details.
    virtual void AddValue(const KeyPath& path, SV value) = 0;
    /// Errors: ValueNotYetComputed with the path as details; TypeMismatchExpected.
    virtual void UpdateValue(const KeyPath& path, SV value) = 0;
    /// Adds or replaces. Errors: TypeMismatchExpected.
    virtual void SetValue(const KeyPath& path, SV value) = 0;
    /// Null where the path leads nowhere.
    virtual SV TryGetValue(const KeyPath& path) const = 0;
    /// Shares the ownership of the root.
    virtual std::shared_ptr<IStoreKeyMap> GetRootKeyMap() const = 0;
    /// Gives the root away; the store goes on with an empty one.
    virtual std::shared_ptr<ValueKeyMap> ReleaseRoot() = 0;
    /// A store over a clone of the root.
    virtual std::unique_ptr<IDataStore> Clone() const = 0;
};

namespace factory {

/// A store over a new root with these members.
LUM_CORE_API std::unique_ptr<IDataStore> MakeDataStore(
    std::unordered_map<RInternString, SV>&& values);
/// The same; a null pointer makes an empty store.
LUM_CORE_API std::unique_ptr<IDataStore> MakeDataStore(
    std::unique_ptr<std::unordered_map<RInternString, SV>> values);
/// A store over an existing key map, which it shares.
/// Errors: ExpectedKeyMap, with the value's store type as details, for any other value, and without
/// details for an empty pointer.
LUM_CORE_API std::unique_ptr<IDataStore> MakeDataStore(SV root);

}  // namespace factory
}  // namespace lum::core
