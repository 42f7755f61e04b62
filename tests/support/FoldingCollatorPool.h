#pragma once

#include <memory>
#include <string>
#include <utility>

#include "lum/core/utility/Collation.h"

namespace lum::test {

/// A collator that takes ASCII letters of either case for one, and answers with differences of any
/// size, as those of real locales do.
class FoldingCollator final : public core::ICollator {
public:
    const core::Collation& GetCollation() const override { return m_collation; }
    int Compare(const core::RIndirectString& a, const core::RIndirectString& b) const override {
        return 5 * Fold(a).compare(Fold(b));
    }
    core::uint64 Hash(const core::RIndirectString& text) const override {
        return Fold(text).hash();
    }

private:
    static core::TStringCore Fold(const core::RIndirectString& text) {
        std::u16string units(text->view());
        for (char16_t& unit : units) {
            unit = unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
        }
        return core::TStringCore(units);
    }

    const core::Collation m_collation{core::RInternString(L"fold")};
};

/// Knows the default collation, by way of the library's own pool, and "fold".
class FoldingCollatorPool final : public core::ICollatorPool {
public:
    FoldingCollatorPool() {
        std::shared_ptr<core::ICollatorPool> former = core::SetCollatorPool(nullptr);
        core::RegisterDefaultCollatorPool();
        m_default = core::SetCollatorPool(std::move(former));
    }

    const core::ICollator& GetCollator(const core::Collation& collation) const override {
        return collation.GetLocale() == L"fold" ? m_folding : m_default->GetCollator(collation);
    }
    bool Equals(const core::Collation& a, const core::Collation& b) const override {
        return m_default->Equals(a, b);
    }

private:
    FoldingCollator m_folding;
    std::shared_ptr<core::ICollatorPool> m_default;
};

}  // namespace lum::test
