// The whole road of a request (map a payload, parse a program, run it, print JSON) beside the sum
// of its steps, each timed alone. Bound, time of the whole to that of the sum: 1.05, so that the
// steps cost each other nothing. The single steps stand below, to see where the time goes. What is
// made is freed outside of the clock.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <bit>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "FunctionCommands.h"
#include "MemoryMap.h"
#include "PayloadBuffers.h"
#include "Program.h"
#include "StoreOutput.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/serialize/VtlParser.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/utility/Collation.h"

namespace lumhost {
namespace {

using namespace lum::core;
using Program = std::vector<TransformSpec>;
using Store = std::shared_ptr<IDataStore>;

constexpr const wchar_t* kProgram =
    L"// What of the prices is high?\n"
    L"price -> map (multiplyConstant :1.19:r) -> gross\n"
    L"gross shipping -> zipWith (+) -> total\n"
    L"total -> reduce :0:r (sum) -> turnover\n"
    L"total -> scan :0:r (sum) -> running\n"
    L"total -> filter :false (> :500:r) -> high\n"
    L"high -> reduce :0:i (countAll) -> highCount\n"
    L"product -> distinct :true -> products\n"
    L"total -> slice (range :0:i :100:i) -> sample\n"
    L"sample -> reduce :0:r (max) -> highestOfSample\n"
    L"running -> map (inc) -> shifted\n";

// A payload of two columns of numbers and one of texts, in a file.
class PayloadFile {
public:
    explicit PayloadFile(std::size_t rowCount) {
        RegisterDefaultCollatorPool();
        std::mt19937_64 random(7);
        std::uniform_int_distribution<int> cents(0, 50'000);
        std::vector<unsigned long long> prices(rowCount);
        std::vector<unsigned long long> shippings(rowCount);
        std::vector<RIndirectString> products(rowCount);
        for (std::size_t row = 0; row < rowCount; ++row) {
            prices[row] = std::bit_cast<unsigned long long>(cents(random) / 100.0);
            shippings[row] = std::bit_cast<unsigned long long>(cents(random) / 1000.0);
            products[row] = TStringCore::fromUtf8("product " + std::to_string(random() % 100));
        }
        std::unordered_map<RInternString, SV> members;
        const auto add = [&](const wchar_t* name, const SV& column) {
            members.emplace(RInternString(name), column);
        };
        constexpr SortSpecOrder kUnknown = SortSpecOrder::UNKNOWN;
        add(L"price", factory::MakeArray(RealType::Get64(), std::move(prices), kUnknown));
        add(L"shipping", factory::MakeArray(RealType::Get64(), std::move(shippings), kUnknown));
        add(L"product", factory::MakeArray(StringType::Get(), std::move(products), kUnknown));
        const std::vector<unsigned char> payload =
            MakePayload(*factory::MakeDataStore(std::move(members)));
        std::ofstream(m_path, std::ios::binary)
            .write(reinterpret_cast<const char*>(payload.data()),
                   static_cast<std::streamsize>(payload.size()));
    }
    ~PayloadFile() { std::filesystem::remove(m_path); }
    PayloadFile(const PayloadFile&) = delete;
    PayloadFile& operator=(const PayloadFile&) = delete;

    Store Map() const {
        BinaryProtocolReader reader(std::make_shared<MappedBuffer>(MemoryMap::Open(m_path)));
        return StoreValueParser::MakeDataStore(reader);
    }

private:
    const std::string m_path = (std::filesystem::temp_directory_path() /
                                ("lum_road_bench_" + std::to_string(getpid()) + ".lum"))
                                   .string();
};

double CpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// Each step is timed alone, on what the steps before it gave outside of the clock.
class Road {
public:
    explicit Road(std::size_t rowCount) : m_file(rowCount) {}

    double TimeMap() const {
        return Time([&] { return m_file.Map(); });
    }
    double TimeParse() const {
        return Time([&] { return Parse(); });
    }
    double TimeRun() const {
        const Store store = m_file.Map();
        return Time([&] { return Run(m_program, store); });
    }
    double TimePrint() const {
        const Store store = Run(m_program, m_file.Map());
        return Time([&] { return SerializeDataStoreCompact(*store); });
    }
    double TimeSteps() const { return TimeMap() + TimeParse() + TimeRun() + TimePrint(); }
    double TimeWhole() const {
        return Time([&] {
            Program program = Parse();
            Store store = Run(program, m_file.Map());
            TStringCore json = SerializeDataStoreCompact(*store);
            return std::tuple(std::move(program), std::move(store), std::move(json));
        });
    }

private:
    Program Parse() const { return ParseVtlList(m_text, /*keepComments=*/false); }
    Store Run(const Program& program, Store store) const {
        lumengine::RunProgram(program, *store, *m_registry);
        return store;
    }
    // Seconds of processor time until the step has made its result.
    template <typename Step>
    static double Time(const Step& step) {
        const double start = CpuSeconds();
        const auto result = step();
        const double end = CpuSeconds();
        benchmark::DoNotOptimize(&result);
        return end - start;
    }

    const PayloadFile m_file;
    const TStringCore m_text{kProgram};
    const std::unique_ptr<FunctionRegistry> m_registry = MakeRegistry();
    const Program m_program = Parse();
};

void BM_Road(benchmark::State& state, double (Road::*time)() const) {
    const Road road(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        state.SetIterationTime((road.*time)());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

#define LUM_ROAD_BENCHMARK(name)                        \
    BENCHMARK_CAPTURE(BM_Road, name, &Road::Time##name) \
        ->Arg(1'000)                                    \
        ->Arg(100'000)                                  \
        ->UseManualTime()                               \
        ->Unit(benchmark::kMicrosecond)
LUM_ROAD_BENCHMARK(Whole);
LUM_ROAD_BENCHMARK(Steps);
LUM_ROAD_BENCHMARK(Map);
LUM_ROAD_BENCHMARK(Parse);
LUM_ROAD_BENCHMARK(Run);
LUM_ROAD_BENCHMARK(Print);

}  // namespace
}  // namespace lumhost
