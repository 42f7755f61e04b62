#include "core/main/store/ProbeTable.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace lum::core {
namespace {

// How many buckets beyond its home a value may stand.
constexpr unsigned kFarthest = 16;
// A table costs as much as some look-ups of each of its values in the container. So it is made when
// many times as many were asked for, and when it is no matter.
constexpr uint64 kFewestCells = 1024;
constexpr uint64 kTimesOfItsSize = 8;
// Bytes; what is larger is worth a word to the memory in advance.
constexpr uint64 kNearMemory = 256 << 10;
// How many look-ups wait for memory together.
constexpr uint64 kBlock = 64;
// The highest bit of a count, beside the number of values in the bucket.
constexpr unsigned char kPassed = 0x80;

}  // namespace

template <StorageType T>
ProbeTable<T>::ProbeTable(const SetContainer<T>& values) {
    // Two values a bucket at most, on the average; one in twenty buckets is passed then. One where
    // memory is no matter.
    const uint64 size = std::max<uint64>(values.size(), 4);
    const uint64 count =
        size * sizeof(Bucket) <= kNearMemory ? std::bit_ceil(size) : std::bit_ceil(size / 2);
    m_shift = static_cast<unsigned>(64 - std::countr_zero(count));
    m_fillers[0] = 0;
    m_fillers[1] = 1;
    while (HomeOf(m_fillers[1]) == HomeOf(m_fillers[0])) {
        ++m_fillers[1];
    }
    Bucket empty;
    std::fill_n(empty.values, kRoom, m_fillers[0]);
    m_buckets.resize(count, empty);
    std::fill_n(m_buckets[HomeOf(m_fillers[0])].values, kRoom, m_fillers[1]);
    for (int i = 0; i < 2; ++i) {
        m_areMembers[i] = values.count(m_fillers[i]) != 0;
    }

    std::vector<unsigned char> counts(count);
    for (const T value : values) {
        if (!Place(value, counts)) {
            std::vector<Bucket>().swap(m_buckets);
            return;
        }
    }
    for (uint64 i = 0; i < count; ++i) {
        T* const stored = m_buckets[i].values;
        // Values that passed by left a full bucket behind, in which no two are equal.
        if (m_buckets[i].IsPassed() != (counts[i] >= kPassed)) {
            std::swap(stored[0], stored[1]);
        }
    }
}

template <StorageType T>
uint64 ProbeTable<T>::HomeOf(T value) const noexcept {
    // Two rounds of a multiplicative hash (Knuth, 1973), since regular distances between values
    // could fall together in one.
    uint64 hash = uint64{value} * 0x9E3779B97F4A7C15ull;
    hash ^= hash >> 32;
    hash *= 0xD6E8FEB86659FD93ull;
    return hash >> m_shift;
}

template <StorageType T>
bool ProbeTable<T>::Place(T value, std::vector<unsigned char>& counts) {
    uint64 bucket = HomeOf(value);
    for (unsigned distance = 0; distance <= kFarthest; ++distance) {
        unsigned char& count = counts[bucket];
        if (count < kRoom) {
            m_buckets[bucket].values[count] = value;
            ++count;
            return true;
        }
        count |= kPassed;
        bucket = (bucket + 1) & (m_buckets.size() - 1);
    }
    return false;
}

template <StorageType T>
bool ProbeTable<T>::FindBeyond(T value) const noexcept {
    for (int i = 0; i < 2; ++i) {
        if (value == m_fillers[i]) {
            return m_areMembers[i];
        }
    }
    uint64 bucket = HomeOf(value);
    while (m_buckets[bucket].IsPassed()) {
        bucket = (bucket + 1) & (m_buckets.size() - 1);
        const T* const stored = m_buckets[bucket].values;
        if (std::find(stored, stored + kRoom, value) != stored + kRoom) {
            return true;
        }
    }
    return false;
}

template <StorageType T>
template <bool kPrefetches>
void ProbeTable<T>::FindBlock(const T* values, unsigned char* out, uint64 count) const noexcept {
    const Bucket* const buckets = m_buckets.data();
    if constexpr (kPrefetches) {
        for (uint64 i = 0; i < count; ++i) {
            __builtin_prefetch(buckets + HomeOf(values[i]));
        }
    }
    // Those that are left over are put aside without a branch, which nobody could foresee.
    uint64 leftOver[kBlock];
    uint64 leftOverCount = 0;
    for (uint64 i = 0; i < count; ++i) {
        const Bucket& home = buckets[HomeOf(values[i])];
        int isFound = 0;
        for (const T stored : home.values) {
            isFound |= static_cast<int>(stored == values[i]);
        }
        out[i] = static_cast<unsigned char>(isFound);
        leftOver[leftOverCount] = i;
        leftOverCount += static_cast<uint64>(static_cast<int>(home.IsPassed()) & (isFound ^ 1));
    }
    for (uint64 i = 0; i < leftOverCount; ++i) {
        out[leftOver[i]] = FindBeyond(values[leftOver[i]]) ? 1 : 0;
    }
}

template <StorageType T>
void ProbeTable<T>::Find(const T* values, unsigned char* out, uint64 count) const noexcept {
    const bool prefetches = m_buckets.size() * sizeof(Bucket) > kNearMemory;
    for (uint64 start = 0; start < count; start += kBlock) {
        const uint64 size = std::min(count - start, kBlock);
        prefetches ? FindBlock<true>(values + start, out + start, size)
                   : FindBlock<false>(values + start, out + start, size);
    }
}

namespace {

// The container's own look-up in steps, each of which waits for memory once for a block of values.
template <StorageType T>
void FindInContainer(const SetContainer<T>& members, const T* values, unsigned char* out,
                     uint64 count) {
    using Place = typename SetContainer<T>::const_local_iterator;
    std::size_t buckets[kBlock];
    Place places[kBlock];
    for (uint64 i = 0; i < count; ++i) {
        buckets[i] = members.bucket(values[i]);
    }
    for (uint64 i = 0; i < count; ++i) {
        places[i] = members.begin(buckets[i]);
    }
    for (uint64 i = 0; i < count; ++i) {
        const Place end = members.end(buckets[i]);
        out[i] = std::find(places[i], end, values[i]) != end ? 1 : 0;
    }
}

}  // namespace

template <StorageType T>
void NumberLookup<T>::Find(const SetContainer<T>& members, const T* values, unsigned char* out,
                           uint64 count) {
    if (const ProbeTable<T>* const table = GetTable(members, count)) {
        return table->Find(values, out, count);
    }
    for (uint64 start = 0; start < count; start += kBlock) {
        FindInContainer(members, values + start, out + start, std::min(count - start, kBlock));
    }
}

template <StorageType T>
const ProbeTable<T>* NumberLookup<T>::GetTable(const SetContainer<T>& members, uint64 count) {
    const uint64 asked = m_askedCount.fetch_add(count, std::memory_order_relaxed) + count;
    if (asked < std::max(kFewestCells, kTimesOfItsSize * members.size())) {
        return nullptr;
    }
    std::call_once(m_flag, [&] { m_table.emplace(members); });
    return m_table->IsUsable() ? &*m_table : nullptr;
}

template class ProbeTable<unsigned int>;
template class ProbeTable<unsigned long long>;
template class NumberLookup<unsigned int>;
template class NumberLookup<unsigned long long>;

}  // namespace lum::core
