#pragma once

#include <algorithm>
#include <atomic>
#include <mutex>
#include <new>
#include <optional>
#include <type_traits>

#include "core/main/store/ProbeTable.h"
#include "core/main/store/TextTable.h"
#include "lum/core/store/Containers.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

/// A table of a set's members that is made once so many values were looked up that it is worth
/// while.
///
/// Threads: any. `Table` is made from the members, says by kCost how many look-ups of each pay for
/// it, and by IsUsable whether it is any good.
template <typename Table, typename Members>
class TableOnDemand {
public:
    /// Null as long as so few values were looked up that a table would cost more, the `count` of
    /// now included; and for good if the table is not usable. `members` are the same at each call.
    const Table* Get(const Members& members, uint64 count) {
        const Table* const table = m_usable.load(std::memory_order_acquire);
        return table != nullptr ? table : Ask(members, count);
    }

private:
    static constexpr uint64 kFewest = 1024;

    [[gnu::noinline]] const Table* Ask(const Members& members, uint64 count) {
        // Threads may forget what others counted in between: then the table comes later.
        const uint64 asked = m_asked.load(std::memory_order_relaxed) + count;
        m_asked.store(asked, std::memory_order_relaxed);
        if (asked < std::max(kFewest, Table::kCost * members.size())) {
            return nullptr;
        }
        try {
            std::call_once(m_flag, [&] {
                if (m_table.emplace(members).IsUsable()) {
                    m_usable.store(&*m_table, std::memory_order_release);
                }
            });
        } catch (const std::bad_alloc&) {
            return nullptr;  // The container answers, too.
        }
        return m_usable.load(std::memory_order_acquire);
    }

    std::atomic<const Table*> m_usable{nullptr};
    std::atomic<uint64> m_asked{0};
    std::once_flag m_flag;  // Guards the making of the table.
    std::optional<Table> m_table;
};

/// The table that serves sets of a type, void where there is none.
template <StorageType T>
using SetTable = std::conditional_t<
    std::is_same_v<T, RIndirectString>, TextTable,
    std::conditional_t<std::is_same_v<T, unsigned int> || std::is_same_v<T, unsigned long long>,
                       ProbeTable<T>, void>>;

/// How a set looks values up in its members: in their container, and those of which many are looked
/// up in a table.
///
/// Threads: any. `members` are the same at each call.
template <StorageType T>
class SetLookup {
public:
    bool Contains(const SetContainer<T>& members, const T& value) {
        // A number alone is found in the container as fast as in a table.
        if constexpr (std::is_same_v<T, RIndirectString>) {
            if (const TextTable* const table = m_table.Get(members, 1)) {
                return table->Contains(value);
            }
        }
        return members.find(value) != members.end();
    }
    /// 1 in each place of `out` whose value is a member, else 0.
    void ContainsEach(const SetContainer<T>& members, const T* values, unsigned char* out,
                      uint64 count) {
        if constexpr (!std::is_void_v<SetTable<T>>) {
            if (const SetTable<T>* const table = m_table.Get(members, count)) {
                return table->Find(values, out, count);
            }
        }
        FindInContainer(members, values, out, count);
    }

private:
    struct NoTable {};

    static void FindInContainer(const SetContainer<T>& members, const T* values, unsigned char* out,
                                uint64 count);

    [[no_unique_address]] std::conditional_t<std::is_void_v<SetTable<T>>, NoTable,
                                             TableOnDemand<SetTable<T>, SetContainer<T>>>
        m_table;
};

template <StorageType T>
void SetLookup<T>::FindInContainer(const SetContainer<T>& members, const T* values,
                                   unsigned char* out, uint64 count) {
    if constexpr (std::is_integral_v<T>) {
        // In steps, each of which waits for memory once for a block of values.
        using Place = typename SetContainer<T>::const_local_iterator;
        constexpr uint64 kBlock = 64;
        std::size_t buckets[kBlock];
        Place places[kBlock];
        for (uint64 start = 0; start < count; start += kBlock) {
            const uint64 size = std::min(count - start, kBlock);
            const T* const wanted = values + start;
            for (uint64 i = 0; i < size; ++i) {
                buckets[i] = members.bucket(wanted[i]);
            }
            for (uint64 i = 0; i < size; ++i) {
                places[i] = members.begin(buckets[i]);
            }
            for (uint64 i = 0; i < size; ++i) {
                const Place end = members.end(buckets[i]);
                out[start + i] = std::find(places[i], end, wanted[i]) != end ? 1 : 0;
            }
        }
    } else {
        for (uint64 i = 0; i < count; ++i) {
            out[i] = members.count(values[i]) != 0 ? 1 : 0;
        }
    }
}

}  // namespace lum::core
