#include "lum/core/store/StoreValueSampler.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "core/main/store/ValueKeySet.h"
#include "lum/core/Check.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/KeySetFactory.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"

namespace lum::core {
namespace {

SV SampleArray(const StoreValue& value, unsigned count) {
    return value.AsArray().GetRange(0, std::min(value.GetCount(), count), 1);
}

SV SampleTable(const StoreValue& value, unsigned count) {
    const IStoreTable& table = value.AsTable();
    return table.GetRowRange(0, std::min(table.GetRowCount(), count), 1);
}

/// An element of a key set of arrays; where it is empty or special there is nothing to shorten.
SV SampleElement(const SV& element, unsigned count) {
    return element == nullptr ? nullptr : SampleStoreValue(*element, count);
}

template <StorageType K>
SV SampleKeySetBy(const StoreValue& value, unsigned count) {
    const IStoreDictionary<K, SV>& keySet = value.AsDictionary<K, SV>();
    auto values = MakeMapContainer<K, SV>(keySet.GetKeyType(),
                                          keySet.GetCount() - keySet.GetSpecialKeyCount());
    for (const auto& [key, element] : keySet.GetEntries()) {
        values->emplace(key, SampleElement(element, count));
    }
    auto specials = std::make_unique<MapContainer<SpecialKind, SV>>();
    for (const auto& [kind, element] : keySet.GetSpecialEntries()) {
        specials->emplace(kind, SampleElement(element, count));
    }
    return factory::MakeKeySet<K, SV>(keySet.GetKeyType(),
                                      value.AsUniformCollection().GetElementType(),
                                      std::move(values), std::move(specials));
}

SV SampleKeySet(const StoreValue& value, unsigned count) {
    if (!value.AsUniformCollection().GetElementType()->Is(StoreType::Array)) {
        return value.Clone();
    }
    const Type* const keyType = value.GetType()->As<KeySetType>().GetKeyType();
    return DispatchStorage(keyType->GetStoreType(), [&]<typename K>(StorageTag<K>) -> SV {
        if constexpr (std::is_same_v<K, SV>) {
            // No type of a key set has such keys so far.
            detail::FailLogic({__FILE__, __LINE__, ""}, LumError::NotImplemented,
                              L"cannot truncate KeySet with unexpected key type");
        } else {
            return SampleKeySetBy<K>(value, count);
        }
    });
}

/// What is sampled in one step: all but key maps, of which there may be as many inside of each
/// other as a path has segments.
SV SampleLeaf(const StoreValue& value, unsigned count) {
    if (value.IsSpecial()) {
        return value.Clone();
    }
    switch (value.GetStoreType()) {
        case StoreType::Array:
            return SampleArray(value, count);
        case StoreType::Table:
            return SampleTable(value, count);
        case StoreType::KeySet:
            return SampleKeySet(value, count);
        default:
            return value.Clone();
    }
}

bool IsNode(const StoreValue& value) {
    return value.GetStoreType() == StoreType::KeyMap && !value.IsSpecial();
}

SV SampleKeyMap(const StoreValue& root, unsigned count) {
    /// A key map on the way from the root, and the samples of its members so far.
    struct Level {
        RInternString name;
        DictionaryCursor<RInternString, SV> rest;
        MemberMap samples;
    };
    std::vector<Level> levels;
    const auto enter = [&levels](const RInternString& name, const StoreValue& keyMap) {
        MemberMap samples;
        samples.Reserve(keyMap.GetCount());
        levels.push_back({name, keyMap.AsKeyMap().GetEntries(), std::move(samples)});
    };
    enter(RInternString(), root);
    while (true) {
        Level& level = levels.back();
        if (!level.rest.IsAtEnd()) {
            const RInternString name = level.rest.GetKey();
            const StoreValue& member = *level.rest.GetValue();
            level.rest.Advance();
            if (IsNode(member)) {
                enter(name, member);
            } else {
                level.samples.Insert(name, SampleLeaf(member, count));
            }
            continue;
        }
        SV sample = factory::MakeKeyMap(std::move(level.samples));
        const RInternString name = level.name;
        levels.pop_back();
        if (levels.empty()) {
            return sample;
        }
        levels.back().samples.Insert(name, std::move(sample));
    }
}

}  // namespace

SV SampleStoreValue(const StoreValue& value, unsigned count) {
    return IsNode(value) ? SampleKeyMap(value, count) : SampleLeaf(value, count);
}

}  // namespace lum::core
