#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/main/store/ValueKeySet.h"
#include "lum/core/store/KeySetFactory.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StoreValue.h"

namespace lum::test {

/// The entries of a key set as plain vectors of boxed values.
struct BoxedEntries {
    std::vector<std::pair<core::SV, core::SV>> normal;
    std::vector<std::pair<core::SpecialKind, core::SV>> special;
};

/// Which side of a key set is stored as SV whatever its type is.
enum class HandleSides { None, Keys, Elements };

/// Of several entries under one key the first stays. Needs a collator pool for strings as keys.
core::SV MakeKeySetOf(const core::Type* keyType, const core::Type* elementType,
                      const BoxedEntries& entries, HandleSides handles = HandleSides::None);
/// Of entries as they are stored, for what boxed ones cannot say.
template <core::StorageType K, core::StorageType V>
core::SV StoredKeySet(const core::Type* keyType, const core::Type* elementType,
                      std::initializer_list<std::pair<const K, V>> entries,
                      std::initializer_list<std::pair<const core::SpecialKind, V>> special = {}) {
    auto values = core::MakeMapContainer<K, V>(keyType, 0);
    values->insert(entries);
    return core::factory::MakeKeySet<K, V>(
        keyType, elementType, std::move(values),
        std::make_unique<core::MapContainer<core::SpecialKind, V>>(special));
}
/// Each cell of the column `keys` is a key, a special cell a special key; its element is the cell
/// at its place in `elements`.
core::SV KeySetOf(const core::SV& keys, const core::SV& elements);
/// Likewise; both texts are those of ColumnOf.
core::SV KeySetOf(const std::string& keys, const std::string& elements);

}  // namespace lum::test
