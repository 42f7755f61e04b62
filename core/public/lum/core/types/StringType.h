#pragma once

#include "lum/core/types/Type.h"
#include "lum/core/utility/Collation.h"

namespace lum::core {

/// The type of strings under one collation. See Type for threads and ownership.
///
/// Errors: asking for the type of a collation other than the default one needs a collator pool, and
/// fails with NoCollatorPool without.
class LUM_CORE_API StringType final : public Type {
public:
    /// The strings of the default collation; needs no pool.
    static const StringType* Get();
    static const StringType* Get(const Collation& collation);

    const Collation& GetCollation() const noexcept { return m_collation; }
    /// The strings of the default collation.
    const Type* GetBaseType() const override { return Get(); }
    /// For instance "s<ROOT>".
    TStringCore ToString() const override;

private:
    friend class Context;
    explicit StringType(const Collation& collation)
        : Type(StoreType::String), m_collation(collation) {}

    const Collation m_collation;
};

}  // namespace lum::core
