#pragma once

#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/MemberMap.h"

namespace lum::core {

// IStoreCollection::GetValue and IStoreDictionary::GetValue of a name differ in their result alone,
// so one class cannot override both. The two bridges give them names of their own. The two fail
// differently, on purpose, where there is no such name. A call on the concrete class is ambiguous:
// library code goes through AsCollection() and AsKeyMap().

/// `Base`: IStoreCollection or IStoreMutableCollection.
template <typename Base>
class NamedCollectionBridge : public Base {
public:
    SV GetValue(const RInternString& key) const final { return GetMember(key); }

protected:
    virtual SV GetMember(const RInternString& key) const = 0;
};

/// Keys are names alone: what asks for special ones fails or answers that there are none.
class KeyMapBridge : public IStoreKeyMap {
public:
    const SV& GetValue(const RInternString& key) const final { return GetEntry(key); }
    const Type* GetKeyType() const final;
    bool HasSpecialKeys() const final { return false; }
    bool HasSpecialKey(SpecialKind /*kind*/) const final { return false; }
    lumsize_t GetSpecialKeyCount() const final;
    const SV& GetValueForSpecialKey(SpecialKind kind) const final;
    DictionaryCursor<SpecialKind, SV> GetSpecialEntries() const final;

protected:
    virtual const SV& GetEntry(const RInternString& key) const = 0;
    /// Errors: that of ThrowInvalidMapKey.
    static const SV& EntryOf(const MemberMap& members, const RInternString& key);
};

}  // namespace lum::core
