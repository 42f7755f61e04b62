#pragma once

#include <type_traits>
#include <vector>

#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/RawDataView.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/store/TemporaryRawData.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/utility/LumError.h"
#include "lum/core/utility/LumSize.h"

/// Columns and rows, as the operators read, choose and build them.
///
/// Threads: any. Ownership: what is made shares storage with what it was made from where told.
/// Errors: those of the library's factories; as told.
namespace lumengine {

using Rows = std::vector<unsigned>;

bool IsArray(const lum::core::SV& value);
bool IsTable(const lum::core::SV& value);

/// The type of the elements of an array.
const lum::core::Type* ElementTypeOf(const lum::core::SV& column);

/// How many rows a table has, or elements another collection of one type.
lum::core::lumsize_t CountRows(const lum::core::SV& value);

/// An array as it is, or the members of a set in any order. Errors: `otherwise` for any other
/// value.
lum::core::SV ToColumn(const lum::core::SV& value, lum::core::LumError otherwise);
/// What was made of ToColumn(source), as a set where `source` is one.
lum::core::SV ToFormOf(const lum::core::SV& source, const lum::core::SV& column);

/// The storage of an array as functors take it, for as long as both live: values, meaningless ones
/// under specials, and kinds, which are laid out only for those who ask.
class ColumnViews {
public:
    explicit ColumnViews(const lum::core::SV& column);

    const lum::core::ConstRawDataView& GetValues() const { return m_values; }
    lum::core::ConstRawDataView GetKinds();

private:
    const lum::core::IStoreArray& m_array;
    // Hold what the views show where the column does not store it as one block.
    lum::core::TemporaryRawData m_valueScratch;
    lum::core::TemporaryRawData m_kindScratch;
    lum::core::ConstRawDataView m_values;
};

/// The kind of each element of an array; empty where none is special.
std::vector<lum::core::SpecialKind> KindsOf(const lum::core::SV& column);

/// Rows of an array or a table, which share its storage. `keepsOrder` says that none stands before
/// one that it follows there.
lum::core::SV SelectRows(const lum::core::SV& value, Rows&& rows, bool keepsOrder = false);

/// The content of a value as a column of its type stores it. Errors: those of FetchStoreValue.
template <lum::core::StorageType T>
T FetchStored(const lum::core::SV& value) {
    if constexpr (std::is_integral_v<T>) {
        return lum::core::FetchStoreValue<T>(value);
    } else {
        return lum::core::FetchStoreValue<const T&>(value);
    }
}

/// Primitives of one type, special or not, as a column; there is one at least.
lum::core::SV ColumnOf(const std::vector<lum::core::SV>& scalars);

}  // namespace lumengine
