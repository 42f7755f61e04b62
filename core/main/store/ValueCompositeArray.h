#pragma once

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "core/main/store/ArrayIterators.h"
#include "core/main/utility/PackagedArrayView.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core {

/// A run-length encoded array: runs, each of one value or one kind of special, and possibly indices
/// into the sequence that they spell. Runs are kept as they were given: equal neighbours are not
/// merged, and there may be runs of no elements. See IStoreArray and ITypedArray for the
/// operations.
///
/// Cost: an element by its index takes a walk over the runs from the first one on. What reads
/// elements in their order (cursors, the boxed walk, copies, run ends) takes O(1) an element; with
/// indices the first such read finds the run of each element, which is kept: 4 bytes an element.
template <StorageType T>
class ValueCompositeArray final : public StoreValue,
                                  public IStoreCollection,
                                  public ITypedArray<T>,
                                  public ArrayWithIndices {
public:
    using Run = ValueCompositeArrayRange<T>;

    /// `indices` may be a null view; they are not looked at.
    /// Errors: NullArgument where `type` is null; TypeMismatchExpected where its elements are no
    /// primitives or not stored as `T`; OutOfRange, plain, where the runs have more than 2^32 - 1
    /// elements.
    ValueCompositeArray(const CollectionType* type, const PackagedArrayView<Run>& runs,
                        const PackagedArrayView<unsigned>& indices, SortSpecOrder order);
    /// The other's runs under `indices`, which may be a null view.
    ValueCompositeArray(const ValueCompositeArray& other,
                        const PackagedArrayView<unsigned>& indices, SortSpecOrder order);
    /// Shares runs and indices, and keeps the statement of order.
    ValueCompositeArray(const ValueCompositeArray& other);

    // StoreValue
    StoreType GetStoreType() const override { return StoreType::Array; }
    const Type* GetType() const override { return m_type; }
    lumsize_t GetCount() const override { return m_sizeAndHasSpecials.first; }
    const IStoreCollection& AsCollection() const override { return *this; }
    const IUniformCollection& AsUniformCollection() const override { return *this; }
    const IStoreArray& AsArray() const override { return *this; }
    const IStoreArray* FindArray() const noexcept override { return this; }
    std::unique_ptr<StoreValue> Clone() const override;

    // IStoreCollection: the key is a decimal index. A read gives the run's value whatever its kind.
    SV GetValue(const RInternString& key) const override;
    SV TryGetValue(const RInternString& key) const override;
    bool HasKey(const RInternString& key) const override;

    // IUniformCollection
    const Type* GetElementType() const override { return m_type->GetElementType(); }
    bool IsConstant() const override { return false; }
    /// Whether any run is special, whether an index reaches it or not.
    bool HasSpecialValues() const override { return m_sizeAndHasSpecials.second; }
    const IUniformCollection::StoreValueIterable& GetStoreValueIterable() const override;

    // IStoreArray
    SV ComposeIndices(std::shared_ptr<const RawData> indices, SortSpecOrder order) const override;
    SV ComposeIndices(std::vector<unsigned>&& indices, SortSpecOrder order) const override;
    SV WithIndices(std::shared_ptr<const RawData> indices, SortSpecOrder order) const override;
    SV WithIndices(std::vector<unsigned>&& indices, SortSpecOrder order) const override;
    /// Runs again: neighbours out of one run become one.
    SV Materialize() const override;
    SV ToSet(bool includeSpecials) const override;
    /// Fills `length` places of `out` and no more, whether there are specials or not.
    void CopySpecials(ArrayView<SpecialKind> out, lumsize_t startIndex,
                      lumsize_t length) const override;
    void CopyToTuples(ArrayView<LumTuple> out, lumsize_t startIndex, lumsize_t length,
                      lumsize_t tupleIndex) const override;
    ConstRawDataView GetValuesView(TemporaryRawData& scratch, lumsize_t startIndex,
                                   lumsize_t length) const override;
    ConstRawDataView GetSpecialsView(TemporaryRawData& scratch, lumsize_t startIndex,
                                     lumsize_t length) const override;
    bool HasIndices() const override { return !m_indices.IsNull(); }
    /// Values of SV are equal if they are one object.
    bool ElementsEqual(lumsize_t idx1, lumsize_t idx2) const override;
    /// By ElementsEqual: placeholders do not count.
    lumsize_t FindRunEnd(lumsize_t startIndex) const override;
    SV GetElement(lumsize_t index) const override;
    /// A length of 0 gives no elements, and neither does a start beyond the end. Steps lead
    /// downwards through indices alone.
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
    bool IsComposite() const override { return true; }
    ArrayView<const T> GetValues() const override;
    ArrayView<const SpecialKind> GetSpecials() const override;
    void CopyValues(ArrayView<T> out, lumsize_t startIndex, lumsize_t length) const override;
    ArrayView<const Run> GetCompositeRanges() const override { return m_runs.GetView(); }

    // ArrayWithIndices. Errors: IllegalOperation without indices.
    ArrayView<const unsigned> GetIndices() const override { return m_indices.GetView(); }

private:
    /// A position of the sequence: the number of its run, and where it stands in that.
    struct Place {
        lumsize_t run;
        lumsize_t offset;
    };

    /// Of the sequence of the runs. Errors: OutOfRange, plain.
    lumsize_t CountElements() const;
    /// A walk from the first run on; behind the sequence, the number of runs.
    Place FindRun(lumsize_t position) const noexcept;
    /// The run of an element. Errors: OutOfBounds where it lies outside the sequence.
    const Run& GetRun(lumsize_t index) const {
        return m_runs[FindRun(HasIndices() ? m_indices[index] : index).run];
    }
    void CheckIndex(lumsize_t index) const;
    static bool AreEqual(const Run& a, const Run& b);
    /// For arrays with indices: the run of each element, the number of runs where its index lies
    /// outside the sequence. Found once.
    ArrayView<const unsigned> GetRunOfElements() const;
    /// Calls `function` with a run, and how many elements in a row are of it, from the range's
    /// start to its end. Errors: OutOfBounds, before any call, where an index of the range lies
    /// outside the sequence.
    template <typename F>
    void ForEachRun(lumsize_t startIndex, lumsize_t length, const F& function) const;
    lumsize_t FindRunEndOfIndices(lumsize_t startIndex) const;
    /// GetRange along the runs.
    SV GetRangeOfRuns(lumsize_t startIndex, lumsize_t length, unsigned step) const;
    SV MakeOfRuns(std::vector<Run>&& runs) const;
    ArrayCursor<T> MakeCursor(bool readsKinds) const;

    const CollectionType* const m_type;
    const PackagedArrayView<Run> m_runs;
    const PackagedArrayView<unsigned> m_indices;
    std::pair<lumsize_t, bool> m_sizeAndHasSpecials{0, false};
    const SortSpecOrder m_order;
    mutable std::once_flag m_runOfElementsFlag;  // Each flag guards the making of what follows it.
    mutable std::vector<unsigned> m_runOfElements;
    mutable std::once_flag m_iterableFlag;
    mutable std::unique_ptr<ArrayStoreValueIterable> m_iterable;
};

/// Makers of composite arrays: one run a constant array, but for those without elements, of the
/// type of the first; or of runs. `indices` may be null; they are not looked at. `T` is the storage
/// of the elements.
/// Errors: EmptyComposition without arrays; NullArgument for a null one; CompositionTypeMismatch
///   where one is of another type; TypeMismatchExpected where one is no constant array of `T`, and
///   for tuples; what the constructor throws.
template <StorageType T>
SV MakeCompositeArray(const std::vector<SV>& constantArrays,
                      std::unique_ptr<std::vector<unsigned>> indices, SortSpecOrder order);
template <StorageType T>
SV MakeCompositeArray(const Type* elementType, std::vector<ValueCompositeArrayRange<T>>&& runs,
                      std::unique_ptr<std::vector<unsigned>> indices, SortSpecOrder order);

}  // namespace lum::core
