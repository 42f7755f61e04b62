#pragma once

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/MemberMap.h"
#include "lum/core/store/RawData.h"
#include "lum/core/store/SortSpecOrder.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

/// Named columns of one length, with a statement of the columns that its rows are sorted by.
///
/// Threads: every operation runs on any threads at once.
/// Ownership: tables made from this one share its columns' storage.
/// Units: rows; columns stand in the order of the map they came in.
/// Errors: those of IStoreArray for row ranges and indices; from both, ExpectedArray where a column
///   is a special value, and ColumnSizeMismatch where columns of several forms answer a range
///   beyond the end differently; and as told.
/// Cost: O(columns) for a table made from this one, and no value is copied: a range of rows of
/// plain
///   columns is cut when somebody first asks for a column.
class LUM_CORE_API IStoreTable {
public:
    using Columns = std::unordered_map<RInternString, SV>;
    using SortColumns = std::vector<std::pair<RInternString, SortSpecOrder>>;

    /// The columns with their names; lives as long as the table.
    class LUM_CORE_API ColumnIterable {
    public:
        virtual ~ColumnIterable() = default;
        virtual MemberMap::const_iterator begin() const = 0;
        virtual MemberMap::const_iterator end() const = 0;
    };

    virtual ~IStoreTable() = default;
    virtual lumsize_t GetColumnCount() const = 0;
    virtual lumsize_t GetRowCount() const = 0;
    virtual bool HasColumn(const RInternString& name) const = 0;
    /// Errors: std::out_of_range, "invalid unordered_map<K, T> key".
    virtual const SV& GetColumn(const RInternString& name) const = 0;
    virtual const ColumnIterable& GetColumns() const = 0;
    /// The table of each column's GetRange, without a statement of order.
    virtual SV GetRowRange(lumsize_t startIndex, lumsize_t length, unsigned step) const = 0;
    virtual const SortColumns& GetSortColumns() const = 0;
    /// A map of its own that holds the same columns.
    virtual std::unique_ptr<Columns> CopyColumns() const = 0;
    /// The table whose row i is this one's row indices[i], sorted as `sortColumns` states.
    virtual SV ComposeRowIndices(std::shared_ptr<const RawData> indices,
                                 std::unique_ptr<SortColumns> sortColumns) const = 0;
    virtual SV ComposeRowIndices(std::vector<unsigned>&& indices,
                                 std::unique_ptr<SortColumns> sortColumns) const = 0;
};

}  // namespace lum::core
