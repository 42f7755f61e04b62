#pragma once

#include <bit>
#include <cstddef>
#include <memory>
#include <utility>

#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

/// Finds the members of a key map by the number of their name: a table of open addresses (linear
/// probing) beside the map whose members they are, with a share in each value. A find touches one
/// or two cache lines where the map's own touches four, and divides nothing; reads of a store are
/// made of little else. None is ever taken out.
class NameIndex {
public:
    /// The value of a name, or null.
    const SV* Find(const RInternString& name) const noexcept {
        if (m_entries == nullptr) {
            return nullptr;
        }
        const uint64 id = name.GetStringId();
        for (std::size_t place = GetHome(id);; place = (place + 1) & m_mask) {
            const Entry& entry = m_entries[place];
            if (entry.value == nullptr) {
                return nullptr;
            }
            if (entry.id == id) {
                return &entry.value;
            }
        }
    }

    /// Makes room for `count` entries in all. Nothing changes if that fails.
    void Reserve(std::size_t count) {
        const std::size_t oldCapacity = m_entries == nullptr ? 0 : m_mask + 1;
        if (count * 2 <= oldCapacity) {
            return;
        }
        const std::size_t capacity = std::bit_ceil(count * 2);
        auto entries = std::make_unique<Entry[]>(capacity);
        const std::unique_ptr<Entry[]> old = std::exchange(m_entries, std::move(entries));
        m_mask = capacity - 1;
        m_shift = static_cast<unsigned int>(64 - std::countr_zero(capacity));
        for (std::size_t place = 0; place < oldCapacity; ++place) {
            if (old[place].value != nullptr) {
                *GetPlace(old[place].id) = std::move(old[place]);
            }
        }
    }

    /// Notes a member, or that one has another value now. There must be room.
    void Put(const RInternString& name, const SV& value) noexcept {
        const uint64 id = name.GetStringId();
        Entry& entry = *GetPlace(id);
        entry.id = id;
        entry.value = value;
    }

private:
    struct Entry {
        uint64 id = 0;
        SV value;  // Null in a free place.
    };

    std::size_t GetHome(uint64 id) const noexcept {
        // Fibonacci hashing (Knuth, 1973); ids of names that are made together are neighbours.
        return static_cast<std::size_t>(id * 0x9E3779B97F4A7C15ULL >> m_shift);
    }
    Entry* GetPlace(uint64 id) noexcept {
        std::size_t place = GetHome(id);
        while (m_entries[place].value != nullptr && m_entries[place].id != id) {
            place = (place + 1) & m_mask;
        }
        return &m_entries[place];
    }

    std::unique_ptr<Entry[]> m_entries;  // A power of two, at most half of them taken.
    std::size_t m_mask = 0;
    unsigned int m_shift = 0;
};

}  // namespace lum::core
