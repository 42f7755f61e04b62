#include "Partitions.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/vtl/Visitors.h"

namespace lumengine {

using namespace lum::core;

Partitions::Partitions(const Statement& statement)
    : m_isGroupBy(statement.GetSpec().GetOperatorType() == OperatorType::GroupBy) {
    statement.ExpectNoneBut(Parts::None);
    Require(statement.GetSpec().GetOutputs().size() == 1, LumError::OneOutputNeeded);
    ReadKeys(statement);
    FindResults(statement.GetSpec());
    std::vector<SV> columns;
    for (const auto& [name, column] : m_keys) {
        columns.push_back(column);
    }
    m_groups = GroupRows(columns);
    m_lists = ListRows(m_groups.groupOfRow, m_groups.firstRows.size());
    FindColumns(statement.GetSpec());
}

void Partitions::ReadKeys(const Statement& statement) {
    const std::vector<KeyPath>& inputs = statement.GetSpec().GetInputs();
    Require(!inputs.empty(), LumError::IncorrectPartitionInputs);
    for (const KeyPath& key : inputs) {
        Require(key.GetCount() > 1, LumError::IncorrectPartitionInputs);
        Require(key.GetParent() == inputs[0].GetParent(), LumError::SeveralPartitionTables);
    }
    m_tableKey = inputs[0].GetParent();
    m_table = ReadValue(statement.GetStore(), m_tableKey);
    Require(IsTable(m_table), LumError::PartitionNeedsTable);
    for (const KeyPath& key : inputs) {
        const SV column = ReadValue(statement.GetStore(), key);
        Require(IsPrimitive(column->AsArray().GetElementType()),
                LumError::IncorrectPartitionInputs);
        m_keys.emplace(key.GetLeaf(), column);
    }
}

// Results are the keys right below the output that the statements write.
void Partitions::FindResults(const TransformSpec& spec) {
    const KeyPath& output = spec.GetOutputs()[0];
    for (const TransformSpec& child : spec.GetChildTransforms()) {
        for (const KeyPath& key : child.GetOutputs()) {
            if (key.GetCount() <= output.GetCount() || !output.IsPrefixOf(key)) {
                continue;
            }
            const RInternString& name = key.GetSegments()[output.GetCount()].GetSegment();
            Require(m_keys.count(name) == 0, LumError::PartitionKeyOverwritten);
            const bool isKnown =
                std::any_of(m_results.begin(), m_results.end(),
                            [&](const Result& known) { return known.key.GetLeaf() == name; });
            if (!isKnown) {
                m_results.push_back({output.Add(name), nullptr, {}});
            }
        }
    }
    Require(spec.GetChildTransforms().empty() || !m_results.empty(),
            LumError::PartitionWithoutOutput);
}

// Lays out the columns that the statements read, so that each partition of one is a slice.
void Partitions::FindColumns(const TransformSpec& spec) {
    const IStoreTable& table = m_table->AsTable();
    IStoreTable::Columns columns;
    const auto add = [&](const RInternString& name) {
        if (table.HasColumn(name) && columns.count(name) == 0) {
            // Joining copies the elements, so that slices of runs are found at once as well.
            columns.emplace(name,
                            ConcatenateArrays({SelectRows(table.GetColumn(name), Rows(m_lists.rows),
                                                          /*keepsOrder=*/false)},
                                              nullptr, SortSpecOrder::UNKNOWN));
        }
    };
    const auto read = [&](const KeyPath& key) {
        if (key.IsPrefixOf(m_tableKey)) {
            for (const auto& [name, column] : table.GetColumns()) {
                add(name);
            }
        } else if (m_tableKey.IsPrefixOf(key)) {
            add(key.GetSegments()[m_tableKey.GetCount()].GetSegment());
        }
    };
    Visitors::PreOrderVisit({}, {}, read, spec.GetChildTransforms(), /*recurse=*/true);
    m_sorted = factory::MakeTable(std::move(columns), {});
}

std::size_t Partitions::GetRunCount() const {
    return m_results.empty() ? 0 : std::max<std::size_t>(m_groups.firstRows.size(), 1);
}

std::unique_ptr<IDataStore> Partitions::MakeScope(std::size_t partition) const {
    auto scope = factory::MakeDataStore(std::unordered_map<RInternString, SV>());
    scope->AddValue(m_tableKey, m_sorted->AsTable().GetRowRange(m_lists.starts[partition],
                                                                GetRowCount(partition), 1));
    return scope;
}

void Partitions::Collect(const IDataStore& scope) {
    for (Result& result : m_results) {
        const SV value = ReadValue(scope, result.key);
        const Type* const type = value->GetType();
        if (m_isGroupBy) {
            Require(IsPrimitive(type), LumError::GroupByOutputType);
        } else {
            Require(IsPrimitive(type) || IsArray(value), LumError::PartitionOutputType);
            Require(!IsArray(value) || CountRows(value) == GetRowCount(m_collected),
                    LumError::PartitionArraySize);
        }
        Require(result.type == nullptr || result.type == type, LumError::PartitionOutputMismatch,
                result.key.ToString());
        result.type = type;
        result.values.push_back(value);
    }
    ++m_collected;
}

lumsize_t Partitions::GetRowCount(std::size_t partition) const {
    return m_groups.firstRows.empty() ? 0
                                      : m_lists.starts[partition + 1] - m_lists.starts[partition];
}

SV Partitions::MakeTable() const {
    IStoreTable::Columns columns;
    for (const auto& [name, column] : m_keys) {
        columns.emplace(name, m_isGroupBy ? SelectRows(column, Rows(m_groups.firstRows),
                                                       /*keepsOrder=*/true)
                                          : column);
    }
    for (const Result& result : m_results) {
        columns.emplace(result.key.GetLeaf(), MakeColumn(result));
    }
    return factory::MakeTable(std::move(columns), {});
}

SV Partitions::MakeColumn(const Result& result) const {
    Rows rows = m_groups.groupOfRow;
    if (IsArray(result.values[0])) {
        // The results stand in the order of the partitions' rows, and go back to that of the table.
        for (unsigned i = 0; i < rows.size(); ++i) {
            rows[m_lists.rows[i]] = i;
        }
        return ConcatenateArrays(result.values, std::make_unique<Rows>(std::move(rows)),
                                 SortSpecOrder::UNKNOWN);
    }
    const SV column = ColumnOf(result.values);
    // Of a table without rows there is a result all the same.
    return m_isGroupBy && !rows.empty() ? column : SelectRows(column, std::move(rows), false);
}

}  // namespace lumengine
