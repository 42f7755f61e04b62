#pragma once

#include <memory>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/IUniformCollection.h"
#include "lum/core/store/RawDataView.h"
#include "lum/core/store/SortSpecOrder.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/store/TemporaryRawData.h"

namespace lum::core {

class LumTuple;

/// A column: GetCount() elements of one type, each a value or a special. Immutable once made.
///
/// An array has one of three forms, and answers alike in each but for what is told at the
/// operations. It stands over stored values (factory::MakeArray); or is constant, one value or
/// special of any count (factory::MakeConstantArray); or is composite, made of runs of one value or
/// special each, which constant arrays become when they are joined.
///
/// An array may have indices: then element i is the stored value at indices[i], and the same
/// storage serves any order, selection or repetition. Indices are not looked at when an array is
/// made; one that lies outside the storage fails with OutOfBounds when it is read.
///
/// Below a special cell lies a placeholder, a stored value without meaning.
///
/// As an IStoreCollection an array takes the decimal index of an element for a key, and gives the
/// stored value whatever its kind, so the placeholder of a special element. Errors of GetValue:
/// CannotParseInt32; OutOfBounds.
///
/// Threads: every operation runs on any number of threads at once.
/// Ownership: an array made from this one shares its storage and keeps it alive. A view does not:
///   it is good while this array, and any scratch passed in, live.
/// Units: indices, lengths and counts are elements, never bytes.
/// Errors: LumRuntimeException with the code named at the operation; OutOfBounds for an index that
///   is not there, and for a range that passes the end of the array or of 32 bits.
class LUM_CORE_API IStoreArray : public IUniformCollection {
public:
    /// The array whose element i is this array's element indices[i], with `order` as the statement
    /// of its order. The vector may be overwritten. Cost: O(indices) where this array has indices,
    /// else O(1); no values are copied.
    /// Errors: OutOfBounds where this array has indices and lacks such an element; IllegalCast
    /// where raw indices are no 32-bit numbers; IllegalOperation where they are null and this array
    /// has indices.
    /// A constant array gives one with as many elements as there are indices, and looks at neither
    /// them nor the order.
    virtual SV ComposeIndices(std::shared_ptr<const RawData> indices,
                              SortSpecOrder order) const = 0;
    virtual SV ComposeIndices(std::vector<unsigned>&& indices, SortSpecOrder order) const = 0;
    /// This array's storage under the given indices, in place of any that it had; without indices
    /// where the raw ones are null. Cost: O(1). Errors: IllegalCast as above. A constant
    /// array does as above, and keeps its count where they are null.
    virtual SV WithIndices(std::shared_ptr<const RawData> indices, SortSpecOrder order) const = 0;
    virtual SV WithIndices(std::vector<unsigned>&& indices, SortSpecOrder order) const = 0;
    /// The same elements without indices, in the same form, with the same statement of order. Cost:
    /// O(1) without indices, else O(length), gathered.
    virtual SV Materialize() const = 0;
    /// The set of the elements' stored values, with `includeSpecials` also of their kinds.
    /// Placeholders count as values, and so does the value of a constant array without elements.
    /// Errors: those of the values' hash and equality, as for strings without a collator pool;
    /// those of factory::MakeSet.
    virtual SV ToSet(bool includeSpecials) const = 0;
    /// Fills the first `length` places of `out` with kinds; all of `out` with Normal where the
    /// array has stored values without room for kinds. Errors: OutOfBounds where `out` is shorter
    /// than `length`.
    virtual void CopySpecials(ArrayView<SpecialKind> out, lumsize_t startIndex,
                              lumsize_t length) const = 0;
    /// Writes each element of the range, value and kind, to member `tupleIndex` of the row at its
    /// place; there is one row an element. Kinds are written where the array has room for them,
    /// else the rows keep theirs. No row is written if any cannot be.
    /// Errors: OutOfBounds where `out` has not `length` rows, and where `length` is 0; TypeMismatch
    /// where a row's member has another type, or elements of any type but External are stored as
    /// SV; LumLogicException Unspecified where a row is a reference that has no block.
    virtual void CopyToTuples(ArrayView<LumTuple> out, lumsize_t startIndex, lumsize_t length,
                              lumsize_t tupleIndex) const = 0;
    /// The raw values of the range. Cost: O(1) over stored values without indices, a view into the
    /// storage; else O(length), gathered into `scratch`.
    virtual ConstRawDataView GetValuesView(TemporaryRawData& scratch, lumsize_t startIndex,
                                           lumsize_t length) const = 0;
    /// The kinds of the range. Cost: O(1) where kinds are stored, one for each value, and there are
    /// no indices.
    virtual ConstRawDataView GetSpecialsView(TemporaryRawData& scratch, lumsize_t startIndex,
                                             lumsize_t length) const = 0;
    virtual bool HasIndices() const = 0;
    /// Whether two elements are the same kind of special, or equal stored values: numbers by their
    /// bits, strings unit by unit whatever their collation, values of SV by IsEqual, but in a
    /// composite array by identity. In a constant array all are equal.
    /// Errors: those of the values' comparison.
    virtual bool ElementsEqual(lumsize_t idx1, lumsize_t idx2) const = 0;
    /// The last index of the run of equal elements that begins at `startIndex`. Over stored values
    /// placeholders are compared as well, unlike in ElementsEqual: two specials of one kind over
    /// different ones are two runs. Cost: O(runs) in a composite array without indices, O(1) in a
    /// constant one.
    virtual lumsize_t FindRunEnd(lumsize_t startIndex) const = 0;
    /// The element, boxed. Cost: allocates; loops read through ITypedArray. In a constant array all
    /// elements are one object, made once. In a composite array each element that is asked for by
    /// its index takes a walk over the runs, here and in ITypedArray; cursors, copies and the boxed
    /// walk go along them at O(1) an element.
    virtual SV GetElement(lumsize_t index) const = 0;
    /// Every `step`th element from `startIndex` on, at most `length` of them.
    /// An array over stored values cuts the range at its end; takes a start beyond the end for a
    /// start and a length of 0; for a length of 0 gives no elements with a step of 1 and without
    /// indices, else all that the stride reaches; walks down by a step with the top bit set, and
    /// ends behind element 0; and keeps its statement of order. Cost: O(1) with a step of 1 and
    /// without indices, a slice of the storage.
    /// A composite array gives no elements for a start beyond the end or a length of 0, walks down
    /// through indices alone, and keeps its statement of order. Cost: O(runs) without indices.
    /// A constant array gives `length` elements, by the step, for a start beyond the end, and never
    /// walks down. Cost: O(1).
    /// Errors: OutOfBounds, "Illegal range step value", for a step of 0.
    virtual SV GetRange(lumsize_t startIndex, lumsize_t length, unsigned step) const = 0;
    /// What was stated of the order; ASC for every constant array.
    virtual SortSpecOrder GetSortOrder() const = 0;
    /// Which ITypedArray the array is: kStorageKind of its `T`.
    virtual StorageKind GetStorageKind() const noexcept = 0;
};

/// An array whose elements come through indices that a caller may see.
class LUM_CORE_API ArrayWithIndices {
public:
    virtual ~ArrayWithIndices() = default;
    virtual ArrayView<const unsigned> GetIndices() const = 0;
};

}  // namespace lum::core
