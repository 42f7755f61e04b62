#include "core/main/store/ValueArrayImpl.h"

namespace lum::core {
LUM_INSTANTIATE_VALUE_ARRAY(RIndirectString)
LUM_INSTANTIATE_VALUE_ARRAY(LumTuple)
LUM_INSTANTIATE_VALUE_ARRAY(SV)
}  // namespace lum::core
