#pragma once

#include <ostream>

#include "Options.h"
#include "Progress.h"

namespace lumhost {

/// Runs the command of `options`, any but Help: reads the file, if there is one, and writes the
/// answer to `out`. The text is complete before any of it is written, so a failure leaves `out` as
/// it was.
/// Errors: UsageError for a key path that is none; FileError for a fault of the file, and where
///   nothing stands at the key path; std::length_error for JSON text beyond what a string holds;
///   std::runtime_error where `out` does not take the text; those of FunctionCommands.
void RunCommand(const Options& options, std::ostream& out, Progress& progress);

}  // namespace lumhost
