#pragma once

#include "lum/core/Export.h"
#include "lum/core/store/ArrayCursor.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/ValueCompositeArrayRange.h"

namespace lum::core {

/// An array whose storage type the caller knows. See IStoreArray for threads, ownership, units.
template <typename T>
class LUM_CORE_API ITypedArray : public IStoreArray {
public:
    StorageKind GetStorageKind() const noexcept final { return kStorageKind<T>; }
    /// A cursor at the first element, without and with the kinds. Cost: O(1); the first one of a
    /// composite array with indices looks up where each element stands, and keeps it.
    virtual ArrayCursor<T> GetAdapter() const = 0;
    virtual ArrayCursor<T> GetAdapterWithSpecials() const = 0;
    /// The stored value of an element, a placeholder where it is special. The position is not
    /// compared with the count; an index that it finds is compared with the storage.
    virtual const T& GetValueUnchecked(lumsize_t index) const = 0;
    /// The same. Errors: OutOfBounds.
    virtual const T& GetValue(lumsize_t index) const = 0;
    /// Errors: OutOfBounds, from both.
    virtual bool IsSpecial(lumsize_t index) const = 0;
    virtual SpecialKind GetSpecialKind(lumsize_t index) const = 0;
    /// Whether the array is run-length encoded.
    virtual bool IsComposite() const = 0;
    /// The stored values; a constant array has one, whatever its count.
    /// Errors: ArrayHasIndices; NotImplemented for a composite array.
    virtual ArrayView<const T> GetValues() const = 0;
    /// The stored kinds, likewise. Errors: ArrayHasIndices; ArrayLacksSpecials; NotImplemented as
    /// above.
    virtual ArrayView<const SpecialKind> GetSpecials() const = 0;
    /// Fills the first `length` places of `out`. Errors: OutOfBounds where `out` is shorter.
    virtual void CopyValues(ArrayView<T> out, lumsize_t startIndex, lumsize_t length) const = 0;
    /// The runs of a run-length encoded array. Errors: NotImplemented for any other.
    virtual ArrayView<const ValueCompositeArrayRange<T>> GetCompositeRanges() const = 0;
};

}  // namespace lum::core
