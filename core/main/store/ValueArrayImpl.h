#pragma once

#include <algorithm>
#include <optional>
#include <utility>

#include "core/main/store/ArrayArguments.h"
#include "core/main/store/ColumnGather.h"
#include "core/main/store/TemporaryRawDataAccess.h"
#include "core/main/store/ValueArray.h"
#include "core/main/store/ValueSet.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/SetFactory.h"

namespace lum::core {

template <StorageType T>
ValueArray<T>::ValueArray(const CollectionType* type, PackagedArrayView<T>&& values,
                          PackagedArrayView<SpecialKind>&& specials,
                          const PackagedArrayView<unsigned>& indices, SortSpecOrder order)
    : m_type(CheckParts(type, values, specials)),
      m_storage(std::move(values), std::move(specials)),
      m_indexBlock(indices.GetStorage()),
      m_indices(indices.GetData()),
      m_count(indices.IsNull() ? m_storage.GetSize() : indices.GetSize()),
      m_order(order) {}

template <StorageType T>
const CollectionType* ValueArray<T>::CheckParts(const CollectionType* type,
                                                const PackagedArrayView<T>& values,
                                                const PackagedArrayView<SpecialKind>& specials) {
    LUM_CHECK_TEXT("(m_type) != nullptr", type != nullptr, LumError::NullArgument);
    LUM_CHECK_TEXT("!(m_values.IsNull())", !values.IsNull(), LumError::NullArray);
    if constexpr (!std::is_same_v<T, SV>) {
        LUM_CHECK_TEXT("(StorageTypeTraits<StorageT>::IsMatchingType(m_type->GetElementType()))",
                       StorageTypeTraits<T>::IsMatchingType(type->GetElementType()),
                       LumError::TypeMismatchExpected);
    }
    if (!specials.IsNull()) {
        LUM_CHECK_TEXT("!(IsCollectionStoreType(m_type->GetElementType()->GetStoreType()))",
                       !IsCollectionStoreType(type->GetElementType()->GetStoreType()),
                       LumError::NestedCollectionSpecials);
        LUM_CHECK_TEXT("(m_specials.GetSize() == m_values.GetSize())",
                       specials.GetSize() == values.GetSize(), LumError::SpecialsSizeMismatch);
    }
    return type;
}

template <StorageType T>
ValueArray<T>::ValueArray(const ValueArray& other)
    : StoreValue(other),
      IStoreCollection(other),
      ITypedArray<T>(other),
      m_type(other.m_type),
      m_storage(other.m_storage),
      m_indexBlock(other.m_indexBlock),
      m_indices(other.m_indices),
      m_count(other.m_count),
      m_order(SortSpecOrder::UNKNOWN),
      m_indexRange(other.m_indexRange.load(std::memory_order_relaxed)) {}

template <StorageType T>
ValueArray<T>::ValueArray(Unchecked, const ValueArray& other, lumsize_t startIndex, lumsize_t count)
    : m_type(other.m_type),
      m_storage(other.m_storage, startIndex, count),
      m_count(count),
      m_order(other.m_order) {}

template <StorageType T>
ValueArray<T>::ValueArray(Unchecked, const ValueArray& other,
                          std::shared_ptr<const RawData>&& indices, SortSpecOrder order)
    : m_type(other.m_type), m_storage(other.m_storage), m_order(order) {
    if (indices == nullptr) {
        m_count = m_storage.GetSize();
    } else {
        m_indices = indices->ViewAs<unsigned>().GetData();
        m_count = indices->GetSize();
        m_indexBlock = std::move(indices);
    }
}

template <StorageType T>
std::unique_ptr<StoreValue> ValueArray<T>::Clone() const {
    return std::make_unique<ValueArray>(*this);
}

template <StorageType T>
SV ValueArray<T>::GetValue(const RInternString& key) const {
    return MakeStoreValueFromStorageType<T>(GetElementType(), GetValue(ReadElementKey(key)));
}

template <StorageType T>
SV ValueArray<T>::TryGetValue(const RInternString& key) const {
    const std::optional<lumsize_t> index = TryReadElementKey(key, m_count);
    if (!index.has_value()) {
        return nullptr;
    }
    const lumsize_t stored = GetStoredIndex(*index);
    return stored < m_storage.GetSize() ? MakeStoreValueFromStorageType<T>(
                                              GetElementType(), m_storage.GetValueData()[stored])
                                        : nullptr;
}

template <StorageType T>
bool ValueArray<T>::HasKey(const RInternString& key) const {
    return TryReadElementKey(key, m_count).has_value();
}

template <StorageType T>
const IUniformCollection::StoreValueIterable& ValueArray<T>::GetStoreValueIterable() const {
    std::call_once(m_iterableFlag, [this] {
        m_iterable =
            std::make_unique<ArrayStoreValueIterable>(GetElementType(), GetAdapterWithSpecials());
    });
    return *m_iterable;
}

template <StorageType T>
SV ValueArray<T>::WithIndices(std::shared_ptr<const RawData> indices, SortSpecOrder order) const {
    return std::make_shared<ValueArray>(Unchecked(), *this, std::move(indices), order);
}

template <StorageType T>
SV ValueArray<T>::WithIndices(std::vector<unsigned>&& indices, SortSpecOrder order) const {
    return WithIndices(std::make_shared<const VectorRawData<unsigned>>(std::move(indices)), order);
}

template <StorageType T>
SV ValueArray<T>::ComposeIndices(std::shared_ptr<const RawData> indices,
                                 SortSpecOrder order) const {
    if (!HasIndices()) {
        return WithIndices(std::move(indices), order);
    }
    const PackagedArrayView<unsigned> view(std::move(indices));
    const ArrayView<const unsigned> positions = view.GetView();
    return WithIndices(GatherColumn(GetIndices(), positions, AllBelow(positions, m_count)), order);
}

template <StorageType T>
SV ValueArray<T>::ComposeIndices(std::vector<unsigned>&& indices, SortSpecOrder order) const {
    if (HasIndices()) {
        const ArrayView<const unsigned> positions = indices;
        GatherColumn(GetIndices(), positions, AllBelow(positions, m_count), indices.data());
    }
    return WithIndices(std::move(indices), order);
}

template <StorageType T>
SV ValueArray<T>::Materialize() const {
    if (!HasIndices()) {
        return std::make_shared<ValueArray>(Unchecked(), *this, std::shared_ptr<const RawData>(),
                                            m_order);
    }
    const bool isInside = AreIndicesInside();
    PackagedArrayView<T> values(GatherColumn(m_storage.GetValues(), GetIndices(), isInside));
    PackagedArrayView<SpecialKind> specials;
    if (m_storage.HasKinds()) {
        specials = PackagedArrayView<SpecialKind>(
            GatherColumn(m_storage.GetKinds(), GetIndices(), isInside));
    }
    return std::make_shared<ValueArray>(m_type, std::move(values), std::move(specials),
                                        PackagedArrayView<unsigned>(), m_order);
}

template <StorageType T>
SV ValueArray<T>::ToSet(bool includeSpecials) const {
    std::unique_ptr<SetContainer<T>> values = MakeSetContainer<T>(GetElementType(), m_count);
    auto kinds = std::make_unique<std::unordered_set<SpecialKind>>();
    const bool takesKinds = includeSpecials && HasSpecialValues();
    if (HasIndices()) {
        const bool isInside = AreIndicesInside();
        WithGathered(m_storage.GetValues(), GetIndices(), isInside, [&](auto first, auto last) {
            for (; !(first == last); ++first) {
                values->insert(*first);
            }
        });
        if (takesKinds) {
            WithGathered(m_storage.GetKinds(), GetIndices(), isInside, [&](auto first, auto last) {
                for (; !(first == last); ++first) {
                    kinds->insert(*first);
                }
            });
        }
    } else {
        // Placeholders are values here, on purpose.
        for (const T& value : m_storage.GetValues()) {
            values->insert(value);
        }
        if (takesKinds) {
            const ArrayView<const SpecialKind> stored = m_storage.GetKinds();
            kinds->insert(stored.begin(), stored.end());
        }
    }
    kinds->erase(SpecialKind::Normal);
    return factory::MakeSet<T>(GetElementType(), std::move(values), std::move(kinds));
}

template <StorageType T>
bool ValueArray<T>::AreIndicesInside() const {
    IndexRange range = m_indexRange.load(std::memory_order_relaxed);
    if (range == IndexRange::Unknown) {
        range = AllBelow(GetIndices(), m_storage.GetSize()) ? IndexRange::Inside
                                                            : IndexRange::NotAllInside;
        m_indexRange.store(range, std::memory_order_relaxed);
    }
    return range == IndexRange::Inside;
}

template <StorageType T>
void ValueArray<T>::CheckIndices(lumsize_t startIndex, lumsize_t length) const {
    if (HasIndices() && !AreIndicesInside()) {
        for (lumsize_t i = 0; i < length; ++i) {
            CheckedStoredIndex(startIndex + i);
        }
    }
}

template <StorageType T>
void ValueArray<T>::CopyValues(ArrayView<T> outView, lumsize_t startIndex, lumsize_t length) const {
    CheckElementRange(startIndex, length, m_count);
    LUM_CHECK(outView.GetSize() >= length, LumError::OutOfBounds);
    CheckIndices(startIndex, length);
    if (HasIndices()) {
        GatherColumn(m_storage.GetValues(), GetIndexRange(startIndex, length), /*isInRange=*/true,
                     outView.GetData());
    } else {
        std::copy_n(m_storage.GetValueData() + startIndex, length, outView.GetData());
    }
}

template <StorageType T>
void ValueArray<T>::CopySpecials(ArrayView<SpecialKind> outView, lumsize_t startIndex,
                                 lumsize_t length) const {
    CheckElementRange(startIndex, length, m_count);
    LUM_CHECK(outView.GetSize() >= length, LumError::OutOfBounds);
    if (!m_storage.HasKinds()) {
        std::fill(outView.begin(), outView.end(), SpecialKind::Normal);
        return;
    }
    CheckIndices(startIndex, length);
    if (HasIndices()) {
        GatherColumn(m_storage.GetKinds(), GetIndexRange(startIndex, length), /*isInRange=*/true,
                     outView.GetData());
    } else {
        std::copy_n(m_storage.GetKindData() + startIndex, length, outView.GetData());
    }
}

template <StorageType T>
void ValueArray<T>::CopyToTuples(ArrayView<LumTuple> outView, lumsize_t startIndex,
                                 lumsize_t length, lumsize_t tupleIndex) const {
    CheckElementRange(startIndex, length, m_count);
    CheckRows(outView, length, m_count, tupleIndex, m_type, std::is_same_v<T, SV>);
    if constexpr (!std::is_same_v<T, LumTuple>) {
        CheckIndices(startIndex, length);
        if (HasSpecialValues()) {
            for (lumsize_t i = 0; i < length; ++i) {
                outView.GetData()[i].SetNthSpecialUnsafe(
                    tupleIndex, m_storage.GetKindData()[GetStoredIndex(startIndex + i)]);
            }
        }
        for (lumsize_t i = 0; i < length; ++i) {
            outView.GetData()[i].template SetNthValueUnsafe<T>(
                tupleIndex, m_storage.GetValueData()[GetStoredIndex(startIndex + i)]);
        }
    }
}

template <StorageType T>
ConstRawDataView ValueArray<T>::GetValuesView(TemporaryRawData& scratch, lumsize_t startIndex,
                                              lumsize_t length) const {
    CheckElementRange(startIndex, length, m_count);
    if (!HasIndices()) {
        return m_storage.GetRawValues(startIndex, length);
    }
    return detail::TemporaryRawDataAccess::Fill(
        scratch,
        GatherColumn(m_storage.GetValues(), GetIndexRange(startIndex, length), AreIndicesInside()));
}

template <StorageType T>
ConstRawDataView ValueArray<T>::GetSpecialsView(TemporaryRawData& scratch, lumsize_t startIndex,
                                                lumsize_t length) const {
    CheckElementRange(startIndex, length, m_count);
    if (HasSpecialValues() && !HasIndices()) {
        return m_storage.GetRawKinds(startIndex, length);
    }
    std::vector<SpecialKind> kinds(length);
    CopySpecials(kinds, startIndex, length);
    return detail::TemporaryRawDataAccess::Fill(scratch, std::move(kinds));
}

template <StorageType T>
lumsize_t ValueArray<T>::CheckedStoredIndex(lumsize_t index) const {
    if (!HasIndices()) {
        LUM_CHECK_TEXT("(static_cast<size_t>(index) < m_values.GetSize())", index < m_count,
                       LumError::OutOfBounds);
        return index;
    }
    LUM_CHECK_TEXT("(static_cast<size_t>(index) < m_indices.GetSize())", index < m_count,
                   LumError::OutOfBounds);
    const lumsize_t realIndex = m_indices[index];
    LUM_CHECK_TEXT("(static_cast<size_t>(realIndex) < m_values.GetSize())",
                   realIndex < m_storage.GetSize(), LumError::OutOfBounds);
    return realIndex;
}

template <StorageType T>
const T& ValueArray<T>::GetValue(lumsize_t index) const {
    return m_storage.GetValueData()[CheckedStoredIndex(index)];
}

template <StorageType T>
const T& ValueArray<T>::GetValueUnchecked(lumsize_t index) const {
    return HasIndices() ? m_storage.GetValues()[GetIndices()[index]]
                        : m_storage.GetValueData()[index];
}

template <StorageType T>
SpecialKind ValueArray<T>::GetSpecialKind(lumsize_t index) const {
    const lumsize_t stored = CheckedStoredIndex(index);
    return !m_storage.HasKinds() ? SpecialKind::Normal : m_storage.GetKindData()[stored];
}

template <StorageType T>
bool ValueArray<T>::IsSpecial(lumsize_t index) const {
    return GetSpecialKind(index) != SpecialKind::Normal;
}

template <StorageType T>
SV ValueArray<T>::GetElement(lumsize_t index) const {
    if (HasSpecialValues()) {
        const SpecialKind kind = GetSpecialKind(index);
        if (kind != SpecialKind::Normal) {
            return factory::MakeSpecial(GetElementType(), kind);
        }
    }
    return MakeStoreValueFromStorageType<T>(GetElementType(), GetValue(index));
}

template <StorageType T>
SV ValueArray<T>::GetRange(lumsize_t startIndex, lumsize_t length, unsigned step) const {
    if (step != 1 || HasIndices()) {
        return GetStride(startIndex, length, step);
    }
    if (startIndex >= m_count) {
        startIndex = 0;
        length = 0;
    }
    const lumsize_t count = std::min(m_count - startIndex, length);
    return std::make_shared<ValueArray>(Unchecked(), *this, startIndex, count);
}

template <StorageType T>
SV ValueArray<T>::GetStride(lumsize_t startIndex, lumsize_t length, unsigned step) const {
    if (startIndex >= m_count) {
        startIndex = 0;
        length = 0;
    }
    return ComposeIndices(MakeStride(startIndex, length, step, m_count), m_order);
}

template <StorageType T>
ArrayCursor<T> ValueArray<T>::GetAdapter() const {
    return {m_type, m_storage.GetValues(), nullptr, m_indices, m_count};
}

template <StorageType T>
ArrayCursor<T> ValueArray<T>::GetAdapterWithSpecials() const {
    return {m_type, m_storage.GetValues(), m_storage.GetKindData(), m_indices, m_count};
}

template <StorageType T>
ArrayView<const T> ValueArray<T>::GetValues() const {
    LUM_CHECK_NOT(HasIndices(), LumError::ArrayHasIndices);
    return m_storage.GetValues();
}

template <StorageType T>
ArrayView<const SpecialKind> ValueArray<T>::GetSpecials() const {
    LUM_CHECK_NOT(HasIndices(), LumError::ArrayHasIndices);
    LUM_CHECK(HasSpecialValues(), LumError::ArrayLacksSpecials);
    return m_storage.GetKinds();
}

template <StorageType T>
ArrayView<const ValueCompositeArrayRange<T>> ValueArray<T>::GetCompositeRanges() const {
    LUM_FAIL(LumError::NotImplemented);
}

template <StorageType T>
bool ValueArray<T>::ElementsEqual(lumsize_t idx1, lumsize_t idx2) const {
    const SpecialKind kind = GetSpecialKind(idx1);
    if (kind != GetSpecialKind(idx2)) {
        return false;
    }
    return kind != SpecialKind::Normal ||
           std::equal_to<T>()(m_storage.GetValueData()[GetStoredIndex(idx1)],
                              m_storage.GetValueData()[GetStoredIndex(idx2)]);
}

template <StorageType T>
lumsize_t ValueArray<T>::FindRunEnd(lumsize_t startIndex) const {
    LUM_CHECK(startIndex < m_count, LumError::OutOfBounds);
    const lumsize_t start = CheckedStoredIndex(startIndex);
    const T& value = m_storage.GetValueData()[start];
    const SpecialKind* const kinds = m_storage.GetKindData();
    const std::equal_to<T> isEqual;
    lumsize_t end = startIndex;
    while (end + 1 < m_count) {
        const lumsize_t next = HasIndices() ? CheckedStoredIndex(end + 1) : end + 1;
        // Placeholders are compared as well: two specials over different ones are two runs.
        if ((kinds != nullptr && kinds[next] != kinds[start]) ||
            !isEqual(m_storage.GetValueData()[next], value)) {
            break;
        }
        ++end;
    }
    return end;
}

namespace detail {

template <StorageType T>
SV MakeArrayOfViews(const Type* elementType, PackagedArrayView<T> values,
                    PackagedArrayView<unsigned> indices, PackagedArrayView<SpecialKind> specials,
                    SortSpecOrder order) {
    const ArrayView<const T> stored(values.GetData(), values.GetSize());
    SV array = std::make_shared<ValueArray<T>>(ArrayType::Get(elementType), std::move(values),
                                               std::move(specials), std::move(indices), order);
    if constexpr (std::is_same_v<T, LumTuple>) {
        // Rows make their blocks when they are first read, which must not happen on two threads.
        for (const LumTuple& row : stored) {
            row.GetTupleData().EnsureBlock();
        }
    }
    return array;
}

template <typename X>
PackagedArrayView<X> ViewOf(std::unique_ptr<std::vector<X>> elements) {
    return elements == nullptr ? PackagedArrayView<X>()
                               : PackagedArrayView<X>(std::move(*elements));
}

}  // namespace detail

template <StorageType T>
SV factory::MakeArray(const Type* elementType, std::vector<T>&& values, SortSpecOrder order) {
    return detail::MakeArrayOfViews<T>(elementType, PackagedArrayView<T>(std::move(values)), {}, {},
                                       order);
}

template <StorageType T>
SV factory::MakeArray(const Type* elementType, std::vector<T>&& values,
                      std::vector<unsigned>&& indices, SortSpecOrder order) {
    return detail::MakeArrayOfViews<T>(elementType, PackagedArrayView<T>(std::move(values)),
                                       PackagedArrayView<unsigned>(std::move(indices)), {}, order);
}

template <StorageType T>
SV factory::MakeArray(const Type* elementType, std::vector<T>&& values,
                      std::vector<unsigned>&& indices, std::vector<SpecialKind>&& specials,
                      SortSpecOrder order) {
    return detail::MakeArrayOfViews<T>(elementType, PackagedArrayView<T>(std::move(values)),
                                       PackagedArrayView<unsigned>(std::move(indices)),
                                       PackagedArrayView<SpecialKind>(std::move(specials)), order);
}

template <StorageType T>
SV factory::MakeArray(const Type* elementType, std::unique_ptr<std::vector<T>> values,
                      std::unique_ptr<std::vector<unsigned>> indices,
                      std::unique_ptr<std::vector<SpecialKind>> specials, SortSpecOrder order) {
    return detail::MakeArrayOfViews<T>(elementType, detail::ViewOf(std::move(values)),
                                       detail::ViewOf(std::move(indices)),
                                       detail::ViewOf(std::move(specials)), order);
}

template <StorageType T>
SV factory::MakeArray(const Type* elementType, std::shared_ptr<const RawData> values,
                      std::shared_ptr<const RawData> specials, SortSpecOrder order) {
    return detail::MakeArrayOfViews<T>(elementType, PackagedArrayView<T>(std::move(values)), {},
                                       PackagedArrayView<SpecialKind>(std::move(specials)), order);
}

// A class and its makers for one storage type.
#define LUM_INSTANTIATE_VALUE_ARRAY(T)                                                          \
    template class ValueArray<T>;                                                               \
    template LUM_CORE_API SV factory::MakeArray(const Type*, std::vector<T>&&, SortSpecOrder);  \
    template LUM_CORE_API SV factory::MakeArray(const Type*, std::vector<T>&&,                  \
                                                std::vector<unsigned>&&, SortSpecOrder);        \
    template LUM_CORE_API SV factory::MakeArray(const Type*, std::vector<T>&&,                  \
                                                std::vector<unsigned>&&,                        \
                                                std::vector<SpecialKind>&&, SortSpecOrder);     \
    template LUM_CORE_API SV factory::MakeArray(                                                \
        const Type*, std::unique_ptr<std::vector<T>>, std::unique_ptr<std::vector<unsigned>>,   \
        std::unique_ptr<std::vector<SpecialKind>>, SortSpecOrder);                              \
    template LUM_CORE_API SV factory::MakeArray<T>(const Type*, std::shared_ptr<const RawData>, \
                                                   std::shared_ptr<const RawData>, SortSpecOrder);

}  // namespace lum::core
