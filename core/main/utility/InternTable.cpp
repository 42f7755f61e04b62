#include "core/main/utility/InternTable.h"

#include <cstring>
#include <limits>
#include <stdexcept>

namespace lum::core {
namespace {

constexpr std::size_t kFirstSlotCount = 1024;

}  // namespace

InternTable::Index::Index(std::size_t slotCount)
    : mask(slotCount - 1), slots(new Slot[slotCount]()) {}

InternTable::InternTable() {
    m_strings.push_back(TStringCore());
    m_indexes.push_back(std::make_unique<Index>(kFirstSlotCount));
    m_ids.store(m_indexes.back().get(), std::memory_order_release);
}

InternTable::~InternTable() = default;

template <typename IsText>
const InternTable::Slot* InternTable::Find(const Index& index, unsigned int hash, IsText isText) {
    for (std::size_t at = hash & index.mask;; at = (at + 1) & index.mask) {
        const Slot& slot = index.slots[at];
        const TStringCore* const text = slot.text.load(std::memory_order_acquire);
        if (text == nullptr) {
            return nullptr;
        }
        if (slot.hash == hash && isText(*text)) {
            return &slot;
        }
    }
}

void InternTable::Insert(Index& index, unsigned int hash, unsigned int id,
                         const TStringCore* text) {
    std::size_t at = hash & index.mask;
    while (index.slots[at].text.load(std::memory_order_relaxed) != nullptr) {
        at = (at + 1) & index.mask;
    }
    index.slots[at].hash = hash;
    index.slots[at].id = id;
    index.slots[at].text.store(text, std::memory_order_release);
}

InternTable::Entry InternTable::Intern(const TStringCore& text) {
    const unsigned int hash = Hash(text.data(), text.length());
    const Slot* const slot = Find(*m_ids.load(std::memory_order_acquire), hash,
                                  [&](const TStringCore& known) { return known == text; });
    return slot != nullptr ? Entry{slot->id, slot->text.load(std::memory_order_relaxed)}
                           : Add(hash, text);
}

InternTable::Entry InternTable::Intern(const char16_t* units, std::size_t count) {
    const unsigned int hash = Hash(units, count);
    const Slot* const slot =
        Find(*m_ids.load(std::memory_order_acquire), hash, [&](const TStringCore& known) {
            return known.length() == count &&
                   std::memcmp(known.data(), units, count * sizeof(char16_t)) == 0;
        });
    return slot != nullptr ? Entry{slot->id, slot->text.load(std::memory_order_relaxed)}
                           : Add(hash, TStringCore(units, count));
}

InternTable::Entry InternTable::Add(unsigned int hash, const TStringCore& text) {
    const lumsys::TWriteGuard guard(m_lock);
    // Another thread may have added it before the lock was ours.
    if (const Slot* const slot = Find(*m_indexes.back(), hash,
                                      [&](const TStringCore& known) { return known == text; })) {
        return {slot->id, slot->text.load(std::memory_order_relaxed)};
    }
    const uint64 id = m_nextId.load(std::memory_order_relaxed);
    if (id >= std::numeric_limits<unsigned int>::max()) {
        throw std::length_error("RInternString: too many names");
    }
    if ((id + 1) * 2 > m_indexes.back()->mask) {
        GrowIndex();
    }
    // All that may throw comes before the entry is published; a text left in the spare slot by a
    // failure is overwritten by the next one.
    TStringCore& slot = m_strings[id];
    slot = text;
    if (m_strings.size() == id + 1) {
        m_strings.push_back(TStringCore());
    }
    Insert(*m_indexes.back(), hash, static_cast<unsigned int>(id), &slot);
    m_nextId.store(id + 1, std::memory_order_release);
    return {id, &slot};
}

void InternTable::GrowIndex() {
    const Index& former = *m_indexes.back();
    m_indexes.reserve(m_indexes.size() + 1);
    auto index = std::make_unique<Index>((former.mask + 1) * 4);
    for (std::size_t at = 0; at <= former.mask; ++at) {
        const Slot& slot = former.slots[at];
        if (const TStringCore* const text = slot.text.load(std::memory_order_relaxed)) {
            Insert(*index, slot.hash, slot.id, text);
        }
    }
    m_ids.store(index.get(), std::memory_order_release);
    m_indexes.push_back(std::move(index));
}

const TStringCore* InternTable::GetText(uint64 id) const {
    static const TStringCore s_empty;
    return id < GetCount() ? &m_strings[id] : &s_empty;
}

}  // namespace lum::core
