#include "core/main/store/ValueKeySetImpl.h"

namespace lum::core {
LUM_INSTANTIATE_VALUE_KEY_SETS_BY(unsigned long long)
}  // namespace lum::core
