#include "core/main/store/TableColumns.h"

#include <algorithm>

#include "core/main/store/ValueArray.h"
#include "lum/core/store/StoreTypeDispatcher.h"

namespace lum::core {
namespace {

bool IsPlain(const StoreValue& column) {
    if (column.IsSpecial() || column.AsArray().HasIndices()) {
        return false;
    }
    return DispatchStorage(
        column.AsArray().GetElementType()->GetStoreType(),
        [&column]<typename T>(StorageTag<T>) { return typeid(column) == typeid(ValueArray<T>); });
}

}  // namespace

const MemberMap& TableColumns::Get() const {
    if (m_whole != nullptr) {
        std::call_once(m_cutFlag, [this] {
            MemberMap columns;
            columns.Reserve(m_whole->m_columns.size());
            for (const auto& [name, column] : m_whole->m_columns) {
                columns.Insert(name, column->AsArray().GetRange(m_startRow, m_length, 1));
            }
            m_columns = std::move(columns);
        });
    }
    return m_columns;
}

bool TableColumns::ArePlain() const {
    if (m_whole != nullptr) {
        return true;
    }
    Plainness plainness = m_plainness.load(std::memory_order_relaxed);
    if (plainness == Plainness::Unknown) {
        const bool arePlain = std::all_of(m_columns.begin(), m_columns.end(),
                                          [](const auto& entry) { return IsPlain(*entry.second); });
        plainness = arePlain ? Plainness::Plain : Plainness::NotAllPlain;
        m_plainness.store(plainness, std::memory_order_relaxed);
    }
    return plainness == Plainness::Plain;
}

std::shared_ptr<const TableColumns> TableColumns::Cut(
    const std::shared_ptr<const TableColumns>& columns, lumsize_t startRow, lumsize_t length) {
    return columns->m_whole == nullptr
               ? std::make_shared<const TableColumns>(columns, startRow, length)
               : std::make_shared<const TableColumns>(columns->m_whole,
                                                      columns->m_startRow + startRow, length);
}

}  // namespace lum::core
