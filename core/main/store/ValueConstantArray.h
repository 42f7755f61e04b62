#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "core/main/store/ArrayIterators.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core {

/// An array whose elements are all one value, or all specials of one kind. It is stored as a single
/// run, and costs as much as one element whatever its count. See IStoreArray and ITypedArray for
/// the operations.
template <StorageType T>
class ValueConstantArray final : public StoreValue, public IStoreCollection, public ITypedArray<T> {
public:
    /// Errors: those of factory::MakeConstantArray.
    ValueConstantArray(const CollectionType* type, const T& value, SpecialKind kind,
                       lumsize_t count);
    /// `count` elements of the other's value and kind.
    ValueConstantArray(const ValueConstantArray& other, lumsize_t count);
    ValueConstantArray(const ValueConstantArray& other);

    // StoreValue
    StoreType GetStoreType() const override { return StoreType::Array; }
    const Type* GetType() const override { return m_type; }
    lumsize_t GetCount() const override { return m_run.count; }
    const IStoreCollection& AsCollection() const override { return *this; }
    const IUniformCollection& AsUniformCollection() const override { return *this; }
    const IStoreArray& AsArray() const override { return *this; }
    const IStoreArray* FindArray() const noexcept override { return this; }
    std::unique_ptr<StoreValue> Clone() const override;

    // IStoreCollection: the key is a decimal index. A read gives the value whatever the kind.
    SV GetValue(const RInternString& key) const override;
    SV TryGetValue(const RInternString& key) const override;
    bool HasKey(const RInternString& key) const override;

    // IUniformCollection
    const Type* GetElementType() const override { return m_type->GetElementType(); }
    bool IsConstant() const override { return true; }
    bool HasSpecialValues() const override { return m_run.kind != SpecialKind::Normal; }
    const IUniformCollection::StoreValueIterable& GetStoreValueIterable() const override;

    // IStoreArray
    /// Only the number of indices matters: neither they nor the order are looked at. Null indices
    /// keep the count.
    SV ComposeIndices(std::shared_ptr<const RawData> indices, SortSpecOrder order) const override;
    SV ComposeIndices(std::vector<unsigned>&& indices, SortSpecOrder order) const override;
    SV WithIndices(std::shared_ptr<const RawData> indices, SortSpecOrder order) const override;
    SV WithIndices(std::vector<unsigned>&& indices, SortSpecOrder order) const override;
    /// A constant array again.
    SV Materialize() const override;
    /// The set of the value even where there are no elements.
    SV ToSet(bool includeSpecials) const override;
    void CopySpecials(ArrayView<SpecialKind> out, lumsize_t startIndex,
                      lumsize_t length) const override;
    void CopyToTuples(ArrayView<LumTuple> out, lumsize_t startIndex, lumsize_t length,
                      lumsize_t tupleIndex) const override;
    ConstRawDataView GetValuesView(TemporaryRawData& scratch, lumsize_t startIndex,
                                   lumsize_t length) const override;
    ConstRawDataView GetSpecialsView(TemporaryRawData& scratch, lumsize_t startIndex,
                                     lumsize_t length) const override;
    bool HasIndices() const override { return false; }
    bool ElementsEqual(lumsize_t idx1, lumsize_t idx2) const override;
    lumsize_t FindRunEnd(lumsize_t startIndex) const override;
    SV GetElement(lumsize_t index) const override;
    /// The range is not cut at a start beyond the end: the count wraps round there, and gives
    /// `length` elements. There are no steps downwards.
    SV GetRange(lumsize_t startIndex, lumsize_t length, unsigned step) const override;
    SortSpecOrder GetSortOrder() const override { return SortSpecOrder::ASC; }

    // ITypedArray
    ArrayCursor<T> GetAdapter() const override;
    ArrayCursor<T> GetAdapterWithSpecials() const override;
    const T& GetValueUnchecked(lumsize_t /*index*/) const override { return m_run.value; }
    const T& GetValue(lumsize_t index) const override;
    bool IsSpecial(lumsize_t index) const override;
    using StoreValue::GetSpecialKind;
    SpecialKind GetSpecialKind(lumsize_t index) const override;
    bool IsComposite() const override { return false; }
    /// The one value, and the one kind, whatever the count.
    ArrayView<const T> GetValues() const override { return {&m_run.value, 1}; }
    ArrayView<const SpecialKind> GetSpecials() const override;
    void CopyValues(ArrayView<T> out, lumsize_t startIndex, lumsize_t length) const override;
    ArrayView<const ValueCompositeArrayRange<T>> GetCompositeRanges() const override;

private:
    /// The boxed value, and the boxed special; each is made once.
    const SV& GetBoxedValue() const;
    const SV& GetBoxedSpecial() const;
    const SV& GetBoxedElement() const {
        return HasSpecialValues() ? GetBoxedSpecial() : GetBoxedValue();
    }

    const CollectionType* const m_type;
    const ValueCompositeArrayRange<T> m_run;
    mutable std::once_flag m_iterableFlag;  // Each flag guards the making of what follows it.
    mutable std::unique_ptr<ArrayStoreValueIterable> m_iterable;
    mutable std::once_flag m_boxedValueFlag;
    mutable SV m_boxedValue;
    mutable std::once_flag m_boxedSpecialFlag;
    mutable SV m_boxedSpecial;
};

}  // namespace lum::core
