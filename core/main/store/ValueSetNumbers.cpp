#include "core/main/store/ValueSetImpl.h"

namespace lum::core {
LUM_INSTANTIATE_VALUE_SET(unsigned char)
LUM_INSTANTIATE_VALUE_SET(unsigned int)
LUM_INSTANTIATE_VALUE_SET(unsigned long long)
}  // namespace lum::core
