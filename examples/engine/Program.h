#pragma once

#include <chrono>
#include <functional>
#include <vector>

#include "lum/core/functions/IFunctionLookup.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/vtl/TransformSpec.h"

namespace lumengine {

/// A statement of the program that has run.
struct StatementRun {
    std::size_t index;  ///< in the list that RunProgram was given
    lum::core::lumsize_t
        rows;  ///< of its first collection: an input, else an output; 1 without any
    std::chrono::nanoseconds time;
};

struct RunOptions {
    /// Statements next to each other, none of which writes below a name of the store's root that
    /// another reads or writes below, are computed at once on LumThreadPool. What they store, and
    /// what fails, is the same as one after another. The pool must have been made.
    bool isParallel = false;
    /// Is told each statement when its results are stored, in order; where RunProgram throws, the
    /// number of calls is the index of the statement that failed. May be empty.
    std::function<void(const StatementRun&)> onStatement;
};

/// Runs a program: each statement reads the values of its keys in `store` and adds its results.
/// docs/vtl.md says what the operators do. This engine is an example of the library's use and no
/// part of it.
///
/// Threads: `store` must not be used meanwhile, and `lookup` must not change.
/// Ownership: results share storage with what they were made from; nothing of the arguments is
///   kept.
/// Errors: LumRuntimeException of the statement that fails, with the code that docs/vtl.md lists,
///   NotImplemented with the operator's name for one that the engine does not have; those of the
///   store and of the functions. The results of the statements before it stay; it has stored none.
void RunProgram(const std::vector<lum::core::TransformSpec>& transforms,
                lum::core::IDataStore& store, const lum::core::IFunctionLookup& lookup,
                const RunOptions& options = {});

}  // namespace lumengine
