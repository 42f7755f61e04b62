#include "RowOrder.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <type_traits>

#include "Statement.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/RawDataView.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TemporaryRawData.h"
#include "lum/core/types/StringType.h"
#include "lum/core/utility/Collation.h"
#include "lum/core/utility/LumException.h"

namespace lumengine {
namespace {

using namespace lum::core;

template <typename T>
bool IsBefore(const T& a, const T& b) {
    if constexpr (std::is_floating_point_v<T>) {
        // A NaN compares with nothing, and a sort needs an order of all values.
        return std::isnan(b) ? !std::isnan(a) : a < b;
    } else if constexpr (std::is_same_v<T, LumDateTime>) {
        return a.CompareTo(b) < 0;
    } else {
        return a < b;
    }
}

// Sorts rows that are all normal.
template <typename T, typename Less>
void SortByValues(const IStoreArray& array, SortSpecOrder order, Rows::iterator begin,
                  Rows::iterator end, const Less& less) {
    TemporaryRawData scratch;
    const auto view = array.GetValuesView(scratch, 0, array.GetCount());
    const auto values = view.ViewAs<T>();
    if (order == SortSpecOrder::DESC) {
        std::stable_sort(begin, end,
                         [&](unsigned a, unsigned b) { return less(values[b], values[a]); });
    } else {
        std::stable_sort(begin, end,
                         [&](unsigned a, unsigned b) { return less(values[a], values[b]); });
    }
}

void SortNormals(const IStoreArray& array, SortSpecOrder order, Rows::iterator begin,
                 Rows::iterator end) {
    const auto sortAs = [&]<typename T>(const T*) {
        SortByValues<T>(array, order, begin, end, IsBefore<T>);
    };
    const Type* const type = array.GetElementType();
    switch (type->GetStoreType()) {
        case StoreType::Bool:
            return sortAs(static_cast<const unsigned char*>(nullptr));
        case StoreType::Int32:
            return sortAs(static_cast<const int*>(nullptr));
        case StoreType::Int64:
            return sortAs(static_cast<const long long*>(nullptr));
        case StoreType::Real32:
            return sortAs(static_cast<const float*>(nullptr));
        case StoreType::Real64:
            return sortAs(static_cast<const double*>(nullptr));
        case StoreType::Date:
        case StoreType::DateTime:
            return sortAs(static_cast<const LumDateTime*>(nullptr));
        case StoreType::Color:
            return sortAs(static_cast<const unsigned int*>(nullptr));
        case StoreType::String: {
            const ICollator& collator = type->As<StringType>().GetCollation().GetCollator();
            return SortByValues<RIndirectString>(
                array, order, begin, end, [&](const RIndirectString& a, const RIndirectString& b) {
                    return collator.Compare(a, b) < 0;
                });
        }
        default:
            throw LumRuntimeException(LumError::MultiSortElementType);
    }
}

void SortBy(const SV& column, SortSpecOrder order, bool includeSpecials, Rows& rows) {
    const std::vector<SpecialKind> kinds = KindsOf(column);
    auto end = rows.end();
    if (!kinds.empty()) {
        const auto isNormal = [&](unsigned row) { return kinds[row] == SpecialKind::Normal; };
        end = std::stable_partition(rows.begin(), rows.end(), isNormal);
        if (includeSpecials) {
            std::stable_sort(end, rows.end(),
                             [&](unsigned a, unsigned b) { return kinds[a] < kinds[b]; });
        } else {
            rows.erase(end, rows.end());
            end = rows.end();
        }
    }
    SortNormals(column->AsArray(), order, rows.begin(), end);
}

}  // namespace

std::vector<SortSpecOrder> ReadSortOrders(const std::vector<SV>& options) {
    std::vector<SortSpecOrder> orders;
    for (const SV& option : options) {
        Require(option->GetStoreType() == StoreType::String && !option->IsSpecial(),
                LumError::InvalidSortOrderOption);
        const bool isDescending = option->AsString() == L"DESC";
        Require(isDescending || option->AsString() == L"ASC", LumError::InvalidSortOrderOption);
        orders.push_back(isDescending ? SortSpecOrder::DESC : SortSpecOrder::ASC);
    }
    return orders;
}

Rows SortRows(const std::vector<SV>& columns, const std::vector<SortSpecOrder>& orders,
              bool includeSpecials) {
    Rows rows(columns[0]->AsArray().GetCount());
    std::iota(rows.begin(), rows.end(), 0u);
    // Stable sorts from the last column to the first leave the first one deciding.
    for (std::size_t i = columns.size(); i-- > 0;) {
        SortBy(columns[i], orders[i], includeSpecials, rows);
    }
    return rows;
}

}  // namespace lumengine
