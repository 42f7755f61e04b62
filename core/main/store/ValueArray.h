#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "core/main/store/ArrayIterators.h"
#include "core/main/store/ColumnStorage.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core {

/// An array over shared raw storage: values, possibly a kind for each of them, and possibly indices
/// through which the elements are read. See IStoreArray and ITypedArray for the operations.
template <StorageType T>
class ValueArray final : public StoreValue, public IStoreCollection, public ITypedArray<T> {
public:
    /// `specials` and `indices` may be null views.
    /// Errors: those of factory::MakeArray.
    ValueArray(const CollectionType* type, PackagedArrayView<T>&& values,
               PackagedArrayView<SpecialKind>&& specials,
               const PackagedArrayView<unsigned>& indices, SortSpecOrder order);
    /// Shares the storage; states no order.
    ValueArray(const ValueArray& other);

private:
    // The class alone makes arrays over its own storage, which was looked at when it was taken
    // over.
    struct Unchecked {};

public:
    /// The stored elements [startIndex, startIndex + count) of an array without indices.
    ValueArray(Unchecked, const ValueArray& other, lumsize_t startIndex, lumsize_t count);
    /// The other's storage under `indices`, which may be null.
    /// Errors: IllegalCast where they are no 32-bit numbers.
    ValueArray(Unchecked, const ValueArray& other, std::shared_ptr<const RawData>&& indices,
               SortSpecOrder order);

    // StoreValue
    StoreType GetStoreType() const override { return StoreType::Array; }
    const Type* GetType() const override { return m_type; }
    lumsize_t GetCount() const override { return m_count; }
    const IStoreCollection& AsCollection() const override { return *this; }
    const IUniformCollection& AsUniformCollection() const override { return *this; }
    const IStoreArray& AsArray() const override { return *this; }
    const IStoreArray* FindArray() const noexcept override { return this; }
    std::unique_ptr<StoreValue> Clone() const override;

    // IStoreCollection: the key is a decimal index. A read gives the stored value whatever its
    // kind.
    SV GetValue(const RInternString& key) const override;
    SV TryGetValue(const RInternString& key) const override;
    bool HasKey(const RInternString& key) const override;

    // IUniformCollection
    const Type* GetElementType() const override { return m_type->GetElementType(); }
    bool IsConstant() const override { return false; }
    bool HasSpecialValues() const override { return m_storage.HasKinds(); }
    const IUniformCollection::StoreValueIterable& GetStoreValueIterable() const override;

    // IStoreArray
    SV ComposeIndices(std::shared_ptr<const RawData> indices, SortSpecOrder order) const override;
    SV ComposeIndices(std::vector<unsigned>&& indices, SortSpecOrder order) const override;
    SV WithIndices(std::shared_ptr<const RawData> indices, SortSpecOrder order) const override;
    SV WithIndices(std::vector<unsigned>&& indices, SortSpecOrder order) const override;
    SV Materialize() const override;
    SV ToSet(bool includeSpecials) const override;
    void CopySpecials(ArrayView<SpecialKind> out, lumsize_t startIndex,
                      lumsize_t length) const override;
    void CopyToTuples(ArrayView<LumTuple> out, lumsize_t startIndex, lumsize_t length,
                      lumsize_t tupleIndex) const override;
    ConstRawDataView GetValuesView(TemporaryRawData& scratch, lumsize_t startIndex,
                                   lumsize_t length) const override;
    ConstRawDataView GetSpecialsView(TemporaryRawData& scratch, lumsize_t startIndex,
                                     lumsize_t length) const override;
    bool HasIndices() const override { return m_indexBlock != nullptr; }
    bool ElementsEqual(lumsize_t idx1, lumsize_t idx2) const override;
    lumsize_t FindRunEnd(lumsize_t startIndex) const override;
    SV GetElement(lumsize_t index) const override;
    /// A start beyond the end begins at 0 with a length of 0. With a step of 1 and no indices that
    /// is an empty array; else a length of 0 takes all from the start on. A step with the top bit
    /// set walks down and ends behind 0.
    SV GetRange(lumsize_t startIndex, lumsize_t length, unsigned step) const override;
    SortSpecOrder GetSortOrder() const override { return m_order; }

    // ITypedArray
    ArrayCursor<T> GetAdapter() const override;
    ArrayCursor<T> GetAdapterWithSpecials() const override;
    const T& GetValueUnchecked(lumsize_t index) const override;
    const T& GetValue(lumsize_t index) const override;
    bool IsSpecial(lumsize_t index) const override;
    using StoreValue::GetSpecialKind;
    SpecialKind GetSpecialKind(lumsize_t index) const override;
    bool IsComposite() const override { return false; }
    ArrayView<const T> GetValues() const override;
    ArrayView<const SpecialKind> GetSpecials() const override;
    void CopyValues(ArrayView<T> out, lumsize_t startIndex, lumsize_t length) const override;
    ArrayView<const ValueCompositeArrayRange<T>> GetCompositeRanges() const override;

private:
    enum class IndexRange : unsigned char { Unknown, Inside, NotAllInside };

    // Gives the type.
    static const CollectionType* CheckParts(const CollectionType* type,
                                            const PackagedArrayView<T>& values,
                                            const PackagedArrayView<SpecialKind>& specials);
    /// The place of an element in the storage.
    lumsize_t GetStoredIndex(lumsize_t index) const {
        return HasIndices() ? GetIndices()[index] : index;
    }
    /// For arrays with indices.
    ArrayView<const unsigned> GetIndices() const noexcept { return {m_indices, m_count}; }
    lumsize_t CheckedStoredIndex(lumsize_t index) const;
    /// Whether all indices lie inside the storage; found once.
    bool AreIndicesInside() const;
    /// Fails where an index of the range does not; a copy asks before it writes anything.
    void CheckIndices(lumsize_t startIndex, lumsize_t length) const;
    /// GetRange through indices. Apart from it, so that a slice does not pay for the vector.
    SV GetStride(lumsize_t startIndex, lumsize_t length, unsigned step) const;
    ArrayView<const unsigned> GetIndexRange(lumsize_t startIndex, lumsize_t length) const {
        return {m_indices + startIndex, length};
    }

    const CollectionType* const m_type;
    const ColumnStorage<T> m_storage;
    std::shared_ptr<const RawData> m_indexBlock;  // Null without indices.
    const unsigned* m_indices = nullptr;
    lumsize_t m_count;
    const SortSpecOrder m_order;
    mutable std::atomic<IndexRange> m_indexRange{IndexRange::Unknown};
    mutable std::once_flag m_iterableFlag;  // Guards the making of the iterable.
    mutable std::unique_ptr<ArrayStoreValueIterable> m_iterable;
};

}  // namespace lum::core
