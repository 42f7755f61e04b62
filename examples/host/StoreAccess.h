#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CsvImport.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/store/StoreValueFwd.h"

namespace lumhost {

/// A store in which the columns stand under their names.
std::unique_ptr<lum::core::IDataStore> MakeStore(const std::vector<NamedColumn>& columns);

/// The key path that an argument is; "/" is that of the store itself. Errors: UsageError.
lum::core::KeyPath ParseKeyPath(const std::string& text);

/// The text of the path as ParseKeyPath takes it.
std::string TextOf(const lum::core::KeyPath& path);

/// The value at the path; a special where an element of an array is special.
/// Errors: FileError, for `file`, where there is none.
lum::core::SV FindValue(const lum::core::IDataStore& store, const lum::core::KeyPath& path,
                        const std::string& file);

}  // namespace lumhost
