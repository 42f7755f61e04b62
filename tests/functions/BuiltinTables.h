#pragma once

#include "tests/functions/FunctionTable.h"

/// The built-in functions by kind, each kind in a source of its own with the tests that only its
/// functions need.

namespace lum::core::functions_test {

/// The rule of most special forms: zero of the kind Null, unless the element is normal.
template <typename T>
ElementWithKind<T> NullUnless(bool isNormal, T value) {
    return isNormal ? ElementWithKind<T>(value, SpecialKind::Normal)
                    : ElementWithKind<T>(T(), SpecialKind::Null);
}

template <typename T>
std::vector<T> Constants() {
    if constexpr (std::is_integral_v<T>) {
        return {0, 1, -3, std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()};
    } else {
        return {0, -T{0}, 1, T(-2.5), std::numeric_limits<T>::infinity()};
    }
}

// Of one column.
void AddFilters(FunctionTable& table);
void AddSets(FunctionTable& table);
void AddArithmetic(FunctionTable& table);
void AddComparisons(FunctionTable& table);
void AddMaps(FunctionTable& table);
void AddConversions(FunctionTable& table);

// Of two columns, or of an accumulator and a column.
void AddBest(FunctionTable& table);
void AddSums(FunctionTable& table);
void AddCounts(FunctionTable& table);
void AddZipWith(FunctionTable& table);

}  // namespace lum::core::functions_test
