#pragma once

#include <vector>

#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StoreValue.h"

namespace lum::core {

// The entries of a key set as pointers to what is stored. A walk needs the storage of
// keys and of elements at once, which makes 36 walks; what is then done with keys and with elements
// depends on one of the two, so these walks only collect.
//
// Ownership: the key set must stay alive.
struct KeySetEntries {
    struct Entry {
        const void* key;    // A K.
        const void* value;  // A V.
    };
    struct SpecialEntry {
        SpecialKind kind;
        const void* value;
    };

    std::vector<Entry> entries;
    std::vector<SpecialEntry> specialEntries;
};

// In no order. Errors: NotKeyedCollection where keys or elements are not stored as their types say.
KeySetEntries CollectKeySetEntries(const StoreValue& keySet);

// Puts the entries in the order of their keys, those under special keys in that of the kinds.
void SortKeySetEntries(KeySetEntries& entries, bool (*isBefore)(const void* a, const void* b));

}  // namespace lum::core
