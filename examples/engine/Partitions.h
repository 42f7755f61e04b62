#pragma once

#include <memory>
#include <vector>

#include "RowGroups.h"
#include "Statement.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/IStoreTable.h"

namespace lumengine {

/// The rows of a table by equal keys, for the statements below a groupBy or applyByPartition: they
/// run once in a store of each partition, and what they write below the output is collected.
///
/// Threads: one. Ownership: shares the table's storage; keeps no reference to the statement.
/// Errors: LumRuntimeException; docs/vtl.md lists the codes.
class Partitions {
public:
    explicit Partitions(const Statement& statement);

    /// How often the statements are to run. Over a table without rows they do so once, to find out
    /// what they make.
    std::size_t GetRunCount() const;
    /// A store that holds the partition as a table under the table's own key, of those columns that
    /// the statements read.
    std::unique_ptr<lum::core::IDataStore> MakeScope(std::size_t partition) const;
    /// Takes the results from the store of the next partition.
    void Collect(const lum::core::IDataStore& scope);
    /// The table of the keys and of all results.
    lum::core::SV MakeTable() const;

private:
    // What the statements write under one name, partition by partition.
    struct Result {
        lum::core::KeyPath key;
        const lum::core::Type* type = nullptr;
        std::vector<lum::core::SV> values;
    };

    void ReadKeys(const Statement& statement);
    void FindResults(const lum::core::TransformSpec& spec);
    void FindColumns(const lum::core::TransformSpec& spec);
    lum::core::lumsize_t GetRowCount(std::size_t partition) const;
    lum::core::SV MakeColumn(const Result& result) const;

    bool m_isGroupBy;
    lum::core::KeyPath m_tableKey;
    lum::core::SV m_table;
    lum::core::IStoreTable::Columns m_keys;
    RowGroups m_groups;
    RowLists m_lists;
    lum::core::SV m_sorted;  // The columns that are read, partition behind partition.
    std::vector<Result> m_results;
    std::size_t m_collected = 0;
};

}  // namespace lumengine
