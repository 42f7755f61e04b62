#include "Partitions.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "Columns.h"
#include "RowGroups.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/vtl/Visitors.h"

namespace lumengine {
namespace {

using namespace lum::core;

// What is parted, and the columns by whose elements.
struct Source {
    KeyPath key;
    SV table;
    IStoreTable::Columns keyColumns;
};

Source ReadSource(const Statement& statement) {
    const std::vector<KeyPath>& inputs = statement.spec.GetInputs();
    Require(!inputs.empty(), LumError::IncorrectPartitionInputs);
    for (const KeyPath& key : inputs) {
        Require(key.GetCount() > 1, LumError::IncorrectPartitionInputs);
        Require(key.GetParent() == inputs[0].GetParent(), LumError::SeveralPartitionTables);
    }
    Source source{inputs[0].GetParent(), nullptr, {}};
    source.table = ReadValue(statement.store, source.key);
    Require(IsTable(source.table), LumError::PartitionNeedsTable);
    for (const KeyPath& key : inputs) {
        const SV column = ReadValue(statement.store, key);
        Require(IsPrimitive(ElementTypeOf(column)), LumError::IncorrectPartitionInputs);
        source.keyColumns.emplace(key.GetLeaf(), column);
    }
    return source;
}

// What the statements write under one name, partition by partition.
struct Result {
    KeyPath key;
    std::vector<SV> values;
};

// Results are the keys right below the output that the statements write.
std::vector<Result> FindResults(const TransformSpec& spec, const Source& source) {
    const KeyPath& output = spec.GetOutputs()[0];
    std::vector<Result> results;
    for (const TransformSpec& child : spec.GetChildTransforms()) {
        for (const KeyPath& key : child.GetOutputs()) {
            if (key.GetCount() <= output.GetCount() || !output.IsPrefixOf(key)) {
                continue;
            }
            const RInternString& name = key.GetSegments()[output.GetCount()].GetSegment();
            Require(source.keyColumns.count(name) == 0, LumError::PartitionKeyOverwritten);
            if (std::none_of(results.begin(), results.end(),
                             [&](const Result& known) { return known.key.GetLeaf() == name; })) {
                results.push_back({output.Add(name), {}});
            }
        }
    }
    Require(spec.GetChildTransforms().empty() || !results.empty(),
            LumError::PartitionWithoutOutput);
    return results;
}

// The columns that the statements read, so laid out that each partition of one is a slice.
SV SortColumns(const TransformSpec& spec, const Source& source, const Rows& rows) {
    const IStoreTable& table = source.table->AsTable();
    IStoreTable::Columns columns;
    const auto add = [&](const RInternString& name) {
        if (table.HasColumn(name) && columns.count(name) == 0) {
            // Joining copies the elements, so that slices of runs are found at once as well.
            const SV sorted = SelectRows(table.GetColumn(name), Rows(rows));
            columns.emplace(name, ConcatenateArrays({sorted}, nullptr, SortSpecOrder::UNKNOWN));
        }
    };
    const auto read = [&](const KeyPath& key) {
        if (key.IsPrefixOf(source.key)) {
            for (const auto& [name, column] : table.GetColumns()) {
                add(name);
            }
        } else if (source.key.IsPrefixOf(key)) {
            add(key.GetSegments()[source.key.GetCount()].GetSegment());
        }
    };
    Visitors::PreOrderVisit({}, {}, read, spec.GetChildTransforms(), /*recurse=*/true);
    return factory::MakeTable(std::move(columns), {});
}

void CheckResult(const SV& value, const Result& result, bool isGroupBy, lumsize_t rowCount) {
    if (isGroupBy) {
        Require(IsPrimitive(value->GetType()), LumError::GroupByOutputType);
    } else {
        Require(IsPrimitive(value->GetType()) || IsArray(value), LumError::PartitionOutputType);
        Require(!IsArray(value) || CountRows(value) == rowCount, LumError::PartitionArraySize);
    }
    Require(result.values.empty() || result.values[0]->GetType() == value->GetType(),
            LumError::PartitionOutputMismatch, result.key.ToString());
}

SV MakeColumn(const Result& result, bool isGroupBy, const RowGroups& groups, const Rows& sorted) {
    Rows rows = groups.groupOfRow;
    if (IsArray(result.values[0])) {
        // The results stand in the order of the partitions' rows, and go back to that of the table.
        for (unsigned i = 0; i < rows.size(); ++i) {
            rows[sorted[i]] = i;
        }
        return ConcatenateArrays(result.values, std::make_unique<Rows>(std::move(rows)),
                                 SortSpecOrder::UNKNOWN);
    }
    const SV column = ColumnOf(result.values);
    // Of a table without rows there is a result all the same.
    return isGroupBy && !rows.empty() ? column : SelectRows(column, std::move(rows));
}

}  // namespace

SV RunByPartition(const Statement& statement, const std::function<void(IDataStore&)>& run) {
    statement.ExpectNoneBut(Parts::None);
    const TransformSpec& spec = statement.spec;
    const bool isGroupBy = spec.GetOperatorType() == OperatorType::GroupBy;
    Require(spec.GetOutputs().size() == 1, LumError::OneOutputNeeded);
    const Source source = ReadSource(statement);
    std::vector<Result> results = FindResults(spec, source);
    std::vector<SV> keyColumns;
    for (const auto& [name, column] : source.keyColumns) {
        keyColumns.push_back(column);
    }
    const RowGroups groups = GroupRows(keyColumns);
    // Over a table without rows the statements run once, to find out what they make.
    const std::size_t partitionCount = std::max<std::size_t>(groups.firstRows.size(), 1);
    const RowLists lists = ListRows(groups.groupOfRow, partitionCount);
    const SV sorted = SortColumns(spec, source, lists.rows);
    for (std::size_t partition = 0; !results.empty() && partition < partitionCount; ++partition) {
        const auto rowCount = static_cast<lumsize_t>(lists[partition].size());
        const std::unique_ptr<IDataStore> scope = MakeEmptyStore();
        scope->AddValue(source.key,
                        sorted->AsTable().GetRowRange(lists.starts[partition], rowCount, 1));
        run(*scope);
        for (Result& result : results) {
            result.values.push_back(ReadValue(*scope, result.key));
            CheckResult(result.values.back(), result, isGroupBy, rowCount);
        }
    }
    IStoreTable::Columns columns = source.keyColumns;
    for (auto& [name, column] : columns) {
        if (isGroupBy) {
            column = SelectRows(column, Rows(groups.firstRows), /*keepsOrder=*/true);
        }
    }
    for (const Result& result : results) {
        columns.emplace(result.key.GetLeaf(), MakeColumn(result, isGroupBy, groups, lists.rows));
    }
    return factory::MakeTable(std::move(columns), {});
}

}  // namespace lumengine
