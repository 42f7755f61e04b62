// Sets beside the standard container of the same hash, which they hold: one look-up of a number and
// of a string at most 1.05 of its own find, strings with the table that a set makes once it was
// asked for as many as it has; and the set of a column of 1M at most 1.05 of inserts with reserved
// room.
#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/utility/Collation.h"

namespace lum::core {
namespace {

constexpr std::size_t kCount = 1 << 20;

template <typename T>
const Type* TypeFor() {
    if constexpr (std::is_same_v<T, RIndirectString>) {
        return StringType::Get();
    } else {
        return IntType::Get64();
    }
}

template <typename T>
T MakeValue(unsigned long long bits) {
    if constexpr (std::is_same_v<T, RIndirectString>) {
        return RIndirectString(TStringCore::fromUtf8(std::to_string(bits % 100000000)));
    } else {
        return bits;
    }
}

template <typename T>
std::unique_ptr<SetContainer<T>> MakeContainer(std::size_t size) {
    RegisterDefaultCollatorPool();
    std::mt19937_64 random(23);
    auto values = std::make_unique<SetContainer<T>>();
    while (values->size() < size) {
        values->insert(MakeValue<T>(random()));
    }
    return values;
}

/// What is looked up, half of it members.
template <typename T>
std::vector<T> MakeWanted(const SetContainer<T>& values) {
    std::mt19937_64 random(29);
    const std::vector<T> members(values.begin(), values.end());
    std::vector<T> wanted;
    for (std::size_t i = 0; i < 4096; ++i) {
        wanted.push_back(random() % 2 == 0 ? members[random() % members.size()]
                                           : MakeValue<T>(random()));
    }
    return wanted;
}

template <typename T>
void BM_Find(benchmark::State& state) {
    const auto values = MakeContainer<T>(static_cast<std::size_t>(state.range(0)));
    const std::vector<T> wanted = MakeWanted(*values);
    for (auto _ : state) {
        for (const T& value : wanted) {
            benchmark::DoNotOptimize(values->find(value) != values->end());
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(wanted.size()));
}

template <typename T>
void BM_Contains(benchmark::State& state) {
    auto values = MakeContainer<T>(static_cast<std::size_t>(state.range(0)));
    const std::vector<T> wanted = MakeWanted(*values);
    const SV value = factory::MakeSet<T>(TypeFor<T>(), std::move(values), nullptr);
    const ITypedSet<T>& set = value->AsTypedSet<T>();
    for (auto _ : state) {
        for (const T& element : wanted) {
            benchmark::DoNotOptimize(set.Contains(element));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(wanted.size()));
}

BENCHMARK(BM_Find<unsigned long long>)
    ->Name("BM_Contains64/UnorderedSet")
    ->Arg(1 << 10)
    ->Arg(1 << 16)
    ->Arg(1 << 20);
BENCHMARK(BM_Contains<unsigned long long>)
    ->Name("BM_Contains64/Lum")
    ->Arg(1 << 10)
    ->Arg(1 << 16)
    ->Arg(1 << 20);
BENCHMARK(BM_Find<RIndirectString>)
    ->Name("BM_ContainsString/UnorderedSet")
    ->Arg(1 << 10)
    ->Arg(1 << 16)
    ->Arg(1 << 20);
BENCHMARK(BM_Contains<RIndirectString>)->Name("BM_ContainsString/Lum")->Arg(1 << 10)->Arg(1 << 16);
// Not so often that the set would make its table.
BENCHMARK(BM_Contains<RIndirectString>)
    ->Name("BM_ContainsString/LumWithoutTable")
    ->Arg(1 << 20)
    ->Iterations(100);

std::vector<unsigned long long> MakeCells() {
    std::mt19937_64 random(31);
    std::vector<unsigned long long> cells(kCount);
    for (unsigned long long& cell : cells) {
        cell = random();
    }
    return cells;
}

void BM_Insert(benchmark::State& state) {
    const std::vector<unsigned long long> cells = MakeCells();
    for (auto _ : state) {
        std::unordered_set<unsigned long long> values;
        values.reserve(cells.size());
        for (const unsigned long long cell : cells) {
            values.insert(cell);
        }
        benchmark::DoNotOptimize(values.size());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(kCount));
}

void BM_ToSet(benchmark::State& state) {
    const SV column = factory::MakeArray<unsigned long long>(IntType::Get64(), MakeCells(),
                                                             SortSpecOrder::UNKNOWN);
    for (auto _ : state) {
        benchmark::DoNotOptimize(column->AsArray().ToSet(/*includeSpecials=*/false));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(kCount));
}

BENCHMARK(BM_Insert)->Name("BM_ToSet/UnorderedSet")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ToSet)->Name("BM_ToSet/Lum")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lum::core
