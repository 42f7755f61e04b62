#pragma once

#include "lum/core/Export.h"
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

/// The native value of `value`. `C` is one of the types of MakeStoreValue, unsigned char (a Bool),
/// TStringCore, or a const reference to RIndirectString, LumTuple or SV, good while the value
/// lives; or unsigned int or unsigned long long, which give the bits as they are stored. Errors:
/// those of the accessor of StoreValue; for the two bit forms IllegalOperation.
template <typename C>
LUM_CORE_API C FetchStoreValue(const SV& value);

/// Member `index` of a row as a value; a special value where it is special.
/// Errors: OutOfBounds; LumLogicException Unspecified where the row is a reference that has no
/// block.
LUM_CORE_API SV FetchStoreValueFromTuple(const LumTuple& tuple, lumsize_t index);

}  // namespace lum::core
