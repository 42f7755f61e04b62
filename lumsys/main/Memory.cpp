#include "lumsys/Memory.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

#include <cstdint>

namespace lumsys {

void AdviseLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t size) noexcept {
#if defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t kLargePage = std::uintptr_t{2} << 20;
    constexpr std::size_t kLeast = 4 * kLargePage;
    if (size < kLeast) {
        return;
    }
    const auto start = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = (start + kLargePage - 1) / kLargePage * kLargePage;
    const std::uintptr_t end = (start + size) / kLargePage * kLargePage;
    // Advice that is not taken changes nothing.
    static_cast<void>(madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE));
#endif
}

}  // namespace lumsys
