#pragma once

#include <string>

#include "lum/core/utility/LumString.h"

namespace lumhost {

/// The whole text of a file. Errors: FileError, also where it is not UTF-8.
lum::core::TStringCore ReadText(const std::string& path);

}  // namespace lumhost
