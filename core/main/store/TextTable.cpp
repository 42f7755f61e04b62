#include "core/main/store/TextTable.h"

#include <algorithm>
#include <bit>

namespace lum::core {

TextTable::TextTable(const SetContainer<RIndirectString>& texts) {
    if (!texts.key_eq().IsExact()) {
        return;
    }
    m_slots.resize(std::bit_ceil(uint64{texts.size()} * 3 / 2 + 1));
    m_mask = m_slots.size() - 1;
    for (const RIndirectString& text : texts) {
        const uint64 hash = HashOf(text);
        uint64 at = hash & m_mask;
        while (m_slots[at].text != nullptr) {
            at = (at + 1) & m_mask;
        }
        m_slots[at] = {&text, hash};
    }
}

void TextTable::Find(const RIndirectString* texts, unsigned char* out,
                     uint64 count) const noexcept {
    // How many look-ups wait for memory together.
    constexpr uint64 kBlock = 32;
    uint64 hashes[kBlock];
    for (uint64 start = 0; start < count; start += kBlock) {
        const uint64 size = std::min(count - start, kBlock);
        for (uint64 i = 0; i < size; ++i) {
            hashes[i] = HashOf(texts[start + i]);
            __builtin_prefetch(&m_slots[hashes[i] & m_mask]);
        }
        for (uint64 i = 0; i < size; ++i) {
            __builtin_prefetch(m_slots[hashes[i] & m_mask].text);
        }
        for (uint64 i = 0; i < size; ++i) {
            out[start + i] = Find(texts[start + i], hashes[i]) ? 1 : 0;
        }
    }
}

}  // namespace lum::core
