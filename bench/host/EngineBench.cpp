// A program of ten statements over a million rows on the example engine, beside the same calls
// written by hand against the library. Bound, time of ours to that of the peer: 1.15, one after
// another on both sides.
#include <benchmark/benchmark.h>

#include <bit>
#include <memory>
#include <random>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Program.h"
#include "lum/core/functions/BuiltinFunctions.h"
#include "lum/core/functions/FunctionRegistry.h"
#include "lum/core/functions/IBinaryFunctor.h"
#include "lum/core/functions/IUnaryFunctor.h"
#include "lum/core/serialize/VtlParser.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/RawData.h"
#include "lum/core/store/RawDataView.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TemporaryRawData.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ScalarTypes.h"

namespace lumengine {
namespace {

using namespace lum::core;
using Cell = unsigned long long;

constexpr const wchar_t* kProgram =
    L"a -> map (addConstant :1:r) -> b\n"
    L"a b -> zipWith (+) -> c\n"
    L"c -> map (multiplyConstant :2:r) -> d\n"
    L"d -> reduce :0:r (sum) -> total\n"
    L"d -> scan :0:r (sum) -> running\n"
    L"d -> filter :false (> :1000:r) -> big\n"
    L"big -> reduce :0:i (countAll) -> bigCount\n"
    L"d -> slice (range :0:i :500000:i) -> half\n"
    L"half -> reduce :0:r (max) -> highest\n"
    L"running -> map (inc) -> shifted\n";

struct Results {
    double total = 0;
    int bigCount = 0;
    double highest = 0;
    double lastShifted = 0;

    bool operator==(const Results&) const = default;
};

SV MakeInput() {
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> real(0, 500);
    std::vector<Cell> values(1000000);
    for (Cell& value : values) {
        value = std::bit_cast<Cell>(real(random));
    }
    return factory::MakeArray<Cell>(RealType::Get64(), std::move(values), SortSpecOrder::UNKNOWN);
}

class Hand {
public:
    explicit Hand(const FunctionRegistry& registry) : m_registry(registry) {}

    Results Run(const SV& a) const {
        const SV b = Map<Cell>(L"addConstant", a, {factory::MakeReal64(1)});
        const SV c = Add(a, b);
        const SV d = Map<Cell>(L"multiplyConstant", c, {factory::MakeReal64(2)});
        Results results;
        results.total = Fold(L"sum", d);
        const SV running = Scan(d);
        const SV flags = Map<unsigned char>(L">", d, {factory::MakeReal64(1000)});
        std::vector<unsigned> rows;
        TemporaryRawData scratch;
        const auto view = flags->AsArray().GetValuesView(scratch, 0, flags->GetCount());
        const auto isTrue = view.ViewAs<unsigned char>();
        for (unsigned row = 0; row < isTrue.GetSize(); ++row) {
            if (isTrue[row] != 0) {
                rows.push_back(row);
            }
        }
        const SV big = d->AsArray().ComposeIndices(std::move(rows), SortSpecOrder::UNKNOWN);
        results.bigCount = CountAll(big);
        results.highest = Fold(L"max", d->AsArray().GetRange(0, 500000, 1));
        const SV shifted = Map<Cell>(L"inc", running, {});
        results.lastShifted = shifted->AsArray().GetElement(shifted->GetCount() - 1)->AsReal64();
        return results;
    }

private:
    template <typename Out>
    SV Map(const wchar_t* name, const SV& input, const std::vector<SV>& constants) const {
        const auto functions = m_registry.GetUnaryFunctions().GetRawFunctions(
            FunctionKey(name, input->AsArray().GetElementType()));
        const auto functor = functions.IsCreator() ? functions.GetRegularCreatorFactory()(constants)
                                                   : functions.GetRegularFactory()();
        auto values = std::make_shared<VectorRawData<Out>>(input->GetCount(), Out());
        TemporaryRawData scratch;
        functor->ApplyRaw(input->AsArray().GetValuesView(scratch, 0, input->GetCount()),
                          RawDataView(*values));
        return factory::MakeArray<Out>(functions.GetOutputType(), values, nullptr,
                                       SortSpecOrder::UNKNOWN);
    }

