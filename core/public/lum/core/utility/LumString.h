#pragma once

#include "lumsys/Hash.h"
#include "lumsys/TStringCore.h"

namespace lum::core {

using lumsys::CaseSensitivity;
using lumsys::Hash;
using lumsys::TStringCore;

}  // namespace lum::core
