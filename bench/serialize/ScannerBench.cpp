// Scanning 50 MB of statements, key paths and literals, as the parsers see them: one scanner a
// line. Reported as time a byte, a unit being two.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "core/main/serialize/VtlScanner.h"
#include "core/main/utility/Parser.h"

namespace {

using lum::core::TStringCore;
using lum::core::VtlScanner;
using lum::core::VtlToken;
using lum::core::VtlTokenKind;

constexpr std::size_t kByteCount = 50'000'000;

class LineMaker {
public:
    TStringCore Make() {
        switch (Below(6)) {
            case 0:
                return Path() + L" " + Path() + L" -> map (" + Word() + L" " + Path() + L" :" +
                       Number() + L":r) -> " + Path();
            case 1:
                return L"-> constant :" + Text() + L":s -> " + Path();
            case 2:
                return Path() + L":A<i>/" + Word() + L":K<s,r<9,2>>";
            case 3:
                return L"// " + Word() + L" " + Word() + L" " + Word();
            case 4:
                return TStringCore::number(Below(1000)) + L",," + TStringCore::number(Below(1000)) +
                       L"," + Path() + L",c";
            default:
                return Path() + L" -> filter :" + (Below(2) == 0 ? L"true" : L"Null") + L" -> " +
                       Path();
        }
    }

private:
    unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(m_random()) % limit; }

    TStringCore Word() {
        TStringCore word;
        for (unsigned int left = 1 + Below(11); left > 0; --left) {
            word += static_cast<char16_t>(u'a' + Below(26));
        }
        return word;
    }
    TStringCore Path() {
        TStringCore path = Word();
        for (unsigned int left = Below(4); left > 0; --left) {
            path += L"/" + (Below(5) == 0 ? Text() : Word());
        }
        return path;
    }
    TStringCore Text() { return L"'" + Word() + L" " + Word() + (Below(8) == 0 ? L"\\'s'" : L"'"); }
    TStringCore Number() {
        TStringCore digits = TStringCore::number(Below(100'000));
        switch (Below(4)) {
            case 0:
                return L"-" + digits;
            case 1:
                return digits + L"." + TStringCore::number(Below(1'000'000));
            case 2:
                return digits + L"e-" + TStringCore::number(Below(20));
            default:
                return digits;
        }
    }

    std::mt19937 m_random{42};
};

struct Input {
    std::vector<TStringCore> lines;
    std::size_t byteCount = 0;
};

const Input& GetInput() {
    static const Input s_input = [] {
        Input made;
        LineMaker maker;
        while (made.byteCount < kByteCount) {
            made.lines.push_back(maker.Make());
            made.byteCount += 2 * made.lines.back().length();
        }
        return made;
    }();
    return s_input;
}

void Report(benchmark::State& state, std::size_t byteCount, std::size_t tokenCount) {
    const double rounds = static_cast<double>(state.iterations());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(byteCount));
    state.counters["s/byte"] =
        benchmark::Counter(rounds * static_cast<double>(byteCount),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["s/token"] =
        benchmark::Counter(rounds * static_cast<double>(tokenCount),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_Scan(benchmark::State& state) {
    const Input& input = GetInput();
    std::size_t tokenCount = 0;
    for (auto _ : state) {
        tokenCount = 0;
        for (const TStringCore& line : input.lines) {
            VtlScanner scanner(line);
            while (!scanner.Next().Is(VtlTokenKind::End)) {
                ++tokenCount;
            }
        }
    }
    Report(state, input.byteCount, tokenCount);
}
BENCHMARK(BM_Scan)->Unit(benchmark::kMillisecond);

// As the readers go: a look at the next token before each is taken.
void BM_ScanWithLookahead(benchmark::State& state) {
    const Input& input = GetInput();
    std::size_t tokenCount = 0;
    for (auto _ : state) {
        tokenCount = 0;
        for (const TStringCore& line : input.lines) {
            VtlScanner scanner(line);
            while (!scanner.PeekIs(VtlTokenKind::End)) {
                scanner.Next();
                ++tokenCount;
            }
        }
    }
    Report(state, input.byteCount, tokenCount);
}
BENCHMARK(BM_ScanWithLookahead)->Unit(benchmark::kMillisecond);

// The test whether a name needs quotes.
void BM_IsSingleToken(benchmark::State& state) {
    std::size_t byteCount = 0;
    std::vector<TStringCore> names;
    for (const TStringCore& line : GetInput().lines) {
        VtlToken token;
        VtlScanner scanner(line);
        if (names.size() < 100'000 && scanner.Accept(VtlTokenKind::Identifier, token)) {
            names.push_back(token.GetText());
            byteCount += 2 * names.back().length();
        }
    }
    VtlToken token;
    for (auto _ : state) {
        for (const TStringCore& name : names) {
            benchmark::DoNotOptimize(
                VtlScanner::IsSingleToken(name, VtlTokenKind::Identifier, token));
        }
    }
    Report(state, byteCount, names.size());
}
BENCHMARK(BM_IsSingleToken)->Unit(benchmark::kMillisecond);

// Keys of arrays and sets: a short number a text.
void BM_TryReadInt32(benchmark::State& state) {
    std::size_t byteCount = 0;
    std::vector<TStringCore> keys;
    for (unsigned int i = 0; i < 100'000; ++i) {
        keys.push_back(TStringCore::number(i * 7919 % 1'000'000));
        byteCount += 2 * keys.back().length();
    }
    for (auto _ : state) {
        for (const TStringCore& key : keys) {
            benchmark::DoNotOptimize(lum::core::TryReadInt32(key));
        }
    }
    Report(state, byteCount, keys.size());
}
BENCHMARK(BM_TryReadInt32)->Unit(benchmark::kMillisecond);

}  // namespace
