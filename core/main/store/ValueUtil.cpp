#include "lum/core/store/ValueUtil.h"

#include <bit>

#include "lum/core/Check.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"

namespace lum::core {
namespace {

SV MakeReal32OfType(const Type* type, float value) {
    static const Type* const s_default = RealType::Get32();
    if (type == s_default) {
        return factory::MakeReal32(value);
    }
    const RealType& real = type->As<RealType>();
    return factory::MakeReal32(value, real.GetPrecision(), real.GetScale());
}

SV MakeReal64OfType(const Type* type, double value) {
    static const Type* const s_default = RealType::Get64();
    if (type == s_default) {
        return factory::MakeReal64(value);
    }
    const RealType& real = type->As<RealType>();
    return factory::MakeReal64(value, real.GetPrecision(), real.GetScale());
}

SV MakeStringOfType(const Type* type, const RIndirectString& value) {
    static const Type* const s_default = StringType::Get();
    return type == s_default ? factory::MakeString(value)
                             : factory::MakeString(value, type->As<StringType>().GetCollation());
}

}  // namespace

// The forms over strings and rows repeat the export mark: these classes have none of their own, and
// a specialisation is no more visible than what it is made from.
template <>
SV MakeStoreValue(const Type* type, bool value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Bool, LumError::ExpectedBool);
    return factory::MakeBool(value);
}

template <>
SV MakeStoreValue(const Type* type, int value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Int32, LumError::ExpectedInt32);
    return factory::MakeInt32(value);
}

template <>
SV MakeStoreValue(const Type* type, long long value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Int64, LumError::ExpectedInt64);
    return factory::MakeInt64(value);
}

template <>
SV MakeStoreValue(const Type* type, float value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Real32, LumError::ExpectedReal32);
    return MakeReal32OfType(type, value);
}

template <>
SV MakeStoreValue(const Type* type, double value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Real64, LumError::ExpectedReal64);
    return MakeReal64OfType(type, value);
}

template <>
LUM_CORE_API SV MakeStoreValue(const Type* type, RIndirectString value) {
    LUM_CHECK(type->GetStoreType() == StoreType::String, LumError::ExpectedString);
    return MakeStringOfType(type, value);
}

template <>
SV MakeStoreValue(const Type* type, LumColor value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Color, LumError::ExpectedColor);
    return factory::MakeColor(value);
}

template <>
SV MakeStoreValue(const Type* type, LumDateTime value) {
    switch (type->GetStoreType()) {
        case StoreType::Date:
            return factory::MakeDate(value);
        case StoreType::DateTime:
            return factory::MakeDateTime(value);
        default:
            LUM_FAIL(LumError::TypeMismatchExpected);
    }
}

template <>
LUM_CORE_API SV MakeStoreValue(const Type* type, LumTuple value) {
    LUM_CHECK(type->GetStoreType() == StoreType::Tuple, LumError::TypeMismatchExpected);
    return factory::MakeTuple(std::move(value));
}

template <>
SV MakeStoreValue(const Type* /*type*/, SV value) {
    return value;
}

template <>
SV MakeStoreValueFromStorageType(const Type* type, const unsigned char& stored) {
    return MakeStoreValue<bool>(type, stored != 0);
}

template <>
SV MakeStoreValueFromStorageType(const Type* type, const unsigned int& stored) {
    switch (type->GetStoreType()) {
        case StoreType::Int32:
            return factory::MakeInt32(std::bit_cast<int>(stored));
        case StoreType::Real32:
            return MakeReal32OfType(type, std::bit_cast<float>(stored));
        case StoreType::Color:
            return factory::MakeColor(LumColor::FromInt32(std::bit_cast<int>(stored)));
        default:
            LUM_FAIL(LumError::TypeMismatchExpected);
    }
}

template <>
SV MakeStoreValueFromStorageType(const Type* type, const unsigned long long& stored) {
    switch (type->GetStoreType()) {
        case StoreType::Int64:
            return factory::MakeInt64(std::bit_cast<int64>(stored));
        case StoreType::Real64:
            return MakeReal64OfType(type, std::bit_cast<double>(stored));
        case StoreType::Date:
            return factory::MakeDate(LumDateTime::FromValue(stored));
        case StoreType::DateTime:
            return factory::MakeDateTime(LumDateTime::FromValue(stored));
        default:
            LUM_FAIL(LumError::TypeMismatchExpected);
    }
}

