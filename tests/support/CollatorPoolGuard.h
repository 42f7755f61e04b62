#pragma once

#include <memory>
#include <utility>

#include "lum/core/utility/Collation.h"

namespace lum::test {

/// Replaces the collator pool of the process for the length of a scope: by the default pool, or by
/// the one given, which may be empty. Pools are no concern of running threads, so neither is this.
class CollatorPoolGuard {
public:
    CollatorPoolGuard() : m_former(core::SetCollatorPool(nullptr)) {
        core::RegisterDefaultCollatorPool();
    }
    explicit CollatorPoolGuard(std::shared_ptr<core::ICollatorPool> pool)
        : m_former(core::SetCollatorPool(std::move(pool))) {}
    ~CollatorPoolGuard() { core::SetCollatorPool(std::move(m_former)); }
    CollatorPoolGuard(const CollatorPoolGuard&) = delete;
    CollatorPoolGuard& operator=(const CollatorPoolGuard&) = delete;

private:
    std::shared_ptr<core::ICollatorPool> m_former;
};

}  // namespace lum::test
