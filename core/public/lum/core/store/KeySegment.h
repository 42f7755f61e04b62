#pragma once

#include <cstddef>
#include <functional>

#include "lum/core/Export.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/LumString.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

class Type;

/// One step of a key path: a name, and optionally the type of the value that stands there. The name
/// alone identifies the segment; the type is a remark.
///
/// Threads: a plain value of three words, and copying is copying these.
/// Ownership: owns neither the name's text nor the type; both are good until the library unloads.
/// Units: none.
/// Errors: none, but for std::bad_alloc where a text is made.
class LUM_CORE_API KeySegment {
public:
    /// Takes both as they are; `type` may be null.
    KeySegment(const RInternString& name, const Type* type) noexcept
        : m_segment(name), m_type(type) {}

    const RInternString& GetSegment() const noexcept { return m_segment; }
    /// Null where the segment is untyped.
    const Type* GetType() const noexcept { return m_type; }
    bool HasType() const noexcept { return m_type != nullptr; }

    /// Compares the names; the types have no say.
    friend bool operator==(const KeySegment& a, const KeySegment& b) noexcept {
        return a.m_segment == b.m_segment;
    }
    /// Compares names and types.
    bool TypeAwareEquals(const KeySegment& other) const noexcept {
        return m_segment == other.m_segment && m_type == other.m_type;
    }
    /// The hash that goes with operator==: the name's id.
    uint64 GetHashValue() const noexcept { return m_segment.GetStringId(); }
    /// The hash that goes with TypeAwareEquals.
    uint64 GetTypeAwareHashValue() const noexcept;

    /// The segment whose name is this one's, "#" and `version` in decimal; the type stays. An older
    /// version in the name is part of the name: "b#3" becomes "b#3#4".
    /// Cost: interns the new name.
    KeySegment AddVersion(unsigned int version) const;

    /// The text form with the whole type: "a", "a:A<i>", "'two words':M{ x:i }". A segment with an
    /// empty name has no text, whatever its type.
    /// Errors: std::out_of_range where the type is an external one that is no longer registered.
    TStringCore ToString() const;

private:
    RInternString m_segment;
    const Type* m_type;
};

}  // namespace lum::core

template <>
struct std::hash<lum::core::KeySegment> {
    // Not marked noexcept: the standard tables then keep the hash codes beside the keys.
    std::size_t operator()(const lum::core::KeySegment& segment) const {
        return segment.GetHashValue();
    }
};
