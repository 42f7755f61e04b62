#pragma once

#include "lumsys/TStringCore.h"

namespace lum::core {

using lumsys::CaseSensitivity;
using lumsys::TStringCore;

}  // namespace lum::core
