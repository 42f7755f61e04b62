#include "lum/core/functions/InstructionSet.h"

namespace lum::core::detail {

#ifdef __x86_64__
const bool kHasAvx2 = __builtin_cpu_supports("avx2") != 0;
#else
const bool kHasAvx2 = false;
#endif

}  // namespace lum::core::detail
