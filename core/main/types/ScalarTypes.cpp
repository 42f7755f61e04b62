#include "lum/core/types/ScalarTypes.h"

#include "core/main/types/Context.h"

namespace lum::core {

const BoolType* BoolType::Get() {
    return &Context::Get().m_bool;
}
const DateType* DateType::Get() {
    return &Context::Get().m_date;
}
const DateTimeType* DateTimeType::Get() {
    return &Context::Get().m_dateTime;
}
const ColorType* ColorType::Get() {
    return &Context::Get().m_color;
}
const IntType* IntType::Get32() {
    return &Context::Get().m_int32;
}
const IntType* IntType::Get64() {
    return &Context::Get().m_int64;
}
const RealType* RealType::Get32() {
    return Context::Get().m_defaultReal32;
}
const RealType* RealType::Get64() {
    return Context::Get().m_defaultReal64;
}

const RealType* RealType::Get32(signed char precision, signed char scale) {
    return Context::Get().GetReal(StoreType::Real32, precision, scale);
}

const RealType* RealType::Get64(signed char precision, signed char scale) {
    return Context::Get().GetReal(StoreType::Real64, precision, scale);
}

const Type* RealType::GetBaseType() const {
    return Is(StoreType::Real32) ? Get32() : Get64();
}

TStringCore RealType::ToString() const {
    return Type::ToString() + L"<" + TStringCore::number(int{m_precision}) + L"," +
           TStringCore::number(int{m_scale}) + L">";
}

}  // namespace lum::core
