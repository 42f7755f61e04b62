#pragma once

#include <iterator>
#include <utility>

#include "lum/core/Check.h"
#include "lum/core/store/Containers.h"
#include "lum/core/types/Type.h"

namespace lum::core {

/// A walk over the entries of a dictionary, in the order of its container. By value, and its own
/// range of pairs:
///
///     for (const auto& [key, value] : keyMap.GetEntries()) { ... }
///
/// `K` is the key as stored; SpecialKind for the entries under special keys.
/// Threads: one at a time. Ownership: the dictionary must stay alive, and unchanged.
/// Errors: IteratorOutOfBounds at the end. Cost: nothing is allocated.
template <typename K, typename V>
class DictionaryCursor {
public:
    using Container = MapContainer<K, V>;
    using value_type = typename Container::value_type;
    using difference_type = std::ptrdiff_t;

    /// `keyType` is null for special keys.
    DictionaryCursor(const Type* keyType, const Container& entries)
        : m_keyType(keyType), m_entries(&entries), m_pos(entries.begin()) {}

    const Type* GetKeyType() const noexcept { return m_keyType; }
    bool IsAtEnd() const { return m_pos == m_entries->end(); }
    const value_type& operator*() const {
        LUM_CHECK_TEXT("(m_pos != m_values->end())", !IsAtEnd(), LumError::IteratorOutOfBounds);
        return *m_pos;
    }
    const K& GetKey() const { return (**this).first; }
    const V& GetValue() const { return (**this).second; }
    DictionaryCursor& operator++() {
        LUM_CHECK_TEXT("(m_pos != m_values->end())", !IsAtEnd(), LumError::IteratorOutOfBounds);
        ++m_pos;
        return *this;
    }
    void operator++(int) { ++*this; }
    void Advance() { ++*this; }

    DictionaryCursor begin() const { return *this; }
    std::default_sentinel_t end() const { return {}; }
    friend bool operator==(const DictionaryCursor& cursor, std::default_sentinel_t) {
        return cursor.IsAtEnd();
    }

private:
    const Type* m_keyType;
    const Container* m_entries;
    typename Container::const_iterator m_pos;
};

}  // namespace lum::core
