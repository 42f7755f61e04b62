#include <typeinfo>
#include <utility>

#include "core/main/store/ValueKeyMap.h"
#include "lum/core/Check.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/types/TypeUtil.h"

namespace lum::core {
namespace {

/// A place in a walk for reading. Inside key maps it takes no share of the values that it passes,
/// since these stay where they are; what other collections give has to be held.
class Cursor {
public:
    explicit Cursor(const std::shared_ptr<ValueKeyMap>& root) : m_root(root), m_value(root.get()) {}

    /// Null at a cell without a value, which an array of collections may have.
    const StoreValue* GetValue() const { return m_value; }

    /// Goes to a member if the place is a key map that has it.
    bool EnterMember(const RInternString& key) {
        if (m_value == nullptr || typeid(*m_value) != typeid(ValueKeyMap)) {
            return false;
        }
        const SV* const member = static_cast<const ValueKeyMap*>(m_value)->FindMember(key);
        if (member == nullptr) {
            return false;
        }
        m_member = member;
        m_value = member->get();
        return true;
    }

    void Enter(SV value) {
        m_held = std::move(value);
        m_member = &m_held;
        m_value = m_held.get();
    }

    SV Share() const { return m_member == nullptr ? SV(m_root) : *m_member; }

private:
    const std::shared_ptr<ValueKeyMap>& m_root;
    const StoreValue* m_value;
    const SV* m_member = nullptr;  // Where m_value is held; null at the root.
    SV m_held;
};

class DataStore final : public IDataStore {
public:
    explicit DataStore(std::shared_ptr<ValueKeyMap> root) : m_root(std::move(root)) {}

    SV GetValue(const KeyPath& path) const override {
        Cursor cursor(m_root);
        for (const KeySegment& segment : path.GetSegments()) {
            if (!cursor.EnterMember(segment.GetSegment())) {
                CheckCollection(cursor.GetValue(), path);
                cursor.Enter(cursor.GetValue()->AsCollection().GetValue(segment.GetSegment()));
            }
        }
        return cursor.Share();
    }

    SV TryGetValue(const KeyPath& path) const override {
        Cursor cursor(m_root);
        for (const KeySegment& segment : path.GetSegments()) {
            if (!cursor.EnterMember(segment.GetSegment())) {
                // A special value has no members, whatever its type.
                const StoreValue* const value = cursor.GetValue();
                if (!IsCollection(value) || value->IsSpecial()) {
                    return nullptr;
                }
                cursor.Enter(value->AsCollection().TryGetValue(segment.GetSegment()));
            }
        }
        return cursor.Share();
    }

    void AddValue(const KeyPath& path, SV value) override {
        const SV parent = WalkToParent(path);
        IStoreMutableCollection& container = GetContainer(parent, path);
        const RInternString& key = path.GetLeaf();
        if (container.HasKey(key)) {
            LUM_FAIL(LumError::ValueAlreadySet, path.ToString());
        }
        container.AddValue(key, value);
    }

    void UpdateValue(const KeyPath& path, SV value) override {
        const SV parent = WalkToParent(path);
        IStoreMutableCollection& container = GetContainer(parent, path);
        const RInternString& key = path.GetLeaf();
        if (!container.HasKey(key)) {
            LUM_FAIL(LumError::ValueNotYetComputed, path.ToString());
        }
        container.UpdateValue(key, value);
    }

    void SetValue(const KeyPath& path, SV value) override {
        const SV parent = WalkToParent(path);
        GetContainer(parent, path).SetValue(path.GetLeaf(), value);
    }

    std::shared_ptr<IStoreKeyMap> GetRootKeyMap() const override { return m_root; }

    std::shared_ptr<ValueKeyMap> ReleaseRoot() override {
        return std::exchange(m_root, std::make_shared<ValueKeyMap>());
    }

    std::unique_ptr<IDataStore> Clone() const override {
        return factory::MakeDataStore(SV(m_root->Clone()));
    }

private:
    static bool IsCollection(const StoreValue* value) {
        return value != nullptr && IsCollectionStoreType(value->GetStoreType());
    }

    static void CheckCollection(const StoreValue* value, const KeyPath& path) {
        if (!IsCollection(value)) {
            LUM_FAIL(LumError::NotStringAccessible, path.ToString());
        }
    }

    static IStoreMutableCollection& GetContainer(const SV& value, const KeyPath& path) {
        CheckCollection(value.get(), path);
        return value->AsMutableCollection();
    }

    /// The value that the last segment names a member of. Key maps that are missing on the way are
    /// made, and stay if the write then fails.
    SV WalkToParent(const KeyPath& path) const {
        const KeyPath parent = path.GetParent();
        SV cursor = m_root;
        // A parent that ends in an empty name counts as empty: the value then lands in the root.
        if (!parent.IsEmpty()) {
            for (const KeySegment& segment : parent.GetSegments()) {
                IStoreMutableCollection& container = GetContainer(cursor, path);
                SV next = container.TryGetValue(segment.GetSegment());
                if (next == nullptr) {
                    next = std::make_shared<ValueKeyMap>();
                    container.AddValue(segment.GetSegment(), next);
                }
                cursor = std::move(next);
            }
        }
        return cursor;
    }

    std::shared_ptr<ValueKeyMap> m_root;  // Never null.
};

}  // namespace

IDataStore::~IDataStore() = default;

std::unique_ptr<IDataStore> factory::MakeDataStore(std::unordered_map<RInternString, SV>&& values) {
    return MakeDataStore(MakeKeyMap(std::move(values)));
}

std::unique_ptr<IDataStore> factory::MakeDataStore(
    std::unique_ptr<std::unordered_map<RInternString, SV>> values) {
    return MakeDataStore(MakeKeyMap(std::move(values)));
}

std::unique_ptr<IDataStore> factory::MakeDataStore(SV root) {
    if (root == nullptr) {
        LUM_FAIL(LumError::ExpectedKeyMap);
    }
    auto keyMap = std::dynamic_pointer_cast<ValueKeyMap>(root);
    if (keyMap == nullptr) {
        LUM_FAIL(LumError::ExpectedKeyMap, StoreTypeToString(root->GetStoreType()));
    }
    return std::make_unique<DataStore>(std::move(keyMap));
}

}  // namespace lum::core
