#include "lum/core/store/MemberMap.h"

#include <bit>
#include <cstddef>
#include <memory>
#include <new>

namespace lum::core {

MemberMap::MemberMap(std::unordered_map<RInternString, SV>&& members) : MemberMap() {
    for (const auto& member : members) {
        CheckValue(member.second);
    }
    Reserve(members.size());
    for (auto& [name, value] : members) {
        Put(FindPlace(name), name, std::move(value));
    }
    members.clear();
}

// Free slots hold nothing that would have to be destroyed.
MemberMap::~MemberMap() {
    for (const value_type& member : *this) {
        std::destroy_at(&member);
    }
    ::operator delete(m_order);
}

void MemberMap::Swap(MemberMap& other) noexcept {
    std::swap(m_slots, other.m_slots);
    std::swap(m_order, other.m_order);
    std::swap(m_size, other.m_size);
    std::swap(m_mask, other.m_mask);
    std::swap(m_shift, other.m_shift);
}

bool MemberMap::Replace(const RInternString& name, SV value) {
    CheckValue(value);
    if (Find(name) == nullptr) {
        return false;
    }
    m_slots[FindPlace(name)].second = std::move(value);
    return true;
}

void MemberMap::Reserve(std::size_t count) {
    if (count == 0 || (m_slots != nullptr && count * 2 <= std::size_t{m_mask} + 1)) {
        return;
    }
    const std::size_t capacity =
        std::bit_ceil(std::size_t{LumSizeCastSafe(2 * uint64{LumSizeCastSafe(count)})});
    const std::size_t orderBytes = capacity / 2 * sizeof(m_order[0]);
    std::size_t slotBytes = capacity * sizeof(value_type);
    std::size_t room = slotBytes + sizeof(value_type);
    MemberMap larger;
    larger.m_order = static_cast<unsigned int*>(::operator new(orderBytes + room));
    void* slots = reinterpret_cast<std::byte*>(larger.m_order) + orderBytes;
    larger.m_slots =
        static_cast<value_type*>(std::align(sizeof(value_type), slotBytes, slots, room));
    larger.m_mask = static_cast<unsigned int>(capacity - 1);
    larger.m_shift = static_cast<unsigned int>(64 - std::countr_zero(capacity));
    const RInternString noName;
    for (std::size_t place = 0; place < capacity; ++place) {
        std::construct_at(larger.m_slots + place, noName, nullptr);
    }
    for (const unsigned int* place = m_order; place != m_order + m_size; ++place) {
        auto& [name, value] = m_slots[*place];
        larger.Put(larger.FindPlace(name), name, std::move(value));
    }
    Swap(larger);
}

}  // namespace lum::core
