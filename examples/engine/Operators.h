#pragma once

#include <span>

#include "Statement.h"
#include "lum/core/store/StoreValueFwd.h"

namespace lumengine {

/// An operator whose meaning is one function of what the statement reads: it gives the value of the
/// one output, and changes nothing.
///
/// Threads: any. Errors: LumRuntimeException; docs/vtl.md lists the codes of each operator.
struct Operator {
    lum::core::OperatorType type;
    Parts parts;  ///< that the statement may have
    lum::core::SV (*run)(const Statement& statement);
};

/// The choice and order of rows.
extern const std::span<const Operator> kRowOperators;
/// Values, and functions over elements and scalars.
extern const std::span<const Operator> kElementOperators;
/// Collections of arrays.
extern const std::span<const Operator> kCollectionOperators;
/// One table of two, in time linear in the rows read and made.
extern const std::span<const Operator> kJoinOperators;

/// The positions of the rows as they stand when sorted by the first column, among equals by the
/// second, and so on; rows that are equal in all keep their order. Values come before specials,
/// whatever the order of the column, and specials are ordered by kind; NaN comes behind all other
/// reals. Strings are compared by their collation. Cost: for each column n log n comparisons.
lum::core::SV RunMultiSort(const Statement& statement);

/// What the statement's function makes of its inputs and arguments, as a list of values.
lum::core::SV CallListFunction(const Statement& statement);

}  // namespace lumengine
