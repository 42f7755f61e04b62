#include "core/main/store/ProbeTable.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace lum::core {
namespace {

// How many buckets beyond its home a value may stand.
constexpr unsigned kFarthest = 16;
// Bytes; what is larger is worth a word to the memory in advance.
constexpr uint64 kNearMemory = 256 << 10;
// How many look-ups wait for memory together.
constexpr uint64 kBlock = 64;
// The highest bit of a count, beside the number of values in the bucket.
constexpr unsigned char kPassed = 0x80;

// Whether a value is one of four. There is no branch for each, which nobody could foresee; numbers
// of 32 bits are compared as one vector.
bool IsAmongFour(unsigned int value, const unsigned int* four) noexcept {
    using Lanes [[gnu::vector_size(4 * sizeof(value))]] = unsigned int;
    Lanes lanes;
    std::memcpy(&lanes, four, sizeof(lanes));
    const auto areEqual = lanes == (Lanes{} + value);
    uint64 halves[2];
    std::memcpy(halves, &areEqual, sizeof(halves));
    return (halves[0] | halves[1]) != 0;
}
bool IsAmongFour(unsigned long long value, const unsigned long long* four) noexcept {
    int isFound = 0;
    for (int i = 0; i < 4; ++i) {
        isFound |= static_cast<int>(four[i] == value);
    }
    return isFound != 0;
}

}  // namespace

template <StorageType T>
inline bool ProbeTable<T>::Bucket::Has(T value) const noexcept {
    return IsAmongFour(value, values);
}

template <StorageType T>
inline uint64 ProbeTable<T>::HomeOf(T value) const noexcept {
    // Two rounds of a multiplicative hash (Knuth, 1973), since regular distances between values
    // could fall together in one.
    uint64 hash = uint64{value} * 0x9E3779B97F4A7C15ull;
    hash ^= hash >> 32;
    hash *= 0xD6E8FEB86659FD93ull;
    return hash >> m_shift;
}

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
        if (m_buckets[bucket].Has(value)) {
            return true;
        }
    }
    return false;
}

template <StorageType T>
template <bool kPrefetches>
void ProbeTable<T>::FindBlock(const T* values, unsigned char* out, uint64 count) const noexcept {
    const Bucket* homes[kBlock];
    for (uint64 i = 0; i < count; ++i) {
        homes[i] = &m_buckets[HomeOf(values[i])];
        if constexpr (kPrefetches) {
            __builtin_prefetch(homes[i]);
        }
    }
    // Those that are left over are put aside without a branch, which nobody could foresee.
    unsigned char leftOver[kBlock];
    uint64 leftOverCount = 0;
    for (uint64 i = 0; i < count; ++i) {
        const Bucket& home = *homes[i];
        const bool isFound = home.Has(values[i]);
        out[i] = isFound ? 1 : 0;
        leftOver[leftOverCount] = static_cast<unsigned char>(i);
        leftOverCount +=
            static_cast<uint64>(static_cast<int>(home.IsPassed()) & static_cast<int>(!isFound));
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

template class ProbeTable<unsigned int>;
template class ProbeTable<unsigned long long>;

}  // namespace lum::core
