// Programs as text: scanning it, reading it to finished statements, and writing them again. The
// peer is a scanner that re2c makes of the same grammar, over bytes, where our units have two.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/vtl/ProgramText.h"
#include "core/main/serialize/VtlScanner.h"
#include "lum/core/serialize/KeyPathSerializerCache.h"
#include "lum/core/serialize/VtlParser.h"
#include "lum/core/serialize/VtlSerializer.h"

#ifdef LUM_HAVE_RE2C
#include "bench/vtl/VtlPeer.h"
#endif

namespace {

using lum::core::TStringCore;
using lum::core::VtlCursor;
using lum::core::VtlToken;
using lum::core::VtlTokenKind;

// The text of the last size asked for, since each takes a while to make.
struct Input {
    std::size_t byteCount = 0;
    std::string bytes;
    TStringCore text;
};

const Input& GetInput(const benchmark::State& state) {
    static Input s_input;
    const auto byteCount = static_cast<std::size_t>(state.range(0));
    if (s_input.byteCount != byteCount) {
        s_input.byteCount = byteCount;
        s_input.bytes = MakeProgramText(byteCount);
        s_input.text = TStringCore::fromUtf8(s_input.bytes);
    }
    return s_input;
}

// What a scan has seen: equal for scanners that agree on every token.
struct Summary {
    std::size_t tokenCount = 0;
    std::size_t kinds = 0;
    std::size_t places = 0;

    void Add(VtlTokenKind kind, std::size_t start, std::size_t end) {
        ++tokenCount;
        kinds = kinds * 31 + static_cast<std::size_t>(kind);
        places += start ^ (end << 1);
    }
    friend bool operator==(const Summary&, const Summary&) = default;
};

bool IsLast(VtlTokenKind kind) {
    return kind == VtlTokenKind::End || kind == VtlTokenKind::Invalid;
}

Summary ScanWithLum(const Input& input) {
    VtlCursor cursor(input.text.view());
    Summary summary;
    for (;;) {
        const VtlToken token = cursor.Scan();
        summary.Add(token.GetKind(), token.GetStart(), token.GetEnd());
        if (IsLast(token.GetKind())) {
            return summary;
        }
    }
}

#ifdef LUM_HAVE_RE2C
Summary ScanWithRe2c(const Input& input) {
    VtlPeer scanner(input.bytes.c_str());
    Summary summary;
    for (;;) {
        const VtlPeer::Token token = scanner.Scan();
        summary.Add(token.kind, token.start, token.end);
        if (IsLast(token.kind)) {
            return summary;
        }
    }
}
#endif

void Report(benchmark::State& state, const Input& input) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(input.bytes.size()));
}

void BM_Scan(benchmark::State& state, Summary (*scan)(const Input&)) {
    const Input& input = GetInput(state);
#ifdef LUM_HAVE_RE2C
    if (ScanWithLum(input) != ScanWithRe2c(input)) {
        return state.SkipWithError("the scanners disagree");
    }
#endif
    for (auto _ : state) {
        benchmark::DoNotOptimize(scan(input));
    }
    Report(state, input);
}

// Freeing the statements is not part of it.
void BM_Parse(benchmark::State& state) {
    const Input& input = GetInput(state);
    for (auto _ : state) {
        auto program = lum::core::ParseVtlList(input.text, /*keepComments=*/true);
        benchmark::DoNotOptimize(program);
        state.PauseTiming();
        program = {};
        // The allocator merges what was freed when it next frees a large block: now, since it is
        // no part of the next parse.
        std::free(std::malloc(1 << 20));
        state.ResumeTiming();
    }
    Report(state, input);
}

void BM_Print(benchmark::State& state) {
    const Input& input = GetInput(state);
    const auto program = lum::core::ParseVtlList(input.text, /*keepComments=*/true);
    const TStringCore text = TransformsToString(program, /*includeComments=*/true);
    if (TransformsToString(lum::core::ParseVtlList(text, /*keepComments=*/true),
                           /*includeComments=*/true) != text) {
        return state.SkipWithError("the text reads back as another program");
    }
    for (auto _ : state) {
        lum::core::KeyPathSerializerCache cache;
        benchmark::DoNotOptimize(TransformsToString(program, /*includeComments=*/true, &cache));
    }
    Report(state, input);
}

constexpr std::int64_t kByteCount = 50'000'000;
constexpr auto kMilliseconds = benchmark::kMillisecond;
#ifdef LUM_HAVE_RE2C
BENCHMARK_CAPTURE(BM_Scan, Re2c, ScanWithRe2c)->Arg(kByteCount)->Unit(kMilliseconds);
#endif
BENCHMARK_CAPTURE(BM_Scan, Lum, ScanWithLum)->Arg(kByteCount)->Unit(kMilliseconds);
BENCHMARK(BM_Parse)->Arg(kByteCount)->Unit(kMilliseconds);
BENCHMARK(BM_Print)->Arg(kByteCount)->Unit(kMilliseconds);

}  // namespace
