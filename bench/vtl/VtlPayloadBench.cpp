// A planned program of 10,000 statements and 10,000 edges: its payload text made and read back, at
// most 2.0 of what ParseVtlList alone takes for the statements.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <random>
#include <unordered_set>
#include <utility>
#include <vector>

#include "bench/vtl/ProgramText.h"
#include "lum/core/serialize/VtlParser.h"
#include "lum/core/serialize/VtlPayload.h"
#include "lum/core/serialize/VtlSerializer.h"

namespace lum::core {
namespace {

constexpr lumsize_t kCount = 10000;

struct Program {
    std::vector<TransformSpec> transforms;
    std::vector<GraphEdge> edges;
    std::unordered_set<KeyPath> updatableKeys;

    TStringCore MakePayload() const { return MakeVtlPayload(transforms, edges, updatableKeys); }
};

std::size_t CountStatements(const std::vector<TransformSpec>& transforms,
                            std::vector<KeyPath>& outputs) {
    std::size_t count = transforms.size();
    for (const TransformSpec& transform : transforms) {
        outputs.insert(outputs.end(), transform.GetOutputs().begin(), transform.GetOutputs().end());
        count += CountStatements(transform.GetChildTransforms(), outputs);
    }
    return count;
}

/// Each edge carries what one of the statements writes, to one to three others.
Program MakeProgram() {
    Program program;
    std::vector<KeyPath> outputs;
    std::size_t count = 0;
    for (TransformSpec& transform :
         ParseVtlList(TStringCore::fromUtf8(MakeProgramText(1500000)), /*keepComments=*/false)) {
        if (count >= kCount) {
            break;
        }
        program.transforms.push_back(std::move(transform));
        outputs.insert(outputs.end(), program.transforms.back().GetOutputs().begin(),
                       program.transforms.back().GetOutputs().end());
        count += 1 + CountStatements(program.transforms.back().GetChildTransforms(), outputs);
    }
    std::mt19937_64 engine(41);
    const auto random = [&engine] { return static_cast<lumsize_t>(engine()); };
    for (lumsize_t i = 0; i < kCount; ++i) {
        const KeyPath& key = outputs[i % outputs.size()];
        program.edges.emplace_back(key,
                                   random() % 10 == 0 ? GraphEdge::NullSourceId : random() % kCount,
                                   std::vector<lumsize_t>(1 + random() % 3, random() % kCount),
                                   random() % 2 == 0 ? BufferType::C : BufferType::I);
        if (i % 100 == 0) {
            program.updatableKeys.insert(key);
        }
    }
    return program;
}

const Program& GetProgram() {
    static const Program* const s_program = new Program(MakeProgram());
    return *s_program;
}

// Freeing what was read is a part of all cases.
void BM_ParseStatements(benchmark::State& state) {
    const TStringCore text = TransformsToPayloadString(GetProgram().transforms);
    for (auto _ : state) {
        benchmark::DoNotOptimize(ParseVtlList(text, /*keepComments=*/false));
    }
    state.counters["units"] = static_cast<double>(text.length());
}

void BM_MakeAndParse(benchmark::State& state) {
    const Program& program = GetProgram();
    const TStringCore text = program.MakePayload();
    Program read;
    ParseVtlPayload(text, read.transforms, read.edges, read.updatableKeys);
    if (read.edges != program.edges || read.updatableKeys != program.updatableKeys ||
        TransformsToPayloadString(read.transforms) !=
            TransformsToPayloadString(program.transforms)) {
        return state.SkipWithError("the payload reads back as another program");
    }
    for (auto _ : state) {
        Program again;
        ParseVtlPayload(program.MakePayload(), again.transforms, again.edges, again.updatableKeys);
        benchmark::DoNotOptimize(again);
    }
    state.counters["units"] = static_cast<double>(text.length());
}

void BM_Make(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(GetProgram().MakePayload());
    }
}

BENCHMARK(BM_ParseStatements)->Name("BM_Payload/ParseVtlList")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MakeAndParse)->Name("BM_Payload/Lum")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Make)->Name("BM_Payload/LumMakeAlone")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lum::core
