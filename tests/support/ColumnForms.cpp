#include "tests/support/ColumnForms.h"

#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <utility>

#include "core/main/store/ValueCompositeArray.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/RawData.h"

namespace lum::test {
namespace {

using namespace core;

template <typename T>
SV MakeColumn(const SV& like, Cells<T> cells) {
    const IStoreArray& array = like->AsArray();
    return factory::MakeArray<T>(
        array.GetElementType(), std::make_unique<std::vector<T>>(std::move(cells.values)), nullptr,
        cells.kinds ? std::make_unique<std::vector<SpecialKind>>(std::move(*cells.kinds)) : nullptr,
        array.GetSortOrder());
}

/// Calls `function` with the storage type of the column.
template <typename F>
SV Dispatch(const SV& column, const F& function) {
    return DispatchStorage(column->AsArray().GetElementType()->GetStoreType(), function);
}

SV MakePlain(const SV& column) {
    return Dispatch(column, [&]<typename T>(StorageTag<T>) {
        return MakeColumn<T>(column, CellsOf<T>(*column));
    });
}

/// The places of `count` elements from the last to the one at `first`.
std::vector<unsigned> Backwards(lumsize_t count, unsigned first) {
    std::vector<unsigned> places(count);
    std::iota(places.rbegin(), places.rend(), first);
    return places;
}

SV MakeReversed(const SV& column) {
    return Dispatch(column, [&]<typename T>(StorageTag<T>) {
        return MakeColumn<T>(column, CellsOf<T>(*column).Picked(Backwards(column->GetCount(), 0)));
    });
}

/// Puts a cell that no element may show at the front and at the back.
SV MakePadded(const SV& column) {
    const lumsize_t count = column->GetCount();
    if (count == 0) {
        return MakePlain(column);
    }
    return Dispatch(column, [&]<typename T>(StorageTag<T>) {
        std::vector<unsigned> places(count + 2, count - 1);
        std::iota(places.begin() + 1, places.end() - 1, 0u);
        places.back() = 0;
        Cells<T> cells = CellsOf<T>(*column).Picked(places);
        if (cells.kinds) {
            cells.kinds->front() = cells.kinds->back() = SpecialKind::Ragged;
        }
        return MakeColumn<T>(column, std::move(cells));
    });
}

/// Takes the padding off again, by a range.
SV CutOut(const SV& padded, lumsize_t count) {
    return padded == nullptr ? nullptr : padded->AsArray().GetRange(1, count, 1);
}

/// Takes the padding off again, by indices that go from the end to the front.
SV CutOutBackwards(const SV& padded, lumsize_t count) {
    return padded == nullptr ? nullptr
                             : padded->AsArray().WithIndices(Backwards(count, 1),
                                                             padded->AsArray().GetSortOrder());
}

SV MakeSliced(const SV& column) {
    return CutOut(MakePadded(column), column->GetCount());
}

SV MakeIndexed(const SV& column) {
    return CutOutBackwards(MakePadded(MakeReversed(column)), column->GetCount());
}

SV MakeIndexedSlice(const SV& column) {
    // With indices a length of 0 would take all that follows.
    return column->GetCount() == 0 ? MakeIndexed(column)
                                   : CutOut(MakeIndexed(MakePadded(column)), column->GetCount());
}

SV MakeMaterialized(const SV& column) {
    return MakeIndexed(column)->AsArray().Materialize();
}

SV MakeSlicedRuns(const SV& column) {
    return CutOut(MakeRuns(MakePadded(column)), column->GetCount());
}

SV MakeIndexedRuns(const SV& column) {
    return CutOutBackwards(MakeRuns(MakePadded(MakeReversed(column))), column->GetCount());
}

SV MakeMaterializedRuns(const SV& column) {
    const SV indexed = MakeIndexedRuns(column);
    return indexed == nullptr ? nullptr : indexed->AsArray().Materialize();
}

SV MakeConstant(const SV& column) {
    const lumsize_t count = column->GetCount();
    const StoreType storeType = column->AsArray().GetElementType()->GetStoreType();
    if (count == 0 || (!IsPrimitiveStoreType(storeType) && storeType != StoreType::Tuple)) {
        return nullptr;
    }
    return Dispatch(column, [&]<typename T>(StorageTag<T>) -> SV {
        const Type* const elementType = column->AsArray().GetElementType();
        const Cells<T> cells = CellsOf<T>(*column);
        const SpecialKind kind = cells.GetKind(0);
        for (lumsize_t i = 1; i < count; ++i) {
            if (cells.values[i] != cells.values[0] || cells.GetKind(i) != kind) {
                return nullptr;
            }
        }
        if (kind == SpecialKind::Normal) {
            return cells.kinds ? nullptr
                               : factory::MakeConstantArray<T>(elementType, cells.values[0], count);
        }
        // Below a special constant stands a default value.
        return cells.values[0] == T() ? factory::MakeConstantArray<T>(elementType, count, kind)
                                      : nullptr;
    });
}

/// Memory that is not the library's.
template <typename T>
struct Buffer : ISharedDataBuffer {
    explicit Buffer(std::vector<T> elements) : m_elements(std::move(elements)) {}
    const std::vector<T> m_elements;
};

template <typename T>
std::shared_ptr<const RawData> MakeForeign(std::vector<T> elements) {
    auto buffer = std::make_shared<Buffer<T>>(std::move(elements));
    const ArrayView<const T> view = buffer->m_elements;
    return std::make_shared<UnmanagedRawData<T>>(std::move(buffer), view);
}

SV MakeForeign(const SV& column) {
    return Dispatch(column, [&]<typename T>(StorageTag<T>) {
        Cells<T> cells = CellsOf<T>(*column);
        std::shared_ptr<const RawData> values;
        if constexpr (std::is_integral_v<T>) {
            values = MakeForeign(std::move(cells.values));
        } else {
            values = VectorRawData<T>::Make(std::move(cells.values));
        }
        return factory::MakeArray<T>(column->AsArray().GetElementType(), std::move(values),
                                     cells.kinds ? MakeForeign(std::move(*cells.kinds)) : nullptr,
                                     column->AsArray().GetSortOrder());
    });
}

void CheckForms(const SV& column, const std::function<void(const SV&)>& check, bool isFlatOnly) {
    for (const ColumnForm& form : GetColumnForms()) {
        const SV made = form.isFlat || !isFlatOnly ? form.make(column) : nullptr;
        if (made != nullptr) {
            SCOPED_TRACE(form.name);
            check(made);
        }
    }
}

}  // namespace

template <StorageType T>
Cells<T> CellsOf(const StoreValue& column) {
    const ITypedArray<T>& array = column.AsTypedArray<T>();
    Cells<T> cells;
    if (array.HasSpecialValues()) {
        cells.kinds.emplace();
    }
    for (lumsize_t i = 0; i < array.GetCount(); ++i) {
        cells.values.push_back(array.GetValue(i));
        if (cells.kinds) {
            cells.kinds->push_back(array.GetSpecialKind(i));
        }
    }
    return cells;
}

#define LUM_INSTANTIATE_CELLS_OF(T) template Cells<T> CellsOf(const StoreValue& column);
LUM_FOR_EACH_STORAGE_TYPE(LUM_INSTANTIATE_CELLS_OF)
#undef LUM_INSTANTIATE_CELLS_OF

const std::vector<ColumnForm>& GetColumnForms() {
    constexpr bool kFlat = true;
    constexpr bool kRuns = false;
    static const std::vector<ColumnForm> forms{
        {"plain", MakePlain, kFlat},
        {"sliced", MakeSliced, kFlat},
        {"indexed", MakeIndexed, kFlat},
        {"indexed slice", MakeIndexedSlice, kFlat},
        {"materialized", MakeMaterialized, kFlat},
        {"foreign memory", MakeForeign, kFlat},
        {"runs", MakeRuns, kRuns},
        {"sliced runs", MakeSlicedRuns, kRuns},
        {"indexed runs", MakeIndexedRuns, kRuns},
        {"materialized runs", MakeMaterializedRuns, kRuns},
        {"constant", MakeConstant, kRuns},
    };
    return forms;
}

void ForEachForm(const SV& column, const std::function<void(const SV&)>& check) {
    CheckForms(column, check, /*isFlatOnly=*/false);
}

void ForEachFlatForm(const SV& column, const std::function<void(const SV&)>& check) {
    CheckForms(column, check, /*isFlatOnly=*/true);
}

SV MakeRuns(const SV& column) {
    const IStoreArray& array = column->AsArray();
    if (!IsPrimitiveStoreType(array.GetElementType()->GetStoreType())) {
        return nullptr;
    }
    return Dispatch(column, [&]<typename T>(StorageTag<T>) {
        const Cells<T> cells = CellsOf<T>(*column);
        std::vector<ValueCompositeArrayRange<T>> runs;
        if (cells.kinds) {
            runs.push_back({T(), SpecialKind::Ragged, 0});
        }
        for (lumsize_t i = 0; i < cells.values.size(); ++i) {
            const bool continues = i % 4 != 0 && i % 5 != 0 &&
                                   cells.values[i] == cells.values[i - 1] &&
                                   cells.GetKind(i) == cells.GetKind(i - 1);
            if (continues) {
                ++runs.back().count;
            } else {
                runs.push_back({cells.values[i], cells.GetKind(i), 1});
            }
            if (i % 5 == 4) {
                runs.push_back({cells.values[0], cells.GetKind(0), 0});
            }
        }
        return MakeCompositeArray<T>(array.GetElementType(), std::move(runs), nullptr,
                                     array.GetSortOrder());
    });
}

}  // namespace lum::test
