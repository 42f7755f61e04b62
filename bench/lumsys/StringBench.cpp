// Strings: the hash at most 1.05 of the block hash alone; copies and comparisons beside those of
// std::u16string. A copy of short text touches no shared count.
#include <benchmark/benchmark.h>

#include <string>

#include "lumsys/Hash.h"
#include "lumsys/TStringCore.h"

namespace lumsys {
namespace {

TStringCore Text(std::size_t length) {
    return TStringCore(length, u'x');
}

void BM_Hash(benchmark::State& state) {
    const TStringCore text = Text(10);
    const std::size_t bytes = text.length() * sizeof(char16_t);
    if (std::hash<TStringCore>()(text) != Hash(text.data(), bytes, 0xDEADBEEF)) {
        return state.SkipWithError("result differs from the peer");
    }
    for (auto _ : state) {
        const TStringCore* place = &text;
        benchmark::DoNotOptimize(place);
        benchmark::DoNotOptimize(std::hash<TStringCore>()(*place));
    }
}
BENCHMARK(BM_Hash)->Name("BM_Hash10/Lum");

void BM_BlockHash(benchmark::State& state) {
    const TStringCore text = Text(10);
    for (auto _ : state) {
        const char16_t* units = text.data();
        benchmark::DoNotOptimize(units);
        benchmark::DoNotOptimize(Hash(units, 20, 0xDEADBEEF));
    }
}
BENCHMARK(BM_BlockHash)->Name("BM_Hash10/BlockHash");

template <typename String>
void BM_Copy(benchmark::State& state) {
    const String text(static_cast<std::size_t>(state.range(0)), u'x');
    for (auto _ : state) {
        const String* place = &text;
        benchmark::DoNotOptimize(place);
        String copy(*place);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(BM_Copy<TStringCore>)->Name("BM_Copy/Lum")->Arg(10)->Arg(100);
BENCHMARK(BM_Copy<std::u16string>)->Name("BM_Copy/u16string")->Arg(10)->Arg(100);

template <typename String>
void BM_Compare(benchmark::State& state) {
    const auto length = static_cast<std::size_t>(state.range(0));
    const String a(length, u'x');
    const String b(length, u'x');
    for (auto _ : state) {
        const String* left = &a;
        const String* right = &b;
        benchmark::DoNotOptimize(left);
        benchmark::DoNotOptimize(right);
        benchmark::DoNotOptimize(*left == *right);
    }
}
BENCHMARK(BM_Compare<TStringCore>)->Name("BM_Compare/Lum")->Arg(10)->Arg(100);
BENCHMARK(BM_Compare<std::u16string>)->Name("BM_Compare/u16string")->Arg(10)->Arg(100);

}  // namespace
}  // namespace lumsys
