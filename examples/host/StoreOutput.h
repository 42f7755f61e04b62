#pragma once

#include <string>
#include <vector>

#include "lum/core/store/IDataStore.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/utility/RInternString.h"

namespace lumhost {

/// The payload of a store, with counts in base-128 and without checksums.
/// Errors: those of the library for values without a binary form, and OutOfRange for more than a
///   payload holds.
std::vector<unsigned char> MakePayload(const lum::core::IDataStore& store);

/// Writes the store, or the key map or table at `path`, to a file in the form of its ending.
/// `order` names the columns that come first in comma-separated text. `source` names the store in
/// messages.
/// Errors: UsageError for an ending of no form; FileError for a file that cannot be written, for
///   what the form cannot hold, and where nothing stands at the path. The file is as it was then.
void WriteStore(const std::string& file, const lum::core::IDataStore& store,
                const lum::core::KeyPath& path, const std::vector<lum::core::RInternString>& order,
                const std::string& source);

}  // namespace lumhost
