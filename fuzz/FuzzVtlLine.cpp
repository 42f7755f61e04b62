// Any text: it is refused, or it is a statement that prints as a line which reads back as a
// statement that prints alike. A line that stands twice in a program gives the same statement
// twice: the second time its keys are known.
//
// The input is UTF-8, or UTF-16 with a byte order mark, which can spell broken surrogate pairs.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "core/main/serialize/VtlLines.h"
#include "fuzz/FuzzAssert.h"
#include "fuzz/FuzzPrograms.h"
#include "lum/core/serialize/VtlParser.h"
#include "lum/core/serialize/VtlSerializer.h"

namespace {

using namespace lumfuzz;  // NOLINT(google-build-using-namespace): a target is a small program.

std::optional<TransformSpec> TryParse(const TStringCore& text) {
    try {
        return ParseVtlLine(text);
    } catch (const LumRuntimeException&) {
        // Refusing a text that is no statement is its job,
    } catch (const std::out_of_range&) {
        // and so it is for an external type that nobody registered.
    }
    return std::nullopt;
}

// Whether a program of that line twice is cut into just these, at its left edge.
bool IsOneLine(const TStringCore& line, const TStringCore& program) {
    VtlLines lines(program.view());
    std::size_t count = 0;
    for (std::u16string_view cut; lines.Next(cut); ++count) {
        if (cut != line.view()) {
            return false;
        }
    }
    return count == 2 && line[0] != u' ';
}

void CheckStatement(const TStringCore& text, const TransformSpec& transform) {
    const TStringCore printed = TransformToString(transform);
    const std::optional<TransformSpec> again = TryParse(printed);
    LUM_FUZZ_ASSERT(again && TransformToString(*again) == printed, printed);

    const TStringCore twice = text + L"\n" + text;
    if (IsOneLine(text, twice)) {
        const std::vector<TransformSpec> program = ParseVtlList(twice, /*keepComments=*/true);
        LUM_FUZZ_ASSERT(program.size() == 2, text);
        for (const TransformSpec& line : program) {
            LUM_FUZZ_ASSERT(TransformToString(line) == printed, text);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool s_isSetUp = SetUp();
    static_cast<void>(s_isSetUp);
    const TStringCore text = MakeText(data, size);
    const std::optional<TransformSpec> transform = TryParse(text);
    if (transform && ReadsBack(*transform, /*isIndented=*/true)) {
        CheckStatement(text, *transform);
    }
    return 0;
}
