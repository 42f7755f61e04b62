#pragma once

#include <optional>
#include <vector>

#include "lum/core/store/ArrayView.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

class CollectionType;
class LumTuple;
class RInternString;

// What the arrays of all forms and storage types ask of their arguments, in one place.

/// The element that a key names. Errors: CannotParseInt32. A negative number is a large index.
lumsize_t ReadElementKey(const RInternString& key);
/// Likewise; empty where the key names no element of an array of `count`.
std::optional<lumsize_t> TryReadElementKey(const RInternString& key, lumsize_t count);

/// Errors: OutOfBounds where the range passes the end of an array of `count` elements, or of 32
/// bits.
void CheckElementRange(lumsize_t startIndex, lumsize_t length, lumsize_t count);

/// Whether each row takes, as its member `tupleIndex`, one of `length` elements of an array of
/// `type` and `count`, which stores SV if `areHandles`. The rows have blocks from then on, and can
/// be written without a test.
/// Errors: those of IStoreArray::CopyToTuples.
void CheckRows(ArrayView<LumTuple> outView, lumsize_t length, lumsize_t count, lumsize_t tupleIndex,
               const CollectionType* type, bool areHandles);

/// Every `step`th index from `startIndex` on that is below `count`, at most `length` of them; a
/// length of 0 wraps round to all that the stride reaches, and a step with the top bit set leads
/// downwards. Errors: OutOfBounds, "Illegal range step value", for a step of 0.
std::vector<unsigned> MakeStride(lumsize_t startIndex, lumsize_t length, unsigned step,
                                 lumsize_t count);
/// Errors: as above.
void CheckStep(unsigned step);

}  // namespace lum::core
