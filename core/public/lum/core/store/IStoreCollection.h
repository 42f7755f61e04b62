#pragma once

#include "lum/core/Export.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

/// A collection as key paths walk it: every collection turns a string key into its own kind of key.
///
/// Threads: reads run on any threads at once, but see IStoreMutableCollection.
/// Ownership: what is given is shared with the collection.
/// Errors: those of the concrete collection, for a key that it cannot read or does not have.
class LUM_CORE_API IStoreCollection {
public:
    virtual ~IStoreCollection() = default;
    /// Errors: as the collection says where there is no such key.
    virtual SV GetValue(const RInternString& key) const = 0;
    /// Null where there is no such key.
    virtual SV TryGetValue(const RInternString& key) const = 0;
    virtual bool HasKey(const RInternString& key) const = 0;
};

/// The only collection that changes: members may be added, and replaced by values of their own
/// type. Nothing is ever removed.
///
/// Threads: a write needs exclusion from all other access.
/// Errors, the collection staying as it was: EmptyKeyPath for an empty key; NullArgument for an
///   empty value; and as told.
class LUM_CORE_API IStoreMutableCollection : public IStoreCollection {
public:
    /// Adds a member. Errors: ImmutableValue where the key is there.
    virtual void AddValue(RInternString key, const SV& value) = 0;
    /// Replaces a member. Errors: ValueNotYetComputed where the key is not there;
    /// TypeMismatchExpected where the types differ.
    virtual void UpdateValue(RInternString key, const SV& value) = 0;
    /// Adds or replaces. Errors: TypeMismatchExpected.
    virtual void SetValue(RInternString key, const SV& value) = 0;
};

}  // namespace lum::core
