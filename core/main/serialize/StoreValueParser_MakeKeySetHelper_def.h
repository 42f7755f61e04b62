#pragma once

#include <memory>
#include <type_traits>
#include <utility>

#include "core/main/serialize/StoreValueParser_Traits.h"
#include "core/main/store/ValueKeySet.h"
#include "lum/core/serialize/JsonSerializer.h"
#include "lum/core/store/KeySetFactory.h"
#include "lum/core/store/SpecialKindText.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core::StoreValueParser {

// An element under a key. Errors: UnsupportedKeySetElement for a type that V does not store, too.
template <StorageType V>
V MakeKeySetElement(const Type* type, const JsonItem& item);

// Key sets whose keys are stored as K. One source instantiates it for numbers and one for handles,
// so that they are compiled side by side.
template <StorageType K>
SV MakeKeySetOver(const KeySetType& type, const IJsonObject& object);

// A key set of one type of keys and elements, as they are stored, while it is read.
template <StorageType K, StorageType V>
class MakeKeySetHelper {
public:
    explicit MakeKeySetHelper(const KeySetType& type)
        : m_keyType(type.GetKeyType()),
          m_elementType(type.GetElementType()),
          m_values(MakeMapContainer<K, V>(m_keyType, 0)),
          m_specials(std::make_unique<MapContainer<SpecialKind, V>>()) {}

    // Of two keys that read alike, as "1" and "01", the first counts.
    void ReadEntries(const IJsonObject& object) {
        for (const auto& [text, item] : EntriesOf(object)) {
            m_values->emplace(ReadKey(text), MakeKeySetElement<V>(m_elementType, item));
        }
    }
    void ReadSpecialEntries(const IJsonObject& object) {
        for (const auto& [text, item] : EntriesOf(object)) {
            m_specials->emplace(SpecialKindFromString(text),
                                MakeKeySetElement<V>(m_elementType, item));
        }
    }
    SV Make() {
        return factory::MakeKeySet<K, V>(m_keyType, m_elementType, std::move(m_values),
                                         std::move(m_specials));
    }

private:
    static const IJsonObject::DictionaryIterable& EntriesOf(const IJsonObject& object) {
        LUM_CHECK_TEXT("(obj->IsDictionary())", object.IsDictionary(),
                       LumError::KeySetNeedsContainer);
        return object.AsDictionary();
    }

    K ReadKey(const TStringCore& text) const {
        if constexpr (std::is_same_v<K, LumTuple>) {
            // A row as a key is JSON within the text, which was unescaped with the text before.
            const auto& keyType = m_keyType;
            LUM_CHECK(keyType->GetStoreType() == StoreType::Tuple, LumError::ExpectedTuple);
            return ReadTuple(keyType, *GetRootJsonObject(JsonSerializer::UnescapeFromJson(text)));
        } else {
            return ReadStorage<K>(m_keyType, text);
        }
    }

    const Type* m_keyType;
    const Type* m_elementType;
    std::unique_ptr<MapContainer<K, V>> m_values;
    std::unique_ptr<MapContainer<SpecialKind, V>> m_specials;
};

template <StorageType K, StorageType V>
SV MakeKeySetOf(const KeySetType& type, const IJsonObject& object) {
    MakeKeySetHelper<K, V> helper(type);
    if (object.IsDictionary()) {
        helper.ReadEntries(object);
        return helper.Make();
    }
    auto arrayIter = object.AsArray().begin();
    const auto arrayEnd = object.AsArray().end();
    const auto checkHasItem = [&] {
        LUM_CHECK_TEXT("(arrayIter != arrayEnd)", !(arrayIter == arrayEnd),
                       LumError::UnexpectedKeySetContent);
    };
    checkHasItem();
    helper.ReadEntries(**arrayIter);
    ++arrayIter;
    checkHasItem();
    helper.ReadSpecialEntries(**arrayIter);
    ++arrayIter;
    LUM_CHECK(arrayIter == arrayEnd, LumError::NestedSpecialsExpected);
    return helper.Make();
}

template <StorageType K>
SV MakeKeySetOver(const KeySetType& type, const IJsonObject& object) {
    return DispatchStorage(type.GetElementType()->GetStoreType(), [&]<typename V>(StorageTag<V>) {
        return MakeKeySetOf<K, V>(type, object);
    });
}

}  // namespace lum::core::StoreValueParser
