#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CsvImport.h"
#include "Progress.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/utility/RInternString.h"

namespace lumhost {

/// What a file holds.
struct StoreInput {
    std::shared_ptr<lum::core::IDataStore> store;
    /// The members of the root, in the order of the file's columns where it has such an order, else
    /// in that of their text.
    std::vector<lum::core::RInternString> names;
};

/// Reads a file by the ending of its name: ".json" is text with typed keys; ".lum" is a payload,
/// whose columns are then pages of the file; anything else is comma-separated text.
/// Errors: UsageError for options of comma-separated text where the file is none; FileError for
///   whatever is wrong with the file.
StoreInput ReadStore(const std::string& file, const CsvImportOptions& options, Progress& progress);

}  // namespace lumhost
