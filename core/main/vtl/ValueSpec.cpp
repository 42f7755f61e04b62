#include "lum/core/vtl/ValueSpec.h"

#include <utility>

#include "lum/core/Check.h"
#include "lum/core/store/StoreValue.h"

namespace lum::core {

ValueSpec::ValueSpec(SV value) {
    LUM_CHECK_TEXT("(m_value) != nullptr", value != nullptr, LumError::ValueSpecHoldsKey);
    m_content = std::move(value);
}

ValueSpec::ValueSpec(const KeyPath& path) : m_content(path) {
    LUM_CHECK_NOT(path.IsEmpty(), LumError::ValueSpecHoldsValue);
}

ValueSpec::~ValueSpec() = default;

bool ValueSpec::IsKey() const {
    if (std::holds_alternative<KeyPath>(m_content)) {
        return true;
    }
    LUM_INVARIANT_TEXT("(m_value) != nullptr", std::holds_alternative<SV>(m_content),
                       LumError::Unspecified);
    return false;
}

const SV& ValueSpec::GetValue() const {
    const SV* const value = std::get_if<SV>(&m_content);
    LUM_CHECK_TEXT("(m_value) != nullptr", value != nullptr, LumError::ValueSpecHoldsKey);
    return *value;
}

const KeyPath& ValueSpec::GetKeyPath() const {
    const KeyPath* const path = std::get_if<KeyPath>(&m_content);
    LUM_CHECK_TEXT("(m_keyPath) != nullptr", path != nullptr, LumError::ValueSpecHoldsValue);
    return *path;
}

KeyPath& ValueSpec::GetKeyPath() {
    return const_cast<KeyPath&>(std::as_const(*this).GetKeyPath());
}

}  // namespace lum::core
