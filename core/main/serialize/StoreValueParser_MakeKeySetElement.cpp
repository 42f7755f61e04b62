#include <type_traits>

#include "core/main/serialize/StoreValueParser_MakeKeySetHelper_def.h"

namespace lum::core::StoreValueParser {

template <StorageType V>
V MakeKeySetElement(const Type* type, const JsonItem& item) {
    return DispatchElement(
        type->GetStoreType(), LumError::UnsupportedKeySetElement,
        [&]<StoreType kType>(ElementTag<kType>) -> V {
            if constexpr (std::is_same_v<typename ElementTraits<kType>::Storage, V>) {
                return ElementTraits<kType>::Read(type, item);
            } else {
                LUM_FAIL(LumError::UnsupportedKeySetElement);
            }
        });
}

template unsigned char MakeKeySetElement(const Type*, const JsonItem&);
template unsigned int MakeKeySetElement(const Type*, const JsonItem&);
template unsigned long long MakeKeySetElement(const Type*, const JsonItem&);
template RIndirectString MakeKeySetElement(const Type*, const JsonItem&);
template LumTuple MakeKeySetElement(const Type*, const JsonItem&);
template SV MakeKeySetElement(const Type*, const JsonItem&);

}  // namespace lum::core::StoreValueParser
