#pragma once

#include <cstddef>

#include "lumsys/Export.h"

namespace lumsys {

/// Asks the system to back a large new block with large pages, which saves most of what its first
/// use costs. `memory` is `size` bytes of the caller's, whose content stays as it is; small blocks
/// are left alone, and so is all where the system has no such pages.
/// Threads: no state. Cost: a system call, or none. Errors: none.
LUM_CORE_API void AdviseLargePages(void* memory, std::size_t size) noexcept;

}  // namespace lumsys
