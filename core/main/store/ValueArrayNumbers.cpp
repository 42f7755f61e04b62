#include "core/main/store/ValueArrayImpl.h"

namespace lum::core {
LUM_INSTANTIATE_VALUE_ARRAY(unsigned char)
LUM_INSTANTIATE_VALUE_ARRAY(unsigned int)
LUM_INSTANTIATE_VALUE_ARRAY(unsigned long long)
}  // namespace lum::core
