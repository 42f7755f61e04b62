#pragma once

#include <optional>

#include "HexLines.h"
#include "lum/core/store/ArrayView.h"

namespace lumhost {

/// What the header of a payload says of the rest.
struct PayloadHeader {
    bool isBase128;
    HexLines::Position data;
    /// Where the fault is if a reader refuses the header and the strings: at the first field that
    /// cannot be right, else at the strings.
    HexLines::Position suspect;
};

/// Adds the lines of the header and of the strings: docs/wire-format.md tells them.
/// Gives nothing where the bytes end within the header.
std::optional<PayloadHeader> DumpHeader(lum::core::ArrayView<const unsigned char> bytes,
                                        HexLines& lines);

}  // namespace lumhost
