#pragma once

#include <vector>

#include "core/main/utility/UnitHash.h"
#include "lum/core/store/Containers.h"

namespace lum::core {

/// The strings of a set in a form that answers faster than their container, which goes to a
/// collator for each hash and comparison and follows two pointers: open addresses, and a hash that
/// reads a text by words.
///
/// Threads: any, once it is made. Ownership: refers to the strings of the container, which stays as
/// it is while this lives.
class TextTable {
public:
    /// How many look-ups of each string in the container pay for the table; half of that would do.
    static constexpr uint64 kCost = 1;

    /// Cost: O(strings), and 24 to 48 bytes for each of them.
    explicit TextTable(const SetContainer<RIndirectString>& texts);

    /// False where the collation takes strings of different units for equal; then the table answers
    /// nothing.
    bool IsUsable() const noexcept { return !m_slots.empty(); }
    bool Contains(const RIndirectString& text) const noexcept { return Find(text, HashOf(text)); }
    /// 1 in each place of `out` whose text is a member, else 0.
    void Find(const RIndirectString* texts, unsigned char* out, uint64 count) const noexcept;

private:
    struct Slot {
        const RIndirectString* text = nullptr;
        uint64 hash = 0;
    };

    uint64 HashOf(const RIndirectString& text) const noexcept {
        return m_hash(text->data(), text->length());
    }
    bool Find(const RIndirectString& text, uint64 hash) const noexcept {
        for (uint64 at = hash & m_mask; m_slots[at].text != nullptr; at = (at + 1) & m_mask) {
            if (m_slots[at].hash == hash && *m_slots[at].text == text) {
                return true;
            }
        }
        return false;
    }

    UnitHash m_hash;
    std::vector<Slot> m_slots;  // As many as a power of two, a third of them empty at least.
    uint64 m_mask = 0;
};

}  // namespace lum::core
