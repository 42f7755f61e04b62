#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "core/main/serialize/StoreValueParser_Traits.h"
#include "lum/core/serialize/SpecialKindUtil.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core::StoreValueParser {
namespace {

bool IsSpecialKindName(const TStringCore& text) {
    return std::find(std::begin(kSpecialKindNames), std::end(kSpecialKindNames), text.view()) !=
           std::end(kSpecialKindNames);
}

// An item where collections are due: most are collections themselves, and only what could not be
// one of any use is taken for the pair of a special element.
bool IsPairOfCollection(const IJsonObject& object) {
    if (!object.IsArray()) {
        return false;
    }
    lumsize_t count = 0;
    for (const JsonItem& item : object.AsArray()) {
        const bool fits =
            count == 0 ? !item->IsPrimitive()
                       : count == 1 && item->IsString() && IsSpecialKindName(item->AsString());
        if (!fits) {
            return false;
        }
        ++count;
    }
    return count == 2;
}

template <StoreType kType>
bool IsPair(const IJsonObject& object) {
    if constexpr (kType == StoreType::Tuple) {
        return false;
    } else if constexpr (kType == StoreType::Array) {
        LUM_CHECK_NOT(IsPairOfCollection(object), LumError::CollectionArraySpecials);
        return false;
    } else {
        return !object.IsPrimitive();
    }
}

// The placeholder of a special element; `kind` is what it is.
template <StoreType kType>
auto ReadPair(const Type* elementType, const IJsonObject& pair, SpecialKind& kind) {
    LUM_CHECK_TEXT("(v->IsArray())", pair.IsArray(), LumError::ArrayContentExpected);
    auto subArray = pair.AsArray().begin();
    const auto subArrayEnd = pair.AsArray().end();
    LUM_CHECK_NOT(subArray == subArrayEnd, LumError::SpecialPairEmpty);
    auto value = ElementTraits<kType>::Read(elementType, *subArray);
    ++subArray;
    LUM_CHECK_NOT(subArray == subArrayEnd, LumError::SpecialPairShort);
    kind = ReadSpecialKind(**subArray);
    ++subArray;
    LUM_CHECK(subArray == subArrayEnd, LumError::SpecialPairLong);
    return value;
}

template <StoreType kType>
SV MakeArrayOf(const Type* elementType, const IJsonObject& object) {
    using Storage = typename ElementTraits<kType>::Storage;
    auto values = std::make_unique<std::vector<Storage>>();
    std::unique_ptr<std::vector<SpecialKind>> kinds;  // From the first pair on.
    values->reserve(object.AsArray().GetCount());
    for (const JsonItem& item : object.AsArray()) {
        if (IsPair<kType>(*item)) {
            SpecialKind kind = SpecialKind::Normal;
            Storage placeholder = ReadPair<kType>(elementType, *item, kind);
            if (kinds == nullptr) {
                kinds = std::make_unique<std::vector<SpecialKind>>(values->size());
            }
            values->push_back(std::move(placeholder));
            kinds->push_back(kind);
        } else {
            values->push_back(ElementTraits<kType>::Read(elementType, item));
            if (kinds != nullptr) {
                kinds->push_back(SpecialKind::Normal);
            }
        }
    }
    return factory::MakeArray<Storage>(elementType, std::move(values), nullptr, std::move(kinds),
                                       SortSpecOrder::UNKNOWN);
}

}  // namespace

SV MakeArray(const Type* type, const IJsonObject& object) {
    LUM_CHECK_TEXT("(o->IsArray())", object.IsArray(), LumError::JsonArrayExpected);
    const Type* const elementType = type->As<ArrayType>().GetElementType();
    return DispatchElement(elementType->GetStoreType(), LumError::UnsupportedArrayElement,
                           [&]<StoreType kType>(ElementTag<kType>) {
                               return MakeArrayOf<kType>(elementType, object);
                           });
}

}  // namespace lum::core::StoreValueParser
