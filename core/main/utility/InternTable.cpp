#include "core/main/utility/InternTable.h"

#include <bit>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace lum::core {
namespace {

constexpr std::size_t kFirstSlotCount = 1024;

template <typename Word>
uint64 Load(const char* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

// Both halves of the product and both factors in one: where one factor is 0, the other still
// counts.
uint64 Fold(uint64 a, uint64 b) {
    __extension__ using Wide = unsigned __int128;
    const Wide product = Wide{a} * b;
    return a ^ b ^ static_cast<uint64>(product) ^ static_cast<uint64>(product >> 64);
}

// Other in each process: names come from strangers and are kept for good, so nobody may know which
// of them meet in the table.
uint64 MakeSeed() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    const auto block = std::make_unique<char>();
    const auto place = reinterpret_cast<std::uintptr_t>(block.get());
    return Fold(static_cast<uint64>(now) ^ 0xA0761D6478BD642F, place ^ 0xE7037ED1A0B428DB);
}

}  // namespace

// Folded products (after wyhash by Wang Yi, 2019, the variant that keeps the factors). A name of up
// to 12 units takes two that do not wait for each other; words overlap where the length is no
// multiple of theirs, and the length itself is a factor.
inline unsigned int InternTable::HashUnits(const char16_t* units, std::size_t count) const {
    const auto* bytes = reinterpret_cast<const char*>(units);
    const std::size_t length = count * sizeof(char16_t);
    std::size_t rest = length;
    uint64 hash = m_seed;
    for (; rest > 24; rest -= 16, bytes += 16) {
        hash = Fold(Load<uint64>(bytes) ^ hash, Load<uint64>(bytes + 8) ^ 0x8EBC6AF09C88C6E3);
    }
    uint64 first = 0;
    uint64 second = 0;
    uint64 third = 0;
    if (rest >= 8) {
        first = Load<uint64>(bytes);
        third = Load<uint64>(bytes + rest - 8);
        if (rest > 16) {
            second = Load<uint64>(bytes + 8);
        }
    } else if (rest >= 4) {
        first = Load<std::uint32_t>(bytes);
        third = Load<std::uint32_t>(bytes + rest - 4);
    } else if (rest != 0) {
        first = Load<std::uint16_t>(bytes);
    }
    hash = Fold(first ^ hash, second ^ 0x589965CC75374CC3) ^
           Fold(third ^ m_seed, length ^ 0x1D8E4E27C47D124F);
    return static_cast<unsigned int>(hash ^ hash >> 32);
}

InternTable::Index::Index(std::size_t slotCount)
    : mask(slotCount - 1), slots(new Slot[slotCount]()) {}

InternTable::InternTable() : m_seed(MakeSeed()) {
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
    const unsigned int hash = HashUnits(text.data(), text.length());
    const Slot* const slot = Find(*m_ids.load(std::memory_order_acquire), hash,
                                  [&](const TStringCore& known) { return known == text; });
    return slot != nullptr ? Entry{slot->id, slot->text.load(std::memory_order_relaxed)}
                           : Add(hash, text);
}

InternTable::Entry InternTable::Intern(const char16_t* units, std::size_t count) {
    const unsigned int hash = HashUnits(units, count);
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
