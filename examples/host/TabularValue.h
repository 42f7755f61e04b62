#pragma once

#include <string>
#include <vector>

#include "CsvImport.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/RInternString.h"

namespace lumhost {

/// The names of the members, in the order of their text.
std::vector<lum::core::RInternString> SortedNames(const lum::core::IStoreKeyMap& members);

/// The columns of a table, or of a key map whose members are arrays of one length: first those that
/// `order` names, in that order, then the others by their names.
/// Errors: FileError, for `file`, where the value, which stands at `path`, is no such thing.
std::vector<NamedColumn> TakeColumns(const lum::core::SV& value,
                                     const std::vector<lum::core::RInternString>& order,
                                     const std::string& file, const std::string& path);

}  // namespace lumhost
