// Any text: it is refused, and gives no statements then; or it is a payload, which replaces what
// was there, and is written as a text that reads back as the same edges, keys and statements.
//
// The input is UTF-8, or UTF-16 with a byte order mark, which can spell broken surrogate pairs.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <unordered_set>
#include <vector>

#include "fuzz/FuzzAssert.h"
#include "fuzz/FuzzPrograms.h"
#include "lum/core/serialize/VtlPayload.h"
#include "lum/core/serialize/VtlSerializer.h"

namespace {

using namespace lumfuzz;  // NOLINT(google-build-using-namespace): a target is a small program.

struct Payload {
    std::vector<TransformSpec> transforms;
    std::vector<GraphEdge> edges;
    std::unordered_set<KeyPath> keys;

    TStringCore Make() const { return MakeVtlPayload(transforms, edges, keys); }
    bool TryParse(const TStringCore& text) {
        try {
            ParseVtlPayload(text, transforms, edges, keys);
            return true;
        } catch (const LumRuntimeException&) {
            // Refusing a text that is no payload is its job,
        } catch (const LumLogicException&) {
            // as are two sources and unknown buffers,
        } catch (const std::out_of_range&) {
            // and an external type that nobody registered.
        }
        return false;
    }
};

// Keys go without their types. An edge whose key begins with a number reads as one of its sinks.
bool ReadsBack(const GraphEdge& edge) {
    const TStringCore& name = edge.key.GetSegments().front().GetSegment().GetValue();
    return NamesReadBack(edge.key) && !(name[0] >= u'0' && name[0] <= u'9');
}

bool ReadsBack(const Payload& payload) {
    return lumfuzz::ReadsBack(payload.transforms) &&
           std::all_of(payload.edges.begin(), payload.edges.end(),
                       [](const GraphEdge& edge) { return ReadsBack(edge); }) &&
           std::all_of(payload.keys.begin(), payload.keys.end(),
                       [](const KeyPath& key) { return NamesReadBack(key); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool s_isSetUp = SetUp();
    static_cast<void>(s_isSetUp);
    const TStringCore text = MakeText(data, size);
    Payload payload;
    if (!payload.TryParse(text)) {
        LUM_FUZZ_ASSERT(payload.transforms.empty(), text);
        return 0;
    }
    Payload replaced;
    replaced.edges.emplace_back(KeyPath::ParseString(L"old"), BufferType::C);
    LUM_FUZZ_ASSERT(replaced.TryParse(text) && replaced.edges == payload.edges, text);
    if (ReadsBack(payload)) {
        const TStringCore written = payload.Make();
        Payload again;
        LUM_FUZZ_ASSERT(again.TryParse(written), written);
        LUM_FUZZ_ASSERT(again.edges == payload.edges && again.keys == payload.keys, written);
        LUM_FUZZ_ASSERT(TransformsToPayloadString(again.transforms) ==
                            TransformsToPayloadString(payload.transforms),
                        written);
    }
    return 0;
}
