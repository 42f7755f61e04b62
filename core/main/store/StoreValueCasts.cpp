// The casts of a value to its typed interfaces.
#include "lum/core/Check.h"
#include "lum/core/store/IStoreDictionary.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"

namespace lum::core {
namespace {

template <typename Interface>
const Interface& CastTo(const StoreValue& value, LumError error) {
    const auto* const p = dynamic_cast<const Interface*>(&value);
    LUM_CHECK_NOT_NULL(p, error);
    return *p;
}

}  // namespace

template <StorageType T>
const ITypedArray<T>& detail::CastToTypedArray(const StoreValue& value) {
    const IStoreArray* const array = value.FindArray();
    LUM_CHECK_TEXT("(p) != nullptr", array != nullptr && array->GetStorageKind() == kStorageKind<T>,
                   LumError::NotTypedArray);
    return static_cast<const ITypedArray<T>&>(*array);
}

template <StorageType T>
const ITypedSet<T>& detail::CastToTypedSet(const StoreValue& value) {
    return CastTo<ITypedSet<T>>(value, LumError::NotTypedSet);
}

template <StorageType K, StorageType V>
const IStoreDictionary<K, V>& detail::CastToDictionary(const StoreValue& value) {
    return CastTo<IStoreDictionary<K, V>>(value, LumError::NotKeyedCollection);
}

#define LUM_INSTANTIATE_DICTIONARY_CAST(K, V)                                           \
    template LUM_CORE_API const IStoreDictionary<K, V>& detail::CastToDictionary<K, V>( \
        const StoreValue&);
#define LUM_INSTANTIATE_CASTS(T)                                                                \
    template LUM_CORE_API const ITypedArray<T>& detail::CastToTypedArray<T>(const StoreValue&); \
    template LUM_CORE_API const ITypedSet<T>& detail::CastToTypedSet<T>(const StoreValue&);     \
    LUM_INSTANTIATE_DICTIONARY_CAST(T, unsigned char)                                           \
    LUM_INSTANTIATE_DICTIONARY_CAST(T, unsigned int)                                            \
    LUM_INSTANTIATE_DICTIONARY_CAST(T, unsigned long long)                                      \
    LUM_INSTANTIATE_DICTIONARY_CAST(T, RIndirectString)                                         \
    LUM_INSTANTIATE_DICTIONARY_CAST(T, LumTuple)                                                \
    LUM_INSTANTIATE_DICTIONARY_CAST(T, SV)

LUM_FOR_EACH_STORAGE_TYPE(LUM_INSTANTIATE_CASTS)

}  // namespace lum::core