    std::unique_ptr<IRawBinaryFunctor> MakeBinary(const wchar_t* name, const Type* first) const {
        return m_registry.GetBinaryFunctions()
            .GetRawFunctions(
                FunctionKey(name, first, RealType::Get64(), FunctionKey::ArgContainer::Separate))
            .GetRegularFactory()();
    }

    SV Add(const SV& a, const SV& b) const {
        auto values = std::make_shared<VectorRawData<Cell>>(a->GetCount(), Cell());
        TemporaryRawData scratchA;
        TemporaryRawData scratchB;
        MakeBinary(L"+", RealType::Get64())
            ->ApplyRaw(a->AsArray().GetValuesView(scratchA, 0, a->GetCount()),
                       b->AsArray().GetValuesView(scratchB, 0, b->GetCount()),
                       RawDataView(*values));
        return factory::MakeArray<Cell>(RealType::Get64(), values, nullptr, SortSpecOrder::UNKNOWN);
    }

    template <typename T>
    T FoldTo(const wchar_t* name, const Type* type, const SV& input,
             const RawDataView& steps) const {
        VectorRawData<T> accumulator(1, T());
        TemporaryRawData scratch;
        MakeBinary(name, type)
            ->FoldRaw(RawDataView(accumulator),
                      input->AsArray().GetValuesView(scratch, 0, input->GetCount()), steps,
                      FoldDirection::Forward);
        return accumulator.GetView()[0];
    }

    double Fold(const wchar_t* name, const SV& input) const {
        VectorRawData<Cell> none(0, Cell());
        return std::bit_cast<double>(
            FoldTo<Cell>(name, RealType::Get64(), input, RawDataView(none)));
    }

    int CountAll(const SV& input) const {
        VectorRawData<unsigned> none(0, 0u);
        return static_cast<int>(
            FoldTo<unsigned>(L"countAll", IntType::Get32(), input, RawDataView(none)));
    }

    SV Scan(const SV& input) const {
        auto values = std::make_shared<VectorRawData<Cell>>(input->GetCount(), Cell());
        FoldTo<Cell>(L"sum", RealType::Get64(), input, RawDataView(*values));
        return factory::MakeArray<Cell>(RealType::Get64(), values, nullptr, SortSpecOrder::UNKNOWN);
    }

    const FunctionRegistry& m_registry;
};

Results RunOnEngine(const FunctionRegistry& registry, const std::vector<TransformSpec>& program,
                    const SV& input) {
    std::unordered_map<RInternString, SV> members;
    members.emplace(L"a", input);
    const std::unique_ptr<IDataStore> store = factory::MakeDataStore(std::move(members));
    RunProgram(program, *store, registry);
    const SV shifted = store->GetValue(KeyPath(L"shifted"));
    return {store->GetValue(KeyPath(L"total"))->AsReal64(),
            store->GetValue(KeyPath(L"bigCount"))->AsInt32(),
            store->GetValue(KeyPath(L"highest"))->AsReal64(),
            shifted->AsArray().GetElement(shifted->GetCount() - 1)->AsReal64()};
}

void BM_TenStatements(benchmark::State& state, bool isByHand) {
    const std::unique_ptr<FunctionRegistry> registry = FunctionRegistry::Make();
    RegisterAllBuiltinFunctions(*registry);
    const std::vector<TransformSpec> program = ParseVtlList(TStringCore(kProgram), false);
    const SV input = MakeInput();
    const Hand hand(*registry);
    if (RunOnEngine(*registry, program, input) != hand.Run(input)) {
        return state.SkipWithError("result differs from the peer");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(isByHand ? hand.Run(input)
                                          : RunOnEngine(*registry, program, input));
    }
    state.SetItemsProcessed(state.iterations() * 1000000);
}
BENCHMARK_CAPTURE(BM_TenStatements, Engine, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_TenStatements, ByHand, true)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lumengine
