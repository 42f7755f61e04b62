#pragma once

#include "Statement.h"
#include "lum/core/store/StoreValueFwd.h"

/// The operators that make values, and those that apply functions to elements and to scalars. Each
/// gives the value of the statement's one output, and changes nothing.
///
/// Threads: any. Errors: LumRuntimeException; docs/vtl.md lists the codes of each operator.
namespace lumengine {

lum::core::SV RunConstant(const Statement& statement);
lum::core::SV RunCopy(const Statement& statement);
lum::core::SV RunMap(const Statement& statement);
lum::core::SV RunZipWith(const Statement& statement);
lum::core::SV RunReduce(const Statement& statement);
lum::core::SV RunScan(const Statement& statement);
lum::core::SV RunScanRight(const Statement& statement);
lum::core::SV RunSetValue(const Statement& statement);
lum::core::SV RunSetValueMulti(const Statement& statement);

/// What the statement's function makes of its inputs and arguments, as a list of values.
lum::core::SV CallListFunction(const Statement& statement);

}  // namespace lumengine
