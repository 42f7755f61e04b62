#pragma once

#include <vector>

#include "lum/core/types/Type.h"

namespace lum::core {

/// Where the members of a tuple stand in its block, in bytes from the block's start:
///
///   values    each at the next multiple of its own width
///   specials  one SpecialKind a member, right behind the last value
///
/// The block is not padded at its end. For (Bool, Int64, String) the values stand at 0, 8 and 32,
/// the specials at 64, 65 and 66, and the size is 67.
class PackedStructOffsets {
public:
    /// Errors: OutOfRange where the block would take more than 2^32 - 1 bytes.
    explicit PackedStructOffsets(const std::vector<const Type*>& members);

    lumsize_t GetSize() const noexcept { return m_size; }
    lumsize_t GetValueOffset(lumsize_t member) const noexcept { return m_valueOffsets[member]; }
    lumsize_t GetSpecialOffset(lumsize_t member) const noexcept { return m_specialOffsets[member]; }

private:
    lumsize_t m_size;
    std::vector<lumsize_t> m_valueOffsets;
    std::vector<lumsize_t> m_specialOffsets;
};

}  // namespace lum::core
