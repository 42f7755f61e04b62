#pragma once

/// The export macro LUM_CORE_API: see the platform layer's header.
#include "lumsys/Export.h"
