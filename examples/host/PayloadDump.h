#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "HexLines.h"
#include "lum/core/store/SharedBuffer.h"

namespace lumhost {

struct PayloadDump {
    struct Fault {
        HexLines::Position position;
        std::string reason;
    };

    std::string text;
    /// Where and why the dump stops short, if it does; the last line of the text says it as well.
    std::optional<Fault> fault;
};

/// The bytes of a payload with what they mean, as docs/wire-format.md tells it: the header, the
/// strings, and the data, event by event as the library's reader takes them. Of long runs of items
/// only the first ones are shown. The bytes may be any.
PayloadDump DumpPayload(const std::shared_ptr<lum::core::ISharedArrayBuffer>& buffer);

/// Prints the dump of a file.
/// Errors: FileError for a file that cannot be mapped, and, once the dump is printed, for the fault
///   of a damaged one; std::runtime_error where `out` does not take the text.
void PrintPayload(const std::string& file, std::ostream& out);

}  // namespace lumhost
