#pragma once

#include <memory>

#include "lum/core/Export.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"
#include "lum/core/utility/Collation.h"
#include "lum/core/utility/LumColor.h"
#include "lum/core/utility/LumDateTime.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/RIndirectString.h"

/// The makers of scalar and special values. Each call makes a new object: two values that are equal
/// are distinct.
///
/// Threads: any. Ownership: the caller's. Cost: one allocation.
/// Errors: std::bad_alloc, and as told.
namespace lum::core::factory {

LUM_CORE_API SV MakeBool(bool value);
LUM_CORE_API SV MakeInt32(int value);
LUM_CORE_API SV MakeInt64(int64 value);
LUM_CORE_API SV MakeReal32(float value);
LUM_CORE_API SV MakeReal32(float value, signed char precision, signed char scale);
LUM_CORE_API SV MakeReal64(double value);
LUM_CORE_API SV MakeReal64(double value, signed char precision, signed char scale);
LUM_CORE_API SV MakeDate(LumDateTime value);
LUM_CORE_API SV MakeDateTime(LumDateTime value);

LUM_CORE_API std::unique_ptr<StoreValue> MakeBoolUniquePtr(bool value);
LUM_CORE_API std::unique_ptr<StoreValue> MakeInt32UniquePtr(int value);
LUM_CORE_API std::unique_ptr<StoreValue> MakeInt64UniquePtr(int64 value);
LUM_CORE_API std::unique_ptr<StoreValue> MakeReal32UniquePtr(float value);
LUM_CORE_API std::unique_ptr<StoreValue> MakeReal32UniquePtr(float value, signed char precision,
                                                             signed char scale);
LUM_CORE_API std::unique_ptr<StoreValue> MakeReal64UniquePtr(double value);
LUM_CORE_API std::unique_ptr<StoreValue> MakeReal64UniquePtr(double value, signed char precision,
                                                             signed char scale);
LUM_CORE_API std::unique_ptr<StoreValue> MakeDateUniquePtr(LumDateTime value);
LUM_CORE_API std::unique_ptr<StoreValue> MakeDateTimeUniquePtr(LumDateTime value);

/// Strings of the default collation, or of `collation`.
/// Errors: those of StringType::Get. Comparing and hashing them needs a collator pool.
LUM_CORE_API SV MakeString(const TStringCore& value);
LUM_CORE_API SV MakeString(const wchar_t* value);
LUM_CORE_API SV MakeString(const RIndirectString& value);
LUM_CORE_API SV MakeString(const TStringCore& value, const Collation& collation);
LUM_CORE_API SV MakeString(const wchar_t* value, const Collation& collation);
LUM_CORE_API SV MakeString(const RIndirectString& value, const Collation& collation);

LUM_CORE_API SV MakeColor(LumColor value);
/// A colour from its packed value.
LUM_CORE_API SV MakeColor(int value);
/// Errors: those of LumColor's checking constructor.
LUM_CORE_API SV MakeColor(int red, int green, int blue, int alpha);

/// A value of `type` without content, of the given kind. The type is not looked at.
/// Errors: NormalBoxedSpecial for the kind Normal.
LUM_CORE_API SV MakeSpecial(const Type* type, SpecialKind kind);

}  // namespace lum::core::factory
