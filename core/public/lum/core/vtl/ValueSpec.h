#pragma once

#include <variant>

#include "lum/core/Export.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/store/StoreValueFwd.h"

namespace lum::core {

/// One operand of a function: the key of what it reads, or a literal, never both.
///
/// Threads: one object belongs to one thread at a time while it changes.
/// Ownership: owns its key and shares its literal; a copy has a key of its own.
/// Units: none.
/// Errors: LumRuntimeException with the code named at the operation, reported, and std::bad_alloc;
///   the object stays as it was.
class LUM_CORE_API ValueSpec {
public:
    /// Neither key nor literal, so that containers can hold one. It may be assigned to and
    /// destroyed, and nothing else; so may one that was moved from.
    ValueSpec() noexcept = default;
    /// A literal. Errors: ValueSpecHoldsKey where there is no value.
    explicit ValueSpec(SV value);
    /// A key. Errors: ValueSpecHoldsValue where path.IsEmpty(), which looks at the last name alone.
    explicit ValueSpec(const KeyPath& path);

    ValueSpec(const ValueSpec& other) = default;
    ValueSpec& operator=(const ValueSpec& other) = default;
    ValueSpec(ValueSpec&& other) noexcept = default;
    ValueSpec& operator=(ValueSpec&& other) noexcept = default;
    ~ValueSpec();

    /// Errors: LumLogicException with Unspecified where there is neither key nor literal.
    bool IsKey() const;
    /// The literal, never null. Errors: ValueSpecHoldsKey where there is none.
    const SV& GetValue() const;
    /// The key; the second form is for rewriting it in place, where nothing tests the new one.
    /// Errors: ValueSpecHoldsValue where there is none.
    const KeyPath& GetKeyPath() const;
    KeyPath& GetKeyPath();

private:
    std::variant<std::monostate, SV, KeyPath> m_content;
};

}  // namespace lum::core
