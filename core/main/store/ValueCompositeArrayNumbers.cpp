#include "core/main/store/ValueCompositeArrayImpl.h"

namespace lum::core {
LUM_INSTANTIATE_VALUE_COMPOSITE_ARRAY(unsigned char)
LUM_INSTANTIATE_VALUE_COMPOSITE_ARRAY(unsigned int)
LUM_INSTANTIATE_VALUE_COMPOSITE_ARRAY(unsigned long long)
}  // namespace lum::core
