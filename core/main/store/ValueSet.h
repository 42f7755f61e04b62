#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <type_traits>
#include <unordered_set>

#include "core/main/store/SetLookup.h"
#include "lum/core/store/Containers.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/StringType.h"

namespace lum::core {

/// An empty container for values of `elementType`, with room for `count` of them.
template <StorageType T>
std::unique_ptr<SetContainer<T>> MakeSetContainer(const Type* elementType, lumsize_t count) {
    if constexpr (std::is_same_v<T, RIndirectString>) {
        const Collation& collation = elementType->As<StringType>().GetCollation();
        return std::make_unique<SetContainer<T>>(count, CollatorHash(collation),
                                                 CollatorEqualTo(collation));
    } else {
        // However many cells a column of bytes has, it has few values.
        constexpr lumsize_t kMostBytes = 256;
        return std::make_unique<SetContainer<T>>(sizeof(T) == 1 ? std::min(count, kMostBytes)
                                                                : count);
    }
}

/// A set over shared containers. See IStoreSet and ITypedSet for the operations.
template <StorageType T>
class ValueSet final : public StoreValue, public IStoreCollection, public ITypedSet<T> {
public:
    using Values = SetContainer<T>;
    using Kinds = std::unordered_set<SpecialKind>;

    /// Null `specials` are an empty set of kinds. Errors: those of factory::MakeSet.
    ValueSet(const CollectionType* type, std::unique_ptr<Values> values,
             std::unique_ptr<Kinds> specials);
    /// Shares both containers.
    ValueSet(const CollectionType* type, std::shared_ptr<const Values> values,
             std::shared_ptr<const Kinds> specials);
    ValueSet(const ValueSet& other);

    // StoreValue
    const Type* GetType() const override { return m_type; }
    lumsize_t GetCount() const override;
    const IStoreCollection& AsCollection() const override { return *this; }
    const IUniformCollection& AsUniformCollection() const override { return *this; }
    const IStoreSet& AsSet() const override { return *this; }
    std::unique_ptr<StoreValue> Clone() const override;

    // IStoreCollection: the key is a value's text, and the answer a Bool that says whether the
    // value is a member. HasKey is true for every key.
    SV GetValue(const RInternString& key) const override;
    SV TryGetValue(const RInternString& key) const override;
    bool HasKey(const RInternString& key) const override;

    // IUniformCollection
    const Type* GetElementType() const override { return m_type->GetElementType(); }
    bool IsConstant() const override { return false; }
    bool HasSpecialValues() const override { return !m_specials->empty(); }
    const IUniformCollection::StoreValueIterable& GetStoreValueIterable() const override;

    // IStoreSet
    lumsize_t GetSpecialCount() const override;
    bool HasSpecial(SpecialKind kind) const override;
    SV ToArray(bool includeSpecials) const override;
    SV WithoutSpecials() const override;

    // ITypedSet
    bool Contains(const T& value) const override;
    void ContainsEach(ArrayView<const T> values, ArrayView<unsigned char> out) const override;
    SetCursor<T> GetValuesCursor() const override;
    const SpecialKindIterable& GetSpecialKinds() const override { return m_kindIterable; }

private:
    class SetStoreValueIterator;

    class SpecialKindIterableImpl final : public SpecialKindIterable {
    public:
        explicit SpecialKindIterableImpl(const Kinds* kinds) : m_kinds(kinds) {}
        Iterator begin() const override { return m_kinds->begin(); }
        Iterator end() const override { return m_kinds->end(); }

    private:
        const Kinds* m_kinds;
    };

    class StoreValueIterableImpl final : public IUniformCollection::StoreValueIterable {
    public:
        StoreValueIterableImpl(const Type* elementType, const std::shared_ptr<const Values>& values,
                               const std::shared_ptr<const Kinds>& specials);
        const std::unique_ptr<IStoreValueIterator>& begin() const override { return m_begin; }
        const std::unique_ptr<IStoreValueIterator>& end() const override { return m_end; }

    private:
        std::unique_ptr<IStoreValueIterator> m_begin;
        std::unique_ptr<IStoreValueIterator> m_end;
    };

    void Validate() const;

    const CollectionType* const m_type;
    const std::shared_ptr<const Values> m_values;
    const std::shared_ptr<const Kinds> m_specials;
    const SpecialKindIterableImpl m_kindIterable;
    mutable std::once_flag m_iterableFlag;  // Guards the making of the iterable.
    mutable std::unique_ptr<StoreValueIterableImpl> m_iterable;
    [[no_unique_address]] mutable SetLookup<T> m_lookup;
};

}  // namespace lum::core
