// Any text: it is refused, or it is a program that prints, and whose print reads back as a program
// that prints alike, with a cache of keys and without; and without its comments it is the program
// that the reader makes when it drops them.
//
// The input is UTF-8, or UTF-16 with a byte order mark, which can spell broken surrogate pairs.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <vector>

#include "fuzz/FuzzAssert.h"
#include "fuzz/FuzzPrograms.h"
#include "lum/core/serialize/KeyPathSerializerCache.h"
#include "lum/core/serialize/VtlParser.h"
#include "lum/core/serialize/VtlSerializer.h"

namespace {

using namespace lumfuzz;  // NOLINT(google-build-using-namespace): a target is a small program.
using Program = std::vector<TransformSpec>;

std::optional<Program> TryParse(const TStringCore& text, bool keepComments) {
    try {
        return ParseVtlList(text, keepComments);
    } catch (const LumRuntimeException&) {
        // Refusing a text that is no program is its job,
    } catch (const std::out_of_range&) {
        // and so it is for an external type that nobody registered.
    }
    return std::nullopt;
}

TStringCore Print(const Program& program) {
    return TransformsToString(program, /*includeComments=*/true);
}

void CheckProgram(const TStringCore& text, const Program& program) {
    const TStringCore printed = Print(program);
    KeyPathSerializerCache cache;
    for (int i = 0; i < 2; ++i) {
        LUM_FUZZ_ASSERT(TransformsToString(program, true, &cache) == printed, text);
    }
    const std::optional<Program> again = TryParse(printed, /*keepComments=*/true);
    LUM_FUZZ_ASSERT(again && Print(*again) == printed, printed);

    const std::optional<Program> plain = TryParse(text, /*keepComments=*/false);
    LUM_FUZZ_ASSERT(plain.has_value(), text);
    const std::optional<Program> plainAgain = TryParse(printed, /*keepComments=*/false);
    LUM_FUZZ_ASSERT(plainAgain && Print(*plain) == Print(*plainAgain), text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool s_isSetUp = SetUp();
    static_cast<void>(s_isSetUp);
    const TStringCore text = MakeText(data, size);
    const std::optional<Program> program = TryParse(text, /*keepComments=*/true);
    if (program && ReadsBack(*program)) {
        CheckProgram(text, *program);
    }
    return 0;
}
