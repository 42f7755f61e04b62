#pragma once

#include <cstddef>
#include <string>

/// A program in Vtl of about `byteCount` bytes, all of them ASCII; the same for the same count.
///
/// Names, paths and literals are random, but keys recur as they do in programs: most of what a
/// statement reads was written by one of the statements before it. Statements nest, some keys have
/// types, some lines are comments. ParseVtlList takes all of it.
std::string MakeProgramText(std::size_t byteCount);
