#pragma once

#include <memory>
#include <vector>

#include "lum/core/types/HeterogeneousTypes.h"

namespace lum::core {

class PackedStructOffsets;

/// The type of members that are known by position. See Type for threads and ownership.
class LUM_CORE_API AnonymousHeterogeneousType : public HeterogeneousType {
public:
    const std::vector<const Type*>& GetMembers() const noexcept { return m_members; }
    /// Where the members stand in a packed block.
    const PackedStructOffsets* GetOffsets() const noexcept { return m_offsets; }

protected:
    AnonymousHeterogeneousType(StoreType storeType, std::vector<const Type*>&& members)
        : HeterogeneousType(storeType), m_members(std::move(members)) {}
    void SetOffsets(const PackedStructOffsets* offsets) { m_offsets = offsets; }

private:
    const std::vector<const Type*> m_members;
    const PackedStructOffsets* m_offsets = nullptr;
};

/// The type of a row of primitives.
/// Errors: IllegalElementType for a null member; TuplePrimitivesOnly for a member that is no
/// primitive; OutOfRange where a row would take more than 2^32 - 1 bytes.
class LUM_CORE_API TupleType final : public AnonymousHeterogeneousType {
public:
    static const TupleType* Get(std::vector<const Type*>&& members);

    /// For instance "P{i, b}"; the code alone without members.
    TStringCore ToString() const override;

private:
    friend class Context;
    explicit TupleType(std::vector<const Type*>&& members);
};

}  // namespace lum::core
