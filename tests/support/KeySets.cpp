#include "tests/support/KeySets.h"

#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/ValueUtil.h"
#include "tests/support/ColumnText.h"

namespace lum::test {

using namespace core;

SV MakeKeySetOf(const Type* keyType, const Type* elementType, const BoxedEntries& entries,
                HandleSides handles) {
    // Whatever is an array is stored as SV.
    const StoreType keyStorage =
        handles == HandleSides::Keys ? StoreType::Array : keyType->GetStoreType();
    const StoreType elementStorage =
        handles == HandleSides::Elements ? StoreType::Array : elementType->GetStoreType();
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

SV KeySetOf(const SV& keys, const SV& elements) {
    BoxedEntries entries;
    for (lumsize_t i = 0; i < keys->GetCount(); ++i) {
        const SV key = keys->AsArray().GetElement(i);
        const SV element = elements->AsArray().GetElement(i);
        if (key->IsSpecial()) {
            entries.special.emplace_back(key->GetSpecialKind(), element);
        } else {
            entries.normal.emplace_back(key, element);
        }
    }
    return MakeKeySetOf(keys->AsArray().GetElementType(), elements->AsArray().GetElementType(),
                        entries);
}

SV KeySetOf(const std::string& keys, const std::string& elements) {
    return KeySetOf(ColumnOf(keys), ColumnOf(elements));
}

}  // namespace lum::test
