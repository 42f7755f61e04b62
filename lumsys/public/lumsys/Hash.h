#pragma once

#include <cstddef>

#include "lumsys/Export.h"

namespace lumsys {

/// The block hash of the library: lookup2 (Bob Jenkins, 1996).
///
/// `data` is `length` bytes, of which at most the low 32 bits of the count enter the hash; `data`
/// may be null when `length` is 0. Bytes are read in little-endian order whatever the machine, so
/// the result is the same everywhere.
/// Threads: no state. Cost: about 3 cycles a byte. Errors: none.
LUM_CORE_API unsigned int Hash(const void* data, std::size_t length, unsigned int seed) noexcept;

}  // namespace lumsys
