#pragma once

#include "Statement.h"
#include "lum/core/store/StoreValueFwd.h"

/// The operators whose meaning is one function of what the statement reads. Each gives the value of
/// its one output, and changes nothing.
///
/// Threads: any. Errors: LumRuntimeException; docs/vtl.md lists the codes of each operator.
namespace lumengine {

// Values, and functions over elements and scalars: ElementOperators.cpp.
lum::core::SV RunConstant(const Statement& statement);
lum::core::SV RunCopy(const Statement& statement);
lum::core::SV RunMap(const Statement& statement);
lum::core::SV RunReduce(const Statement& statement);
lum::core::SV RunScan(const Statement& statement);
lum::core::SV RunScanRight(const Statement& statement);
lum::core::SV RunSetValue(const Statement& statement);
lum::core::SV RunSetValueMulti(const Statement& statement);
lum::core::SV RunZipWith(const Statement& statement);

// The choice and order of rows: RowOperators.cpp.
lum::core::SV RunConcat(const Statement& statement);
lum::core::SV RunDistinct(const Statement& statement);
lum::core::SV RunFilter(const Statement& statement);
lum::core::SV RunIndex(const Statement& statement);
lum::core::SV RunMultiSort(const Statement& statement);
lum::core::SV RunReverse(const Statement& statement);
lum::core::SV RunSlice(const Statement& statement);

// Collections of arrays: CollectionOperators.cpp.
lum::core::SV RunCreateKeySet(const Statement& statement);
lum::core::SV RunCreateTable(const Statement& statement);
lum::core::SV RunZip(const Statement& statement);

// One table of two, in time linear in the rows read and made: JoinOperators.cpp.
lum::core::SV RunCrossJoin(const Statement& statement);
lum::core::SV RunFullOuterJoin(const Statement& statement);
lum::core::SV RunInnerJoin(const Statement& statement);
lum::core::SV RunLeftOuterJoin(const Statement& statement);

/// What the statement's function makes of its inputs and arguments, as a list of values.
lum::core::SV CallListFunction(const Statement& statement);

}  // namespace lumengine
