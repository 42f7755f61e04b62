#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "lum/core/Export.h"

namespace lum::core {

class StoreValue;

/// The usual holder of a value. Every use spells SV and so includes this header, which keeps the
/// specialisations below in front of the first container of values.
using SV = std::shared_ptr<StoreValue>;

}  // namespace lum::core

/// The hash of the value; 0 without one.
template <>
struct LUM_CORE_API std::hash<lum::core::SV> {
    // Not marked noexcept: the standard tables then keep the hash codes beside the keys, and ask
    // values of different types for equality only when these agree.
    std::size_t operator()(const lum::core::SV& value) const;
};

/// IsEqual of the two values; false where either is missing, so two empty ones are not equal.
template <>
struct LUM_CORE_API std::equal_to<lum::core::SV> {
    bool operator()(const lum::core::SV& a, const lum::core::SV& b) const;
};
