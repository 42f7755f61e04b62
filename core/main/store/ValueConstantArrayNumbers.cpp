#include "core/main/store/ValueConstantArrayImpl.h"

namespace lum::core {
LUM_INSTANTIATE_VALUE_CONSTANT_ARRAY(unsigned char)
LUM_INSTANTIATE_VALUE_CONSTANT_ARRAY(unsigned int)
LUM_INSTANTIATE_VALUE_CONSTANT_ARRAY(unsigned long long)
}  // namespace lum::core
