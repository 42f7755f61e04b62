#include "core/main/store/ValueCompositeArrayImpl.h"

namespace lum::core {
LUM_INSTANTIATE_VALUE_COMPOSITE_ARRAY(RIndirectString)
LUM_INSTANTIATE_VALUE_COMPOSITE_ARRAY(LumTuple)
LUM_INSTANTIATE_VALUE_COMPOSITE_ARRAY(SV)
}  // namespace lum::core
