#pragma once

#include <functional>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>

#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/Collation.h"
#include "lum/core/utility/LumTuple.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

/// How the values of a column are hashed and told apart in sets and as keys: strings by the
/// collation of their type, everything else by its standard hash and equality, which for numbers
/// are those of the raw bits and for SV those of the pointees.
template <typename T>
using ContainerHash =
    std::conditional_t<std::is_same_v<T, RIndirectString>, CollatorHash, std::hash<T>>;
template <typename T>
using ContainerEqualTo =
    std::conditional_t<std::is_same_v<T, RIndirectString>, CollatorEqualTo, std::equal_to<T>>;

/// The containers that sets and key sets take over.
template <typename T>
using SetContainer = std::unordered_set<T, ContainerHash<T>, ContainerEqualTo<T>>;
template <typename K, typename V>
using MapContainer = std::unordered_map<K, V, ContainerHash<K>, ContainerEqualTo<K>>;

}  // namespace lum::core
