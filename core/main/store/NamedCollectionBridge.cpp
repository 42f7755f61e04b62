#include "core/main/store/NamedCollectionBridge.h"

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

}  // namespace lum::core
