#pragma once

#include <functional>
#include <optional>
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
    /// The cells at these places, in this order.
    Cells Picked(const std::vector<unsigned>& places) const {
        Cells picked;
        if (kinds) {
            picked.kinds.emplace();
        }
        for (const unsigned place : places) {
            picked.values.push_back(values[place]);
            if (kinds) {
                picked.kinds->push_back((*kinds)[place]);
            }
        }
        return picked;
    }
};

template <core::StorageType T>
Cells<T> CellsOf(const core::StoreValue& column);

/// One way in which a column may stand in memory.
struct ColumnForm {
    const char* name;
    /// A column of this form with the same elements and, but for a constant one, the same statement
    /// of order; null where the form cannot hold them.
    core::SV (*make)(const core::SV& column);
    bool isFlat;  // Over stored values, and not over runs.
};

/// Every form.
const std::vector<ColumnForm>& GetColumnForms();

/// Calls `check` with every form of the column that there is; failures then show the form's name.
void ForEachForm(const core::SV& column, const std::function<void(const core::SV&)>& check);
/// Likewise with the forms over stored values, which answer alike where runs mean to differ.
void ForEachFlatForm(const core::SV& column, const std::function<void(const core::SV&)>& check);

/// The column as runs, some of which have equal neighbours or no elements. It has special values if
/// the column has room for kinds. Null where runs cannot hold it: they hold primitives.
core::SV MakeRuns(const core::SV& column);

}  // namespace lum::test
