#pragma once

#include "core/main/utility/StandardErrors.h"
#include "lum/core/Check.h"

/// Look-ups in the standard maps that collections hold by pointer.
/// Errors: NullMap for a null pointer.
/// Cost: one hash probe.
namespace lum::core::UnorderedMapUtil {

/// The value under `key`, or null where there is none.
template <typename Map>
const typename Map::mapped_type* Find(const Map* map, const typename Map::key_type& key) {
    LUM_CHECK_NOT_NULL(map, LumError::NullMap);
    const auto found = map->find(key);
    return found == map->end() ? nullptr : &found->second;
}

template <typename Map>
bool Contains(const Map* map, const typename Map::key_type& key) {
    return Find(map, key) != nullptr;
}

/// The value under `key`. Errors: that of ThrowInvalidMapKey where there is none.
template <typename Map>
const typename Map::mapped_type& At(const Map* map, const typename Map::key_type& key) {
    const auto* const value = Find(map, key);
    if (value == nullptr) {
        ThrowInvalidMapKey();
    }
    return *value;
}

}  // namespace lum::core::UnorderedMapUtil
