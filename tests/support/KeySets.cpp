#include "tests/support/KeySets.h"

#include <algorithm>

#include "core/main/store/ValueKeySet.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/KeySetFactory.h"
#include "lum/core/store/ValueUtil.h"
#include "tests/support/ColumnText.h"

namespace lum::test {

using namespace core;

SV MakeKeySetOf(const Type* keyType, const Type* elementType, const BoxedEntries& entries,
                HandleSides handles) {
    return DispatchKeySet(
        keyType, elementType, handles,
        [&]<typename K, typename V>(StorageTag<K>, StorageTag<V>) -> SV {
            auto values =
                MakeMapContainer<K, V>(keyType, static_cast<lumsize_t>(entries.normal.size()));
            auto specials = std::make_unique<MapContainer<SpecialKind, V>>();
            for (const auto& [key, element] : entries.normal) {
                values->emplace(FetchStoreValue<K>(key), FetchStoreValue<V>(element));
            }
            for (const auto& [kind, element] : entries.special) {
                specials->emplace(kind, FetchStoreValue<V>(element));
            }
            return factory::MakeKeySet<K, V>(keyType, elementType, std::move(values),
                                             std::move(specials));
        });
}

SV KeySetOf(const std::string& keys, const std::string& elements) {
    const SV keyColumn = ColumnOf(keys);
    const SV elementColumn = ColumnOf(elements);
    BoxedEntries entries;
    for (lumsize_t i = 0; i < keyColumn->GetCount(); ++i) {
        const SV key = keyColumn->AsArray().GetElement(i);
        const SV element = elementColumn->AsArray().GetElement(i);
        if (key->IsSpecial()) {
            entries.special.emplace_back(key->GetSpecialKind(), element);
        } else {
            entries.normal.emplace_back(key, element);
        }
    }
    return MakeKeySetOf(keyColumn->AsArray().GetElementType(),
                        elementColumn->AsArray().GetElementType(), entries);
}

BoxedEntries EntriesOf(const StoreValue& keySet, HandleSides handles) {
    const KeySetType& type = keySet.GetType()->As<KeySetType>();
    const Type* const keyType = type.GetKeyType();
    const Type* const elementType = type.GetElementType();
    return DispatchKeySet(
        keyType, elementType, handles, [&]<typename K, typename V>(StorageTag<K>, StorageTag<V>) {
            const IStoreDictionary<K, V>& dictionary = keySet.AsDictionary<K, V>();
            BoxedEntries entries;
            for (const auto& [key, element] : dictionary.GetEntries()) {
                entries.normal.emplace_back(MakeStoreValueFromStorageType<K>(keyType, key),
                                            MakeStoreValueFromStorageType<V>(elementType, element));
            }
            for (const auto& [kind, element] : dictionary.GetSpecialEntries()) {
                entries.special.emplace_back(
                    kind, MakeStoreValueFromStorageType<V>(elementType, element));
            }
            return entries;
        });
}

std::string KeySetText(const StoreValue& keySet) {
    const BoxedEntries entries = EntriesOf(keySet);
    std::vector<std::string> parts;
    for (const auto& [key, element] : entries.normal) {
        parts.push_back(" " + TextOf(key) + "=" + TextOf(element));
    }
    for (const auto& [kind, element] : entries.special) {
        parts.push_back(" " + TextOf(kind) + "=" + TextOf(element));
    }
    std::sort(parts.begin(), parts.end());
    std::string text = keySet.GetType()->ToString().toStdString() + ":";
    for (const std::string& part : parts) {
        text += part;
    }
    return text;
}

}  // namespace lum::test
