#pragma once

namespace lum::core {

// How many levels what is read from outside may nest: the types in a type's text, the types and the
// values of the binary form. Each level costs the reader a stack frame, so without a limit a short
// hostile input would overflow the stack; real data has a handful of levels. A read at the limit
// fits a stack of 256 KiB.
inline constexpr unsigned int kMaxNestingLevels = 256;

// How many statements of a program a statement may stand below. Reading needs no stack for them,
// but copies, walks, printing and destruction do. It takes blanks by the square of it to get there.
inline constexpr unsigned int kMaxStatementLevels = 1000;

// How many segments the text of a key path may have. Reading needs no stack for them, but each is a
// level of the tree that a value is stored in, and values are cloned and printed level by level.
inline constexpr unsigned int kMaxKeyPathSegments = 1000;

}  // namespace lum::core
