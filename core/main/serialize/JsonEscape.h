#pragma once

#include <cstddef>

#include "core/main/serialize/TextRoom.h"

namespace lum::core {

// Copies units up to the first one that a JSON string has to escape, and gives their number, which
// is `count` where there is none. Any of the `count` units from `out` on may be overwritten.
std::size_t CopyUntilEscape(const char16_t* units, std::size_t count, char16_t* out) noexcept;

// Appends units as the inside of a JSON string: all but the quotes. The units do not stand in the
// text that `room` belongs to.
void AppendEscaped(TextRoom& room, const char16_t* units, std::size_t count);

}  // namespace lum::core
