#pragma once

#include "lum/core/types/Type.h"

namespace lum::core {

/// The name of a store type. Errors: InvalidStoreType, plain, for a number without a name.
LUM_CORE_API TStringCore StoreTypeToString(StoreType type);

/// The default type of Bool to Color.
/// Errors: InvalidStoreType for every other store type, External among them.
LUM_CORE_API const Type* MakePrimitiveType(StoreType type);

/// Bytes that one element of `type` takes in the storage of a column: 1, 4 or 8 for values of these
/// widths, else the size of the handle (RIndirectString, LumTuple, SV).
LUM_CORE_API unsigned int GetTypeSize(const Type* type);

/// The same for primitives alone, which is the width of a member of a tuple.
/// Errors: UnsupportedPrimitiveKey, plain, with the store type's name.
LUM_CORE_API unsigned int GetPrimitiveTypeSize(const Type* type);

/// Throws UnsupportedPrimitiveKey, plain, with the store type's name.
LUM_CORE_API void PrimitiveErrorFunction(StoreType type);

/// The type in which values of both types can be compared: the same type; the wider of two integers
/// or of two reals (then the default Real64); the real of a real and an integer, with its precision
/// and scale; DateTime of DateTime and Date. Gives false, and leaves `promoted` alone, otherwise:
/// two types of one store type, for instance, do not promote.
LUM_CORE_API bool TryPromotedType(const Type* a, const Type* b, const Type*& promoted);

/// As above. Errors: UnsupportedType where there is no such type.
LUM_CORE_API const Type* PromotedType(const Type* a, const Type* b);

}  // namespace lum::core
