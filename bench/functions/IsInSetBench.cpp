// isInSet over a column of 1M cells, half of which are members at random: at most 1.5 of a loop
// over absl::flat_hash_set, for sets of 1 Ki, 64 Ki and 1M values. A set that was asked for many
// columns has a table for them; the first column goes without where the set is large.
#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <vector>

#ifdef LUM_HAVE_ABSL
#include <absl/container/flat_hash_set.h>
#endif

#include "lum/core/functions/BuiltinFunctions.h"
#include "lum/core/functions/FunctionNames.h"
#include "lum/core/functions/FunctionRegistry.h"
#include "lum/core/functions/IUnaryFunctor.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/ScalarTypes.h"

namespace lum::core {
namespace {

constexpr std::size_t kCellCount = 1 << 20;

template <typename T>
struct Input {
    explicit Input(std::size_t setSize) : cells(kCellCount) {
        std::mt19937_64 random(17);
        while (members.size() < setSize) {
            members.push_back(static_cast<T>(random()));
        }
        for (T& cell : cells) {
            cell = random() % 2 == 0 ? members[random() % setSize] : static_cast<T>(random());
        }
    }

    std::vector<T> members;
    std::vector<T> cells;
};

template <typename T>
using Storage = typename TypeTraits<T>::Storage;

template <typename T>
SV MakeSetOf(const std::vector<T>& members) {
    auto values = std::make_unique<SetContainer<Storage<T>>>();
    for (const T member : members) {
        values->insert(static_cast<Storage<T>>(member));
    }
    return factory::MakeSet<Storage<T>>(
        sizeof(T) == 4 ? static_cast<const Type*>(IntType::Get32()) : IntType::Get64(),
        std::move(values), nullptr);
}

std::unique_ptr<IRawUnaryFunctor> MakeIsInSet(const SV& set) {
    static const FunctionRegistry& s_registry = *[] {
        std::unique_ptr<FunctionRegistry> registry = FunctionRegistry::Make();
        RegisterAllBuiltinFunctions(*registry);
        return registry.release();
    }();
    const auto functions = s_registry.GetUnaryFunctions().GetRawFunctions(
        FunctionKey(FunctionNames::IS_IN_SET, set->AsSet().GetElementType()));
    return functions.GetRegularCreatorFactory()({set});
}

template <typename T>
bool IsRight(const Input<T>& input, const std::vector<unsigned char>& out, const SV& set) {
    const auto& typedSet = set->AsTypedSet<Storage<T>>();
    for (std::size_t i = 0; i < kCellCount; ++i) {
        if ((out[i] != 0) != typedSet.Contains(static_cast<Storage<T>>(input.cells[i]))) {
            return false;
        }
    }
    return true;
}

template <typename T>
void BM_IsInSet(benchmark::State& state) {
    const Input<T> input(static_cast<std::size_t>(state.range(0)));
    const SV set = MakeSetOf(input.members);
    const std::unique_ptr<IRawUnaryFunctor> raw = MakeIsInSet(set);
    auto& functor = dynamic_cast<IUnaryFunctor<T, bool>&>(*raw);
    std::vector<unsigned char> out(kCellCount);
    constexpr int kColumnsBeforeTable = 8;
    for (int i = 0; i < kColumnsBeforeTable; ++i) {
        functor.ApplyVector(input.cells, out);
    }
    if (!IsRight(input, out, set)) {
        return state.SkipWithError("wrong answer");
    }
    for (auto _ : state) {
        functor.ApplyVector(input.cells, out);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(kCellCount));
}

template <typename T>
void BM_FirstColumn(benchmark::State& state) {
    const Input<T> input(static_cast<std::size_t>(state.range(0)));
    const SV set = MakeSetOf(input.members);
    std::vector<unsigned char> out(kCellCount);
    for (auto _ : state) {
        state.PauseTiming();
        // A clone shares the values, and nobody has asked it for any.
        const std::unique_ptr<IRawUnaryFunctor> raw = MakeIsInSet(set->Clone());
        auto& functor = dynamic_cast<IUnaryFunctor<T, bool>&>(*raw);
        state.ResumeTiming();
        functor.ApplyVector(input.cells, out);
        benchmark::ClobberMemory();
    }
    if (!IsRight(input, out, set)) {
        return state.SkipWithError("wrong answer");
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(kCellCount));
}

#ifdef LUM_HAVE_ABSL
template <typename T>
void BM_FlatHashSet(benchmark::State& state) {
    const Input<T> input(static_cast<std::size_t>(state.range(0)));
    const absl::flat_hash_set<T> set(input.members.begin(), input.members.end());
    std::vector<unsigned char> out(kCellCount);
    for (auto _ : state) {
        for (std::size_t i = 0; i < kCellCount; ++i) {
            out[i] = set.contains(input.cells[i]) ? 1 : 0;
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(kCellCount));
}
#define LUM_BENCH_FLAT_HASH_SET(T, name) \
    BENCHMARK(BM_FlatHashSet<T>)         \
        ->Name(name "/FlatHashSet")      \
        ->Arg(1 << 10)                   \
        ->Arg(1 << 16)                   \
        ->Arg(1 << 20);
#else
#define LUM_BENCH_FLAT_HASH_SET(T, name)
#endif

#define LUM_BENCH_IS_IN_SET(T, name)                                                       \
    BENCHMARK(BM_IsInSet<T>)->Name(name "/Lum")->Arg(1 << 10)->Arg(1 << 16)->Arg(1 << 20); \
    BENCHMARK(BM_FirstColumn<T>)                                                           \
        ->Name(name "/LumFirstColumn")                                                     \
        ->Arg(1 << 10)                                                                     \
        ->Arg(1 << 16)                                                                     \
        ->Arg(1 << 20);                                                                    \
    LUM_BENCH_FLAT_HASH_SET(T, name)

LUM_BENCH_IS_IN_SET(int, "BM_IsInSet32")
LUM_BENCH_IS_IN_SET(long long, "BM_IsInSet64")

}  // namespace
}  // namespace lum::core
