#pragma once

namespace lum::core {

/// Throws std::out_of_range with the text "invalid unordered_map<K, T> key". Callers match on the
/// text, and each standard library words its own differently.
[[noreturn, gnu::cold]] void ThrowInvalidMapKey();

/// The value under `key` in one of the standard maps. Errors: that of ThrowInvalidMapKey.
template <typename Map, typename Key>
const typename Map::mapped_type& MapAt(const Map& map, const Key& key) {
    const auto found = map.find(key);
    if (found == map.end()) {
        ThrowInvalidMapKey();
    }
    return found->second;
}

}  // namespace lum::core
