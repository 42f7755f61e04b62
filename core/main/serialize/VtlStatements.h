#pragma once

#include <string_view>
#include <vector>

#include "lum/core/serialize/KeyPathSerializerCache.h"
#include "lum/core/utility/LumString.h"
#include "lum/core/vtl/TransformSpec.h"

namespace lum::core {

class KnownKeyPaths;

// The statements of a program as a part of a larger text, for which TransformsToString and
// ParseVtlList would copy them. Errors and cost are theirs.

// Appends to `out`, which holds what was written so far where it fails.
void AppendVtlStatements(TStringCore& out, const std::vector<TransformSpec>& transforms,
                         bool includeComments, KeyPathSerializerCache& cache);

// Of units that may be read up to `readableEnd`. Keys are shared with those that are `known` from
// what stands before, and become known themselves.
std::vector<TransformSpec> ReadVtlStatements(std::u16string_view text, const char16_t* readableEnd,
                                             bool keepComments, KnownKeyPaths& known);

}  // namespace lum::core
