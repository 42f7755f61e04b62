#include <utility>

#include "lum/core/Check.h"
#include "lum/core/utility/Collation.h"

namespace lum::core {
namespace {

const RInternString& RootLocale() {
    static const RInternString s_root(L"ROOT");
    return s_root;
}

/// Case-sensitive order by code unit.
class DefaultCollator final : public ICollator {
public:
    const Collation& GetCollation() const override { return m_collation; }
    int Compare(const RIndirectString& a, const RIndirectString& b) const override {
        return TStringCore::compare(a, b, CaseSensitivity::Sensitive);
    }
    uint64 Hash(const RIndirectString& text) const override { return text.GetRString().hash(); }
    bool IsExact() const override { return true; }

private:
    const Collation m_collation;
};

class DefaultCollatorPool final : public ICollatorPool {
public:
    const ICollator& GetCollator(const Collation& collation) const override {
        LUM_CHECK_TEXT("(c == Collation::DefaultCollation)", Equals(collation, m_default),
                       LumError::InvalidCollation);
        // Sets keep a pointer to their collator, and may outlive this pool.
        static const auto& s_collator = *new DefaultCollator;
        return s_collator;
    }
    bool Equals(const Collation& a, const Collation& b) const override {
        return a.GetLocale() == b.GetLocale();
    }

private:
    const Collation m_default;
};

std::shared_ptr<ICollatorPool>& PoolHolder() {
    static std::shared_ptr<ICollatorPool> g_collatorPool;
    return g_collatorPool;
}

}  // namespace

const Collation Collation::DefaultCollation;

Collation::Collation() : m_locale(RootLocale()) {}

bool Collation::IsDefault() const noexcept {
    return m_locale == RootLocale();
}

const ICollator& Collation::GetCollator() const {
    return GetCollatorPool().GetCollator(*this);
}

bool operator==(const Collation& a, const Collation& b) {
    return GetCollatorPool().Equals(a, b);
}

ICollator::~ICollator() = default;
ICollatorPool::~ICollatorPool() = default;

ICollatorPool& GetCollatorPool() {
    const std::shared_ptr<ICollatorPool>& pool = PoolHolder();
    LUM_CHECK_TEXT("(g_collatorPool) != nullptr", pool != nullptr, LumError::NoCollatorPool);
    return *pool;
}

void RegisterDefaultCollatorPool() {
    SetCollatorPool(std::make_shared<DefaultCollatorPool>());
}

std::shared_ptr<ICollatorPool> SetCollatorPool(std::shared_ptr<ICollatorPool>&& pool) {
    return std::exchange(PoolHolder(), std::move(pool));
}

}  // namespace lum::core
