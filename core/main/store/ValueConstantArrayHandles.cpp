#include "core/main/store/ValueConstantArrayImpl.h"

namespace lum::core {
LUM_INSTANTIATE_VALUE_CONSTANT_ARRAY(RIndirectString)
LUM_INSTANTIATE_VALUE_CONSTANT_ARRAY(LumTuple)
LUM_INSTANTIATE_VALUE_CONSTANT_ARRAY(SV)
}  // namespace lum::core
