#pragma once

#include <cstddef>

namespace lum::core {

/// Throws std::out_of_range with the text "invalid unordered_map<K, T> key". Callers match on the
/// text, and each standard library words its own differently.
[[noreturn, gnu::cold]] void ThrowInvalidMapKey();

/// Throws std::out_of_range with the text "invalid vector subscript", for the same reason.
[[noreturn, gnu::cold]] void ThrowInvalidVectorSubscript();

/// The value under `key` in one of the standard maps. Errors: that of ThrowInvalidMapKey.
template <typename Map, typename Key>
const typename Map::mapped_type& MapAt(const Map& map, const Key& key) {
    const auto found = map.find(key);
    if (found == map.end()) {
        ThrowInvalidMapKey();
    }
    return found->second;
}

/// The element at `index` of a vector. Errors: that of ThrowInvalidVectorSubscript.
template <typename Vector>
const typename Vector::value_type& VectorAt(const Vector& vector, std::size_t index) {
    if (index >= vector.size()) {
        ThrowInvalidVectorSubscript();
    }
    return vector[index];
}

}  // namespace lum::core
