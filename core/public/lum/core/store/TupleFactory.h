#pragma once

#include "lum/core/Export.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/LumTuple.h"

namespace lum::core::factory {

/// A packed row as a value: a collection of its members, whose keys are their indices in decimal.
/// Comparing two rows of different types fails with TypeMismatch, a row with another kind of value
/// with ExpectedTuple.
/// Threads: any. Ownership: the value takes the row over.
/// Errors: LumLogicException Unspecified where the row is a reference that has no block.
LUM_CORE_API SV MakeTuple(LumTuple&& tuple);

}  // namespace lum::core::factory
