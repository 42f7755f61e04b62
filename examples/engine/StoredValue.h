#pragma once

#include <type_traits>

#include "lum/core/store/StorageTypes.h"
#include "lum/core/store/ValueUtil.h"

namespace lumengine {

/// The content of a value as a column of its type stores it. Errors: those of FetchStoreValue.
template <lum::core::StorageType T>
T FetchStored(const lum::core::SV& value) {
    if constexpr (std::is_integral_v<T>) {
        return lum::core::FetchStoreValue<T>(value);
    } else {
        return lum::core::FetchStoreValue<const T&>(value);
    }
}

}  // namespace lumengine
