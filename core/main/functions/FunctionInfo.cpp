#include "lum/core/functions/FunctionInfo.h"

#include "lum/core/utility/Fnv.h"

namespace lum::core {

uint64 FunctionInfo::GetHashValue() const noexcept {
    uint64 hash = HashCombine(0, FnvHash(static_cast<unsigned char>(m_isCreator)));
    for (const VariableTypeRef& type : m_creatorInputTypes) {
        hash = HashCombine(hash, type.GetHashValue());
    }
    return HashCombine(hash, m_outputType.GetHashValue());
}

}  // namespace lum::core
