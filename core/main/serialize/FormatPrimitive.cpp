#include "lum/core/serialize/FormatPrimitive.h"

#include <cmath>

#include "core/main/serialize/JsonCells.h"
#include "core/main/serialize/NumberWriter.h"
#include "lum/core/Check.h"
#include "lum/core/store/SpecialKindText.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/TypeUtil.h"

namespace lum::core {
namespace {

TStringCore FormatReal(float value) {
    if (!std::isfinite(value)) {
        return TStringCore(GetNonFiniteText(double{value}));
    }
    char16_t text[kNumberCapacity];
    return TStringCore(text, static_cast<std::size_t>(WriteReal32(value, text) - text));
}

TStringCore FormatReal(double value) {
    if (!std::isfinite(value)) {
        return TStringCore(GetNonFiniteText(value));
    }
    char16_t text[kNumberCapacity];
    return TStringCore(text, static_cast<std::size_t>(WriteReal64(value, text) - text));
}

}  // namespace

TStringCore FormatPrimitive(const StoreValue& value) {
    if (value.IsSpecial()) {
        return SpecialKindToString(value.GetSpecialKind());
    }
    switch (value.GetStoreType()) {
        case StoreType::Bool:
            return value.AsBool() ? L"true" : L"false";
        case StoreType::Int32:
            return TStringCore::number(value.AsInt32());
        case StoreType::Int64:
            return TStringCore::number(value.AsInt64());
        case StoreType::Real32:
            return FormatReal(value.AsReal32());
        case StoreType::Real64:
            return FormatReal(value.AsReal64());
        case StoreType::String:
            return value.AsString();
        case StoreType::Date:
            return value.AsDate().ToString();
        case StoreType::DateTime:
            return value.AsDateTime().ToString();
        case StoreType::Color:
            return value.AsColor().ToString();
        default:
            LUM_FAIL(LumError::InvalidStoreTypeValue, StoreTypeToString(value.GetStoreType()));
    }
}

}  // namespace lum::core
