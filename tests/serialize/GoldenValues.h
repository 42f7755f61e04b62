#pragma once

#include <functional>
#include <vector>

#include "lum/core/store/StoreValue.h"

namespace lum::test {

/// A store with the one member "v".
core::SV MakeStoreOf(const core::SV& value);

/// Calls `check` with values of every kind, the flags of a payload (1: checksums, 2: base-128), and
/// the payload of MakeStoreOf of the value, whose bytes were written down from the form and not by
/// the library. Needs the kind of RegisterBytesKind and a pool that knows "fold".
void ForEachGoldenPayload(
    const std::function<void(const core::SV& value, unsigned int flags,
                             const std::vector<unsigned char>& bytes)>& check);

}  // namespace lum::test
