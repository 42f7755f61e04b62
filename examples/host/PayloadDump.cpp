#include "PayloadDump.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>

#include "FileError.h"
#include "MemoryMap.h"
#include "PayloadBuffers.h"
#include "PayloadDataDump.h"
#include "PayloadHeaderDump.h"
#include "TextOutput.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/utility/LumException.h"

namespace lumhost {
namespace {

using namespace lum::core;

using Fault = PayloadDump::Fault;

std::string ReasonOf(const std::exception& error) {
    const auto* const known = dynamic_cast<const LumException*>(&error);
    return known != nullptr ? MessageOf(*known) : error.what();
}

// Adds all lines up to a fault, if there is one.
std::optional<Fault> DumpAll(const std::shared_ptr<ISharedArrayBuffer>& buffer, HexLines& lines) {
    const std::optional<PayloadHeader> header = DumpHeader(buffer->GetView(), lines);
    if (!header) {
        return Fault{lines.GetEndOfLast(), "the file ends within the header"};
    }
    std::optional<BinaryProtocolReader> reader;
    try {
        reader.emplace(buffer);
    } catch (const std::exception& error) {
        return Fault{header->suspect, ReasonOf(error)};
    }
    PayloadDataDump dump(*reader, *header, lines);
    try {
        dump.Dump();
    } catch (const std::exception& error) {
        return Fault{dump.GetPosition(), ReasonOf(error)};
    }
    return std::nullopt;
}

}  // namespace

PayloadDump DumpPayload(const std::shared_ptr<ISharedArrayBuffer>& buffer) {
    HexLines lines(buffer->GetView());
    const std::optional<Fault> fault = DumpAll(buffer, lines);
    if (fault) {
        if (lines.IsQuiet()) {
            lines.SetQuiet(false);
            lines.Add(lines.GetEndOfLast(), fault->position, "items that are not shown");
        }
        const HexLines::Position size = buffer->GetView().GetSize();
        lines.Add(std::min(fault->position, size), size, "damaged: " + fault->reason);
    }
    return {lines.GetText(), fault};
}

void PrintPayload(const std::string& file, std::ostream& out) {
    const auto buffer = std::make_shared<MappedBuffer>(MemoryMap::Open(file));
    const PayloadDump dump = DumpPayload(buffer);
    WriteLine(out, TStringCore::fromUtf8(dump.text));
    if (dump.fault) {
        char place[32];
        std::snprintf(place, sizeof(place), "0x%llx", dump.fault->position);
        throw FileError(file, 0, std::string("damaged at ") + place + ": " + dump.fault->reason);
    }
}

}  // namespace lumhost
