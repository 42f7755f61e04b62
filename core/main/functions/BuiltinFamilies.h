#pragma once

namespace lum::core {

class RegistryOfBinaryFunctions;
class RegistryOfMultinaryFunctions;
class RegistryOfUnaryFunctions;

// The families of built-in functions, in the order in which they are registered. Where a function
// has both forms the regular one comes first.

// Which elements to keep: a Bool for each.
void RegisterFilterFunctions(RegistryOfUnaryFunctions& registry);
// Functions of an element: arithmetic, comparisons with constants and sets ...
void RegisterMapFunctions(RegistryOfUnaryFunctions& registry);
// ... and conversions.
void RegisterConversionFunctions(RegistryOfUnaryFunctions& registry);
// Functions of an accumulator and an element: minima, maxima, sums ...
void RegisterReduceFunctions(RegistryOfBinaryFunctions& registry);
// ... and counts.
void RegisterCountFunctions(RegistryOfBinaryFunctions& registry);
// Functions of a list of values.
void RegisterSetValueMultiFunctions(RegistryOfMultinaryFunctions& registry);
// Functions of the elements of two columns.
void RegisterZipWithFunctions(RegistryOfBinaryFunctions& registry);

}  // namespace lum::core
