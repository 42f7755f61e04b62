#include "core/main/store/NamedCollectionBridge.h"

#include "core/main/utility/StandardErrors.h"
#include "lum/core/Check.h"
#include "lum/core/types/StringType.h"

namespace lum::core {

const Type* KeyMapBridge::GetKeyType() const {
    return StringType::Get();
}

lumsize_t KeyMapBridge::GetSpecialKeyCount() const {
    LUM_FAIL(LumError::SpecialKeysNotSupported);
}

const SV& KeyMapBridge::GetValueForSpecialKey(SpecialKind /*kind*/) const {
    LUM_FAIL(LumError::SpecialKeysNotSupported);
}

DictionaryCursor<SpecialKind, SV> KeyMapBridge::GetSpecialEntries() const {
    LUM_FAIL(LumError::SpecialKeysNotSupported);
}

const SV& KeyMapBridge::EntryOf(const MemberMap& members, const RInternString& key) {
    const SV* const entry = members.Find(key);
    if (entry == nullptr) {
        ThrowInvalidMapKey();
    }
    return *entry;
}

}  // namespace lum::core
