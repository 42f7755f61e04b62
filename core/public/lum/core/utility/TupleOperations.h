#pragma once

#include "lum/core/Check.h"
#include "lum/core/Export.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/TupleType.h"
#include "lum/core/utility/LumColor.h"
#include "lum/core/utility/LumDateTime.h"
#include "lum/core/utility/RIndirectString.h"

namespace lum::core {

class LumTupleData;

/// What LumTupleData and LumTuple can both be asked: typed access to the members of a packed row,
/// comparison and hash. `Self` is one of the two.
///
/// The checked forms test the index and then the member's store type. The Unsafe twins test
/// nothing: an index out of range, or another type than the member's, is undefined. Writing a value
/// leaves the member's special kind as it is, and the other way round. The first access makes the
/// row's block, const access too, so a row is read or written once before threads share it.
/// Errors: OutOfBounds; TypeMismatchExpected for a member of another store type; LumLogicException
///   Unspecified where a reference has no block.
template <typename Self>
class TupleOperations {
public:
    const TupleType* GetType() const { return Data().m_type; }
    lumsize_t GetCount() const { return LumSizeCastSafe(GetType()->GetMembers().size()); }
    /// Bytes in the row's block.
    lumsize_t GetDataSize() const { return Data().GetBlockSize(); }
    const Type* GetNthType(lumsize_t index) const { return Data().GetMemberType(index); }

    /// -1, 0 or 1 by the first member that differs. Of two different special kinds the smaller
    /// number comes last, so a normal member comes after a special one, the reverse of the order
    /// of whole values; below equal kinds, special ones too, the values are compared.
    /// Errors: TypeMismatch for rows of different types; those of the members' comparison, as for
    /// strings without a collator pool.
    int Compare(const Self& other) const { return Data().CompareTo(other.GetTupleData()); }
    /// Over all members, special ones too: their kinds, and the raw bits of numbers, dates and
    /// colours, so that 0.0 and -0.0 hash differently although they compare equal; strings by their
    /// type's collation, external values by their own hash. Errors: those of the latter two.
    uint64 GetHashValue() const { return Data().ComputeHash(); }
    friend bool operator==(const Self& a, const Self& b) { return a.Compare(b) == 0; }
    friend bool operator<(const Self& a, const Self& b) { return a.Compare(b) < 0; }
    friend bool operator>(const Self& a, const Self& b) { return a.Compare(b) > 0; }

    bool IsNthSpecial(lumsize_t index) const { return GetNthSpecial(index) != SpecialKind::Normal; }
    SpecialKind GetNthSpecial(lumsize_t index) const {
        CheckSpecialIndex(index);
        return GetNthSpecialUnsafe(index);
    }
    void SetNthSpecial(lumsize_t index, SpecialKind kind) {
        CheckSpecialIndex(index);
        SetNthSpecialUnsafe(index, kind);
    }
    SpecialKind GetNthSpecialUnsafe(lumsize_t index) const { return *Data().SpecialAt(index); }
    void SetNthSpecialUnsafe(lumsize_t index, SpecialKind kind) { *Data().SpecialAt(index) = kind; }

// The four accessors of one store type: GetNthX, GetNthXUnsafe, SetNthX, SetNthXUnsafe. A Bool is
// read as the byte it stands in, since one that came from a column need not be 0 or 1.
#define LUM_TUPLE_MEMBER(Name, Result, Value)                                               \
    Result GetNth##Name(lumsize_t index) const {                                            \
        CheckType(index, StoreType::Name, "(GetNthType(index)->Is(StoreType::" #Name "))"); \
        return GetNth##Name##Unsafe(index);                                                 \
    }                                                                                       \
    Result GetNth##Name##Unsafe(lumsize_t index) const {                                    \
        return Data().template At<Value>(index);                                            \
    }                                                                                       \
    void SetNth##Name(lumsize_t index, Result value) {                                      \
        CheckType(index, StoreType::Name, "(GetNthType(index)->Is(StoreType::" #Name "))"); \
        SetNth##Name##Unsafe(index, value);                                                 \
    }                                                                                       \
    void SetNth##Name##Unsafe(lumsize_t index, Result value) {                              \
        Data().template At<Value>(index) = value;                                           \
    }
    LUM_TUPLE_MEMBER(Bool, bool, unsigned char)
    LUM_TUPLE_MEMBER(Int32, int, int)
    LUM_TUPLE_MEMBER(Int64, int64, int64)
    LUM_TUPLE_MEMBER(Real32, float, float)
    LUM_TUPLE_MEMBER(Real64, double, double)
    LUM_TUPLE_MEMBER(String, const RIndirectString&, RIndirectString)
    LUM_TUPLE_MEMBER(Date, LumDateTime, LumDateTime)
    LUM_TUPLE_MEMBER(DateTime, LumDateTime, LumDateTime)
    LUM_TUPLE_MEMBER(Color, LumColor, LumColor)
    LUM_TUPLE_MEMBER(External, const SV&, SV)
#undef LUM_TUPLE_MEMBER

    /// The member as `T`: an element type (bool, int, ...) or a storage type, which reads the bits
    /// of every store type of its width. A row has no rows for members: with LumTuple the checked
    /// form fails with TypeMismatchExpected, the others with LumLogicException IllegalOperation.
    template <typename T>
    T GetNthValue(lumsize_t index) const {
        const Type* const type = CheckIndex(index);
        LUM_CHECK_TEXT("(TypeTraits<T>::IsMatchingType(GetNthType(index)))",
                       (!std::is_same_v<T, LumTuple> && TypeTraits<T>::IsMatchingType(type) &&
                        (!std::is_same_v<T, SV> || type->Is(StoreType::External))),
                       LumError::TypeMismatchExpected);
        return GetNthValueUnsafe<T>(index);
    }
    template <typename T>
    T GetNthValueUnsafe(lumsize_t index) const {
        if constexpr (std::is_same_v<T, LumTuple>) {
            throw LumLogicException(LumError::IllegalOperation);
        } else if constexpr (std::is_same_v<T, bool>) {
            return GetNthBoolUnsafe(index);
        } else {
            return Data().template At<T>(index);
        }
    }
    template <typename T>
    void SetNthValueUnsafe(lumsize_t index, const T& value) {
        if constexpr (std::is_same_v<T, LumTuple>) {
            throw LumLogicException(LumError::IllegalOperation);
        } else {
            Data().template At<T>(index) = value;
        }
    }

private:
    // Dependent on Self, so that LumTupleData need only be complete where an operation is used.
    decltype(auto) Data() const {
        return static_cast<const Self*>(this)->GetTupleData();
    }
    decltype(auto) Data() {
        return static_cast<Self*>(this)->GetTupleData();
    }

    const Type* CheckIndex(lumsize_t index) const {
        const auto& members = GetType()->GetMembers();
        LUM_CHECK(index < members.size(), LumError::OutOfBounds);
        return members[index];
    }
    void CheckType(lumsize_t index, StoreType storeType, const char* condition) const {
        LUM_CHECK_TEXT(condition, CheckIndex(index)->Is(storeType), LumError::TypeMismatchExpected);
    }
    void CheckSpecialIndex(lumsize_t index) const {
        LUM_CHECK_TEXT("(index < m_type->GetMembers().size())",
                       index < GetType()->GetMembers().size(), LumError::OutOfBounds);
    }
};

}  // namespace lum::core
