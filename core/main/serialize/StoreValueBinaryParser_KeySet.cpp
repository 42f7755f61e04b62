#include <utility>

#include "core/main/serialize/StoreValueBinaryParser.h"
#include "core/main/store/ValueKeySet.h"
#include "lum/core/Check.h"
#include "lum/core/store/KeySetFactory.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core {

template <StorageType K>
K BinaryValueReader::ReadKey([[maybe_unused]] const Type* type) {
    if constexpr (std::is_same_v<K, unsigned char>) {
        return m_reader.ReadStorage8BitKey();
    } else if constexpr (std::is_same_v<K, unsigned int>) {
        return m_reader.ReadStorage32BitKey();
    } else if constexpr (std::is_same_v<K, unsigned long long>) {
        return m_reader.ReadStorage64BitKey();
    } else if constexpr (std::is_same_v<K, RIndirectString>) {
        return m_reader.ReadStringKey();
    } else {
        return ReadRow(&type->As<TupleType>());  // A list where a key is due.
    }
}

template <StorageType K, StorageType V>
SV BinaryValueReader::ReadKeySetOf(const KeySetType& type) {
    const BinaryKeySetType binKeySetType = m_reader.BeginKeySetType();
    const lumsize_t count = m_reader.BeginListData();
    auto values = MakeMapContainer<K, V>(type.GetKeyType(), PlanRoom(count));
    for (lumsize_t i = 0; i < count; ++i) {
        K key = ReadKey<K>(type.GetKeyType());
        values->emplace(std::move(key), ReadElement<V>(type.GetElementType()));
    }
    m_reader.EndListData();
    auto specials = std::make_unique<MapContainer<SpecialKind, V>>();
    if (binKeySetType == BinaryKeySetType::WithSpecialKeys) {
        const lumsize_t specialsCount = m_reader.BeginListData();
        for (lumsize_t i = 0; i < specialsCount; ++i) {
            const SpecialKind kind = m_reader.ReadSpecialKey();
            LUM_CHECK(static_cast<unsigned int>(kind) < kSpecialKindCount,
                      LumError::IllegalSpecialKind);
            specials->emplace(kind, ReadElement<V>(type.GetElementType()));
        }
        m_reader.EndListData();
    }
    m_reader.EndKeySetType();
    return factory::MakeKeySet<K, V>(type.GetKeyType(), type.GetElementType(), std::move(values),
                                     std::move(specials));
}

SV BinaryValueReader::ReadKeySet(const KeySetType& type) {
    return DispatchStorage(type.GetKeyType()->GetStoreType(), [&]<typename K>(StorageTag<K>) -> SV {
        if constexpr (std::is_same_v<K, SV>) {
            LUM_FAIL(LumError::IllegalKeyType);  // The type's maker takes no such keys.
        } else {
            return DispatchStorage(
                type.GetElementType()->GetStoreType(),
                [&]<typename V>(StorageTag<V>) { return ReadKeySetOf<K, V>(type); });
        }
    });
}

}  // namespace lum::core
