// 100,000 key paths of four segments put into a prefix tree and found in it, beside
// std::unordered_set<KeyPath>, which only says whether a path is there: at most 4.0 times as long.
// Once over a store's paths, where 20 columns stand under each prefix, and once over paths that
// hardly have a prefix in common, so that most of the 300,000 nodes lead to one path each.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "lum/core/store/KeyPath.h"
#include "lum/core/vtl/KeyPathPrefixTree.h"

namespace {

using lum::core::KeyPath;
using lum::core::KeyPathPrefixTree;
using lum::core::KeySegment;
using lum::core::RInternString;
using lum::core::TStringCore;

constexpr std::size_t kPathCount = 100'000;

enum Shape { Store, Apart };

struct Input {
    std::vector<KeyPath> paths;   // Out of order, as paths come.
    std::vector<KeyPath> wanted;  // The same in another order, with segments of their own.
};

RInternString NameOf(std::size_t number) {
    return TStringCore::fromUtf8("member" + std::to_string(number));
}

Input MakeInput(Shape shape) {
    std::mt19937_64 random(42);
    std::vector<std::vector<KeySegment>> lists;
    std::unordered_set<KeyPath> known;
    for (std::size_t i = 0; lists.size() < kPathCount; ++i) {
        // 10 times 50 times 10 times 20, or four of 1,000 names.
        const std::size_t numbers[] = {i % 10, 10 + i / 10 % 50, 60 + i / 500 % 10, 70 + i / 5000};
        std::vector<KeySegment> segments;
        for (const std::size_t number : numbers) {
            segments.emplace_back(NameOf(shape == Store ? number : random() % 1'000), nullptr);
        }
        if (known.insert(KeyPath(std::vector<KeySegment>(segments))).second) {
            lists.push_back(std::move(segments));
        }
    }
    Input input;
    for (std::vector<KeyPath>* const paths : {&input.paths, &input.wanted}) {
        std::shuffle(lists.begin(), lists.end(), random);
        for (const std::vector<KeySegment>& segments : lists) {
            paths->emplace_back(std::vector<KeySegment>(segments));
        }
    }
    return input;
}

const Input& GetInput(Shape shape) {
    static const Input s_inputs[] = {MakeInput(Store), MakeInput(Apart)};
    return s_inputs[shape];
}

struct TreeOfPaths {
    KeyPathPrefixTree tree;
    void Add(const KeyPath& path) { tree.Add(path, true); }
    bool Has(const KeyPath& path) const {
        const KeyPathPrefixTree* const node = tree.Find(path);
        return node != nullptr && node->IsConcrete();
    }
};

struct SetOfPaths {
    std::unordered_set<KeyPath> paths;
    void Add(const KeyPath& path) { paths.insert(path); }
    bool Has(const KeyPath& path) const { return paths.find(path) != paths.end(); }
};

template <typename Container>
void AddAll(Container& container, const Input& input) {
    for (const KeyPath& path : input.paths) {
        container.Add(path);
    }
}

template <typename Container>
std::size_t CountFound(const Container& container, const Input& input) {
    std::size_t found = 0;
    for (const KeyPath& path : input.wanted) {
        found += container.Has(path) ? 1 : 0;
    }
    return found;
}

void CountPaths(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kPathCount));
}

template <typename Container, Shape kShape>
void BM_AddAndFind(benchmark::State& state) {
    const Input& input = GetInput(kShape);
    for (auto _ : state) {
        Container container;
        AddAll(container, input);
        if (CountFound(container, input) != kPathCount) {
            return state.SkipWithError("some are not found");
        }
    }
    CountPaths(state);
}
BENCHMARK_TEMPLATE(BM_AddAndFind, TreeOfPaths, Store)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_AddAndFind, SetOfPaths, Store)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_AddAndFind, TreeOfPaths, Apart)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_AddAndFind, SetOfPaths, Apart)->Unit(benchmark::kMillisecond);

template <typename Container, Shape kShape>
void BM_FindAmongPaths(benchmark::State& state) {
    const Input& input = GetInput(kShape);
    Container container;
    AddAll(container, input);
    std::size_t found = 0;
    for (auto _ : state) {
        found = CountFound(container, input);
    }
    if (found != kPathCount) {
        return state.SkipWithError("some are not found");
    }
    CountPaths(state);
}
BENCHMARK_TEMPLATE(BM_FindAmongPaths, TreeOfPaths, Store)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_FindAmongPaths, SetOfPaths, Store)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_FindAmongPaths, TreeOfPaths, Apart)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_FindAmongPaths, SetOfPaths, Apart)->Unit(benchmark::kMillisecond);

}  // namespace
