#include "lum/core/types/TypeUtil.h"

#include <iterator>

#include "lum/core/Check.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StoreTypeSerializerUtils.h"
#include "lum/core/types/StringType.h"

namespace lum::core {
namespace {

/// The size of LumTuple, which asserts it; that class stands on the types and so cannot be asked.
constexpr unsigned int kTupleHandleSize = 32;

bool IsInteger(const Type* type) {
    return type->Is(StoreType::Int32) || type->Is(StoreType::Int64);
}

bool IsReal(const Type* type) {
    return type->Is(StoreType::Real32) || type->Is(StoreType::Real64);
}

bool IsDate(const Type* type) {
    return type->Is(StoreType::Date) || type->Is(StoreType::DateTime);
}

}  // namespace

TStringCore StoreTypeToString(StoreType type) {
    const auto number = static_cast<unsigned int>(type);
    if (number >= std::size(kStoreTypeNames)) {
        throw LumRuntimeException(LumError::InvalidStoreType);
    }
    return TStringCore(std::u16string_view(kStoreTypeNames[number]));
}

const Type* MakePrimitiveType(StoreType type) {
    switch (type) {
        case StoreType::Bool:
            return BoolType::Get();
        case StoreType::Int32:
            return IntType::Get32();
        case StoreType::Int64:
            return IntType::Get64();
        case StoreType::Real32:
            return RealType::Get32();
        case StoreType::Real64:
            return RealType::Get64();
        case StoreType::String:
            return StringType::Get();
        case StoreType::Date:
            return DateType::Get();
        case StoreType::DateTime:
            return DateTimeType::Get();
        case StoreType::Color:
            return ColorType::Get();
        default:
            LUM_FAIL(LumError::InvalidStoreType);
    }
}

unsigned int GetTypeSize(const Type* type) {
    if (IsPrimitiveStoreType(type->GetStoreType())) {
        return GetPrimitiveTypeSize(type);
    }
    return type->Is(StoreType::Tuple) ? kTupleHandleSize : sizeof(SV);
}

unsigned int GetPrimitiveTypeSize(const Type* type) {
    switch (type->GetStoreType()) {
        case StoreType::Bool:
            return 1;
        case StoreType::Int32:
        case StoreType::Real32:
        case StoreType::Color:
            return 4;
        case StoreType::Int64:
        case StoreType::Real64:
        case StoreType::Date:
        case StoreType::DateTime:
            return 8;
        case StoreType::String:
            return sizeof(RIndirectString);
        case StoreType::External:
            return sizeof(SV);
        default:
            PrimitiveErrorFunction(type->GetStoreType());
            LUM_FAIL(LumError::IllegalOperation);
    }
}

void PrimitiveErrorFunction(StoreType type) {
    throw LumRuntimeException(LumError::UnsupportedPrimitiveKey, StoreTypeToString(type));
}

bool TryPromotedType(const Type* a, const Type* b, const Type*& promoted) {
    if (a == b) {
        promoted = a;
    } else if (a->GetStoreType() == b->GetStoreType()) {
        return false;
    } else if (IsInteger(a) && IsInteger(b)) {
        promoted = IntType::Get64();
    } else if (IsReal(a) && IsReal(b)) {
        promoted = RealType::Get64();
    } else if (IsInteger(a) && IsReal(b)) {
        promoted = b;
    } else if (IsReal(a) && IsInteger(b)) {
        promoted = a;
    } else if (IsDate(a) && IsDate(b)) {
        promoted = DateTimeType::Get();
    } else {
        return false;
    }
    return true;
}

const Type* PromotedType(const Type* a, const Type* b) {
    const Type* promoted = nullptr;
    if (!TryPromotedType(a, b, promoted)) {
        LUM_FAIL(LumError::UnsupportedType);
    }
    return promoted;
}

}  // namespace lum::core
