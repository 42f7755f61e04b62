// Any text: it is refused, or it is a path whose text with types reads back as a path of the same
// names and types and prints alike, with a cache and without; and the reader of lists over a
// running scanner takes it for one path too.
//
// Some paths cannot be spelled so that they read back: those with empty names or names of digits
// with a leading zero, and those with types whose parameters are no words or plain numbers. These
// are only printed.
//
// The input is UTF-8, or UTF-16 with a byte order mark, which can spell broken surrogate pairs.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <vector>

#include "core/main/serialize/KeyPathParser.h"
#include "core/main/serialize/KeyPathSerializer.h"
#include "core/main/serialize/VtlScanner.h"
#include "fuzz/FuzzAssert.h"
#include "fuzz/FuzzNames.h"

namespace {

using namespace lumfuzz;  // NOLINT(google-build-using-namespace): a target is a small program.

std::optional<KeyPath> TryParse(const TStringCore& text) {
    try {
        return KeyPath::ParseString(text);
    } catch (const LumRuntimeException&) {
        // Refusing a text that is no path is its job,
    } catch (const std::out_of_range&) {
        // and so it is for an external type that nobody registered.
    }
    return std::nullopt;
}

bool IsSame(const KeyPath& a, const KeyPath& b) {
    return a == b &&
           std::equal(a.GetSegments().begin(), a.GetSegments().end(), b.GetSegments().begin(),
                      [](const KeySegment& left, const KeySegment& right) {
                          return left.TypeAwareEquals(right);
                      });
}

TStringCore TextOf(const KeyPath& path, bool includeTypes, KeyPathSerializerCache* cache) {
    TStringCore text;
    AppendKeyPath(text, path, includeTypes, cache);
    return text;
}

void CheckPath(const TStringCore& text, const KeyPath& path) {
    VtlScanner scanner(text);
    const std::vector<KeyPath> list = KeyPathReader().ReadAll(scanner);
    LUM_FUZZ_ASSERT(list.size() == 1 && IsSame(list.front(), path), text);

    const TStringCore typed = TextOf(path, /*includeTypes=*/true, nullptr);
    const TStringCore untyped = path.ToString();
    KeyPathSerializerCache cache;
    for (int i = 0; i < 2; ++i) {
        LUM_FUZZ_ASSERT(TextOf(path, /*includeTypes=*/true, &cache) == typed, text);
        LUM_FUZZ_ASSERT(TextOf(path, /*includeTypes=*/false, &cache) == untyped, text);
    }
    if (NamesReadBack(path)) {
        const std::optional<KeyPath> again = TryParse(untyped);
        LUM_FUZZ_ASSERT(again && *again == path, text);
        LUM_FUZZ_ASSERT(again->ToString() == untyped, text);
        if (TypesReadBack(path)) {
            const std::optional<KeyPath> typedAgain = TryParse(typed);
            LUM_FUZZ_ASSERT(typedAgain && IsSame(*typedAgain, path), text);
            LUM_FUZZ_ASSERT(TextOf(*typedAgain, /*includeTypes=*/true, nullptr) == typed, text);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool s_isSetUp = SetUp();
    static_cast<void>(s_isSetUp);
    const TStringCore text = MakeText(data, size);
    if (const std::optional<KeyPath> path = TryParse(text)) {
        CheckPath(text, *path);
    }
    return 0;
}
