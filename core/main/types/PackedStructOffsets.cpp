#include "core/main/types/PackedStructOffsets.h"

#include "lum/core/types/TypeUtil.h"

namespace lum::core {

PackedStructOffsets::PackedStructOffsets(const std::vector<const Type*>& members) {
    // 64 bits, since a type that came from outside may name any number of members.
    uint64 offset = 0;
    m_valueOffsets.reserve(members.size());
    m_specialOffsets.reserve(members.size());
    for (const Type* const member : members) {
        const uint64 width = GetPrimitiveTypeSize(member);
        offset = (offset + width - 1) / width * width;
        m_valueOffsets.push_back(LumSizeCastSafe(offset));
        offset += width;
    }
    for (std::size_t i = 0; i < members.size(); ++i) {
        m_specialOffsets.push_back(LumSizeCastSafe(offset++));
    }
    m_size = LumSizeCastSafe(offset);
}

}  // namespace lum::core
