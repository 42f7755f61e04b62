#include "core/main/store/ValueSetImpl.h"

namespace lum::core {
LUM_INSTANTIATE_VALUE_SET(RIndirectString)
LUM_INSTANTIATE_VALUE_SET(LumTuple)
LUM_INSTANTIATE_VALUE_SET(SV)
}  // namespace lum::core
