#include "core/main/store/ArrayArguments.h"

#include <algorithm>
#include <limits>

#include "core/main/utility/Parser.h"
#include "lum/core/Check.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/utility/LumTuple.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

lumsize_t ReadElementKey(const RInternString& key) {
    return static_cast<lumsize_t>(ReadInt32(key.GetValue()));
}

std::optional<lumsize_t> TryReadElementKey(const RInternString& key, lumsize_t count) {
    const std::optional<int> number = TryReadInt32(key.GetValue());
    if (!number.has_value() || static_cast<lumsize_t>(*number) >= count) {
        return std::nullopt;
    }
    return static_cast<lumsize_t>(*number);
}

void CheckElementRange(lumsize_t startIndex, lumsize_t length, lumsize_t count) {
    LUM_CHECK_TEXT(
        "((std::numeric_limits<lumsize_t>::max() - startIndex >= length) && "
        "(startIndex + length <= GetCount()))",
        std::numeric_limits<lumsize_t>::max() - startIndex >= length &&
            startIndex + length <= count,
        LumError::OutOfBounds);
}

void CheckRows(ArrayView<LumTuple> outView, lumsize_t length, lumsize_t count, lumsize_t tupleIndex,
               const CollectionType* type, bool areHandles) {
    constexpr char kType[] = "(outView[0].GetNthType(tupleIndex) == m_type->GetElementType())";
    const Type* const elementType = type->GetElementType();
    const uint64 arrayLength = outView.GetSize();
    LUM_CHECK_TEXT("(arrayLength <= GetCount())", arrayLength <= count, LumError::OutOfBounds);
    LUM_CHECK(arrayLength == length, LumError::OutOfBounds);
    LUM_CHECK_TEXT(kType, outView[0].GetNthType(tupleIndex) == elementType, LumError::TypeMismatch);
    if (areHandles) {
        // Handles may be stored for elements of any type; other members have no room for one.
        LUM_CHECK_TEXT("(m_type->GetElementType()->Is(StoreType::External))",
                       elementType->Is(StoreType::External), LumError::TypeMismatch);
    }
    // The writes to come trust each row's layout, so each row is looked at, before any is written.
    for (const LumTuple& row : outView) {
        LUM_CHECK_TEXT(kType, row.GetNthType(tupleIndex) == elementType, LumError::TypeMismatch);
        row.GetTupleData().EnsureBlock();
    }
}

std::vector<unsigned> MakeStride(lumsize_t startIndex, lumsize_t length, unsigned step,
                                 lumsize_t count) {
    CheckStep(step);
    // A length of 0 wraps round to all that the stride reaches, and so does the position.
    const lumsize_t last = std::min(count, length) - 1;
    std::vector<unsigned> indices;
    if (startIndex < count) {
        indices.reserve(std::min<uint64>(uint64{last} + 1, (count - startIndex) / step + 1));
    }
    for (lumsize_t index = startIndex; indices.size() <= last && index < count; index += step) {
        indices.push_back(index);
    }
    return indices;
}

void CheckStep(unsigned step) {
    if (step == 0) {
        LUM_FAIL(LumError::OutOfBounds, L"Illegal range step value");
    }
}

}  // namespace lum::core
