#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "lum/core/Export.h"
#include "lum/core/utility/RIndirectString.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

class ICollator;

/// The name of a locale by which strings are ordered and hashed. What it means is told by the
/// collator pool that the host installs, and a pool must be installed before the first comparison
/// or hash of string values.
///
/// Threads: a plain value. Ownership: holds a name.
/// Errors: whatever asks the pool fails with NoCollatorPool where none is installed, and with what
///   the pool itself raises.
class LUM_CORE_API Collation {
public:
    /// The default collation, "ROOT".
    static const Collation DefaultCollation;

    Collation();
    explicit Collation(const RInternString& locale) : m_locale(locale) {}

    const RInternString& GetLocale() const noexcept { return m_locale; }
    /// Whether the locale is that of the default collation; asks no pool.
    bool IsDefault() const noexcept;
    /// The current pool's collator for this collation.
    const ICollator& GetCollator() const;

    /// Asks the current pool whether the two collations are one.
    friend LUM_CORE_API bool operator==(const Collation& a, const Collation& b);

private:
    RInternString m_locale;
};

/// Orders and hashes strings by one collation.
///
/// Threads: implementations answer on any threads at once.
/// Ownership: belongs to its pool.
/// Errors: the implementation's own.
class LUM_CORE_API ICollator {
public:
    virtual ~ICollator();
    virtual const Collation& GetCollation() const = 0;
    /// Negative, 0 or positive.
    virtual int Compare(const RIndirectString& a, const RIndirectString& b) const = 0;
    /// Strings that compare equal hash equal.
    virtual uint64 Hash(const RIndirectString& text) const = 0;
    /// Whether only strings of the same code units compare equal. Sets of strings are then free to
    /// find their members without Compare and Hash.
    virtual bool IsExact() const { return false; }
};

/// Finds the collator of a collation.
///
/// Threads: implementations answer on any threads at once.
/// Ownership: a collator that it handed out stays good while any value or container that was made
///   under it lives, also after another pool was installed: that is the host's duty.
/// Errors: the implementation's own, for a collation that it does not know.
class LUM_CORE_API ICollatorPool {
public:
    virtual ~ICollatorPool();
    virtual const ICollator& GetCollator(const Collation& collation) const = 0;
    virtual bool Equals(const Collation& a, const Collation& b) const = 0;
};

/// The installed pool. Errors: NoCollatorPool.
LUM_CORE_API ICollatorPool& GetCollatorPool();
/// Installs a pool that knows the default collation alone: strings order and hash by code unit, and
/// any other collation fails with InvalidCollation. A start-up operation.
LUM_CORE_API void RegisterDefaultCollatorPool();
/// Installs `pool`, which may be empty, and gives back the one before it. A start-up operation: not
/// synchronised with threads that use strings.
LUM_CORE_API std::shared_ptr<ICollatorPool> SetCollatorPool(std::shared_ptr<ICollatorPool>&& pool);

/// Equality of strings under a collation, for the standard containers.
class LUM_CORE_API CollatorEqualTo {
public:
    /// Looks the collator up in the current pool, once.
    CollatorEqualTo() : CollatorEqualTo(Collation()) {}
    explicit CollatorEqualTo(const Collation& collation) : m_collator(&collation.GetCollator()) {}

    const Collation& GetCollation() const { return m_collator->GetCollation(); }
    /// That of the collator.
    bool IsExact() const { return m_collator->IsExact(); }
    bool operator()(const RIndirectString& a, const RIndirectString& b) const {
        return m_collator->Compare(a, b) == 0;
    }

private:
    const ICollator* m_collator;
};

/// The hash that goes with CollatorEqualTo.
class LUM_CORE_API CollatorHash {
public:
    /// Looks the collator up in the current pool, once.
    CollatorHash() : CollatorHash(Collation()) {}
    explicit CollatorHash(const Collation& collation) : m_collator(&collation.GetCollator()) {}

    const Collation& GetCollation() const { return m_collator->GetCollation(); }
    std::size_t operator()(const RIndirectString& text) const { return m_collator->Hash(text); }

private:
    const ICollator* m_collator;
};

}  // namespace lum::core

template <>
struct std::hash<lum::core::Collation> {
    std::size_t operator()(const lum::core::Collation& collation) const {
        return collation.GetLocale().GetValue().hash();
    }
};
