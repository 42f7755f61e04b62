#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <utility>
#include <vector>

#include "Columns.h"
#include "Operators.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/SortSpecOrder.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/utility/Collation.h"
#include "lum/core/utility/LumException.h"

namespace lumengine {
namespace {

using namespace lum::core;

// Sorts rows that are all normal.
void SortNormals(const SV& column, SortSpecOrder order, Rows::iterator begin, Rows::iterator end) {
    const auto sort = [&]<typename T>(StorageTag<T>, const auto& isBefore) {
        const ColumnViews views(column);
        const auto values = views.GetValues().ViewAs<T>();
        if (order == SortSpecOrder::DESC) {
            std::stable_sort(
                begin, end, [&](unsigned a, unsigned b) { return isBefore(values[b], values[a]); });
        } else {
            std::stable_sort(
                begin, end, [&](unsigned a, unsigned b) { return isBefore(values[a], values[b]); });
        }
    };
    // A NaN compares with nothing, and a sort needs an order of all values.
    const auto isRealBefore = [](auto a, auto b) { return std::isnan(b) ? !std::isnan(a) : a < b; };
    const Type* const type = ElementTypeOf(column);
    switch (type->GetStoreType()) {
        case StoreType::Bool:
            return sort(StorageTag<unsigned char>(), std::less());
        case StoreType::Int32:
            return sort(StorageTag<int>(), std::less());
        case StoreType::Int64:
            return sort(StorageTag<long long>(), std::less());
        case StoreType::Real32:
            return sort(StorageTag<float>(), isRealBefore);
        case StoreType::Real64:
            return sort(StorageTag<double>(), isRealBefore);
        case StoreType::Date:
        case StoreType::DateTime:
            return sort(StorageTag<LumDateTime>(), std::less());
        case StoreType::Color:
            return sort(StorageTag<unsigned int>(), std::less());
        case StoreType::String: {
            const ICollator& collator = type->As<StringType>().GetCollation().GetCollator();
            return sort(StorageTag<RIndirectString>(),
                        [&](const RIndirectString& a, const RIndirectString& b) {
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
    SortNormals(column, order, rows.begin(), end);
}

// The orders that the texts ASC and DESC name.
std::vector<SortSpecOrder> ReadOrders(const std::vector<SV>& options) {
    std::vector<SortSpecOrder> orders;
    for (const SV& option : options) {
        Require(IsNormal(option, StoreType::String), LumError::InvalidSortOrderOption);
        const bool isDescending = option->AsString() == L"DESC";
        Require(isDescending || option->AsString() == L"ASC", LumError::InvalidSortOrderOption);
        orders.push_back(isDescending ? SortSpecOrder::DESC : SortSpecOrder::ASC);
    }
    return orders;
}

}  // namespace

SV RunMultiSort(const Statement& statement) {
    const bool includeSpecials = statement.GetFlag(LumError::IncludeSpecialsFlagNeeded);
    const std::vector<SV> columns = statement.ReadArrays(LumError::MultiSortInputType);
    Require(!columns.empty(), LumError::MultiSortInputType);
    for (const SV& column : columns) {
        Require(IsPrimitive(ElementTypeOf(column)), LumError::MultiSortElementType);
        Require(CountRows(column) == CountRows(columns[0]), LumError::TableArraySize);
    }
    std::vector<SortSpecOrder> orders(columns.size(), SortSpecOrder::ASC);
    if (statement.spec.GetFunctionSpec() != nullptr) {
        Require(statement.GetFunctionName() == RInternString(L"order"),
                LumError::InvalidSortAlgorithm);
        orders = ReadOrders(statement.ReadArguments());
        Require(orders.size() == columns.size(), LumError::InvalidSortOrderOption);
    }
    Rows rows(CountRows(columns[0]));
    std::iota(rows.begin(), rows.end(), 0u);
    // Stable sorts from the last column to the first leave the first one deciding.
    for (std::size_t i = columns.size(); i-- > 0;) {
        SortBy(columns[i], orders[i], includeSpecials, rows);
    }
    return factory::MakeArray<unsigned>(IntType::Get32(), std::move(rows), SortSpecOrder::UNKNOWN);
}

}  // namespace lumengine
