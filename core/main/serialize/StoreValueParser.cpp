#include "lum/core/serialize/StoreValueParser.h"

#include <memory>
#include <utility>

#include "core/main/serialize/KeyPathParser.h"
#include "core/main/serialize/StoreValueParser_Traits.h"
#include "core/main/serialize/VtlScanner.h"
#include "lum/core/Check.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/TableFactory.h"

namespace lum::core::StoreValueParser {
namespace {

// A key with its type.
KeySegment ReadTypedKey(const TStringCore& text) {
    VtlScanner scanner(text);
    KeySegment key = ReadKeySegment(scanner, TypeColon::AnywhereBehindName);
    if (!scanner.PeekIs(VtlTokenKind::End)) {
        LUM_FAIL(LumError::UnexpectedToken, text);
    }
    const Type* const type = key.GetType();
    LUM_CHECK_NOT_NULL(type, LumError::KeyPathLacksType);
    return key;
}

// `makeValue` gives the value of a type and an item. Of two keys with the same name, as "a:i" and
// "'a':i", the first counts.
template <typename MakeValue>
MemberMap ReadMembers(const IJsonObject& object, MakeValue makeValue) {
    LUM_CHECK_TEXT("(o->IsDictionary())", object.IsDictionary(), LumError::KeyMapNeedsDictionary);
    MemberMap members;
    for (const auto& [text, item] : object.AsDictionary()) {
        const KeySegment key = ReadTypedKey(text);
        members.Insert(key.GetSegment(), makeValue(key.GetType(), item));
    }
    return members;
}

}  // namespace

std::shared_ptr<IDataStore> MakeDataStore(const TStringCore& json) {
    return factory::MakeDataStore(MakeKeyMap(json));
}

SV MakeKeyMap(const TStringCore& json) {
    return MakeKeyMap(*GetRootJsonObject(json));
}

SV MakeKeyMap(const IJsonObject& object) {
    return factory::MakeKeyMap(ReadMembers(object, MakeStoreValueFromJsonObject));
}

SV MakeTable(const IJsonObject& object) {
    return factory::MakeTable(
        ReadMembers(object,
                    [](const Type* type, const JsonItem& item) {
                        LUM_CHECK_TEXT("(StoreType::Array == type->GetStoreType())",
                                       type->Is(StoreType::Array), LumError::TableValueNotArray);
                        return MakeArray(type, *item);
                    }),
        nullptr);
}

}  // namespace lum::core::StoreValueParser
