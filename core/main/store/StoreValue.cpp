#include "lum/core/store/StoreValue.h"

#include "lum/core/Check.h"
#include "lum/core/store/SpecialKindText.h"
#include "lum/core/types/TypeUtil.h"

namespace lum::core {

void StoreValue::FailAccess(LumError error) const {
    TStringCore details = StoreTypeToString(GetStoreType());
    if (IsSpecial()) {
        details += L" (special kind: " + SpecialKindToString(GetSpecialKind()) + L")";
    }
    throw LumRuntimeException(error, details);
}

bool StoreValue::AsBool() const {
    FailAccess(LumError::ExpectedBool);
}
int StoreValue::AsInt32() const {
    FailAccess(LumError::ExpectedInt32);
}
int64 StoreValue::AsInt64() const {
    FailAccess(LumError::ExpectedInt64);
}
float StoreValue::AsReal32() const {
    FailAccess(LumError::ExpectedReal32);
}
double StoreValue::AsReal64() const {
    FailAccess(LumError::ExpectedReal64);
}
const RIndirectString& StoreValue::AsString() const {
    FailAccess(LumError::ExpectedString);
}
LumDateTime StoreValue::AsDate() const {
    FailAccess(LumError::ExpectedDate);
}
LumDateTime StoreValue::AsDateTime() const {
    FailAccess(LumError::ExpectedDateTime);
}
LumColor StoreValue::AsColor() const {
    FailAccess(LumError::ExpectedColor);
}
const ValueExternal& StoreValue::AsExternal() const {
    FailAccess(LumError::ExternalTypeExpected);
}
const IStoreCollection& StoreValue::AsCollection() const {
    FailAccess(LumError::ExpectedCollection);
}
IStoreMutableCollection& StoreValue::AsMutableCollection() {
    throw LumRuntimeException(LumError::CollectionNotMutable);
}
const IUniformCollection& StoreValue::AsUniformCollection() const {
    FailAccess(LumError::ExpectedUniformCollection);
}
const IStoreArray& StoreValue::AsArray() const {
    FailAccess(LumError::ExpectedArray);
}
const IStoreSet& StoreValue::AsSet() const {
    FailAccess(LumError::ExpectedSet);
}
const IStoreKeyMap& StoreValue::AsKeyMap() const {
    FailAccess(LumError::ExpectedKeyMap);
}
const IStoreTable& StoreValue::AsTable() const {
    FailAccess(LumError::ExpectedTable);
}
const LumTuple& StoreValue::AsTuple() const {
    FailAccess(LumError::ExpectedTuple);
}

std::unique_ptr<StoreValue> StoreValue::Cast(const Type* /*type*/) const {
    LUM_FAIL(LumError::IllegalCast);
}

int StoreValue::CompareImpl(const StoreValue& /*other*/) const {
    throw LumRuntimeException(LumError::IllegalComparison);
}

int StoreValue::FuzzyCompareImpl(const StoreValue& other) const {
    return CompareImpl(other);
}

int StoreValue::Compare(const StoreValue& other) const {
    return other.IsSpecial() ? -other.CompareImpl(*this) : CompareImpl(other);
}

bool StoreValue::IsEqual(const StoreValue& other) const {
    return GetType()->GetBaseType() == other.GetType()->GetBaseType() && Compare(other) == 0;
}

bool StoreValue::FuzzyIsEqual(const StoreValue& other) const {
    if (IsSpecial() != other.IsSpecial()) {
        return false;
    }
    const Type* const type = GetType();
    const Type* const otherType = other.GetType();
    if (type->GetBaseType() == otherType->GetBaseType()) {
        return FuzzyCompareImpl(other) == 0;
    }
    const Type* promoted = nullptr;
    if (!TryPromotedType(type, otherType, promoted)) {
        return false;
    }
    // One side alone is cast, on purpose: a Real64 of its own precision is cast to the default one,
    // and the Real32 that it meets then fails the comparison.
    return promoted != type ? Cast(promoted)->FuzzyCompareImpl(other) == 0
                            : FuzzyCompareImpl(*other.Cast(promoted)) == 0;
}

bool StoreValue::FuzzyIsLessThan(const StoreValue& other) const {
    const Type* const type = GetType();
    const Type* const otherType = other.GetType();
    if (type->GetBaseType() == otherType->GetBaseType()) {
        return other.IsSpecial() ? other.FuzzyCompareImpl(*this) > 0 : FuzzyCompareImpl(other) < 0;
    }
    const Type* const promoted = PromotedType(type, otherType);
    return promoted != type ? Cast(promoted)->FuzzyCompareImpl(other) < 0
                            : FuzzyCompareImpl(*other.Cast(promoted)) < 0;
}

}  // namespace lum::core

std::size_t std::hash<lum::core::SV>::operator()(const lum::core::SV& value) const {
    return value == nullptr ? 0 : value->GetHashValue();
}

bool std::equal_to<lum::core::SV>::operator()(const lum::core::SV& a,
                                              const lum::core::SV& b) const {
    return a != nullptr && b != nullptr && a->IsEqual(*b);
}
