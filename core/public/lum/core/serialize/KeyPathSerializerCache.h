#pragma once

#include <cstddef>
#include <deque>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/utility/LumString.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

class Type;

/// The texts of key segments that were written before, for whoever writes many paths: a segment
/// that is met again is neither scanned nor its type spelled out. Make one, hand it to each writer,
/// and drop it with the last.
///
/// Threads: one at a time.
/// Ownership: keeps the texts until it dies; owns no name and no type.
/// Units: one entry for each segment and way of writing it.
/// Errors: std::bad_alloc; the cache stays as it was.
class LUM_CORE_API KeyPathSerializerCache {
public:
    /// A segment and the way of writing it.
    struct Key {
        RInternString name;
        const Type* type;
        bool includeType;  ///< Whether the type is written.
        bool fullForm;     ///< Whether a key map or table type is written with its members.

        friend bool operator==(const Key& a, const Key& b) noexcept = default;
    };

    KeyPathSerializerCache();
    ~KeyPathSerializerCache();
    KeyPathSerializerCache(const KeyPathSerializerCache&) = delete;
    KeyPathSerializerCache& operator=(const KeyPathSerializerCache&) = delete;

    /// The text that was stored under `key`, good as long as the cache; null where there is none.
    const TStringCore* TryGet(const Key& key) const;
    /// Stores `text` under `key`, unless a text stands there, and gives what stands there then.
    const TStringCore& Add(const Key& key, TStringCore&& text);

private:
    struct Entry {
        Key key;
        TStringCore text;
    };
    // A place of the index, with no entry where it is free.
    struct Slot {
        const Entry* entry = nullptr;
        unsigned int hash = 0;
    };

    static unsigned int HashOf(const Key& key) noexcept;
    // Where the key stands, or where it may be put. The index is not empty.
    std::size_t FindPlace(const Key& key, unsigned int hash) const noexcept;
    void GrowIndex();

    std::deque<Entry> m_entries;  // They never move.
    std::vector<Slot> m_slots;    // Open addressing, at most half full.
};

}  // namespace lum::core
