#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/TupleType.h"
#include "lum/core/utility/Collation.h"
#include "tests/support/AnyLocalePool.h"

/// What the targets that read key paths and types share: their input as text, the kinds and locales
/// of a host, and which names and types read back from their own text.
namespace lumfuzz {

using namespace lum::core;  // NOLINT(google-build-using-namespace): only targets include this.

/// The text of UTF-8, or of UTF-16 behind a byte order mark, which can spell broken surrogate
/// pairs.
inline TStringCore MakeText(const std::uint8_t* data, std::size_t size) {
    if (size < 2 || data[0] != 0xFF || data[1] != 0xFE) {
        return TStringCore::fromUtf8(reinterpret_cast<const char*>(data), size);
    }
    TStringCore text;
    for (std::size_t i = 2; i + 1 < size; i += 2) {
        text += static_cast<char16_t>(data[i] | data[i + 1] << 8);
    }
    return text;
}

inline constexpr unsigned short kWordId = 1;
inline constexpr unsigned short kNoWordId = 2;

inline void Register(unsigned short typeId, const TStringCore& name) {
    RegisterExternalType(
        typeId, name, [](const ValueExternal&) { return std::vector<unsigned char>(); },
        [](const ArrayView<const unsigned char>&) { return nullptr; });
}

/// Once, before anything is parsed.
inline bool SetUp() {
    SetCollatorPool(std::make_shared<lum::test::AnyLocalePool>());
    Register(kWordId, L"ext");
    Register(kNoWordId, L"no word");
    return true;
}

/// Whether a name, a type, all the names and all the types of a path read back from their text.
inline bool ReadsBack(const TStringCore& name) {
    const bool isNumber = std::all_of(name.begin(), name.end(),
                                      [](char16_t unit) { return unit >= u'0' && unit <= u'9'; });
    return !name.isEmpty() && !(isNumber && name.length() > 1 && name[0] == u'0');
}

inline bool ReadsBack(const Type& type) {
    if (const auto* real = type.TryAs<RealType>()) {
        return real == real->GetBaseType() || (real->GetPrecision() >= 0 && real->GetScale() >= 0);
    }
    if (const auto* external = type.TryAs<ExternalType>()) {
        return external->GetExternalTypeId() == kWordId;
    }
    if (const auto* keySet = type.TryAs<KeySetType>()) {
        return ReadsBack(*keySet->GetKeyType()) && ReadsBack(*keySet->GetElementType());
    }
    if (const auto* collection = type.TryAs<CollectionType>()) {
        return ReadsBack(*collection->GetElementType());
    }
    if (const auto* tuple = type.TryAs<TupleType>()) {
        return std::all_of(tuple->GetMembers().begin(), tuple->GetMembers().end(),
                           [](const Type* member) { return ReadsBack(*member); });
    }
    if (const auto* named = type.TryAs<NamedHeterogeneousType>()) {
        return std::all_of(named->GetMembers().begin(), named->GetMembers().end(),
                           [](const NamedHeterogeneousType::Member& member) {
                               return ReadsBack(member.GetName().GetValue()) &&
                                      ReadsBack(*member.GetType());
                           });
    }
    return true;
}

inline bool NamesReadBack(const KeyPath& path) {
    return std::all_of(
        path.GetSegments().begin(), path.GetSegments().end(),
        [](const KeySegment& segment) { return ReadsBack(segment.GetSegment().GetValue()); });
}

inline bool TypesReadBack(const KeyPath& path) {
    return std::all_of(path.GetSegments().begin(), path.GetSegments().end(),
                       [](const KeySegment& segment) {
                           return !segment.HasType() || ReadsBack(*segment.GetType());
                       });
}

}  // namespace lumfuzz