template <>
LUM_CORE_API SV MakeStoreValueFromStorageType(const Type* type, const RIndirectString& stored) {
    LUM_CHECK(type->GetStoreType() == StoreType::String, LumError::ExpectedString);
    return MakeStringOfType(type, stored);
}

template <>
LUM_CORE_API SV MakeStoreValueFromStorageType(const Type* type, const LumTuple& stored) {
    return MakeStoreValue<LumTuple>(type, stored);
}

template <>
SV MakeStoreValueFromStorageType(const Type* /*type*/, const SV& stored) {
    return stored;
}

template <>
bool FetchStoreValue(const SV& value) {
    return value->AsBool();
}

template <>
unsigned char FetchStoreValue(const SV& value) {
    return value->AsBool() ? 1 : 0;
}

template <>
int FetchStoreValue(const SV& value) {
    return value->AsInt32();
}

template <>
long long FetchStoreValue(const SV& value) {
    return value->AsInt64();
}

template <>
float FetchStoreValue(const SV& value) {
    return value->AsReal32();
}

template <>
double FetchStoreValue(const SV& value) {
    return value->AsReal64();
}

template <>
LUM_CORE_API const RIndirectString& FetchStoreValue(const SV& value) {
    return value->AsString();
}

template <>
LUM_CORE_API RIndirectString FetchStoreValue(const SV& value) {
    return value->AsString();
}

template <>
TStringCore FetchStoreValue(const SV& value) {
    return value->AsString().GetRString();
}

template <>
LumColor FetchStoreValue(const SV& value) {
    return value->AsColor();
}

template <>
LumDateTime FetchStoreValue(const SV& value) {
    return value->GetStoreType() == StoreType::Date ? value->AsDate() : value->AsDateTime();
}

template <>
LUM_CORE_API const LumTuple& FetchStoreValue(const SV& value) {
    return value->AsTuple();
}

template <>
LUM_CORE_API LumTuple FetchStoreValue(const SV& value) {
    return value->AsTuple();
}

template <>
const SV& FetchStoreValue(const SV& value) {
    return value;
}

template <>
SV FetchStoreValue(const SV& value) {
    return value;
}

template <>
unsigned int FetchStoreValue(const SV& value) {
    switch (value->GetStoreType()) {
        case StoreType::Int32:
            return std::bit_cast<unsigned int>(value->AsInt32());
        case StoreType::Real32:
            return std::bit_cast<unsigned int>(value->AsReal32());
        case StoreType::Color:
            return std::bit_cast<unsigned int>(value->AsColor().AsInt32());
        default:
            LUM_FAIL(LumError::IllegalOperation);
    }
}

template <>
unsigned long long FetchStoreValue(const SV& value) {
    switch (value->GetStoreType()) {
        case StoreType::Int64:
            return std::bit_cast<unsigned long long>(value->AsInt64());
        case StoreType::Real64:
            return std::bit_cast<unsigned long long>(value->AsReal64());
        case StoreType::Date:
            return value->AsDate().GetValue();
        case StoreType::DateTime:
            return value->AsDateTime().GetValue();
        default:
            LUM_FAIL(LumError::IllegalOperation);
    }
}

SV FetchStoreValueFromTuple(const LumTuple& tuple, lumsize_t index) {
    const Type* const type = tuple.GetNthType(index);
    const SpecialKind kind = tuple.GetNthSpecialUnsafe(index);
    if (kind != SpecialKind::Normal) {
        return factory::MakeSpecial(type, kind);
    }
    switch (type->GetStoreType()) {
        case StoreType::Bool:
            return factory::MakeBool(tuple.GetNthBoolUnsafe(index));
        case StoreType::Int32:
        case StoreType::Real32:
        case StoreType::Color:
            return MakeStoreValueFromStorageType(type,
                                                 tuple.GetNthValueUnsafe<unsigned int>(index));
        case StoreType::String:
            return MakeStoreValueFromStorageType(type, tuple.GetNthStringUnsafe(index));
        case StoreType::External:
            return tuple.GetNthExternalUnsafe(index);
        default:
            return MakeStoreValueFromStorageType(
                type, tuple.GetNthValueUnsafe<unsigned long long>(index));
    }
}

}  // namespace lum::core
