#pragma once

#include <vector>

#include "lum/core/store/Containers.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

/// A copy of a set of numbers in a form that answers a whole column of them: a table of buckets, of
/// which each value has one for its home. A standard container follows two pointers and divides for
/// each look-up, and the processor guesses each answer; here a look-up reads one line of memory,
/// and there is nothing to guess.
///
/// A bucket has room for four values. Those that come later go to the next bucket with room, and
/// every bucket that they pass is marked as passed, by the order of its first two values. Room that
/// is left over holds a value whose home is another bucket, which nobody looks for here.
///
/// Threads: any, once it is made. Units: cells.
/// `T` is unsigned int or unsigned long long.
template <StorageType T>
class ProbeTable {
public:
    /// How many look-ups of each value in the container pay for the table.
    static constexpr uint64 kCost = 8;

    /// Cost: O(values), and from 2 to 8 times the size of a value for each of them.
    explicit ProbeTable(const SetContainer<T>& values);

    /// False where so many values share their homes that look-ups would walk far; then the table
    /// answers nothing. Values from outside may be made so.
    bool IsUsable() const noexcept { return !m_buckets.empty(); }
    /// 1 in each place of `out` whose value is a member, else 0.
    void Find(const T* values, unsigned char* out, uint64 count) const noexcept;

private:
    static constexpr uint64 kRoom = 4;
    struct alignas(kRoom * sizeof(T)) Bucket {
        T values[kRoom];
        bool IsPassed() const noexcept { return values[0] > values[1]; }
        bool Has(T value) const noexcept;
    };

    uint64 HomeOf(T value) const noexcept;
    bool Place(T value, std::vector<unsigned char>& counts);
    /// Find for as many as are looked up together.
    template <bool kPrefetches>
    void FindBlock(const T* values, unsigned char* out, uint64 count) const noexcept;
    /// For values whose home is passed and does not have them.
    bool FindBeyond(T value) const noexcept;

    std::vector<Bucket> m_buckets;  // As many as a power of two.
    unsigned m_shift = 0;           // What is left of a hash are the bits of a bucket's number.
    T m_fillers[2] = {};            // The second stands in the first one's home.
    bool m_areMembers[2] = {};
};

extern template class ProbeTable<unsigned int>;
extern template class ProbeTable<unsigned long long>;

}  // namespace lum::core
