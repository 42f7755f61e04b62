#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "lum/core/store/MemberMap.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

/// The columns of a table, or of some rows of it. Rows of plain columns are cut out when somebody
/// looks at a column, so that windows over a table, and windows over those, cost the same however
/// many columns there are.
///
/// Threads: every operation runs on any threads at once.
class TableColumns {
public:
    explicit TableColumns(MemberMap&& columns) : m_columns(std::move(columns)) {}
    /// `length` rows of `whole` from `startRow` on, which the caller has compared with its rows.
    /// `whole` has plain columns.
    TableColumns(std::shared_ptr<const TableColumns> whole, lumsize_t startRow, lumsize_t length)
        : m_whole(std::move(whole)), m_startRow(startRow), m_length(length) {}

    /// The names, with the columns of the whole.
    const MemberMap& GetWhole() const noexcept {
        return m_whole == nullptr ? m_columns : m_whole->m_columns;
    }
    /// Cost: the first call for rows of a whole makes all columns.
    const MemberMap& Get() const;
    /// Whether all columns are arrays over raw storage without indices. Any range of those can be
    /// cut out, and has as many rows as the table of it.
    bool ArePlain() const;

    /// Rows of `columns`, which are plain.
    static std::shared_ptr<const TableColumns> Cut(
        const std::shared_ptr<const TableColumns>& columns, lumsize_t startRow, lumsize_t length);

private:
    enum class Plainness : unsigned char { Unknown, Plain, NotAllPlain };

    const std::shared_ptr<const TableColumns> m_whole;  // Itself no cut; null where this is none.
    const lumsize_t m_startRow = 0;
    const lumsize_t m_length = 0;
    mutable std::atomic<Plainness> m_plainness{Plainness::Unknown};
    mutable std::once_flag m_cutFlag;  // Guards the making of the columns of a cut.
    mutable MemberMap m_columns;
};

}  // namespace lum::core
