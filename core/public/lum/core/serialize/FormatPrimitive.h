#pragma once

#include "lum/core/Export.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

class StoreValue;

/// A scalar as plain text, without quotes: true or false; integers in decimal; reals as printf in
/// the C locale writes them by %.17g, a Real32 by %.8g, and "nan", "+inf", "-inf"; strings as they
/// stand; dates as LumDateTime::ToString, colours as LumColor::ToString gives them. A special value
/// of any type is the name of its kind.
///
/// Threads: any.
/// Errors: InvalidStoreTypeValue, with the store type's name, for rows, external values and
/// collections; InvalidDateTime for a date out of range.
LUM_CORE_API TStringCore FormatPrimitive(const StoreValue& value);

}  // namespace lum::core
