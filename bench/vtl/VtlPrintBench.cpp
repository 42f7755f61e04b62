// Programs as text: a list of a million varied statements, and statements nested a thousand deep.
// The peer is the parser, which reads what was written. Half the text stands beside each; blanks
// before statements make it grow with the square of the depth.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "lum/core/serialize/KeyPathSerializerCache.h"
#include "lum/core/serialize/VtlParser.h"
#include "lum/core/serialize/VtlSerializer.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"

namespace {

using lum::core::FunctionSpec;
using lum::core::KeyPath;
using lum::core::KeyPathSerializerCache;
using lum::core::KeySegment;
using lum::core::OperatorType;
using lum::core::SV;
using lum::core::TransformSpec;
using lum::core::TStringCore;
using lum::core::ValueSpec;
using Program = std::vector<TransformSpec>;

// Statements over a few thousand names, as a program's keys recur.
class StatementMaker {
public:
    StatementMaker() {
        for (unsigned int i = 0; i < 4000; ++i) {
            TStringCore name;
            for (unsigned int left = 1 + Below(11); left > 0; --left) {
                name += static_cast<char16_t>(u'a' + Below(26));
            }
            m_names.push_back(name);
        }
    }

    TransformSpec Make() {
        switch (Below(4)) {
            case 0:
                return TransformSpec(
                    OperatorType::Map, {Path(), Path()}, Path(),
                    FunctionSpec::Make(Name(), {ValueSpec(Path()), ValueSpec(Number())}));
            case 1:
                return TransformSpec(OperatorType::Constant, KeyPath(), Path(), nullptr, Text());
            case 2:
                return TransformSpec(OperatorType::Filter, Path(), Path(), nullptr,
                                     lum::core::factory::MakeBool(Below(2) == 0));
            default:
                return TransformSpec(OperatorType::Copy, {Path()}, {Path()});
        }
    }

private:
    unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(m_random()) % limit; }
    const TStringCore& Name() { return m_names[Below(static_cast<unsigned int>(m_names.size()))]; }
    SV Number() { return lum::core::factory::MakeReal64(Below(100'000) / 8.0); }
    SV Text() { return lum::core::factory::MakeString(Name() + L" " + Name()); }
    KeyPath Path() {
        using lum::core::ArrayType;
        using lum::core::IntType;
        std::vector<KeySegment> segments;
        for (unsigned int left = 1 + Below(4); left > 0; --left) {
            segments.emplace_back(Name(),
                                  Below(4) == 0 ? ArrayType::Get(IntType::Get32()) : nullptr);
        }
        return KeyPath(std::move(segments));
    }

    std::mt19937 m_random{42};
    std::vector<TStringCore> m_names;
};

Program MakeWide(std::size_t count) {
    StatementMaker maker;
    Program program;
    program.reserve(count);
    while (program.size() < count) {
        program.push_back(maker.Make());
    }
    return program;
}

// Ten statements a level, the last of them with the next level below it.
Program MakeDeep(std::size_t depth) {
    StatementMaker maker;
    Program program;
    for (std::size_t level = 0; level < depth; ++level) {
        Program outer;
        for (unsigned int i = 0; i < 9; ++i) {
            outer.push_back(maker.Make());
        }
        outer.emplace_back(OperatorType::When, std::vector<KeyPath>(), KeyPath({L"condition"}),
                           std::move(program));
        program = std::move(outer);
    }
    return program;
}

void Report(benchmark::State& state, std::size_t length) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["units"] = static_cast<double>(length);
}

void BM_Print(benchmark::State& state, Program (*make)(std::size_t)) {
    const Program program = make(static_cast<std::size_t>(state.range(0)));
    std::size_t length = 0;
    for (auto _ : state) {
        KeyPathSerializerCache cache;
        length = TransformsToString(program, /*includeComments=*/true, &cache).length();
    }
    Report(state, length);
}

void BM_Parse(benchmark::State& state, Program (*make)(std::size_t)) {
    const TStringCore text = TransformsToString(make(static_cast<std::size_t>(state.range(0))),
                                                /*includeComments=*/true);
    if (TransformsToString(lum::core::ParseVtlList(text, /*keepComments=*/true),
                           /*includeComments=*/true) != text) {
        return state.SkipWithError("the text reads back as another program");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(lum::core::ParseVtlList(text, /*keepComments=*/true));
    }
    Report(state, text.length());
}

constexpr auto kMilliseconds = benchmark::kMillisecond;
BENCHMARK_CAPTURE(BM_Print, Wide, MakeWide)->Arg(500'000)->Arg(1'000'000)->Unit(kMilliseconds);
BENCHMARK_CAPTURE(BM_Parse, Wide, MakeWide)->Arg(500'000)->Arg(1'000'000)->Unit(kMilliseconds);
BENCHMARK_CAPTURE(BM_Print, Deep, MakeDeep)->Arg(707)->Arg(1'000)->Unit(kMilliseconds);
BENCHMARK_CAPTURE(BM_Parse, Deep, MakeDeep)->Arg(707)->Arg(1'000)->Unit(kMilliseconds);

}  // namespace
