#pragma once

#include <memory>

#include "lum/core/Export.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"
#include "lum/core/utility/LumColor.h"
#include "lum/core/utility/LumDateTime.h"
#include "lum/core/utility/LumError.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/RIndirectString.h"

namespace lum::core {

class IStoreArray;
class IStoreCollection;
class IStoreKeyMap;
class IStoreMutableCollection;
class IStoreSet;
class IStoreTable;
class IUniformCollection;
class ValueExternal;
template <typename T>
class ITypedArray;
template <typename T>
class ITypedSet;
template <typename K, typename V>
class IStoreDictionary;

namespace detail {
template <StorageType T>
LUM_CORE_API const ITypedArray<T>& CastToTypedArray(const StoreValue& value);
template <StorageType T>
LUM_CORE_API const ITypedSet<T>& CastToTypedSet(const StoreValue& value);
template <StorageType K, StorageType V>
LUM_CORE_API const IStoreDictionary<K, V>& CastToDictionary(const StoreValue& value);
}  // namespace detail

/// A value of any kind: a scalar, a special value, a tuple, a value of the host's own, a
/// collection. The makers of lum::core::factory make them; a host derives from ValueExternal alone.
///
/// Threads: a value is immutable once it was handed out and may be read on any threads at once. Key
///   maps are the exception: a write needs exclusion from all other access.
/// Ownership: held by SV or std::unique_ptr<StoreValue>. The references that the accessors give are
///   good while the value lives.
/// Errors: LumRuntimeException with the code named at the operation; the value stays as it was.
class LUM_CORE_API StoreValue {
public:
    virtual ~StoreValue() = default;

    virtual StoreType GetStoreType() const { return GetType()->GetStoreType(); }
    virtual SpecialKind GetSpecialKind() const { return SpecialKind::Normal; }
    virtual const Type* GetType() const = 0;
    /// 1 for a scalar, the number of elements or members of a collection.
    virtual lumsize_t GetCount() const = 0;
    /// Equal values of one base type hash equal. 0 where a class has no hash, as collections do.
    virtual uint64 GetHashValue() const { return 0; }
    /// False for values of different base types; otherwise whether Compare gives 0.
    virtual bool IsEqual(const StoreValue& other) const;
    /// The value converted to `type`, of which only the store type is looked at. Numbers convert
    /// among each other, dates among each other, a special value to any type; the own type gives a
    /// copy. Reals become integers by truncation, and the lowest integer where they do not fit.
    /// Errors: IllegalCast.
    virtual std::unique_ptr<StoreValue> Cast(const Type* type) const;

    /// The content of a value of that kind. Nothing is converted, and a special value has none.
    /// Errors, with the value's store type and special kind as details: ExpectedBool and so on, by
    /// the name of the accessor; ExternalTypeExpected; CollectionNotMutable without details.
    virtual bool AsBool() const;
    virtual int AsInt32() const;
    virtual int64 AsInt64() const;
    virtual float AsReal32() const;
    virtual double AsReal64() const;
    virtual const RIndirectString& AsString() const;
    virtual LumDateTime AsDate() const;
    virtual LumDateTime AsDateTime() const;
    virtual LumColor AsColor() const;
    virtual const ValueExternal& AsExternal() const;
    virtual const IStoreCollection& AsCollection() const;
    virtual IStoreMutableCollection& AsMutableCollection();
    virtual const IUniformCollection& AsUniformCollection() const;
    virtual const IStoreArray& AsArray() const;
    virtual const IStoreSet& AsSet() const;
    virtual const IStoreKeyMap& AsKeyMap() const;
    virtual const IStoreTable& AsTable() const;
    virtual const LumTuple& AsTuple() const;

    /// A new object of the same type and value. Collections share their storage with it, but for
    /// key maps, whose members are cloned one by one.
    virtual std::unique_ptr<StoreValue> Clone() const = 0;

    /// Three-way comparison of two values of one kind. A normal value comes before every special
    /// one, and special values order by the number of their kind. A NaN is equal to everything.
    /// Errors: that of the accessor for a value of another kind; TypeMismatch where one is special
    /// and the base types differ; IllegalComparison for collections.
    int Compare(const StoreValue& other) const;
    bool IsLessThan(const StoreValue& other) const { return Compare(other) < 0; }
    bool IsGreaterThan(const StoreValue& other) const { return Compare(other) > 0; }
    bool IsSpecial() const { return GetSpecialKind() != SpecialKind::Normal; }

    /// Comparison with promotion (see TryPromotedType), in which reals may differ by 16 units in
    /// the last place. Values that do not promote are not equal. Errors: UnsupportedType for the
    /// order of values that do not promote; ExpectedReal64 where a Real64 with a precision or scale
    /// meets a Real32.
    bool FuzzyIsEqual(const StoreValue& other) const;
    bool FuzzyIsLessThan(const StoreValue& other) const;
    bool FuzzyIsGreaterThan(const StoreValue& other) const { return other.FuzzyIsLessThan(*this); }

    /// The typed interface of a collection. Cost: two calls for an array, else a cross-cast, so
    /// once a column. Errors: NotTypedArray, NotTypedSet, NotKeyedCollection.
    template <StorageType T>
    const ITypedArray<T>& AsTypedArray() const {
        return detail::CastToTypedArray<T>(*this);
    }
    template <StorageType T>
    const ITypedSet<T>& AsTypedSet() const {
        return detail::CastToTypedSet<T>(*this);
    }
    template <StorageType K, StorageType V>
    const IStoreDictionary<K, V>& AsDictionary() const {
        return detail::CastToDictionary<K, V>(*this);
    }

protected:
    StoreValue() = default;
    StoreValue(const StoreValue&) = default;
    StoreValue& operator=(const StoreValue&) = default;

    /// Compare for an `other` that is not special.
    virtual int CompareImpl(const StoreValue& other) const;
    /// The same with tolerance for reals.
    virtual int FuzzyCompareImpl(const StoreValue& other) const;

private:
    template <StorageType T>
    friend const ITypedArray<T>& detail::CastToTypedArray(const StoreValue& value);

    /// The array that the value is, or null.
    virtual const IStoreArray* FindArray() const noexcept { return nullptr; }
    [[noreturn]] void FailAccess(LumError error) const;
};

/// Whether the value is a collection, or a uniform one.
inline bool IsCollectionStoreType(const SV& value) {
    return IsCollectionStoreType(value->GetStoreType());
}
inline bool IsUniformCollectionStoreType(const SV& value) {
    return IsUniformCollectionStoreType(value->GetStoreType());
}

}  // namespace lum::core
