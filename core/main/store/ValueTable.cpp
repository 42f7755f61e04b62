#include "core/main/store/ValueTable.h"

#include <algorithm>
#include <utility>

#include "core/main/utility/StandardErrors.h"
#include "lum/core/Check.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/utility/LumLog.h"
#include "lum/core/utility/RFormatString.h"

namespace lum::core {
namespace {

using Columns = IStoreTable::Columns;
using SortColumns = IStoreTable::SortColumns;

const Type* TypeOf(const MemberMap& columns) {
    std::vector<NamedHeterogeneousType::Member> members;
    members.reserve(columns.size());
    for (const auto& [name, value] : columns) {
        members.emplace_back(name, value->GetType());
    }
    return TableType::Get(std::move(members));
}

lumsize_t CountRows(const MemberMap& columns) {
    return columns.empty() ? 0 : columns.begin()->second->GetCount();
}

const std::shared_ptr<const SortColumns>& NoSortColumns() {
    static const auto* const s_none =
        new std::shared_ptr<const SortColumns>(std::make_shared<const SortColumns>());
    return *s_none;
}

}  // namespace

ValueTable::ValueTable(MemberMap&& columns, std::unique_ptr<SortColumns> sortColumns)
    : m_columns(std::make_shared<const TableColumns>(std::move(columns))),
      m_type(lum::core::TypeOf(m_columns->GetWhole())),
      m_rowCount(CountRows(m_columns->GetWhole())),
      m_columnIterable(*this),
      m_sortColumns(sortColumns == nullptr
                        ? NoSortColumns()
                        : std::shared_ptr<const SortColumns>(std::move(sortColumns))) {
    CheckColumnSizes();
}

ValueTable::ValueTable(const ValueTable& other)
    : StoreValue(other),
      IStoreTable(other),
      NamedCollectionBridge(other),
      KeyMapBridge(other),
      m_columns(other.m_columns),
      m_type(other.m_type),
      m_rowCount(other.m_rowCount),
      m_columnIterable(*this),
      m_sortColumns(other.m_sortColumns) {}

ValueTable::ValueTable(Unchecked, const ValueTable& other, lumsize_t startRow, lumsize_t length)
    : m_columns(TableColumns::Cut(other.m_columns, startRow, length)),
      m_type(other.m_type),
      m_rowCount(length),
      m_columnIterable(*this),
      m_sortColumns(NoSortColumns()) {}

void ValueTable::CheckColumnSizes() const {
    const MemberMap& columns = m_columns->GetWhole();
    const bool areEqual = std::all_of(columns.begin(), columns.end(), [this](const auto& entry) {
        return entry.second->GetCount() == m_rowCount;
    });
    if (areEqual) {
        return;
    }
    TStringCore text = L"Found mismatch in table column sizes. Columns and sizes:";
    for (const auto& [name, column] : columns) {
        text += L"\n\t" + name.GetValue() + L": " +
                TStringCore::fromUtf8(std::to_string(column->GetCount()));
    }
    LumLog(LumLogLevel::Diagnostic, text);
    LUM_FAIL(LumError::ColumnSizeMismatch);
}

std::unique_ptr<StoreValue> ValueTable::Clone() const {
    return std::make_unique<ValueTable>(*this);
}

lumsize_t ValueTable::GetColumnCount() const {
    return LumSizeCastSafe(m_columns->GetWhole().size());
}

const SV& ValueTable::GetColumn(const RInternString& name) const {
    return EntryOf(m_columns->Get(), name);
}

SV ValueTable::GetRowRange(lumsize_t startIndex, lumsize_t length, unsigned step) const {
    if (step == 1 && m_columns->ArePlain()) {
        if (startIndex >= m_rowCount) {
            startIndex = 0;
            length = 0;
        }
        return std::make_shared<ValueTable>(Unchecked(), *this, startIndex,
                                            std::min(m_rowCount - startIndex, length));
    }
    MemberMap columns;
    columns.Reserve(GetColumnCount());
    for (const auto& [name, column] : m_columns->Get()) {
        columns.Insert(name, column->AsArray().GetRange(startIndex, length, step));
    }
    return std::make_shared<ValueTable>(std::move(columns), nullptr);
}

std::unique_ptr<Columns> ValueTable::CopyColumns() const {
    const MemberMap& columns = m_columns->Get();
    return std::make_unique<Columns>(columns.begin(), columns.end());
}

SV ValueTable::ComposeRowIndices(std::shared_ptr<const RawData> indices,
                                 std::unique_ptr<SortColumns> sortColumns) const {
    MemberMap columns;
    columns.Reserve(GetColumnCount());
    for (const auto& [name, column] : m_columns->Get()) {
        columns.Insert(name, column->AsArray().ComposeIndices(indices, SortSpecOrder::UNKNOWN));
    }
    return std::make_shared<ValueTable>(std::move(columns), std::move(sortColumns));
}

SV ValueTable::ComposeRowIndices(std::vector<unsigned>&& indices,
                                 std::unique_ptr<SortColumns> sortColumns) const {
    return ComposeRowIndices(std::make_shared<const VectorRawData<unsigned>>(std::move(indices)),
                             std::move(sortColumns));
}

SV ValueTable::TryGetValue(const RInternString& key) const {
    const SV* const column = m_columns->Get().Find(key);
    return column == nullptr ? nullptr : *column;
}

bool ValueTable::HasKey(const RInternString& key) const {
    return m_columns->GetWhole().Find(key) != nullptr;
}

DictionaryCursor<RInternString, SV> ValueTable::GetEntries() const {
    return {GetKeyType(), m_columns->Get()};
}

SV factory::MakeTable(Columns&& columns, SortColumns&& sortColumns) {
    return MakeTable(std::make_unique<Columns>(std::move(columns)),
                     std::make_unique<SortColumns>(std::move(sortColumns)));
}

SV factory::MakeTable(std::unique_ptr<Columns> columns, std::unique_ptr<SortColumns> sortColumns) {
    return MakeTable(columns == nullptr ? MemberMap() : MemberMap(std::move(*columns)),
                     std::move(sortColumns));
}

SV factory::MakeTable(MemberMap&& columns, std::unique_ptr<SortColumns> sortColumns) {
    return std::make_shared<ValueTable>(std::move(columns), std::move(sortColumns));
}

}  // namespace lum::core
