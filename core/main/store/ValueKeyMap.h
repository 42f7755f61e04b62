#pragma once

#include <memory>

#include "core/main/store/NamedCollectionBridge.h"
#include "lum/core/store/MemberMap.h"
#include "lum/core/store/StoreValue.h"

namespace lum::core {

/// A map of names to values, to which members can be added, and whose members can be replaced by
/// values of their own type: the node of the tree below a data store. Its type is that of its
/// members as they are now.
class ValueKeyMap final : public StoreValue,
                          public NamedCollectionBridge<IStoreMutableCollection>,
                          public KeyMapBridge {
public:
    ValueKeyMap() = default;
    explicit ValueKeyMap(MemberMap&& members) : m_members(std::move(members)) {}
    ~ValueKeyMap() override;

    // StoreValue
    StoreType GetStoreType() const override { return StoreType::KeyMap; }
    lumsize_t GetCount() const override;
    /// Computed at each call, since the members may change.
    const Type* GetType() const override;
    const IStoreCollection& AsCollection() const override { return *this; }
    IStoreMutableCollection& AsMutableCollection() override { return *this; }
    const IStoreKeyMap& AsKeyMap() const override { return *this; }
    /// Clones the members one by one.
    std::unique_ptr<StoreValue> Clone() const override;

    /// The member, or null where there is none: for walks that need no share of what they pass.
    const SV* FindMember(const RInternString& key) const noexcept { return m_members.Find(key); }

    // IStoreMutableCollection
    SV TryGetValue(const RInternString& key) const override;
    bool HasKey(const RInternString& key) const override;
    void AddValue(RInternString key, const SV& value) override;
    void UpdateValue(RInternString key, const SV& value) override;
    void SetValue(RInternString key, const SV& value) override;

    // IStoreKeyMap
    DictionaryCursor<RInternString, SV> GetEntries() const override;

protected:
    SV GetMember(const RInternString& key) const override;
    const SV& GetEntry(const RInternString& key) const override;

private:
    MemberMap m_members;
};

}  // namespace lum::core
