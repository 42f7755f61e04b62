#include "core/main/serialize/KeySetEntries.h"

#include <algorithm>

#include "lum/core/store/IStoreDictionary.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core {
namespace {

// Kept out of the 36 walks.
[[gnu::noinline]] void Add(KeySetEntries& entries, const void* key, const void* value) {
    entries.entries.push_back({key, value});
}
[[gnu::noinline]] void AddSpecial(KeySetEntries& entries, SpecialKind kind, const void* value) {
    entries.specialEntries.push_back({kind, value});
}

template <typename K, typename V>
void Collect(const IStoreDictionary<K, V>& keySet, KeySetEntries& entries) {
    for (const auto& [key, value] : keySet.GetEntries()) {
        Add(entries, &key, &value);
    }
    for (const auto& [kind, value] : keySet.GetSpecialEntries()) {
        AddSpecial(entries, kind, &value);
    }
}

}  // namespace

KeySetEntries CollectKeySetEntries(const StoreValue& keySet) {
    const KeySetType& type = keySet.GetType()->As<KeySetType>();
    KeySetEntries entries;
    entries.entries.reserve(keySet.GetCount());
    DispatchStorage(type.GetKeyType()->GetStoreType(), [&]<typename K>(StorageTag<K>) {
        DispatchStorage(type.GetElementType()->GetStoreType(), [&]<typename V>(StorageTag<V>) {
            Collect(keySet.AsDictionary<K, V>(), entries);
        });
    });
    return entries;
}

void SortKeySetEntries(KeySetEntries& entries, bool (*isBefore)(const void* a, const void* b)) {
    using Entry = KeySetEntries::Entry;
    using SpecialEntry = KeySetEntries::SpecialEntry;
    // Rows have no strict order, which a faster algorithm would rely on.
    std::stable_sort(entries.entries.begin(), entries.entries.end(),
                     [=](const Entry& a, const Entry& b) { return isBefore(a.key, b.key); });
    std::sort(entries.specialEntries.begin(), entries.specialEntries.end(),
              [](const SpecialEntry& a, const SpecialEntry& b) { return a.kind < b.kind; });
}

}  // namespace lum::core
