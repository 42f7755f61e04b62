#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"

namespace lum::test {

/// The elements of a column as plain vectors: what every form of it must answer with.
template <typename T>
struct Cells {
    std::vector<T> values;                                // Placeholders included.
    std::optional<std::vector<core::SpecialKind>> kinds;  // Empty where there is no room for them.

    core::SpecialKind GetKind(std::size_t index) const {
        return kinds ? (*kinds)[index] : core::SpecialKind::Normal;
    }
};

template <core::StorageType T>
Cells<T> CellsOf(const core::StoreValue& column);

/// One way in which a column may stand in memory.
struct ColumnForm {
    const char* name;
    core::SV (*make)(const core::SV& column);
};

/// Every form. The function of each gives a column of that form with the same elements and
/// statement of order.
const std::vector<ColumnForm>& GetColumnForms();

/// Calls `check` with every form of the column; failures then show the form's name.
void ForEachForm(const core::SV& column, const std::function<void(const core::SV&)>& check);

}  // namespace lum::test
