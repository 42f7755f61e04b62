#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <unordered_map>
#include <utility>

#include "lum/core/Check.h"
#include "lum/core/Export.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

/// Values by their names, in the order in which they came: the members of a key map, the columns of
/// a table. None is ever taken out.
///
/// A table of open addresses (linear probing, at most half full) over the numbers of the names that
/// holds the entries themselves, and a list of their places in order. A find touches one cache line
/// where std::unordered_map touches four, and divides nothing; a walk follows the list; all members
/// together are one block of the heap.
///
/// Threads: any number read at once; a change excludes every other use.
/// Ownership: holds a share of each value.
/// Errors: NullArgument for a value that is null; OutOfRange beyond 2^31 members. The map stays as
///   it was.
class LUM_CORE_API MemberMap {
public:
    using key_type = RInternString;
    using mapped_type = SV;
    using value_type = std::pair<const RInternString, SV>;

    /// Good until a member is added.
    class Iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = MemberMap::value_type;
        using difference_type = std::ptrdiff_t;
        using pointer = const value_type*;
        using reference = const value_type&;

        Iterator() noexcept = default;
        reference operator*() const noexcept { return m_slots[*m_place]; }
        pointer operator->() const noexcept { return &**this; }
        Iterator& operator++() noexcept {
            ++m_place;
            return *this;
        }
        Iterator operator++(int) noexcept { return Iterator(m_slots, m_place++); }
        friend bool operator==(const Iterator& a, const Iterator& b) noexcept {
            return a.m_place == b.m_place;
        }

    private:
        friend class MemberMap;
        Iterator(pointer slots, const unsigned int* place) noexcept
            : m_slots(slots), m_place(place) {}

        pointer m_slots = nullptr;
        const unsigned int* m_place = nullptr;
    };

    using const_iterator = Iterator;

    MemberMap() noexcept = default;
    /// The members of a standard map, in its order.
    explicit MemberMap(std::unordered_map<RInternString, SV>&& members);
    MemberMap(MemberMap&& other) noexcept { Swap(other); }
    MemberMap& operator=(MemberMap&& other) noexcept {
        MemberMap(std::move(other)).Swap(*this);
        return *this;
    }
    ~MemberMap();

    const_iterator begin() const noexcept { return {m_slots, m_order}; }
    const_iterator end() const noexcept { return {m_slots, m_order + m_size}; }
    std::size_t size() const noexcept { return m_size; }
    bool empty() const noexcept { return m_size == 0; }

    /// The value of a name, or null; good until a member is added. Cost: O(1).
    const SV* Find(const RInternString& name) const noexcept {
        if (m_slots == nullptr) {
            return nullptr;
        }
        const value_type& slot = m_slots[FindPlace(name)];
        return slot.second == nullptr ? nullptr : &slot.second;
    }
    /// Adds a member behind the others; where the name has one already nothing changes, and the
    /// answer is false. Cost: O(1) amortized.
    bool Insert(RInternString name, SV&& value) {
        CheckValue(value);
        if (m_slots == nullptr || size() * 2 > m_mask) {
            Reserve(size() + 1);
        }
        const std::size_t place = FindPlace(name);
        if (m_slots[place].second != nullptr) {
            return false;
        }
        Put(place, name, std::move(value));
        return true;
    }
    bool Insert(RInternString name, const SV& value) { return Insert(name, SV(value)); }
    /// Gives a member another value; false where there is no such member.
    bool Replace(const RInternString& name, SV value);
    /// Makes room for `count` members in all.
    void Reserve(std::size_t count);

private:
    void Swap(MemberMap& other) noexcept;
    // Where the name stands, or the free slot that it would be given. There are slots.
    std::size_t FindPlace(const RInternString& name) const noexcept {
        const uint64 id = name.GetStringId();
        // Fibonacci hashing (Knuth, 1973); ids of names that are made together are neighbours.
        std::size_t place = static_cast<std::size_t>(id * 0x9E3779B97F4A7C15ULL >> m_shift);
        while (m_slots[place].second != nullptr && m_slots[place].first.GetStringId() != id) {
            place = (place + 1) & m_mask;
        }
        return place;
    }
    static void CheckValue(const SV& value) { LUM_CHECK_NOT_NULL(value, LumError::NullArgument); }
    // Adds a member at its free slot; there must be room.
    void Put(std::size_t place, RInternString name, SV&& value) noexcept {
        std::construct_at(m_slots + place, name, std::move(value));
        m_order[m_size] = static_cast<unsigned int>(place);
        ++m_size;
    }

    // What a find needs stands in front, and two slots fill a cache line.
    value_type* m_slots = nullptr;  // A power of two; the value of a free one is null.
    unsigned int m_mask = 0;
    unsigned int m_shift = 0;
    unsigned int m_size = 0;
    unsigned int* m_order = nullptr;  // The places of the members. The slots are in its block.
};

}  // namespace lum::core
