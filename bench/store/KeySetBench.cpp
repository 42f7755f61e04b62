// Key sets of 65,536 entries, keys stored in 64 bits and as strings, each beside a
// std::unordered_map with the same hash, equality and entries: every key looked up once, in another
// order than the container's; every entry visited; the walk over boxed elements beside a loop that
// boxes them. Held: 1.2 for look-ups, where a virtual call stands before the probe; 1.1 for
// entries; 1.35 for boxed elements.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "lum/core/store/IStoreDictionary.h"
#include "lum/core/store/IUniformCollection.h"
#include "lum/core/store/KeySetFactory.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"

namespace {

using namespace lum::core;

constexpr unsigned kCount = 65'536;

template <typename K>
K MakeKey(unsigned number) {
    if constexpr (std::is_same_v<K, RIndirectString>) {
        return TStringCore::number(number * 2654435761u) + L" is a key";
    } else {
        return number * 0x9e3779b97f4a7c15ull;
    }
}

template <typename K>
struct Input {
    using Map = MapContainer<K, unsigned>;

    Input() {
        auto values = std::make_unique<Map>();
        values->reserve(kCount);
        map.reserve(kCount);
        for (unsigned i = 0; i < kCount; ++i) {
            keys.push_back(MakeKey<K>(i));
            values->emplace(keys.back(), i);
            map.emplace(keys.back(), i);
        }
        std::shuffle(keys.begin(), keys.end(), std::mt19937(1));
        const Type* keyType = IntType::Get64();
        if constexpr (std::is_same_v<K, RIndirectString>) {
            keyType = StringType::Get();
        }
        value = factory::MakeKeySet<K, unsigned>(
            keyType, IntType::Get32(), std::move(values),
            std::make_unique<MapContainer<SpecialKind, unsigned>>());
        keySet = &value->AsDictionary<K, unsigned>();
    }

    std::vector<K> keys;
    Map map;
    SV value;
    const IStoreDictionary<K, unsigned>* keySet;
};

template <typename K>
const Input<K>& GetInput() {
    static const auto s_input = [] {
        RegisterDefaultCollatorPool();
        return std::make_unique<const Input<K>>();
    }();
    return *s_input;
}

template <typename K>
unsigned FindInKeySet(const Input<K>& input) {
    unsigned sum = 0;
    for (const K& key : input.keys) {
        sum += input.keySet->GetValue(key);
    }
    return sum;
}

template <typename K>
unsigned FindInMap(const Input<K>& input) {
    unsigned sum = 0;
    for (const K& key : input.keys) {
        sum += input.map.at(key);
    }
    return sum;
}

template <typename K>
unsigned VisitKeySet(const Input<K>& input) {
    unsigned sum = 0;
    for (const auto& [key, value] : input.keySet->GetEntries()) {
        sum += value;
    }
    return sum;
}

template <typename K>
unsigned VisitMap(const Input<K>& input) {
    unsigned sum = 0;
    for (const auto& [key, value] : input.map) {
        sum += value;
    }
    return sum;
}

template <typename K>
unsigned BoxFromKeySet(const Input<K>& input) {
    unsigned sum = 0;
    const auto& elements = input.value->AsUniformCollection().GetStoreValueIterable();
    for (auto it = elements.begin()->Clone(); *it != elements.end(); it->Advance()) {
        sum += static_cast<unsigned>(it->Dereference()->AsInt32());
    }
    return sum;
}

template <typename K>
unsigned BoxFromMap(const Input<K>& input) {
    unsigned sum = 0;
    for (const auto& [key, value] : input.map) {
        const SV boxed = MakeStoreValueFromStorageType<unsigned>(IntType::Get32(), value);
        sum += static_cast<unsigned>(boxed->AsInt32());
    }
    return sum;
}

template <typename K>
void BM_KeySet(benchmark::State& state, unsigned (*run)(const Input<K>&)) {
    const Input<K>& input = GetInput<K>();
    if (run(input) != FindInMap<K>(input)) {
        return state.SkipWithError("result differs from the peer");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(run(input));
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

// The macro that registers a case takes no template.
void BM_Number64(benchmark::State& state, unsigned (*run)(const Input<unsigned long long>&)) {
    BM_KeySet<unsigned long long>(state, run);
}
void BM_String(benchmark::State& state, unsigned (*run)(const Input<RIndirectString>&)) {
    BM_KeySet<RIndirectString>(state, run);
}

#define LUM_KEY_SET_CASES(runner, K)                            \
    BENCHMARK_CAPTURE(runner, Find_Lum, FindInKeySet<K>);       \
    BENCHMARK_CAPTURE(runner, Find_UnorderedMap, FindInMap<K>); \
    BENCHMARK_CAPTURE(runner, Visit_Lum, VisitKeySet<K>);       \
    BENCHMARK_CAPTURE(runner, Visit_UnorderedMap, VisitMap<K>); \
    BENCHMARK_CAPTURE(runner, Box_Lum, BoxFromKeySet<K>);       \
    BENCHMARK_CAPTURE(runner, Box_UnorderedMap, BoxFromMap<K>);

LUM_KEY_SET_CASES(BM_Number64, unsigned long long)
LUM_KEY_SET_CASES(BM_String, RIndirectString)
#undef LUM_KEY_SET_CASES

}  // namespace
