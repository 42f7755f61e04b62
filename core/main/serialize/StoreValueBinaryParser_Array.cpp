#include <algorithm>

#include "core/main/serialize/StoreValueBinaryParser.h"
#include "core/main/store/ValueArray.h"
#include "core/main/store/ValueCompositeArray.h"
#include "core/main/store/ValueSet.h"
#include "lum/core/Check.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core {
namespace {

// `count` items of the open segment, in place.
template <typename T>
ArrayView<const T> ReadBlock(BinaryProtocolReader& reader, lumsize_t count) {
    if constexpr (std::is_same_v<T, SpecialKind>) {
        return reader.ReadSpecialArray(count);
    } else if constexpr (sizeof(T) == 1) {
        return reader.ReadStorage8BitArray(count);
    } else if constexpr (sizeof(T) == 4) {
        return reader.ReadStorage32BitArray(count);
    } else {
        return reader.ReadStorage64BitArray(count);
    }
}

// Indices are compared with the elements once, here, since no read of an element tests them again.
template <typename T>
void CheckIndices(const std::vector<ValueCompositeArrayRange<T>>& ranges,
                  ArrayView<const unsigned int> indices) {
    uint64 elementCount = 0;
    for (const ValueCompositeArrayRange<T>& range : ranges) {
        elementCount += range.count;
    }
    unsigned int largest = 0;
    for (const unsigned int index : indices) {
        largest = std::max(largest, index);
    }
    LUM_CHECK(indices.GetSize() == 0 || largest < elementCount, LumError::InvalidBinaryData);
}

}  // namespace

SV BinaryValueReader::ReadArray(const CollectionType* type) {
    return DispatchStorage(type->GetElementType()->GetStoreType(),
                           [&]<typename T>(StorageTag<T>) { return ReadArrayOf<T>(type); });
}

template <StorageType T>
SV BinaryValueReader::ReadArrayOf(const CollectionType* type) {
    if constexpr (std::is_arithmetic_v<T>) {
        BinaryListType binListType;
        ArrayView<const T> items;
        if (!m_hasOwnReads && m_reader.TryReadPlainList(binListType, items)) {
            return MakeArrayOverPayload<T>(type, ShareBlock(items), {}, binListType);
        }
    }
    const BinaryListType binListType = m_reader.BeginListType();
    SV array;
    switch (binListType.GetContainerType()) {
        case BinaryContainerType::ConstantArray:
            array = ReadConstantArray<T>(type, binListType);
            break;
        case BinaryContainerType::CompositeArray:
            array = ReadCompositeArray<T>(type, binListType);
            break;
        default:
            array = ReadPlainArray<T>(type, binListType);
    }
    m_reader.EndListType();
    return array;
}

template <typename T>
PackagedArrayView<T> BinaryValueReader::ShareBlock(ArrayView<const T> items) {
    return {std::get<SharedBatch<UnmanagedRawData<T>>>(m_blocks).Make(m_buffer, items), items};
}

template <StorageType T>
SV BinaryValueReader::MakeArrayOverPayload(const CollectionType* type,
                                           PackagedArrayView<T>&& values,
                                           PackagedArrayView<SpecialKind>&& specials,
                                           BinaryListType binListType) {
    return std::get<SharedBatch<ValueArray<T>>>(m_arrays).Make(
        type, std::move(values), std::move(specials), PackagedArrayView<unsigned int>(),
        binListType.GetSortOrder());
}

template <StorageType T>
std::vector<T> BinaryValueReader::ReadElements(const Type* elementType, lumsize_t count) {
    if constexpr (std::is_same_v<T, RIndirectString>) {
        if (!m_hasOwnReads) {
            return m_reader.ReadStrings(count);
        }
    }
    std::vector<T> elements;
    elements.reserve(PlanRoom(count));
    for (lumsize_t i = 0; i < count; ++i) {
        elements.push_back(ReadElement<T>(elementType));
    }
    return elements;
}

template <typename T>
PackagedArrayView<T> BinaryValueReader::ReadSegment([[maybe_unused]] const Type* elementType) {
    const lumsize_t count = m_reader.BeginListData();
    if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
        const ArrayView<const T> block = ReadBlock<T>(m_reader, count);
        m_reader.EndListData();
        return ShareBlock(block);
    } else {
        std::vector<T> elements = ReadElements<T>(elementType, count);
        m_reader.EndListData();
        return PackagedArrayView<T>(std::move(elements));
    }
}

