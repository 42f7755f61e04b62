#pragma once

#include <memory>

#include "core/main/store/NamedCollectionBridge.h"
#include "core/main/store/TableColumns.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/StoreValue.h"

namespace lum::core {

/// Named arrays of one length: read as a table, as a key map of its columns, or by name.
class ValueTable final : public StoreValue,
                         public IStoreTable,
                         public NamedCollectionBridge<IStoreCollection>,
                         public KeyMapBridge {
public:
    /// Errors: those of factory::MakeTable.
    ValueTable(MemberMap&& columns, std::unique_ptr<SortColumns> sortColumns);
    ValueTable(const ValueTable& other);

private:
    // Rows of a table of plain columns have its type, and columns of one length.
    struct Unchecked {};

public:
    ValueTable(Unchecked, const ValueTable& other, lumsize_t startRow, lumsize_t length);

    // StoreValue
    StoreType GetStoreType() const override { return StoreType::Table; }
    const Type* GetType() const override { return m_type; }
    /// The number of columns.
    lumsize_t GetCount() const override { return GetColumnCount(); }
    const IStoreCollection& AsCollection() const override { return *this; }
    const IStoreKeyMap& AsKeyMap() const override { return *this; }
    const IStoreTable& AsTable() const override { return *this; }
    std::unique_ptr<StoreValue> Clone() const override;

    // IStoreTable
    lumsize_t GetColumnCount() const override;
    lumsize_t GetRowCount() const override { return m_rowCount; }
    bool HasColumn(const RInternString& name) const override { return HasKey(name); }
    const SV& GetColumn(const RInternString& name) const override;
    const ColumnIterable& GetColumns() const override { return m_columnIterable; }
    SV GetRowRange(lumsize_t startIndex, lumsize_t length, unsigned step) const override;
    const SortColumns& GetSortColumns() const override { return *m_sortColumns; }
    std::unique_ptr<Columns> CopyColumns() const override;
    SV ComposeRowIndices(std::shared_ptr<const RawData> indices,
                         std::unique_ptr<SortColumns> sortColumns) const override;
    SV ComposeRowIndices(std::vector<unsigned>&& indices,
                         std::unique_ptr<SortColumns> sortColumns) const override;

    // IStoreCollection
    SV TryGetValue(const RInternString& key) const override;
    bool HasKey(const RInternString& key) const override;

    // IStoreKeyMap
    DictionaryCursor<RInternString, SV> GetEntries() const override;

protected:
    SV GetMember(const RInternString& key) const override { return GetColumn(key); }
    const SV& GetEntry(const RInternString& key) const override { return GetColumn(key); }

private:
    class ColumnIterableImpl final : public ColumnIterable {
    public:
        explicit ColumnIterableImpl(const ValueTable& table) : m_table(&table) {}
        MemberMap::const_iterator begin() const override {
            return m_table->m_columns->Get().begin();
        }
        MemberMap::const_iterator end() const override { return m_table->m_columns->Get().end(); }

    private:
        const ValueTable* m_table;
    };

    void CheckColumnSizes() const;

    std::shared_ptr<const TableColumns> m_columns;
    const Type* m_type;
    lumsize_t m_rowCount;
    ColumnIterableImpl m_columnIterable;
    std::shared_ptr<const SortColumns> m_sortColumns;  // Never null.
};

}  // namespace lum::core
