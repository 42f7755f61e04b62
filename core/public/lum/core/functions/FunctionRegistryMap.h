#pragma once

#include <cstddef>
#include <deque>
#include <utility>

#include "lum/core/functions/FunctionKey.h"
#include "lum/core/functions/FunctionOverloads.h"

namespace lum::core {

/// Values under function keys. A query need not be a key: it finds what a call with its types would
/// run, as FunctionOverloads tells. Keys may be equal; then neither is ever found by a query that
/// both win.
///
/// Threads: look-ups may run on any threads at once; Insert, and changes of values, need exclusion
///   from all other access. No operation takes a lock.
/// Ownership: owns keys and values. References to both stay good as long as the map.
/// Errors: LumRuntimeException as told, and std::bad_alloc; the map stays as it was.
/// Cost: that of FunctionOverloads.
template <typename Mapped>
class FunctionRegistryMap {
public:
    /// Adds a value behind all others, and gives the map's own key and value.
    std::pair<const FunctionKey&, Mapped&> Insert(FunctionKey&& key, Mapped mapped) {
        Entry& entry = m_entries.emplace_back(std::move(key), std::move(mapped));
        try {
            m_overloads.Add(entry);
        } catch (...) {  // An entry that no look-up finds must not be visited either.
            m_entries.pop_back();
            throw;
        }
        return {entry, entry.mapped};
    }

    /// The first value whose key AreKeysExactlyEqual holds for; null where there is none.
    Mapped* FindExact(const FunctionKey& key) {
        return const_cast<Mapped*>(std::as_const(*this).FindExact(key));
    }
    const Mapped* FindExact(const FunctionKey& key) const {
        return MappedOf(m_overloads.FindExact(key));
    }

    /// What the query finds; null where that is nothing, or ambiguous.
    const Mapped* TryFind(const FunctionKey& query) const noexcept {
        return MappedOf(m_overloads.Choose(query).key);
    }
    /// What the query finds.
    /// Errors: AmbiguousOverload, FunctionNotFound, with the text of the query.
    const Mapped& Find(const FunctionKey& query) const {
        const FunctionOverloads::Choice choice = m_overloads.Choose(query);
        if (choice.key == nullptr) {
            FunctionOverloads::Fail(query, choice);
        }
        return *MappedOf(choice.key);
    }

    std::size_t GetCount() const noexcept { return m_entries.size(); }
    /// Calls `visit` with each key and its value, in the order in which they were inserted.
    template <typename Visit>
    void ForEach(const Visit& visit) const {
        for (const Entry& entry : m_entries) {
            visit(static_cast<const FunctionKey&>(entry), entry.mapped);
        }
    }

private:
    // A key that carries its value, so that the key which wins a choice leads to the value.
    struct Entry : FunctionKey {
        Entry(FunctionKey&& key, Mapped&& value)
            : FunctionKey(std::move(key)), mapped(std::move(value)) {}
        Mapped mapped;
    };

    static const Mapped* MappedOf(const FunctionKey* key) noexcept {
        return key == nullptr ? nullptr : &static_cast<const Entry*>(key)->mapped;
    }

    std::deque<Entry> m_entries;
    FunctionOverloads m_overloads;
};

}  // namespace lum::core
