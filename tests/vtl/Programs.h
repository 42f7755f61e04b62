#pragma once

#include <string>
#include <utility>
#include <vector>

#include "lum/core/serialize/VtlParser.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/vtl/TransformSpec.h"

namespace lum::test {

/// The path of a text such as "a/b:i"; of none for "".
inline core::KeyPath Key(const std::string& text) {
    return text.empty() ? core::KeyPath()
                        : core::KeyPath::ParseString(core::TStringCore::fromUtf8(text));
}

/// The paths of texts.
inline std::vector<core::KeyPath> Keys(const std::vector<std::string>& texts) {
    std::vector<core::KeyPath> keys;
    for (const std::string& text : texts) {
        keys.push_back(Key(text));
    }
    return keys;
}

/// The statements of a text, comments among them.
inline std::vector<core::TransformSpec> Program(const std::string& text) {
    return core::ParseVtlList(core::TStringCore::fromUtf8(text), /*keepComments=*/true);
}

/// A list of transforms, which initializer lists would copy.
template <typename... Transforms>
std::vector<core::TransformSpec> List(Transforms&&... transforms) {
    std::vector<core::TransformSpec> list;
    (list.push_back(std::forward<Transforms>(transforms)), ...);
    return list;
}

}  // namespace lum::test
