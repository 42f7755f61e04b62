#pragma once

#include "lum/core/Export.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/ExternalType.h"

namespace lum::core {

/// The base of values of the host's own kinds, the one class of values that a host derives from. It
/// implements Clone, and what else its kind supports: comparing and casting fail, and the hash is
/// 0, unless it overrides them.
///
/// Threads: a value is immutable once it was handed out.
/// Errors: the constructor's are those of GetExternalTypeId, for a name that is not registered.
class LUM_CORE_API ValueExternal : public StoreValue {
public:
    explicit ValueExternal(const TStringCore& typeName) : m_type(ExternalType::Get(typeName)) {}

    const ExternalType* GetType() const override { return m_type; }
    lumsize_t GetCount() const override { return 1; }
    const ValueExternal& AsExternal() const override { return *this; }

private:
    const ExternalType* m_type;
};

}  // namespace lum::core
