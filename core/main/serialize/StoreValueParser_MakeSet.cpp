#include <memory>
#include <unordered_set>
#include <utility>

#include "core/main/serialize/StoreValueParser_Traits.h"
#include "core/main/store/ValueSet.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core::StoreValueParser {
namespace {

void CheckIsArray(const IJsonObject& object) {
    LUM_CHECK_TEXT("(o->IsArray())", object.IsArray(), LumError::JsonArrayExpected);
}

template <StoreType kType>
SV MakeSetOf(const Type* elementType, const IJsonObject& object) {
    using Storage = typename ElementTraits<kType>::Storage;
    auto values = MakeSetContainer<Storage>(elementType, 0);
    auto kinds = std::make_unique<std::unordered_set<SpecialKind>>();
    const auto readValues = [&](const IJsonObject& items) {
        for (const JsonItem& item : items.AsArray()) {
            values->insert(ElementTraits<kType>::Read(elementType, item));
        }
    };
    auto arrayEnumerator = object.AsArray().begin();
    const auto arrayEnd = object.AsArray().end();
    // Rows are arrays themselves, so that sets of them cannot have kinds.
    if (kType == StoreType::Tuple || arrayEnumerator == arrayEnd ||
        (*arrayEnumerator)->IsPrimitive()) {
        readValues(object);
    } else {
        CheckIsArray(**arrayEnumerator);
        readValues(**arrayEnumerator);
        ++arrayEnumerator;
        LUM_CHECK_NOT(arrayEnumerator == arrayEnd, LumError::NestedSpecialsExpected);
        const JsonItem specials = *arrayEnumerator;  // The loop needs it to stay.
        CheckIsArray(*specials);
        for (const JsonItem& item : specials->AsArray()) {
            kinds->insert(ReadSpecialKind(*item));
        }
        ++arrayEnumerator;
        LUM_CHECK(arrayEnumerator == arrayEnd, LumError::UnexpectedSetContent);
    }
    return factory::MakeSet<Storage>(elementType, std::move(values), std::move(kinds));
}

}  // namespace

SV MakeSet(const Type* type, const IJsonObject& object) {
    CheckIsArray(object);
    const Type* const elementType = type->As<SetType>().GetElementType();
    return DispatchElement(elementType->GetStoreType(), LumError::UnsupportedSetElement,
                           [&]<StoreType kType>(ElementTag<kType>) -> SV {
                               if constexpr (kType == StoreType::Array) {
                                   LUM_FAIL(LumError::UnsupportedSetElement);
                               } else {
                                   return MakeSetOf<kType>(elementType, object);
                               }
                           });
}

}  // namespace lum::core::StoreValueParser
