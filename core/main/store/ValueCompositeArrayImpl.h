#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <type_traits>
#include <unordered_set>
#include <utility>

#include "core/main/store/ArrayArguments.h"
#include "core/main/store/ColumnGather.h"
#include "core/main/store/RunSearch.h"
#include "core/main/store/TemporaryRawDataAccess.h"
#include "core/main/store/ValueCompositeArray.h"
#include "core/main/store/ValueConstantArray.h"
#include "core/main/store/ValueSet.h"
#include "lum/core/store/SetFactory.h"

namespace lum::core {

// Construction ------------------------------------------------------------------------------------

template <StorageType T>
ValueCompositeArray<T>::ValueCompositeArray(const CollectionType* type,
                                            const PackagedArrayView<Run>& runs,
                                            const PackagedArrayView<unsigned>& indices,
                                            SortSpecOrder order)
    : m_type(type), m_runs(runs), m_indices(indices), m_order(order) {
    LUM_CHECK_NOT_NULL(m_type, LumError::NullArgument);
    const StoreType elementStoreType = m_type->GetElementType()->GetStoreType();
    LUM_CHECK(IsPrimitiveStoreType(elementStoreType), LumError::TypeMismatchExpected);
    if constexpr (!std::is_same_v<T, SV>) {
        using StorageT = T;
        LUM_CHECK(StorageTypeTraits<StorageT>::IsMatchingType(m_type->GetElementType()),
                  LumError::TypeMismatchExpected);
    }
    const lumsize_t length = CountElements();
    m_sizeAndHasSpecials.first = HasIndices() ? m_indices.GetSize() : length;
    for (const Run& run : m_runs.GetView()) {
        m_sizeAndHasSpecials.second |= run.kind != SpecialKind::Normal;
    }
}

template <StorageType T>
ValueCompositeArray<T>::ValueCompositeArray(const ValueCompositeArray& other,
                                            const PackagedArrayView<unsigned>& indices,
                                            SortSpecOrder order)
    : m_type(other.m_type),
      m_runs(other.m_runs),
      m_indices(indices),
      m_sizeAndHasSpecials(HasIndices() ? indices.GetSize() : CountElements(),
                           other.HasSpecialValues()),
      m_order(order) {}

template <StorageType T>
ValueCompositeArray<T>::ValueCompositeArray(const ValueCompositeArray& other)
    : StoreValue(other),
      IStoreCollection(other),
      ITypedArray<T>(other),
      ArrayWithIndices(other),
      m_type(other.m_type),
      m_runs(other.m_runs),
      m_indices(other.m_indices),
      m_sizeAndHasSpecials(other.m_sizeAndHasSpecials),
      m_order(other.m_order) {}

template <StorageType T>
lumsize_t ValueCompositeArray<T>::CountElements() const {
    // Counts may come from outside: a sum that wrapped round would let reads walk off the runs.
    uint64 count = 0;
    for (const Run& run : m_runs.GetView()) {
        count += run.count;
    }
    return LumSizeCastSafe(count);
}

template <StorageType T>
std::unique_ptr<StoreValue> ValueCompositeArray<T>::Clone() const {
    return std::make_unique<ValueCompositeArray>(*this);
}

template <StorageType T>
SV ValueCompositeArray<T>::MakeOfRuns(std::vector<Run>&& runs) const {
    return std::make_shared<ValueCompositeArray>(m_type, PackagedArrayView<Run>(std::move(runs)),
                                                 PackagedArrayView<unsigned>(), m_order);
}

// Runs --------------------------------------------------------------------------------------------

template <StorageType T>
typename ValueCompositeArray<T>::Place ValueCompositeArray<T>::FindRun(
    lumsize_t position) const noexcept {
    const Run* const runs = m_runs.GetData();
    lumsize_t run = 0;
    while (run < m_runs.GetSize() && position >= runs[run].count) {
        position -= runs[run].count;
        ++run;
    }
    return {run, position};
}

template <StorageType T>
void ValueCompositeArray<T>::CheckIndex(lumsize_t index) const {
    LUM_CHECK(index < m_sizeAndHasSpecials.first, LumError::OutOfBounds);
}

template <StorageType T>
bool ValueCompositeArray<T>::AreEqual(const Run& a, const Run& b) {
    if (a.kind != b.kind || a.kind != SpecialKind::Normal) {
        return a.kind == b.kind;
    }
    if constexpr (std::is_same_v<T, SV>) {
        return a.value.get() == b.value.get();
    } else {
        return std::equal_to<T>()(a.value, b.value);
    }
}

template <StorageType T>
ArrayView<const unsigned> ValueCompositeArray<T>::GetRunOfElements() const {
    std::call_once(m_runOfElementsFlag, [this] {
        std::vector<lumsize_t> ends;
        ends.reserve(m_runs.GetSize());
        lumsize_t end = 0;
        for (const Run& run : m_runs.GetView()) {
            end += run.count;
            ends.push_back(end);
        }
        m_runOfElements = FindRuns(ends, m_indices.GetView());
    });
    return m_runOfElements;
}

template <StorageType T>
template <typename F>
void ValueCompositeArray<T>::ForEachRun(lumsize_t startIndex, lumsize_t length,
                                        const F& function) const {
    const Run* const runs = m_runs.GetData();
    if (!HasIndices()) {
        auto [run, offset] = FindRun(startIndex);
        while (length > 0) {
            const lumsize_t count = std::min(runs[run].count - offset, length);
            if (count > 0) {
                function(runs[run], count);
            }
            length -= count;
            offset = 0;
            ++run;
        }
        return;
    }
    const unsigned* element = GetRunOfElements().GetData() + startIndex;
    const unsigned* const end = element + length;
    LUM_CHECK_TEXT("(index < m_size)", AllBelow({element, length}, m_runs.GetSize()),
                   LumError::OutOfBounds);
    while (element != end) {
        const unsigned run = *element;
        const unsigned* const next =
            std::find_if(element, end, [run](unsigned other) { return other != run; });
        function(runs[run], static_cast<lumsize_t>(next - element));
        element = next;
    }
}

// Elements ----------------------------------------------------------------------------------------

template <StorageType T>
SV ValueCompositeArray<T>::GetValue(const RInternString& key) const {
    return MakeStoreValueFromStorageType<T>(GetElementType(), GetValue(ReadElementKey(key)));
}

template <StorageType T>
SV ValueCompositeArray<T>::TryGetValue(const RInternString& key) const {
    const std::optional<lumsize_t> index = TryReadElementKey(key, GetCount());
    if (!index.has_value()) {
        return nullptr;
    }
    const lumsize_t run = FindRun(HasIndices() ? m_indices[*index] : *index).run;
    return run < m_runs.GetSize()
               ? MakeStoreValueFromStorageType<T>(GetElementType(), m_runs.GetData()[run].value)
               : nullptr;
}

template <StorageType T>
bool ValueCompositeArray<T>::HasKey(const RInternString& key) const {
    return TryReadElementKey(key, GetCount()).has_value();
}

template <StorageType T>
const T& ValueCompositeArray<T>::GetValueUnchecked(lumsize_t index) const {
    return GetRun(index).value;
}

template <StorageType T>
const T& ValueCompositeArray<T>::GetValue(lumsize_t index) const {
    CheckIndex(index);
    return GetRun(index).value;
}

template <StorageType T>
SpecialKind ValueCompositeArray<T>::GetSpecialKind(lumsize_t index) const {
    CheckIndex(index);
    return GetRun(index).kind;
}

template <StorageType T>
bool ValueCompositeArray<T>::IsSpecial(lumsize_t index) const {
    return GetSpecialKind(index) != SpecialKind::Normal;
}

template <StorageType T>
SV ValueCompositeArray<T>::GetElement(lumsize_t index) const {
    CheckIndex(index);
    const Run& run = GetRun(index);
    return run.kind != SpecialKind::Normal
               ? factory::MakeSpecial(GetElementType(), run.kind)
               : MakeStoreValueFromStorageType<T>(GetElementType(), run.value);
}

template <StorageType T>
bool ValueCompositeArray<T>::ElementsEqual(lumsize_t idx1, lumsize_t idx2) const {
    LUM_CHECK(idx1 < m_sizeAndHasSpecials.first, LumError::OutOfBounds);
    LUM_CHECK(idx2 < m_sizeAndHasSpecials.first, LumError::OutOfBounds);
    return AreEqual(GetRun(idx1), GetRun(idx2));
}

template <StorageType T>
lumsize_t ValueCompositeArray<T>::FindRunEnd(lumsize_t startIndex) const {
    LUM_CHECK(startIndex < m_sizeAndHasSpecials.first, LumError::OutOfBounds);
    if (HasIndices()) {
        return FindRunEndOfIndices(startIndex);
    }
    const Run* const runs = m_runs.GetData();
    const Place place = FindRun(startIndex);
    lumsize_t last = startIndex - place.offset + (runs[place.run].count - 1);
    for (lumsize_t run = place.run + 1; run < m_runs.GetSize(); ++run) {
        if (runs[run].count > 0 && !AreEqual(runs[place.run], runs[run])) {
            break;
        }
        last += runs[run].count;
    }
    return last;
}

template <StorageType T>
lumsize_t ValueCompositeArray<T>::FindRunEndOfIndices(lumsize_t startIndex) const {
    const ArrayView<const unsigned> runOfElements = GetRunOfElements();
    const Run& first = m_runs[runOfElements[startIndex]];
    unsigned run = runOfElements[startIndex];
    lumsize_t last = startIndex;
    while (last + 1 < GetCount()) {
        const unsigned next = runOfElements[last + 1];
        if (next != run && !AreEqual(first, m_runs[next])) {
            break;
        }
        run = next;
        ++last;
    }
    return last;
}

// Walks -------------------------------------------------------------------------------------------

template <StorageType T>
ArrayCursor<T> ValueCompositeArray<T>::MakeCursor(bool readsKinds) const {
    const unsigned* const runOfElements = HasIndices() ? GetRunOfElements().GetData() : nullptr;
    return {m_type, m_runs.GetView(), readsKinds, runOfElements, GetCount()};
}

template <StorageType T>
ArrayCursor<T> ValueCompositeArray<T>::GetAdapter() const {
    return MakeCursor(/*readsKinds=*/false);
}

template <StorageType T>
ArrayCursor<T> ValueCompositeArray<T>::GetAdapterWithSpecials() const {
    return MakeCursor(/*readsKinds=*/true);
}

template <StorageType T>
const IUniformCollection::StoreValueIterable& ValueCompositeArray<T>::GetStoreValueIterable()
    const {
    std::call_once(m_iterableFlag, [this] {
        m_iterable =
            std::make_unique<ArrayStoreValueIterable>(GetElementType(), GetAdapterWithSpecials());
    });
    return *m_iterable;
}

// Arrays made from this one -----------------------------------------------------------------------

template <StorageType T>
SV ValueCompositeArray<T>::WithIndices(std::shared_ptr<const RawData> indices,
                                       SortSpecOrder order) const {
    return std::make_shared<ValueCompositeArray>(
        *this, PackagedArrayView<unsigned>(std::move(indices)), order);
}

template <StorageType T>
SV ValueCompositeArray<T>::WithIndices(std::vector<unsigned>&& indices, SortSpecOrder order) const {
    return std::make_shared<ValueCompositeArray>(
        *this, PackagedArrayView<unsigned>(std::move(indices)), order);
}

template <StorageType T>
SV ValueCompositeArray<T>::ComposeIndices(std::shared_ptr<const RawData> indices,
                                          SortSpecOrder order) const {
    if (!HasIndices()) {
        return WithIndices(std::move(indices), order);
    }
    const PackagedArrayView<unsigned> view(std::move(indices));
    const ArrayView<const unsigned> positions = view.GetView();
    return WithIndices(GatherColumn(GetIndices(), positions, AllBelow(positions, GetCount())),
                       order);
}

template <StorageType T>
SV ValueCompositeArray<T>::ComposeIndices(std::vector<unsigned>&& indices,
                                          SortSpecOrder order) const {
    if (HasIndices()) {
        const ArrayView<const unsigned> positions = indices;
        GatherColumn(GetIndices(), positions, AllBelow(positions, GetCount()), indices.data());
    }
    return WithIndices(std::move(indices), order);
}

template <StorageType T>
SV ValueCompositeArray<T>::Materialize() const {
    if (!HasIndices()) {
        return std::make_shared<ValueCompositeArray>(*this);
    }
    std::vector<Run> runs;
    ForEachRun(0, GetCount(), [&](const Run& run, lumsize_t count) {
        runs.push_back({run.value, run.kind, count});
    });
    return MakeOfRuns(std::move(runs));
}

template <StorageType T>
SV ValueCompositeArray<T>::ToSet(bool includeSpecials) const {
    const lumsize_t mostValues = std::min(m_runs.GetSize(), GetCount());
    std::unique_ptr<SetContainer<T>> values = MakeSetContainer<T>(GetElementType(), mostValues);
    auto kinds = std::make_unique<std::unordered_set<SpecialKind>>();
    std::vector<bool> isDone(m_runs.GetSize());
    ForEachRun(0, GetCount(), [&](const Run& run, lumsize_t /*count*/) {
        const auto number = static_cast<std::size_t>(&run - m_runs.GetData());
        if (isDone[number]) {
            return;
        }
        isDone[number] = true;
        values->insert(run.value);  // Placeholders are values here, on purpose.
        if (includeSpecials && run.kind != SpecialKind::Normal) {
            kinds->insert(run.kind);
        }
    });
    return factory::MakeSet<T>(GetElementType(), std::move(values), std::move(kinds));
}

template <StorageType T>
SV ValueCompositeArray<T>::GetRange(lumsize_t startIndex, lumsize_t length, unsigned step) const {
    CheckStep(step);
    if (length == 0) {
        return ComposeIndices(std::vector<unsigned>(), m_order);
    }
    if (HasIndices()) {
        return ComposeIndices(MakeStride(startIndex, length, step, GetCount()), m_order);
    }
    return GetRangeOfRuns(startIndex, length, step);
}

template <StorageType T>
SV ValueCompositeArray<T>::GetRangeOfRuns(lumsize_t startIndex, lumsize_t length,
                                          unsigned step) const {
    std::vector<Run> runs;
    lumsize_t wanted =
        startIndex < GetCount() ? std::min(length, (GetCount() - startIndex - 1) / step + 1) : 0;
    auto [number, offset] = FindRun(startIndex);
    // Where the next element stands, from the start of the run; a step may lead over many runs.
    uint64 position = offset;
    for (; wanted > 0; ++number) {
        const Run& run = m_runs.GetData()[number];
        if (position < run.count) {
            const auto last = static_cast<lumsize_t>(run.count - position - 1);
            const lumsize_t taken = std::min(wanted, last / step + 1);
            runs.push_back({run.value, run.kind, taken});
            wanted -= taken;
            position += uint64{taken} * step;
        }
        position -= run.count;
    }
    return MakeOfRuns(std::move(runs));
}

// Bulk reads --------------------------------------------------------------------------------------

template <StorageType T>
void ValueCompositeArray<T>::CopyValues(ArrayView<T> outView, lumsize_t startIndex,
                                        lumsize_t length) const {
    CheckElementRange(startIndex, length, GetCount());
    LUM_CHECK(outView.GetSize() >= length, LumError::OutOfBounds);
    T* out = outView.GetData();
    ForEachRun(startIndex, length,
               [&](const Run& run, lumsize_t count) { out = std::fill_n(out, count, run.value); });
}

template <StorageType T>
void ValueCompositeArray<T>::CopySpecials(ArrayView<SpecialKind> outView, lumsize_t startIndex,
                                          lumsize_t length) const {
    CheckElementRange(startIndex, length, GetCount());
    LUM_CHECK(outView.GetSize() >= length, LumError::OutOfBounds);
    SpecialKind* out = outView.GetData();
    ForEachRun(startIndex, length,
               [&](const Run& run, lumsize_t count) { out = std::fill_n(out, count, run.kind); });
}

template <StorageType T>
void ValueCompositeArray<T>::CopyToTuples(ArrayView<LumTuple> outView, lumsize_t startIndex,
                                          lumsize_t length, lumsize_t tupleIndex) const {
    CheckElementRange(startIndex, length, GetCount());
    CheckRows(outView, length, GetCount(), tupleIndex, m_type, std::is_same_v<T, SV>);
    if constexpr (!std::is_same_v<T, LumTuple>) {
        LumTuple* row = outView.GetData();
        ForEachRun(startIndex, length, [&](const Run& run, lumsize_t count) {
            for (; count > 0; --count, ++row) {
                if (HasSpecialValues()) {
                    row->SetNthSpecialUnsafe(tupleIndex, run.kind);
                }
                row->template SetNthValueUnsafe<T>(tupleIndex, run.value);
            }
        });
    }
}

template <StorageType T>
ConstRawDataView ValueCompositeArray<T>::GetValuesView(TemporaryRawData& scratch,
                                                       lumsize_t startIndex,
                                                       lumsize_t length) const {
    CheckElementRange(startIndex, length, GetCount());
    std::vector<T> values(length);
    CopyValues(values, startIndex, length);
    return detail::TemporaryRawDataAccess::Fill(scratch, std::move(values));
}

template <StorageType T>
ConstRawDataView ValueCompositeArray<T>::GetSpecialsView(TemporaryRawData& scratch,
                                                         lumsize_t startIndex,
                                                         lumsize_t length) const {
    CheckElementRange(startIndex, length, GetCount());
    std::vector<SpecialKind> kinds(length);
    CopySpecials(kinds, startIndex, length);
    return detail::TemporaryRawDataAccess::Fill(scratch, std::move(kinds));
}

template <StorageType T>
ArrayView<const T> ValueCompositeArray<T>::GetValues() const {
    LUM_FAIL(LumError::NotImplemented);
}

template <StorageType T>
ArrayView<const SpecialKind> ValueCompositeArray<T>::GetSpecials() const {
    LUM_FAIL(LumError::NotImplemented);
}

// Makers ------------------------------------------------------------------------------------------

template <StorageType T>
SV MakeCompositeArray(const std::vector<SV>& constantArrays,
                      std::unique_ptr<std::vector<unsigned>> indices, SortSpecOrder order) {
    LUM_CHECK_TEXT("(constantArrays).size() >= (1)", !constantArrays.empty(),
                   LumError::EmptyComposition);
    const Type* type = nullptr;
    const Type* elementType = nullptr;
    std::vector<ValueCompositeArrayRange<T>> runs;
    runs.reserve(constantArrays.size());
    for (const SV& value : constantArrays) {
        LUM_CHECK_NOT_NULL(value, LumError::NullArgument);
        type = type == nullptr ? value->GetType() : type;
        LUM_CHECK_TEXT("(ca->GetType() == type)", value->GetType() == type,
                       LumError::CompositionTypeMismatch);
        const auto* const typedArray = dynamic_cast<const ValueConstantArray<T>*>(value.get());
        LUM_CHECK_NOT_NULL(typedArray, LumError::TypeMismatchExpected);
        elementType = typedArray->GetElementType();
        if (typedArray->GetCount() > 0) {
            runs.push_back({typedArray->GetValueUnchecked(0), typedArray->GetSpecialKind(0),
                            typedArray->GetCount()});
        }
    }
    return MakeCompositeArray<T>(elementType, std::move(runs), std::move(indices), order);
}

template <StorageType T>
SV MakeCompositeArray(const Type* elementType, std::vector<ValueCompositeArrayRange<T>>&& runs,
                      std::unique_ptr<std::vector<unsigned>> indices, SortSpecOrder order) {
    return std::make_shared<ValueCompositeArray<T>>(
        ArrayType::Get(elementType),
        PackagedArrayView<ValueCompositeArrayRange<T>>(std::move(runs)),
        indices == nullptr ? PackagedArrayView<unsigned>()
                           : PackagedArrayView<unsigned>(std::move(*indices)),
        order);
}

// A class and its makers for one storage type.
#define LUM_INSTANTIATE_VALUE_COMPOSITE_ARRAY(T)                                               \
    template class ValueCompositeArray<T>;                                                     \
    template SV MakeCompositeArray<T>(const std::vector<SV>&,                                  \
                                      std::unique_ptr<std::vector<unsigned>>, SortSpecOrder);  \
    template SV MakeCompositeArray<T>(const Type*, std::vector<ValueCompositeArrayRange<T>>&&, \
                                      std::unique_ptr<std::vector<unsigned>>, SortSpecOrder);

}  // namespace lum::core
