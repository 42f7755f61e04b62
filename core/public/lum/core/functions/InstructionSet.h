#pragma once

#include "lum/core/Export.h"

/// A loop over columns is compiled twice, for the instructions that every processor of the platform
/// has and for AVX2, and the better one that the running processor has is chosen at each call. Both
/// give the same results, bit for bit: no operation is fused or put in another order.

#define LUM_ALWAYS_INLINE __attribute__((always_inline))

/// In front of a loop over more columns than clang would compare for overlap by itself. Where the
/// function at hand cannot be computed side by side, clang warns, which means nothing here: so such
/// a loop stands between LUM_VECTORIZE_BEGIN and LUM_VECTORIZE_END, outside of any declaration.
#ifdef __clang__
#define LUM_VECTORIZE_LOOP _Pragma("clang loop vectorize(enable)")
#define LUM_VECTORIZE_BEGIN \
    _Pragma("clang diagnostic push") _Pragma("clang diagnostic ignored \"-Wpass-failed\"")
#define LUM_VECTORIZE_END _Pragma("clang diagnostic pop")
#else
#define LUM_VECTORIZE_LOOP
#define LUM_VECTORIZE_BEGIN
#define LUM_VECTORIZE_END
#endif

LUM_VECTORIZE_BEGIN
namespace lum::core::detail {

/// Whether the processor has AVX2; false until the library's static objects are made.
extern LUM_CORE_API const bool kHasAvx2;

#ifdef __x86_64__
/// `flatten` pulls what the loop calls into this function, where it may use the instructions. By
/// the copy the compiler sees that no column overlaps what the loop captured.
template <typename Loop>
[[gnu::target("avx2"), gnu::flatten, gnu::noinline]] void RunWithAvx2(const Loop& loop) {
    const Loop copy = loop;
    copy();
}
#endif

/// Runs `loop`, a function object without arguments that is declared LUM_ALWAYS_INLINE.
template <typename Loop>
LUM_ALWAYS_INLINE inline void RunOnBestInstructionSet(const Loop& loop) {
#ifdef __x86_64__
    if (kHasAvx2) {
        return RunWithAvx2(loop);
    }
#endif
    const Loop copy = loop;
    copy();
}

}  // namespace lum::core::detail
LUM_VECTORIZE_END
