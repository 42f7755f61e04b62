#pragma once

#include <stdexcept>

#include "lum/core/utility/Collation.h"

namespace lum::test {

/// Takes any text for the name of a locale, so that types with collations can be read without a
/// list of locales. Nothing can be compared by it.
class AnyLocalePool final : public core::ICollatorPool {
public:
    const core::ICollator& GetCollator(const core::Collation& /*collation*/) const override {
        throw std::logic_error("nothing is compared here");
    }
    bool Equals(const core::Collation& a, const core::Collation& b) const override {
        return a.GetLocale() == b.GetLocale();
    }
};

}  // namespace lum::test
