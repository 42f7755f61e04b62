#include "tests/support/ColumnForms.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <utility>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/RawData.h"
#include "tests/support/ColumnText.h"

namespace lum::test {
namespace {

using namespace core;

template <typename T>
SV MakeColumn(const SV& like, Cells<T> cells,
              std::unique_ptr<std::vector<unsigned>> indices = nullptr) {
    const IStoreArray& array = like->AsArray();
    return factory::MakeArray<T>(
        array.GetElementType(), std::make_unique<std::vector<T>>(std::move(cells.values)),
        std::move(indices),
        cells.kinds ? std::make_unique<std::vector<SpecialKind>>(std::move(*cells.kinds)) : nullptr,
        array.GetSortOrder());
}

/// Calls `function` with the storage type of the column.
template <typename F>
SV Dispatch(const SV& column, const F& function) {
    return DispatchStorage(column->AsArray().GetElementType()->GetStoreType(), function);
}

/// Puts a cell that no element may show at the front and at the back.
template <typename T>
Cells<T> Padded(Cells<T> cells) {
    if (cells.values.empty()) {
        return cells;
    }
    const T front = cells.values.back();
    const T back = cells.values.front();
    cells.values.insert(cells.values.begin(), front);
    cells.values.push_back(back);
    if (cells.kinds) {
        cells.kinds->insert(cells.kinds->begin(), SpecialKind::Ragged);
        cells.kinds->push_back(SpecialKind::Ragged);
    }
    return cells;
}

SV MakePlain(const SV& column) {
    return Dispatch(column, [&]<typename T>(StorageTag<T>) {
        return MakeColumn<T>(column, CellsOf<T>(*column));
    });
}

SV MakeSliced(const SV& column) {
    return Dispatch(column, [&]<typename T>(StorageTag<T>) {
        const SV wide = MakeColumn<T>(column, Padded(CellsOf<T>(*column)));
        return wide->AsArray().GetRange(1, column->GetCount(), 1);
    });
}

SV MakeIndexed(const SV& column) {
    return Dispatch(column, [&]<typename T>(StorageTag<T>) {
        Cells<T> stored = CellsOf<T>(*column);
        std::reverse(stored.values.begin(), stored.values.end());
        if (stored.kinds) {
            std::reverse(stored.kinds->begin(), stored.kinds->end());
        }
        auto indices = std::make_unique<std::vector<unsigned>>(column->GetCount());
        std::iota(indices->rbegin(), indices->rend(), 1u);
        return MakeColumn<T>(column, Padded(std::move(stored)), std::move(indices));
    });
}

SV MakeIndexedSlice(const SV& column) {
    // With indices a length of 0 would take all that follows.
    if (column->GetCount() == 0) {
        return MakeIndexed(column);
    }
    return Dispatch(column, [&]<typename T>(StorageTag<T>) {
        const SV wide = MakeIndexed(MakeColumn<T>(column, Padded(CellsOf<T>(*column))));
        return wide->AsArray().GetRange(1, column->GetCount(), 1);
    });
}

SV MakeMaterialized(const SV& column) {
    return MakeIndexed(column)->AsArray().Materialize();
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
    static const std::vector<ColumnForm> forms{
        {"plain", MakePlain},
        {"sliced", MakeSliced},
        {"indexed", MakeIndexed},
        {"indexed slice", MakeIndexedSlice},
        {"materialized", MakeMaterialized},
        {"foreign memory", MakeForeign},
    };
    return forms;
}

void ForEachForm(const SV& column, const std::function<void(const SV&)>& check) {
    for (const ColumnForm& form : GetColumnForms()) {
        SCOPED_TRACE(form.name);
        check(form.make(column));
    }
}

}  // namespace lum::test
