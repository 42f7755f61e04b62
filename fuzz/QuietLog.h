#pragma once

#include <memory>

#include "lum/core/utility/LumLog.h"

namespace lumfuzz {

/// Turns the log off: to a target, refusals are the ordinary case.
inline void SilenceLog() {
    lum::core::SetLumLogger(std::make_shared<lum::core::LumLogger>(
        lum::core::LumLogger::WideSink(),
        [](lum::core::LumLogLevel, const lum::core::TStringCore&) {},
        [](lum::core::LumLogLevel) { return false; }));
}

}  // namespace lumfuzz
