#include "lum/core/vtl/ValueSpec.h"

#include <utility>

#include "lum/core/Check.h"
#include "lum/core/store/StoreValue.h"

namespace lum::core {

ValueSpec::ValueSpec(SV value) : m_value(std::move(value)) {
    LUM_CHECK_NOT_NULL(m_value, LumError::ValueSpecHoldsKey);
}

ValueSpec::ValueSpec(const KeyPath& path) {
    LUM_CHECK_NOT(path.IsEmpty(), LumError::ValueSpecHoldsValue);
    m_keyPath = std::make_unique<KeyPath>(path);
}

ValueSpec::ValueSpec(const ValueSpec& other)
    : m_value(other.m_value),
      m_keyPath(other.m_keyPath ? std::make_unique<KeyPath>(*other.m_keyPath) : nullptr) {}

ValueSpec& ValueSpec::operator=(const ValueSpec& other) {
    return *this = ValueSpec(other);
}

ValueSpec::~ValueSpec() = default;

bool ValueSpec::IsKey() const {
    if (m_keyPath) {
        return true;
    }
    LUM_INVARIANT_NOT_NULL(m_value, LumError::Unspecified);
    return false;
}

const SV& ValueSpec::GetValue() const {
    LUM_CHECK_NOT_NULL(m_value, LumError::ValueSpecHoldsKey);
    return m_value;
}

const KeyPath& ValueSpec::GetKeyPath() const {
    LUM_CHECK_NOT_NULL(m_keyPath, LumError::ValueSpecHoldsValue);
    return *m_keyPath;
}

KeyPath& ValueSpec::GetKeyPath() {
    LUM_CHECK_NOT_NULL(m_keyPath, LumError::ValueSpecHoldsValue);
    return *m_keyPath;
}

}  // namespace lum::core
