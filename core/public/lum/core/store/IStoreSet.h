#pragma once

#include "lum/core/Export.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/store/IUniformCollection.h"
#include "lum/core/store/SetCursor.h"
#include "lum/core/store/SpecialKind.h"

namespace lum::core {

/// The special members of a set, in no order.
/// Threads: any. Ownership: good while the set lives.
class LUM_CORE_API SpecialKindIterable {
public:
    using Iterator = std::unordered_set<SpecialKind>::const_iterator;

    virtual ~SpecialKindIterable() = default;
    virtual Iterator begin() const = 0;
    virtual Iterator end() const = 0;
};

/// An immutable set of distinct values of one type, and beside them of special kinds.
///
/// As an IStoreCollection a set takes the text of a value for a key, and gives a Bool that says
/// whether the value is a member; HasKey is true for every key. Errors of GetValue: that of the
/// reader of the text; ValueSetStringLookup for values stored as SV, NotImplemented for rows.
///
/// Threads: every operation runs on any threads at once. Ownership: sets made from this one share
/// its values.
class LUM_CORE_API IStoreSet : public IUniformCollection {
public:
    /// How many special kinds are members.
    virtual lumsize_t GetSpecialCount() const = 0;
    virtual bool HasSpecial(SpecialKind kind) const = 0;
    /// An array of the members, in no order; with `includeSpecials` the special ones behind all
    /// others, each over a default value, else without them.
    virtual SV ToArray(bool includeSpecials) const = 0;
    /// A set of the same values without special members. Cost: O(1).
    virtual SV WithoutSpecials() const = 0;
};

/// A set whose storage type the caller knows.
template <typename T>
class LUM_CORE_API ITypedSet : public IStoreSet {
public:
    /// Whether the value is a member. Cost: one hash probe; for strings see ContainsEach as well.
    /// Errors: those of the values' hash and equality.
    virtual bool Contains(const T& value) const = 0;
    /// The same of many values: `out` gets 1 in the place of each that is a member, else 0.
    /// Cost: one hash probe a value; numbers are looked up side by side. A set that is asked much
    /// makes a table for it, keeps it, and is several times as fast from then on: of numbers once
    /// this was asked for 8 times as many as it has, of strings once this and Contains were for as
    /// many as it has, and for 1,024 either way. It takes 2 to 8 times the size of the numbers, or
    /// 24 to 48 bytes a string. Strings have one only where their collator is exact.
    /// Errors: OutOfBounds where `out` is shorter than `values`, nothing being written; those of
    /// Contains, at the value that has them.
    virtual void ContainsEach(ArrayView<const T> values, ArrayView<unsigned char> out) const = 0;
    /// A cursor at the first value; special members are not visited.
    virtual SetCursor<T> GetValuesCursor() const = 0;
    virtual const SpecialKindIterable& GetSpecialKinds() const = 0;
};

}  // namespace lum::core
