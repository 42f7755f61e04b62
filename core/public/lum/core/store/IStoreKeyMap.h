#pragma once

#include "lum/core/Export.h"
#include "lum/core/store/IStoreDictionary.h"
#include "lum/core/store/StoreValueFwd.h"

namespace lum::core {

/// A collection of values under names: a key map, or a table seen as one. It has no special keys.
/// Errors: SpecialKeysNotSupported where a special key is asked for.
class LUM_CORE_API IStoreKeyMap : public IStoreDictionary<RInternString, SV> {
public:
    /// The KeyMapType, or the TableType of a table.
    virtual const Type* GetType() const = 0;
};

}  // namespace lum::core
