#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <type_traits>
#include <vector>

#include "core/main/serialize/JsonCells.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumTuple.h"

namespace lum::core {

// The order in which the elements of an unordered collection are written, so that its text does not
// depend on the order in memory: numbers, dates and colours ascending, strings by code unit, rows
// as they compare. Reals that compare equal go by their bits, and NaNs behind all numbers. Values
// of the host's own kinds have a loose order only.
template <typename Cell>
bool IsWrittenBefore(const typename Cell::Storage& a, const typename Cell::Storage& b) {
    if constexpr (std::is_same_v<Cell, Real32Cell> || std::is_same_v<Cell, Real64Cell>) {
        const auto left = Cell::ToNative(a);
        const auto right = Cell::ToNative(b);
        if (left < right || left > right) {
            return left < right;
        }
        if (std::isnan(left) != std::isnan(right)) {
            return std::isnan(right);
        }
        return std::bit_cast<std::make_signed_t<typename Cell::Storage>>(a) <
               std::bit_cast<std::make_signed_t<typename Cell::Storage>>(b);
    } else if constexpr (std::is_same_v<Cell, ValueCell>) {
        return a != nullptr && b != nullptr && a->GetCount() <= b->GetCount() &&
               a->GetHashValue() < b->GetHashValue();
    } else {
        return Cell::ToNative(a) < Cell::ToNative(b);
    }
}

// Sorts numbers in place, anything larger by pointers to it. The order of rows and of values is
// none that a faster algorithm may rely on: a NaN in a row is equal to every number.
template <typename Cell>
void SortForWriting(std::vector<typename Cell::Storage>& elements) {
    std::sort(elements.begin(), elements.end(), IsWrittenBefore<Cell>);
}
template <typename Cell>
void SortForWriting(std::vector<const typename Cell::Storage*>& elements) {
    std::stable_sort(elements.begin(), elements.end(),
                     [](const auto* a, const auto* b) { return IsWrittenBefore<Cell>(*a, *b); });
}

}  // namespace lum::core
