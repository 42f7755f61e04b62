#pragma once

#include <memory>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/SortSpecOrder.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"
#include "lum/core/utility/LumColor.h"
#include "lum/core/utility/LumDateTime.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/LumTuple.h"
#include "lum/core/utility/RIndirectString.h"

namespace lum::core {

/// A native value as a value of `type`. `C` is bool, int, long long, float, double,
/// RIndirectString, LumColor, LumDateTime (for Date and DateTime), LumTuple or SV, which is given
/// back as it is. A tuple is copied.
/// Errors: ExpectedBool and so on by `C` where the type is another; TypeMismatchExpected for dates
/// and tuples.
template <typename C>
LUM_CORE_API SV MakeStoreValue(const Type* type, C value);

/// A stored cell as a value of `type`: the bits of `stored` are read as the type says, a string
/// gets the type's collation, an SV is given back as it is. Errors: ExpectedBool, ExpectedString,
/// TypeMismatchExpected where the type is not one that `T` stores.
template <StorageType T>
LUM_CORE_API SV MakeStoreValueFromStorageType(const Type* type, const T& stored);

/// The native value of `value`, which may not be null. `C` is one of the types of MakeStoreValue,
/// unsigned char (a Bool), TStringCore, or a const reference to RIndirectString, LumTuple or SV,
/// good while the value lives; or unsigned int or unsigned long long, which give the bits as they
/// are stored. Errors: those of the accessor of StoreValue; for the two bit forms IllegalOperation.
template <typename C>
LUM_CORE_API C FetchStoreValue(const SV& value);

/// Member `index` of a row as a value; a special value where it is special.
/// Errors: OutOfBounds; LumLogicException Unspecified where the row is a reference that has no
/// block.
LUM_CORE_API SV FetchStoreValueFromTuple(const LumTuple& tuple, lumsize_t index);

/// One array of the elements of all `arrays`, in their order. Constant arrays alone become a
/// composite array, of one run each; all others are copied into an array over stored values, which
/// has room for kinds if any of them has special values. `indices` and `order` are handed on to the
/// result, as to the makers of arrays; null indices are none.
///
/// The storage of the first array's element type counts, and the result has that type: among arrays
/// that are not all constant the others may be of any type with the same storage.
///
/// Threads: any; nothing is kept. Ownership: `arrays` stay as they are; runs take a copy of their
///   value, no other storage is shared.
/// Errors: EmptyComposition without arrays; NullArgument for a null one; ExpectedArray for what is
///   no array; CompositionTypeMismatch where constant arrays are of different types, and
///   TypeMismatchExpected where they are of tuples; NotTypedArray where the storage differs;
///   OutOfRange, plain, for more than 2^32 - 1 elements; OutOfBounds where an array has an index
///   outside its storage.
/// Cost: O(arrays) for constant arrays; else one copy of all elements, block by block where they
///   stand as stored, into memory that is taken once.
LUM_CORE_API SV ConcatenateArrays(const std::vector<SV>& arrays,
                                  std::unique_ptr<std::vector<unsigned>> indices,
                                  SortSpecOrder order);

/// One table of the rows of all `tables`, in their order, each column by ConcatenateArrays; it
/// states no order. One table alone is given back as it is.
/// Threads, ownership, cost: as above, a column.
/// Errors: EmptyConcatenation without tables; NullArgument for a null one; ExpectedTable for what
///   is no table; ConcatenatedColumnsDiffer where a table has not the columns of the first;
///   then those of ConcatenateArrays and of factory::MakeTable.
LUM_CORE_API SV ConcatenateTables(const std::vector<SV>& tables);

}  // namespace lum::core
