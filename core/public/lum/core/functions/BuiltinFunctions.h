#pragma once

#include "lum/core/Export.h"

namespace lum::core {

class FunctionRegistry;

/// Fills `registry` with the library's own functions, which docs/functions.md lists: filters,
/// functions of an element, functions of an accumulator and an element, functions of a list of
/// values, and functions of two columns.
///
/// Threads: on the one thread that fills the registry.
/// Errors: FunctionExists, SpecialFunctionExists where the registry has one of them already; those
///   before it then stay registered.
LUM_CORE_API void RegisterAllBuiltinFunctions(FunctionRegistry& registry);

}  // namespace lum::core
