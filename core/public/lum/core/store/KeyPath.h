#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/KeySegment.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/LumString.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

/// The address of a value in a data store, and the name of whatever a transform reads or writes: a
/// list of segments, outermost first. A path never changes, other than by assignment; the
/// operations below make new ones. No name has a special meaning to a path.
///
/// Two paths are equal when their names are, in order; the types of the segments take no part in
/// equality, hash and order.
///
/// Threads: one object may be read on any threads at once, and its copies be used anywhere.
/// Ownership: copies share one list of segments, which lives as long as the last of them.
/// Units: counts are segments.
/// Errors: std::bad_alloc, and LumRuntimeException as the operations say; a path stays as it was.
/// Cost: a copy is one atomic increment, and so is a move, since a path is never without its list.
///   Names are compared and hashed by id; only Compare and the text form read their text.
class LUM_CORE_API KeyPath {
public:
    /// A copy of Empty().
    KeyPath() : KeyPath(Empty()) {}
    /// A path of one segment without a type.
    explicit KeyPath(const RInternString& name);
    explicit KeyPath(const KeySegment& segment);
    /// A path of segments without types.
    KeyPath(std::initializer_list<RInternString> names);
    explicit KeyPath(std::vector<KeySegment>&& segments);

    KeyPath(const KeyPath& other) noexcept
        : m_segments(other.m_segments), m_hash(other.m_hash.load(std::memory_order_relaxed)) {}
    KeyPath& operator=(const KeyPath& other) noexcept {
        m_segments = other.m_segments;
        m_hash.store(other.m_hash.load(std::memory_order_relaxed), std::memory_order_relaxed);
        return *this;
    }
    // A move is a copy: a path without its list would be none.
    KeyPath(KeyPath&& other) noexcept : KeyPath(std::as_const(other)) {}
    KeyPath& operator=(KeyPath&& other) noexcept { return *this = std::as_const(other); }
    ~KeyPath() = default;

    /// The one path of no segments that all default-made paths share; never destroyed.
    static const KeyPath& Empty();

    /// Errors: OutOfRange above 4294967295 segments.
    lumsize_t GetCount() const { return LumSizeCastSafe(m_segments->size()); }
    const std::vector<KeySegment>& GetSegments() const noexcept { return *m_segments; }
    /// Whether there is no segment, or the last one's name is empty, however many stand before it.
    bool IsEmpty() const noexcept {
        return m_segments->empty() || m_segments->back().GetSegment().GetValue().isEmpty();
    }

    /// The name of the last segment. Errors: EmptyKeyPath without segments.
    const RInternString& GetLeaf() const;
    /// The last segment. Errors: EmptyKeyPath without segments.
    const KeySegment& GetLeafSegment() const;
    /// All segments but the last. Cost: copies them. Errors: EmptyKeyPath without segments.
    KeyPath GetParent() const;
    /// All segments but the first. Cost: copies them. Errors: EmptyKeyPath without segments.
    KeyPath GetTail() const;

    /// This path with one more segment. Cost: copies the segments.
    KeyPath Add(KeySegment&& segment) const { return Add(segment); }
    KeyPath Add(const KeySegment& segment) const;
    KeyPath Add(const RInternString& name) const { return Add(KeySegment(name, nullptr)); }
    /// This path's segments and then those of `other`; `other` alone where this path IsEmpty(), so
    /// that a path whose last name is empty loses all its segments here.
    /// Cost: copies both lists; nothing where it is `other`.
    KeyPath Add(const KeyPath& other) const;
    /// This path with the last segment's AddVersion in place of the last segment.
    /// Errors: EmptyKeyPath without segments.
    KeyPath AddVersion(unsigned int version) const;

    /// Whether `other` begins with this path's segments; a path is a prefix of itself.
    bool IsPrefixOf(const KeyPath& other) const noexcept;
    /// Whether `other` is a prefix of this path. Both are compared from their first segment: this
    /// says nothing about what paths end with.
    bool IsSuffixOf(const KeyPath& other) const noexcept { return other.IsPrefixOf(*this); }

    friend bool operator==(const KeyPath& a, const KeyPath& b) noexcept {
        return a.m_segments == b.m_segments || *a.m_segments == *b.m_segments;
    }
    /// The hash that goes with operator==; good within the process, as the ids of names are.
    /// Cost: computed on the first call and kept.
    uint64 GetHashValue() const noexcept {
        const uint64 hash = m_hash.load(std::memory_order_relaxed);
        return hash != 0 ? hash : ComputeHash();
    }

    /// The path of a text: segments separated by "/", each a word, an integer or a quoted string,
    /// and behind it optionally ":" and a type. Blanks may stand between the parts. For instance
    /// "a/b", "a/'two words'/12", "a:A<i>/b:K<s,P{ i, b }>". An integer is taken as number, so that
    /// "007" names "7".
    ///
    /// Errors, the first three with the text as details: UnexpectedToken where it is no such text,
    /// where something follows, where types nest more than 256 levels, and at more than 1,000
    /// segments; InvalidStoreType for the code of a type that is longer than one character;
    /// UnknownTypeName for an unknown code; those of making the types; std::out_of_range, "invalid
    /// unordered_map<K, T> key", for the name of an unknown external type.
    static KeyPath ParseString(const TStringCore& text);
    /// The text form without types. Names that are neither words nor integers are quoted. Empty
    /// names leave no text, and at the start of the path no separator, so such paths do not read
    /// back; neither does a name of digits with a leading zero.
    TStringCore ToString() const;

    /// A strict order for ordered containers, stable between processes: fewer segments first, then
    /// by the text of the names, unit by unit.
    struct LUM_CORE_API Compare {
        bool operator()(const KeyPath& a, const KeyPath& b) const noexcept;
    };

private:
    KeyPath(std::shared_ptr<std::vector<KeySegment>>&& segments, uint64 hash) noexcept
        : m_segments(std::move(segments)), m_hash(hash) {}

    uint64 ComputeHash() const noexcept;

    // Never null.
    std::shared_ptr<const std::vector<KeySegment>> m_segments;
    // 0 while it is not known. Threads that compute it at once store the same value.
    mutable std::atomic<uint64> m_hash;
};

}  // namespace lum::core

template <>
struct std::hash<lum::core::KeyPath> {
    // Not marked noexcept: the standard tables then keep the hash codes beside the keys.
    std::size_t operator()(const lum::core::KeyPath& path) const { return path.GetHashValue(); }
};
