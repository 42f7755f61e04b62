// A read by a path of 4 segments in a store of 65,536 leaves: at most 0.8 of the same walk over
// nested std::unordered_maps with a copy of a shared pointer a level, and 0.4 of RapidJSON's
// Pointer.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "lum/core/store/IDataStore.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueFactory.h"

#ifdef LUM_HAVE_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/pointer.h>
#endif

namespace lum::core {
namespace {

constexpr int kFan = 16;
constexpr int kDepth = 4;
constexpr int kLeaves = kFan * kFan * kFan * kFan;

std::vector<std::string> NamesOf(int leaf) {
    std::vector<std::string> names;
    for (int level = 0; level < kDepth; ++level) {
        names.push_back("level" + std::to_string(level) + "x" + std::to_string(leaf % kFan));
        leaf /= kFan;
    }
    return names;
}

// Out of order, as paths come.
int Next(int leaf) {
    return (leaf + 40503) % kLeaves;
}

void BM_StoreRead(benchmark::State& state) {
    const std::unique_ptr<IDataStore> store =
        factory::MakeDataStore(std::unique_ptr<std::unordered_map<RInternString, SV>>());
    std::vector<KeyPath> paths;
    for (int leaf = 0; leaf < kLeaves; ++leaf) {
        std::vector<KeySegment> segments;
        for (const std::string& name : NamesOf(leaf)) {
            segments.emplace_back(RInternString(TStringCore::fromUtf8(name)), nullptr);
        }
        paths.emplace_back(std::move(segments));
        store->AddValue(paths.back(), factory::MakeInt32(leaf));
    }
    int leaf = 0;
    for (auto _ : state) {
        const SV value = store->GetValue(paths[static_cast<std::size_t>(leaf)]);
        if (value->AsInt32() != leaf) {
            return state.SkipWithError("wrong leaf");
        }
        leaf = Next(leaf);
    }
}
BENCHMARK(BM_StoreRead)->Name("BM_StoreRead/Lum");

struct Node {
    std::unordered_map<std::string, std::shared_ptr<Node>> children;
    int leaf = 0;
};

void BM_StoreReadNestedMaps(benchmark::State& state) {
    const auto root = std::make_shared<Node>();
    std::vector<std::vector<std::string>> paths;
    for (int leaf = 0; leaf < kLeaves; ++leaf) {
        paths.push_back(NamesOf(leaf));
        std::shared_ptr<Node> node = root;
        for (const std::string& name : paths.back()) {
            std::shared_ptr<Node>& child = node->children[name];
            if (child == nullptr) {
                child = std::make_shared<Node>();
            }
            node = child;
        }
        node->leaf = leaf;
    }
    int leaf = 0;
    for (auto _ : state) {
        std::shared_ptr<Node> node = root;
        for (const std::string& name : paths[static_cast<std::size_t>(leaf)]) {
            const auto found = node->children.find(name);
            node = std::shared_ptr<Node>(found->second);
        }
        if (node->leaf != leaf) {
            return state.SkipWithError("wrong leaf");
        }
        leaf = Next(leaf);
    }
}
BENCHMARK(BM_StoreReadNestedMaps)->Name("BM_StoreRead/NestedMaps");

#ifdef LUM_HAVE_RAPIDJSON
void BM_StoreReadRapidJson(benchmark::State& state) {
    rapidjson::Document document;
    std::vector<rapidjson::Pointer> paths;
    for (int leaf = 0; leaf < kLeaves; ++leaf) {
        std::string text;
        for (const std::string& name : NamesOf(leaf)) {
            text += "/" + name;
        }
        paths.emplace_back(text.c_str());
        paths.back().Set(document, leaf);
    }
    int leaf = 0;
    for (auto _ : state) {
        if (paths[static_cast<std::size_t>(leaf)].Get(document)->GetInt() != leaf) {
            return state.SkipWithError("wrong leaf");
        }
        leaf = Next(leaf);
    }
}
BENCHMARK(BM_StoreReadRapidJson)->Name("BM_StoreRead/RapidJsonPointer");
#endif

}  // namespace
}  // namespace lum::core
