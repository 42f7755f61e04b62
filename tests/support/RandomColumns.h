#pragma once

#include <vector>

#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumTuple.h"
#include "tests/support/Random.h"

namespace lum::test {

/// The types that columns of every storage are tested with: all primitives, a real with a
/// precision, rows of all primitives, and arrays.
std::vector<const core::Type*> GetElementTypes();

/// A column of `count` elements. Values are such as are easily mistaken (the limits, both zeros,
/// NaN, short and long text) and repeat, so that there are runs. Where the type allows it, every
/// other column has room for kinds, and special cells over placeholders of all values.
core::SV MakeRandomColumn(Random& random, const core::Type* elementType, core::lumsize_t count);

/// A row of random members, some special.
core::LumTuple MakeRandomRow(Random& random, const core::TupleType* type);

}  // namespace lum::test
