#include "core/main/store/ScalarValue.h"
#include "lum/core/Check.h"
#include "lum/core/store/ValueFactory.h"

namespace lum::core {
namespace {

/// A special kind as a value of its own, standing where a value of its type would stand.
class ValueSpecial final : public ScalarValue<ValueSpecial> {
public:
    ValueSpecial(const Type* type, SpecialKind kind) : m_type(type), m_specialKind(kind) {
        LUM_CHECK_NE(m_specialKind, SpecialKind::Normal, LumError::NormalBoxedSpecial);
    }

    SpecialKind GetSpecialKind() const override { return m_specialKind; }
    const Type* GetType() const override { return m_type; }
    uint64 GetHashValue() const override { return std::hash<SpecialKind>()(m_specialKind); }
    std::unique_ptr<StoreValue> Cast(const Type* type) const override {
        return std::make_unique<ValueSpecial>(type, m_specialKind);
    }

protected:
    int CompareImpl(const StoreValue& other) const override {
        LUM_CHECK(GetType()->GetBaseType() == other.GetType()->GetBaseType(),
                  LumError::TypeMismatch);
        const auto kind = static_cast<unsigned char>(m_specialKind);
        const auto otherKind = static_cast<unsigned char>(other.GetSpecialKind());
        return kind < otherKind ? -1 : kind > otherKind ? 1 : 0;
    }

private:
    const Type* m_type;
    SpecialKind m_specialKind;
};

}  // namespace

SV factory::MakeSpecial(const Type* type, SpecialKind kind) {
    return std::make_shared<ValueSpecial>(type, kind);
}

}  // namespace lum::core
