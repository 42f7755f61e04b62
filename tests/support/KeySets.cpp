#include "tests/support/KeySets.h"

#include <algorithm>

#include "core/main/serialize/KeySetEntries.h"
#include "core/main/store/ValueKeySet.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/KeySetFactory.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/CollectionTypes.h"
#include "tests/support/ColumnText.h"

namespace lum::test {

using namespace core;

SV MakeKeySetOf(const Type* keyType, const Type* elementType, const BoxedEntries& entries,
                HandleSides handles) {
    // Whatever is an array is stored as SV.
    const StoreType keyStorage = handles == HandleSides::Keys || handles == HandleSides::Both
                                     ? StoreType::Array
                                     : keyType->GetStoreType();
    const StoreType elementStorage =
        handles == HandleSides::Elements || handles == HandleSides::Both
            ? StoreType::Array
            : elementType->GetStoreType();
    return DispatchStorage(elementStorage, [&]<typename V>(StorageTag<V>) {
        auto specials = std::make_unique<MapContainer<SpecialKind, V>>();
        for (const auto& [kind, element] : entries.special) {
            specials->emplace(kind, FetchStoreValue<V>(element));
        }
        return DispatchStorage(keyStorage, [&]<typename K>(StorageTag<K>) {
            auto values = MakeMapContainer<K, V>(keyType, 0);
            for (const auto& [key, element] : entries.normal) {
                values->emplace(FetchStoreValue<K>(key), FetchStoreValue<V>(element));
            }
            return factory::MakeKeySet<K, V>(keyType, elementType, std::move(values),
                                             std::move(specials));
        });
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

namespace {

std::string TextOfStored(const Type* type, const void* stored) {
    return DispatchStorage(type->GetStoreType(), [&]<typename T>(StorageTag<T>) {
        return TextOf(MakeStoreValueFromStorageType<T>(type, *static_cast<const T*>(stored)));
    });
}

}  // namespace

std::string KeySetText(const StoreValue& keySet) {
    const KeySetType& type = keySet.GetType()->As<KeySetType>();
    const KeySetEntries entries = CollectKeySetEntries(keySet);
    std::vector<std::string> parts;
    for (const auto& [key, element] : entries.entries) {
        parts.push_back(" " + TextOfStored(type.GetKeyType(), key) + "=" +
                        TextOfStored(type.GetElementType(), element));
    }
    for (const auto& [kind, element] : entries.specialEntries) {
        parts.push_back(" " + TextOf(kind) + "=" + TextOfStored(type.GetElementType(), element));
    }
    std::sort(parts.begin(), parts.end());
    std::string text = type.ToString().toStdString() + ":";
    for (const std::string& part : parts) {
        text += part;
    }
    return text;
}

}  // namespace lum::test
