#include "core/main/store/ValueKeySetImpl.h"

namespace lum::core {
LUM_INSTANTIATE_VALUE_KEY_SETS_BY(RIndirectString)
}  // namespace lum::core
