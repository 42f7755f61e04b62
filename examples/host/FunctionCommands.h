#pragma once

#include <memory>
#include <ostream>

#include "Options.h"
#include "lum/core/functions/FunctionRegistry.h"
#include "lum/core/store/IDataStore.h"

namespace lumhost {

/// A registry of the built-in functions.
std::unique_ptr<lum::core::FunctionRegistry> MakeRegistry();

/// Prints the built-in functions as a table, all or those of the name that is asked for.
/// Errors: UsageError where there is none; std::runtime_error where `out` does not take the text.
void ListFunctions(const Options& options, std::ostream& out);

/// Throws UsageError where no built-in function has the name and the number of columns that a
/// command asks for, which needs no file to be read.
void CheckFunctionName(const Options& options);

/// The commands apply and fold over the columns of a store: prints the result as JSON.
/// Errors: UsageError for constants and initial values that cannot be read or are not called for;
///   FileError for a column that is not there; LumRuntimeException as ColumnFunctions has it;
///   std::runtime_error where `out` does not take the text.
void RunFunction(const Options& options, const lum::core::IDataStore& store, std::ostream& out);

}  // namespace lumhost
