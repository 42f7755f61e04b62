#include <type_traits>

#include "core/main/serialize/StoreValueParser_MakeKeySetHelper_def.h"

namespace lum::core::StoreValueParser {

extern template SV MakeKeySetOver<unsigned char>(const KeySetType&, const IJsonObject&);
extern template SV MakeKeySetOver<unsigned int>(const KeySetType&, const IJsonObject&);
extern template SV MakeKeySetOver<unsigned long long>(const KeySetType&, const IJsonObject&);
extern template SV MakeKeySetOver<RIndirectString>(const KeySetType&, const IJsonObject&);
extern template SV MakeKeySetOver<LumTuple>(const KeySetType&, const IJsonObject&);

SV MakeKeySet(const Type* type, const IJsonObject& object) {
    LUM_CHECK_TEXT("(obj->IsDictionary() || obj->IsArray())",
                   object.IsDictionary() || object.IsArray(), LumError::KeySetNeedsContainer);
    const auto& keySetType = type->As<KeySetType>();
    return DispatchStorage(keySetType.GetKeyType()->GetStoreType(),
                           [&]<typename K>(StorageTag<K>) -> SV {
                               if constexpr (std::is_same_v<K, SV>) {
                                   LUM_FAIL(LumError::UnsupportedKeySetElement);
                               } else {
                                   return MakeKeySetOver<K>(keySetType, object);
                               }
                           });
}

}  // namespace lum::core::StoreValueParser