template <StorageType T>
SV BinaryValueReader::ReadPlainArray(const CollectionType* type, BinaryListType binListType) {
    LUM_CHECK(binListType.GetContainerType() == BinaryContainerType::Array,
              LumError::InvalidListType);
    if (binListType.HasSpecials()) {
        LUM_CHECK_TEXT("(type->GetElementType()->TryAs<CollectionType>()) == nullptr",
                       type->GetElementType()->TryAs<CollectionType>() == nullptr,
                       LumError::NestedCollectionSpecials);
    }
    PackagedArrayView<T> values = ReadSegment<T>(type->GetElementType());
    PackagedArrayView<SpecialKind> specials;
    if (binListType.HasSpecials()) {
        specials = ReadSegment<SpecialKind>(nullptr);
    }
    if constexpr (std::is_same_v<T, LumTuple>) {
        return factory::MakeArray<T>(type->GetElementType(), values.TakeStorage(),
                                     specials.TakeStorage(), binListType.GetSortOrder());
    } else if constexpr (std::is_arithmetic_v<T>) {
        return MakeArrayOverPayload<T>(type, std::move(values), std::move(specials), binListType);
    } else {
        return std::make_shared<ValueArray<T>>(type, std::move(values), std::move(specials),
                                               PackagedArrayView<unsigned int>(),
                                               binListType.GetSortOrder());
    }
}

// A few bytes may state any count, and nothing is made for each element.
template <StorageType T>
SV BinaryValueReader::ReadConstantArray(const CollectionType* type, BinaryListType binListType) {
    LUM_CHECK(binListType.GetContainerType() == BinaryContainerType::ConstantArray,
              LumError::InvalidListType);
    const Type* const elementType = type->GetElementType();
    const lumsize_t count = m_reader.BeginListData();
    SV array;
    if (binListType.HasSpecials()) {
        const SpecialKind kind = ReadKind();
        // There would be elements without a value.
        LUM_CHECK(kind != SpecialKind::Normal || count == 0, LumError::NormalBoxedSpecial);
        array = factory::MakeConstantArray<T>(elementType, count, kind);
    } else {
        array = factory::MakeConstantArray<T>(elementType, ReadElement<T>(elementType), count);
    }
    m_reader.EndListData();
    return array;
}

template <StorageType T>
SV BinaryValueReader::ReadCompositeArray(const CollectionType* type, BinaryListType binListType) {
    LUM_CHECK(binListType.GetContainerType() == BinaryContainerType::CompositeArray,
              LumError::InvalidListType);
    const lumsize_t rangeCount = m_reader.BeginListData();
    std::vector<ValueCompositeArrayRange<T>> ranges;
    ranges.reserve(PlanRoom(rangeCount));
    for (lumsize_t i = 0; i < rangeCount; ++i) {
        ranges.push_back({ReadElement<T>(type->GetElementType()), SpecialKind::Normal, 0});
    }
    m_reader.EndListData();
    const lumsize_t specialsCount = m_reader.BeginListData();
    LUM_CHECK(rangeCount == specialsCount, LumError::ListValueCountMismatch);
    for (ValueCompositeArrayRange<T>& range : ranges) {
        range.kind = ReadKind();
    }
    m_reader.EndListData();
    const lumsize_t countsCount = m_reader.BeginListData();
    LUM_CHECK(rangeCount == countsCount, LumError::ListValueCountMismatch);
    for (ValueCompositeArrayRange<T>& range : ranges) {
        range.count = m_reader.ReadStorage32Bit();
    }
    m_reader.EndListData();
    PackagedArrayView<unsigned int> indices;
    if (binListType.HasIndices()) {
        indices = ReadSegment<unsigned int>(nullptr);
        CheckIndices(ranges, indices.GetView());
    }
    return std::make_shared<ValueCompositeArray<T>>(
        type, PackagedArrayView<ValueCompositeArrayRange<T>>(std::move(ranges)), indices,
        binListType.GetSortOrder());
}

SV BinaryValueReader::ReadSet(const CollectionType* type) {
    return DispatchStorage(type->GetElementType()->GetStoreType(), [&]<typename T>(StorageTag<T>) {
        return ReadSetOf<T>(type->GetElementType());
    });
}

template <StorageType T>
SV BinaryValueReader::ReadSetOf(const Type* elementType) {
    const BinaryListType binListType = m_reader.BeginListType();
    LUM_CHECK(binListType.GetContainerType() == BinaryContainerType::Set,
              LumError::InvalidListType);
    const lumsize_t count = m_reader.BeginListData();
    auto values = MakeSetContainer<T>(elementType, PlanRoom(count));
    for (lumsize_t i = 0; i < count; ++i) {
        values->insert(ReadElement<T>(elementType));
    }
    m_reader.EndListData();
    auto specials = std::make_unique<std::unordered_set<SpecialKind>>();
    if (binListType.HasSpecials()) {
        const lumsize_t specialsCount = m_reader.BeginListData();
        for (lumsize_t i = 0; i < specialsCount; ++i) {
            specials->insert(ReadKind());
        }
        m_reader.EndListData();
    }
    SV set = factory::MakeSet<T>(elementType, std::move(values), std::move(specials));
    m_reader.EndListType();
    return set;
}

}  // namespace lum::core
