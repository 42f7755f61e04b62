#pragma once

#include <tbb/concurrent_vector.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

#include "core/main/utility/UnitHash.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/LumString.h"
#include "lumsys/TReadWriteLock.h"

namespace lum::core {

/// The texts of all names, by id, and the way from a text to its id.
///
/// A look-up of a known text takes no lock: it probes an open-addressing index whose entries are
/// published by one store each. Insertions take the write lock. An index that has grown too small
/// is replaced and kept, since readers may still be in it; all former ones together are no larger
/// than the current one.
class InternTable {
public:
    struct Entry {
        uint64 id;
        const TStringCore* text;
    };

    InternTable();
    ~InternTable();
    InternTable(const InternTable&) = delete;
    InternTable& operator=(const InternTable&) = delete;

    Entry Intern(const TStringCore& text);
    /// Interns units that are made into a string only if they are new.
    Entry Intern(const char16_t* units, std::size_t count);
    /// The text of an id, or an empty text for one that was never given out.
    const TStringCore* GetText(uint64 id) const;
    /// How many names there are, which is the id of the next one.
    uint64 GetCount() const { return m_nextId.load(std::memory_order_acquire); }

private:
    // One place of the index. The text is stored last; hash and id are constant from then on.
    struct Slot {
        std::atomic<const TStringCore*> text;
        unsigned int hash;
        unsigned int id;
    };
    struct Index {
        explicit Index(std::size_t slotCount);
        std::size_t mask;
        std::unique_ptr<Slot[]> slots;
    };

    unsigned int Hash(const char16_t* units, std::size_t count) const {
        return static_cast<unsigned int>(m_hash(units, count));
    }
    template <typename IsText>
    static const Slot* Find(const Index& index, unsigned int hash, IsText isText);
    static void Insert(Index& index, unsigned int hash, unsigned int id, const TStringCore* text);
    Entry Add(unsigned int hash, const TStringCore& text);
    void GrowIndex();

    const UnitHash m_hash;
    std::atomic<uint64> m_nextId{0};
    // Always one slot longer than there are ids. Elements never move.
    tbb::concurrent_vector<TStringCore> m_strings;
    std::atomic<Index*> m_ids;
    std::vector<std::unique_ptr<Index>> m_indexes;  // The last is the current one.
    lumsys::TReadWriteLock m_lock;                  // Over the growth of all of these.
};

/// The table of the process. It stands in the type registry, with which it lives and dies; this
/// function is all that names need of the registry.
InternTable& GetInternTable();

}  // namespace lum::core
