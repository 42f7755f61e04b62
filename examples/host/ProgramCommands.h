#pragma once

#include <ostream>

#include "Options.h"
#include "Progress.h"

namespace lumhost {

/// Prints the program as it was read.
/// Errors: those of ProgramText; std::runtime_error where `out` does not take the text.
void CheckProgram(const Options& options, std::ostream& out);

/// Runs the program over the columns of the file and prints what is asked for. Makes the pool of
/// threads.
/// Errors: those of ProgramText and of ImportCsv; FileError with the line of the program where a
///   statement fails, and where nothing stands at a key path that is to be printed; UsageError for
///   a key path that is none; std::runtime_error where `out` does not take the text.
void RunProgramFile(const Options& options, std::ostream& out, Progress& progress);

}  // namespace lumhost
