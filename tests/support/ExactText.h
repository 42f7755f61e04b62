#pragma once

#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "core/main/serialize/KeySetEntries.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/TupleType.h"

namespace lum::test {

/// All that a payload keeps of a value, as text of no special form: types, the form in memory,
/// statements of order, the bits of numbers, placeholders and kinds. Constant and composite arrays
/// are not spelt out, and so cost no more than they hold. Unordered members come sorted; an array
/// with indices reads like one without, unless it is composite. Header-only, so that fuzz targets
/// can use it.
std::string ExactText(const core::SV& value);

namespace detail {

inline std::string ExactRow(const core::LumTuple& row);

inline std::string Joined(std::vector<std::string> parts, bool sorted) {
    if (sorted) {
        std::sort(parts.begin(), parts.end());
    }
    std::string text = "(";
    for (const std::string& part : parts) {
        text += part + ' ';
    }
    return text + ')';
}

template <core::StorageType T>
std::string ExactStored(const T& stored) {
    if constexpr (std::is_same_v<T, core::SV>) {
        return stored == nullptr ? "null" : ExactText(stored);
    } else if constexpr (std::is_same_v<T, core::LumTuple>) {
        return ExactRow(stored);
    } else if constexpr (std::is_same_v<T, core::RIndirectString>) {
        return '"' + stored.toStdString() + '"';
    } else {
        return std::to_string(stored);
    }
}

inline std::string ExactKind(core::SpecialKind kind) {
    return '!' + std::to_string(static_cast<int>(kind));
}

// Placeholders of rows do not travel.
inline std::string ExactRow(const core::LumTuple& row) {
    std::vector<std::string> parts;
    for (core::lumsize_t i = 0; i < row.GetCount(); ++i) {
        const core::SpecialKind kind = row.GetNthSpecial(i);
        if (kind != core::SpecialKind::Normal) {
            parts.push_back(ExactKind(kind));
            continue;
        }
        core::DispatchStorage(row.GetNthType(i)->GetStoreType(),
                              [&]<typename T>(core::StorageTag<T>) {
                                  if constexpr (!std::is_same_v<T, core::LumTuple>) {
                                      parts.push_back(ExactStored<T>(row.GetNthValueUnsafe<T>(i)));
                                  }
                              });
    }
    return Joined(std::move(parts), /*sorted=*/false);
}

template <core::StorageType T>
std::string ExactArray(const core::StoreValue& value) {
    const core::ITypedArray<T>& array = value.AsTypedArray<T>();
    const core::lumsize_t count = array.GetCount();
    std::string text =
        std::to_string(static_cast<int>(array.GetSortOrder())) + 'x' + std::to_string(count);
    std::vector<std::string> parts;
    if (array.IsConstant()) {
        const bool isSpecial = count != 0 && array.HasSpecialValues();
        // One without elements is any value or kind.
        return "constant " + text +
               (count == 0  ? ""
                : isSpecial ? ExactKind(array.GetSpecialKind(0))
                            : ExactStored<T>(array.GetValue(0)));
    }
    if (array.IsComposite()) {
        for (const auto& range : array.GetCompositeRanges()) {
            parts.push_back(ExactStored<T>(range.value) + ExactKind(range.kind) + '*' +
                            std::to_string(range.count));
        }
        text = "composite " + text + Joined(std::move(parts), /*sorted=*/false);
        if (array.HasIndices()) {
            for (const unsigned int index :
                 dynamic_cast<const core::ArrayWithIndices&>(value).GetIndices()) {
                text += ' ' + std::to_string(index);
            }
        }
        return text;
    }
    for (auto cursor = array.GetAdapterWithSpecials(); !cursor.IsAtEnd(); ++cursor) {
        parts.push_back(ExactStored<T>(*cursor) +
                        (array.HasSpecialValues() ? ExactKind(cursor.GetSpecialKind()) : ""));
    }
    return text + Joined(std::move(parts), /*sorted=*/false) +
           (array.HasSpecialValues() ? "with kinds" : "");
}

template <core::StorageType T>
std::string ExactSet(const core::StoreValue& value) {
    const core::ITypedSet<T>& set = value.AsTypedSet<T>();
    std::vector<std::string> parts;
    for (const auto& member : set.GetValuesCursor()) {
        parts.push_back(ExactStored<T>(member));
    }
    for (const core::SpecialKind kind : set.GetSpecialKinds()) {
        parts.push_back(ExactKind(kind));
    }
    return Joined(std::move(parts), /*sorted=*/true);
}

inline std::string ExactStoredAs(const core::Type& type, const void* stored) {
    return core::DispatchStorage(type.GetStoreType(), [&]<typename T>(core::StorageTag<T>) {
        return ExactStored<T>(*static_cast<const T*>(stored));
    });
}

inline std::string ExactKeySet(const core::StoreValue& value) {
    const auto& type = value.GetType()->As<core::KeySetType>();
    const core::KeySetEntries keySet = core::CollectKeySetEntries(value);
    std::vector<std::string> parts;
    for (const auto& [key, element] : keySet.entries) {
        parts.push_back(ExactStoredAs(*type.GetKeyType(), key) + '=' +
                        ExactStoredAs(*type.GetElementType(), element));
    }
    for (const auto& [kind, element] : keySet.specialEntries) {
        parts.push_back(ExactKind(kind) + '=' + ExactStoredAs(*type.GetElementType(), element));
    }
    return Joined(std::move(parts), /*sorted=*/true);
}

inline std::string ExactMembers(const core::IStoreKeyMap& members) {
    std::vector<std::string> parts;
    for (const auto& [name, member] : members.GetEntries()) {
        parts.push_back(name.GetValue().toStdString() + '=' + ExactText(member));
    }
    return Joined(std::move(parts), /*sorted=*/true);
}

inline std::string ExactContent(const core::SV& value) {
    const auto storageOf = [](const core::Type* type, const auto& function) {
        return core::DispatchStorage(type->GetStoreType(), function);
    };
    switch (value->GetStoreType()) {
        case core::StoreType::External: {
            std::string text = "bytes";
            for (const unsigned char byte : core::SerializeExternalType(value->AsExternal())) {
                text += ' ' + std::to_string(byte);
            }
            return text;
        }
        case core::StoreType::Array:
            return storageOf(
                value->AsArray().GetElementType(),
                [&]<typename T>(core::StorageTag<T>) { return ExactArray<T>(*value); });
        case core::StoreType::Set:
            return storageOf(value->AsSet().GetElementType(),
                             [&]<typename T>(core::StorageTag<T>) { return ExactSet<T>(*value); });
        case core::StoreType::KeySet:
            return ExactKeySet(*value);
        case core::StoreType::KeyMap:
            return ExactMembers(value->AsKeyMap());
        case core::StoreType::Table: {
            std::string text;
            for (const auto& [name, order] : value->AsTable().GetSortColumns()) {
                text += name.GetValue().toStdString() + std::to_string(static_cast<int>(order));
            }
            return text + ExactMembers(value->AsKeyMap());
        }
        default:
            return storageOf(value->GetType(), [&]<typename T>(core::StorageTag<T>) {
                return ExactStored<T>(core::FetchStoreValue<T>(value));
            });
    }
}

}  // namespace detail

inline std::string ExactText(const core::SV& value) {
    // The type of what has members is that of the members, which tell their own.
    const core::StoreType storeType = value->GetStoreType();
    std::string text = std::to_string(static_cast<int>(storeType));
    if (storeType != core::StoreType::KeyMap && storeType != core::StoreType::Table) {
        text += value->GetType()->ToString().toStdString();
    }
    return text + ':' +
           (value->IsSpecial() ? detail::ExactKind(value->GetSpecialKind())
                               : detail::ExactContent(value));
}

}  // namespace lum::test
