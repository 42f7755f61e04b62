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

/// What the statement's function makes of its inputs and arguments, as a list of values.
lum::core::SV CallListFunction(const Statement& statement);

}  // namespace lumengine
