#include "Columns.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "Statement.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/IUniformCollection.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"

namespace lumengine {

using namespace lum::core;

bool IsArray(const SV& value) {
    return value->GetStoreType() == StoreType::Array;
}

bool IsTable(const SV& value) {
    return value->GetStoreType() == StoreType::Table;
}

const Type* ElementTypeOf(const SV& column) {
    return column->AsArray().GetElementType();
}

lumsize_t CountRows(const SV& value) {
    return IsTable(value) ? value->AsTable().GetRowCount()
                          : value->AsUniformCollection().GetCount();
}

SV ToColumn(const SV& value, LumError otherwise) {
    if (value->GetStoreType() == StoreType::Set) {
        return value->AsSet().ToArray(/*includeSpecials=*/true);
    }
    Require(IsArray(value), otherwise);
    return value;
}

SV ToFormOf(const SV& source, const SV& column) {
    return source->GetStoreType() == StoreType::Set
               ? column->AsArray().ToSet(/*includeSpecials=*/true)
               : column;
}

ColumnViews::ColumnViews(const SV& column)
    : m_array(column->AsArray()),
      m_values(m_array.GetValuesView(m_valueScratch, 0, m_array.GetCount())) {}

ConstRawDataView ColumnViews::GetKinds() {
    return m_array.GetSpecialsView(m_kindScratch, 0, m_array.GetCount());
}

std::vector<SpecialKind> KindsOf(const SV& column) {
    const IStoreArray& array = column->AsArray();
    std::vector<SpecialKind> kinds(array.HasSpecialValues() ? array.GetCount() : 0);
    if (!kinds.empty()) {
        array.CopySpecials({kinds.data(), array.GetCount()}, 0, array.GetCount());
    }
    const auto isNormal = [](SpecialKind kind) { return kind == SpecialKind::Normal; };
    return std::all_of(kinds.begin(), kinds.end(), isNormal) ? std::vector<SpecialKind>() : kinds;
}

SV SelectRows(const SV& value, Rows&& rows, bool keepsOrder) {
    if (IsTable(value)) {
        const IStoreTable& table = value->AsTable();
        return table.ComposeRowIndices(
            std::move(rows),
            keepsOrder ? std::make_unique<IStoreTable::SortColumns>(table.GetSortColumns())
                       : nullptr);
    }
    const IStoreArray& array = value->AsArray();
    return array.ComposeIndices(std::move(rows),
                                keepsOrder ? array.GetSortOrder() : SortSpecOrder::UNKNOWN);
}

SV ColumnOf(const std::vector<SV>& scalars) {
    const Type* const type = scalars[0]->GetType();
    return DispatchStorage(type->GetStoreType(), [&]<typename T>(StorageTag<T>) {
        auto values = std::make_unique<std::vector<T>>(scalars.size());
        auto kinds = std::make_unique<std::vector<SpecialKind>>(scalars.size());
        bool hasSpecials = false;
        for (std::size_t i = 0; i < scalars.size(); ++i) {
            if (scalars[i]->IsSpecial()) {
                (*kinds)[i] = scalars[i]->GetSpecialKind();
                hasSpecials = true;
            } else {
                (*values)[i] = FetchStored<T>(scalars[i]);
            }
        }
        return factory::MakeArray<T>(type, std::move(values), nullptr,
                                     hasSpecials ? std::move(kinds) : nullptr,
                                     SortSpecOrder::UNKNOWN);
    });
}

}  // namespace lumengine
