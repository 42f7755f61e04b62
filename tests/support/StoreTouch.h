#pragma once

#include <algorithm>
#include <type_traits>
#include <vector>

#include "core/main/serialize/KeySetEntries.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/utility/LumException.h"

namespace lum::test {

/// Reads all that a value has by every way that there is: elements one by one, along cursors, boxed
/// and in blocks, kinds, hashes, comparisons, clones, ranges, sets, JSON text. What is refused with
/// a code is fine; for whatever else goes wrong there are the sanitizers. Of arrays that are larger
/// than the payload that they came from, only the ends are read. Header-only, so that fuzz targets
/// can use it.
class StoreTouch {
public:
    void Touch(const core::SV& value) {
        TouchContent(*value);
        if (m_elementCount <= kMostSpelt) {
            Attempt([&] { Add(core::SerializeValue(*value).length()); });
        }
        Attempt([&] { Add(value->Clone()->GetCount()); });
        Attempt([&] { Add(value->GetType()->GetStoreType()); });
    }

private:
    static constexpr core::lumsize_t kMostWalked = 4096;
    static constexpr core::uint64 kMostSpelt = 10'000;
    // Each level of nested arrays reads the one below it several times.
    static constexpr core::uint64 kMostContents = 4096;

    template <typename F>
    static void Attempt(const F& function) {
        try {
            function();
        } catch (const core::LumException&) {
        }
    }

    template <typename T>
    void Add(const T& value) {
        m_sum = m_sum + static_cast<core::uint64>(value);
    }
    template <core::StorageType T>
    void AddStored(const T& stored) {
        if constexpr (std::is_same_v<T, core::SV>) {
            if (stored != nullptr) {
                TouchContent(*stored);
            }
        } else if constexpr (std::is_same_v<T, core::LumTuple>) {
            Attempt([&] { Add(stored.GetHashValue()); });
            Attempt([&] { Add(stored.Compare(core::LumTuple(stored))); });
        } else if constexpr (std::is_same_v<T, core::RIndirectString>) {
            Add(stored->hash());
        } else {
            Add(stored);
        }
    }

    void TouchScalar(const core::StoreValue& value) {
        Attempt([&] { Add(value.GetHashValue()); });
        Attempt([&] { Add(value.Compare(*value.Clone())); });
        Attempt([&] { Add(value.FuzzyIsEqual(value)); });
    }

    void TouchContent(const core::StoreValue& value) {
        if (++m_contentCount > kMostContents) {
            return;
        }
        Add(value.GetCount());
        if (value.IsSpecial()) {
            return TouchScalar(value);
        }
        switch (value.GetStoreType()) {
            case core::StoreType::Array:
                return core::DispatchStorage(
                    value.AsArray().GetElementType()->GetStoreType(),
                    [&]<typename T>(core::StorageTag<T>) { TouchArray<T>(value); });
            case core::StoreType::Set:
                return core::DispatchStorage(
                    value.AsSet().GetElementType()->GetStoreType(),
                    [&]<typename T>(core::StorageTag<T>) { TouchSet(value.AsTypedSet<T>()); });
            case core::StoreType::KeySet:
                return TouchKeySet(value);
            case core::StoreType::KeyMap:
            case core::StoreType::Table:
                for (const auto& [name, member] : value.AsKeyMap().GetEntries()) {
                    TouchContent(*member);
                }
                return;
            default:
                return TouchScalar(value);
        }
    }

    void TouchBoxed(const core::IUniformCollection& values) {
        const auto& iterable = values.GetStoreValueIterable();
        for (auto it = iterable.begin()->Clone(); *it != iterable.end(); it->Advance()) {
            Attempt([&] { Add(it->Dereference()->GetHashValue()); });
        }
    }

    template <core::StorageType T>
    void TouchArray(const core::StoreValue& value) {
        const core::ITypedArray<T>& array = value.AsTypedArray<T>();
        const core::lumsize_t count = array.GetCount();
        m_elementCount += count;
        const core::lumsize_t ends = std::min<core::lumsize_t>(count, 4);
        for (core::lumsize_t i = 0; i < ends; ++i) {
            TouchElement(array, i);
            TouchElement(array, count - 1 - i);
        }
        if (count <= kMostWalked) {
            for (auto cursor = array.GetAdapterWithSpecials(); !cursor.IsAtEnd(); ++cursor) {
                AddStored<T>(*cursor);
                Add(cursor.GetSpecialKind());
            }
            TouchBoxed(array);
            std::vector<T> values(count);
            std::vector<core::SpecialKind> kinds(count);
            array.CopyValues({values.data(), values.size()}, 0, count);
            array.CopySpecials({kinds.data(), kinds.size()}, 0, count);
            Attempt([&] { Add(array.ToSet(/*includeSpecials=*/true)->GetCount()); });
            Attempt([&] { Add(array.GetRange(count / 3, count, 2)->GetCount()); });
            Attempt([&] { Add(array.Materialize()->GetCount()); });
        }
        if (count != 0) {
            core::TemporaryRawData scratch;
            Attempt([&] { Add(array.GetValuesView(scratch, count - ends, ends).GetSize()); });
            Attempt([&] { Add(array.ElementsEqual(0, count - 1)); });
            Attempt([&] { Add(array.FindRunEnd(count - ends)); });
        }
    }

    template <core::StorageType T>
    void TouchElement(const core::ITypedArray<T>& array, core::lumsize_t index) {
        AddStored<T>(array.GetValue(index));
        Add(array.GetSpecialKind(index));
        Attempt([&] { Add(array.GetElement(index)->GetCount()); });
    }

    template <core::StorageType T>
    void TouchSet(const core::ITypedSet<T>& set) {
        for (const auto& member : set.GetValuesCursor()) {
            AddStored<T>(member);
            Attempt([&] { Add(set.Contains(member)); });
        }
        TouchBoxed(set);
        Attempt([&] { Add(set.ToArray(/*includeSpecials=*/true)->GetCount()); });
    }

    void TouchKeySet(const core::StoreValue& value) {
        const auto& type = value.GetType()->As<core::KeySetType>();
        const auto addStored = [this](const core::Type& storedType, const void* stored) {
            core::DispatchStorage(storedType.GetStoreType(), [&]<typename T>(core::StorageTag<T>) {
                AddStored<T>(*static_cast<const T*>(stored));
            });
        };
        const core::KeySetEntries keySet = core::CollectKeySetEntries(value);
        for (const auto& [key, element] : keySet.entries) {
            addStored(*type.GetKeyType(), key);
            addStored(*type.GetElementType(), element);
        }
        for (const auto& [kind, element] : keySet.specialEntries) {
            addStored(*type.GetElementType(), element);
        }
        TouchBoxed(value.AsUniformCollection());
    }

    core::uint64 m_elementCount = 0;  // Of arrays, as text would spell them.
    core::uint64 m_contentCount = 0;
    volatile core::uint64 m_sum = 0;  // Nothing that was read is left out.
};

}  // namespace lum::test
