#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <type_traits>
#include <unordered_set>
#include <utility>

#include "core/main/store/ArrayArguments.h"
#include "core/main/store/TemporaryRawDataAccess.h"
#include "core/main/store/ValueConstantArray.h"
#include "core/main/store/ValueSet.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/SetFactory.h"

namespace lum::core {

template <StorageType T>
ValueConstantArray<T>::ValueConstantArray(const CollectionType* type, const T& value,
                                          SpecialKind kind, lumsize_t count)
    : m_type(type), m_run{value, kind, count} {
    LUM_CHECK_NOT_NULL(m_type, LumError::NullArgument);
    const StoreType elementStoreType = m_type->GetElementType()->GetStoreType();
    LUM_CHECK(IsPrimitiveStoreType(elementStoreType) || elementStoreType == StoreType::Tuple,
              LumError::TypeMismatchExpected);
    if constexpr (!std::is_same_v<T, SV>) {
        using StorageT = T;
        LUM_CHECK(StorageTypeTraits<StorageT>::IsMatchingType(m_type->GetElementType()),
                  LumError::TypeMismatchExpected);
    }
    if constexpr (std::is_same_v<T, LumTuple>) {
        // A row makes its block when it is first read, which must not happen on two threads.
        m_run.value.GetTupleData().EnsureBlock();
    }
}

template <StorageType T>
ValueConstantArray<T>::ValueConstantArray(const ValueConstantArray& other, lumsize_t count)
    : StoreValue(other),
      IStoreCollection(other),
      ITypedArray<T>(other),
      m_type(other.m_type),
      m_run{other.m_run.value, other.m_run.kind, count} {}

template <StorageType T>
ValueConstantArray<T>::ValueConstantArray(const ValueConstantArray& other)
    : ValueConstantArray(other, other.GetCount()) {}

template <StorageType T>
std::unique_ptr<StoreValue> ValueConstantArray<T>::Clone() const {
    return std::make_unique<ValueConstantArray>(*this);
}

template <StorageType T>
SV ValueConstantArray<T>::GetValue(const RInternString& key) const {
    return MakeStoreValueFromStorageType<T>(GetElementType(), GetValue(ReadElementKey(key)));
}

template <StorageType T>
SV ValueConstantArray<T>::TryGetValue(const RInternString& key) const {
    return HasKey(key) ? GetBoxedValue() : nullptr;
}

template <StorageType T>
bool ValueConstantArray<T>::HasKey(const RInternString& key) const {
    return TryReadElementKey(key, GetCount()).has_value();
}

template <StorageType T>
const IUniformCollection::StoreValueIterable& ValueConstantArray<T>::GetStoreValueIterable() const {
    std::call_once(m_iterableFlag, [this] {
        m_iterable = std::make_unique<ArrayStoreValueIterable>(GetBoxedElement(), GetCount());
    });
    return *m_iterable;
}

template <StorageType T>
const SV& ValueConstantArray<T>::GetBoxedValue() const {
    std::call_once(m_boxedValueFlag, [this] {
        m_boxedValue = MakeStoreValueFromStorageType<T>(GetElementType(), m_run.value);
    });
    return m_boxedValue;
}

template <StorageType T>
const SV& ValueConstantArray<T>::GetBoxedSpecial() const {
    std::call_once(m_boxedSpecialFlag,
                   [this] { m_boxedSpecial = factory::MakeSpecial(GetElementType(), m_run.kind); });
    return m_boxedSpecial;
}

template <StorageType T>
SV ValueConstantArray<T>::ComposeIndices(std::shared_ptr<const RawData> indices,
                                         SortSpecOrder order) const {
    return WithIndices(std::move(indices), order);
}

template <StorageType T>
SV ValueConstantArray<T>::ComposeIndices(std::vector<unsigned>&& indices,
                                         SortSpecOrder order) const {
    return WithIndices(std::move(indices), order);
}

template <StorageType T>
SV ValueConstantArray<T>::WithIndices(std::shared_ptr<const RawData> indices,
                                      SortSpecOrder /*order*/) const {
    const uint64 count =
        indices == nullptr ? GetCount() : indices->template ViewAs<unsigned>().GetSize();
    return std::make_shared<ValueConstantArray>(*this, LumSizeCastSafe(count));
}

template <StorageType T>
SV ValueConstantArray<T>::WithIndices(std::vector<unsigned>&& indices,
                                      SortSpecOrder /*order*/) const {
    return std::make_shared<ValueConstantArray>(*this, LumSizeCastSafe(indices.size()));
}

template <StorageType T>
SV ValueConstantArray<T>::Materialize() const {
    return std::make_shared<ValueConstantArray>(*this);
}

template <StorageType T>
SV ValueConstantArray<T>::ToSet(bool includeSpecials) const {
    std::unique_ptr<SetContainer<T>> values = MakeSetContainer<T>(GetElementType(), 1);
    values->insert(m_run.value);
    auto kinds = std::make_unique<std::unordered_set<SpecialKind>>();
    if (includeSpecials && HasSpecialValues()) {
        kinds->insert(m_run.kind);
    }
    return factory::MakeSet<T>(GetElementType(), std::move(values), std::move(kinds));
}

template <StorageType T>
void ValueConstantArray<T>::CopyValues(ArrayView<T> outView, lumsize_t startIndex,
                                       lumsize_t length) const {
    CheckElementRange(startIndex, length, GetCount());
    LUM_CHECK(outView.GetSize() >= length, LumError::OutOfBounds);
    std::fill_n(outView.GetData(), length, m_run.value);
}

template <StorageType T>
void ValueConstantArray<T>::CopySpecials(ArrayView<SpecialKind> outView, lumsize_t startIndex,
                                         lumsize_t length) const {
    CheckElementRange(startIndex, length, GetCount());
    LUM_CHECK(outView.GetSize() >= length, LumError::OutOfBounds);
    std::fill_n(outView.GetData(), length, m_run.kind);
}

template <StorageType T>
void ValueConstantArray<T>::CopyToTuples(ArrayView<LumTuple> outView, lumsize_t startIndex,
                                         lumsize_t length, lumsize_t tupleIndex) const {
    CheckElementRange(startIndex, length, GetCount());
    CheckRows(outView, length, GetCount(), tupleIndex, m_type, std::is_same_v<T, SV>);
    if constexpr (!std::is_same_v<T, LumTuple>) {
        for (LumTuple& row : outView) {
            if (HasSpecialValues()) {
                row.SetNthSpecialUnsafe(tupleIndex, m_run.kind);
            }
            row.template SetNthValueUnsafe<T>(tupleIndex, m_run.value);
        }
    }
}

template <StorageType T>
ConstRawDataView ValueConstantArray<T>::GetValuesView(TemporaryRawData& scratch,
                                                      lumsize_t startIndex,
                                                      lumsize_t length) const {
    CheckElementRange(startIndex, length, GetCount());
    return detail::TemporaryRawDataAccess::Fill(scratch, std::vector<T>(length, m_run.value));
}

template <StorageType T>
ConstRawDataView ValueConstantArray<T>::GetSpecialsView(TemporaryRawData& scratch,
                                                        lumsize_t startIndex,
                                                        lumsize_t length) const {
    CheckElementRange(startIndex, length, GetCount());
    return detail::TemporaryRawDataAccess::Fill(scratch,
                                                std::vector<SpecialKind>(length, m_run.kind));
}

template <StorageType T>
bool ValueConstantArray<T>::ElementsEqual(lumsize_t idx1, lumsize_t idx2) const {
    LUM_CHECK_TEXT("(idx1 < m_size)", idx1 < GetCount(), LumError::OutOfBounds);
    LUM_CHECK_TEXT("(idx2 < m_size)", idx2 < GetCount(), LumError::OutOfBounds);
    return true;
}

template <StorageType T>
lumsize_t ValueConstantArray<T>::FindRunEnd(lumsize_t startIndex) const {
    LUM_CHECK_TEXT("(startIndex < m_size)", startIndex < GetCount(), LumError::OutOfBounds);
    return GetCount() - 1;
}

template <StorageType T>
SV ValueConstantArray<T>::GetElement(lumsize_t index) const {
    LUM_CHECK_TEXT("(index < m_size)", index < GetCount(), LumError::OutOfBounds);
    return GetBoxedElement();
}

template <StorageType T>
SV ValueConstantArray<T>::GetRange(lumsize_t startIndex, lumsize_t length, unsigned step) const {
    CheckStep(step);
    // Unsigned, so that a start beyond the end wraps round.
    const lumsize_t reached = std::min(GetCount() - startIndex, length);
    const lumsize_t count = reached == 0 ? 0 : (reached - 1) / step + 1;
    return std::make_shared<ValueConstantArray>(*this, count);
}

template <StorageType T>
ArrayCursor<T> ValueConstantArray<T>::GetAdapter() const {
    return {m_type, {&m_run, 1}, /*readsKinds=*/false, nullptr, GetCount()};
}

template <StorageType T>
ArrayCursor<T> ValueConstantArray<T>::GetAdapterWithSpecials() const {
    return {m_type, {&m_run, 1}, /*readsKinds=*/true, nullptr, GetCount()};
}

template <StorageType T>
const T& ValueConstantArray<T>::GetValue(lumsize_t index) const {
    LUM_CHECK_TEXT("(index < m_size)", index < GetCount(), LumError::OutOfBounds);
    return m_run.value;
}

template <StorageType T>
SpecialKind ValueConstantArray<T>::GetSpecialKind(lumsize_t index) const {
    LUM_CHECK_TEXT("(index < m_size)", index < GetCount(), LumError::OutOfBounds);
    return m_run.kind;
}

template <StorageType T>
bool ValueConstantArray<T>::IsSpecial(lumsize_t index) const {
    return GetSpecialKind(index) != SpecialKind::Normal;
}

template <StorageType T>
ArrayView<const SpecialKind> ValueConstantArray<T>::GetSpecials() const {
    LUM_CHECK(HasSpecialValues(), LumError::ArrayLacksSpecials);
    return {&m_run.kind, 1};
}

template <StorageType T>
ArrayView<const ValueCompositeArrayRange<T>> ValueConstantArray<T>::GetCompositeRanges() const {
    LUM_FAIL(LumError::NotImplemented);
}

template <StorageType T>
SV factory::MakeConstantArray(const Type* elementType, ConstantParameter<T> value, unsigned count) {
    return std::make_shared<ValueConstantArray<T>>(ArrayType::Get(elementType), value,
                                                   SpecialKind::Normal, count);
}

template <StorageType T>
SV factory::MakeConstantArray(const Type* elementType, unsigned count, SpecialKind kind) {
    return std::make_shared<ValueConstantArray<T>>(ArrayType::Get(elementType), T(), kind, count);
}

// A class and its makers for one storage type.
#define LUM_INSTANTIATE_VALUE_CONSTANT_ARRAY(T)                \
    template class ValueConstantArray<T>;                      \
    template LUM_CORE_API SV factory::MakeConstantArray<T>(    \
        const Type*, factory::ConstantParameter<T>, unsigned); \
    template LUM_CORE_API SV factory::MakeConstantArray<T>(const Type*, unsigned, SpecialKind);

}  // namespace lum::core
