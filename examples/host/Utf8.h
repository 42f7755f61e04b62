#pragma once

#include <string_view>

namespace lumhost {

/// Whether `text` is well-formed UTF-8. Fast where the text is ASCII.
bool IsUtf8(std::string_view text);

}  // namespace lumhost
