#pragma once

#include <functional>
#include <string>
#include <vector>

#include "lum/core/serialize/BinaryProtocolCreator.h"

namespace lum::test {

/// A payload that was written down by hand from the form, and the events that give it.
struct GoldenPayload {
    const char* name;
    /// 1: checksums, 2: base-128.
    unsigned int flags;
    /// The strings of its table, in order.
    std::vector<std::string> strings;
    /// The data section.
    std::string data;
    std::function<void(core::BinaryProtocolCreator&)> write;

    std::vector<unsigned char> GetBytes() const;
};

/// Every kind of container and value. Some use the external kind that RegisterGoldenKind registers
/// and the collation "fold".
const std::vector<GoldenPayload>& GetGoldenPayloads();
void RegisterGoldenKind();

}  // namespace lum::test
