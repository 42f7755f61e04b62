#pragma once

#include "lum/core/store/SpecialKind.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

/// One run of a run-length encoded array: `count` elements that are all `value`, or all special.
template <typename T>
struct ValueCompositeArrayRange {
    T value;  // A placeholder where `kind` is not Normal.
    SpecialKind kind;
    lumsize_t count;
};

}  // namespace lum::core
