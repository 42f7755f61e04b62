#pragma once

#include <vector>

#include "lum/core/store/StoreValue.h"
#include "tests/support/Random.h"

namespace lum::test {

/// The kind of host values that random stores have: its content is bytes, of which the first is the
/// hash, and may not be 255 when it is read.
inline constexpr unsigned short kBytesKindId = 62;
void RegisterBytesKind();
core::SV MakeBytesValue(std::vector<unsigned char> bytes);

/// A key map of members of every kind: scalars and specials, columns in every form that they have
/// in memory, rows, sets, key sets, tables, host values, key maps to `depth` levels and arrays of
/// all these. Needs the kind above and a collator pool.
core::SV MakeRandomStore(Random& random, int depth);

}  // namespace lum::test
