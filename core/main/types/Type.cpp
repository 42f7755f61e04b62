#include "lum/core/types/Type.h"

#include <iterator>

#include "lum/core/Check.h"
#include "lum/core/types/StoreTypeSerializerUtils.h"

namespace lum::core {

Type::~Type() = default;

TStringCore Type::ToString() const {
    return {1, GetCode()};
}

char16_t Type::GetCode() const {
    const auto typeIndex = static_cast<unsigned int>(m_storeType);
    LUM_CHECK_TEXT("(typeIndex < sizeof(s_types)/sizeof(*s_types))", typeIndex < std::size(s_types),
                   LumError::InvalidStoreTypeValue);
    return s_types[typeIndex];
}

void Type::FailClassCast() {
    LUM_FAIL(LumError::InvalidTypeClassCast);
}

}  // namespace lum::core
