#include "lum/core/types/StringType.h"

#include "core/main/types/Context.h"

namespace lum::core {

const StringType* StringType::Get() {
    return Context::Get().GetDefaultString();
}

const StringType* StringType::Get(const Collation& collation) {
    return Context::Get().GetString(collation);
}

TStringCore StringType::ToString() const {
    return Type::ToString() + L"<" + m_collation.GetLocale().GetValue() + L">";
}

}  // namespace lum::core
