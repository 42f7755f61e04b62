#include "lum/core/store/KeySegment.h"

#include <cstdint>
#include <utility>

#include "lum/core/utility/Fnv.h"

namespace lum::core {

uint64 KeySegment::GetTypeAwareHashValue() const noexcept {
    const uint64 typeHash = FnvHash(uint64{reinterpret_cast<std::uintptr_t>(m_type)});
    return HashCombine(GetHashValue(), typeHash);
}

KeySegment KeySegment::AddVersion(unsigned int version) const {
    TStringCore name = m_segment.GetValue();
    name += u'#';
    name += TStringCore::number(version);
    return KeySegment(std::move(name), m_type);
}

}  // namespace lum::core
