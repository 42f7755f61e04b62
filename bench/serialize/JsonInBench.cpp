// JSON text to a store: a million cells as one array under one typed key, from the string to the
// finished column. Held, as the share of JsonCpp's own parse of the same text as UTF-8, with the
// freeing of its values: time 1.15; peak memory 1.5. The store is compared with the
// column that was printed before anything is measured.
//
// The peak is what malloc holds at the most beyond what it held before, so without the text.

#include <benchmark/benchmark.h>
#include <json/reader.h>
#include <json/value.h>
#include <malloc.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"

// Heap --------------------------------------------------------------------------------------------

namespace {

// Plain counters: the cases run on one thread, and others allocate nothing meanwhile.
std::size_t g_held = 0;
std::size_t g_peak = 0;

void* Count(void* block) {
    g_held += block != nullptr ? malloc_usable_size(block) : 0;
    g_peak = std::max(g_peak, g_held);
    return block;
}

}  // namespace

// JsonCpp takes its strings from malloc and its maps from operator new, which takes from malloc.
extern "C" {
void* __libc_malloc(std::size_t size);                           // NOLINT(bugprone-*)
void* __libc_memalign(std::size_t alignment, std::size_t size);  // NOLINT(bugprone-*)
void* __libc_realloc(void* block, std::size_t size);             // NOLINT(bugprone-*)
void* __libc_calloc(std::size_t count, std::size_t size);        // NOLINT(bugprone-*)
void __libc_free(void* block);                                   // NOLINT(bugprone-*)

void* malloc(std::size_t size) noexcept {
    return Count(__libc_malloc(size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return Count(__libc_memalign(alignment, size));
}
void* calloc(std::size_t count, std::size_t size) noexcept {
    return Count(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) noexcept {
    g_held -= block != nullptr ? malloc_usable_size(block) : 0;
    return Count(__libc_realloc(block, size));
}
void free(void* block) noexcept {
    g_held -= block != nullptr ? malloc_usable_size(block) : 0;
    __libc_free(block);
}
}

namespace {

using namespace lum::core;

// Texts -------------------------------------------------------------------------------------------

template <typename T, typename Make>
TStringCore MakeText(const Type* type, Make make) {
    std::mt19937_64 random(42);
    std::vector<T> cells(1'000'000);
    for (T& cell : cells) {
        cell = make(random);
    }
    std::unordered_map<RInternString, SV> members;
    members.emplace(RInternString(L"a"),
                    factory::MakeArray<T>(type, std::move(cells), SortSpecOrder::UNORD));
    return SerializeValue(*factory::MakeKeyMap(std::move(members)));
}

TStringCore MakeUniform() {
    return MakeText<unsigned long long>(RealType::Get64(), [](auto& random) {
        return std::bit_cast<unsigned long long>(std::uniform_real_distribution<double>()(random));
    });
}

TStringCore MakePrices() {
    return MakeText<unsigned long long>(RealType::Get64(), [](auto& random) {
        return std::bit_cast<unsigned long long>(static_cast<double>(random() % 1'000'000) / 100);
    });
}

TStringCore MakeIntegers() {
    return MakeText<unsigned int>(IntType::Get32(),
                                  [](auto& random) { return static_cast<unsigned int>(random()); });
}

// 6 to 14 units: some stand in the string object, some in a block of their own.
TStringCore MakeNames() {
    return MakeText<RIndirectString>(StringType::Get(), [](auto& random) {
        std::u16string text(6 + random() % 9, u' ');
        for (char16_t& unit : text) {
            unit = static_cast<char16_t>(u'a' + random() % 26);
        }
        return RIndirectString(TStringCore(text));
    });
}

// Cases -------------------------------------------------------------------------------------------

using MakeFn = TStringCore (*)();

template <typename Run>
void Measure(benchmark::State& state, Run run) {
    std::size_t peak = 0;
    for (auto _ : state) {
        const std::size_t before = g_held;
        g_peak = before;
        run();
        peak = g_peak - before;
        // The allocator merges the blocks of a freed tree when next a large block comes or goes,
        // which for the peer would be never: so that nobody leaves it undone, both do it here.
        std::free(std::malloc(1 << 20));
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t{1'000'000});
    state.counters["peak_MB"] = static_cast<double>(peak) / 1e6;
}

void BM_Lum(benchmark::State& state, MakeFn makeText) {
    const TStringCore text = makeText();
    if (SerializeDataStoreCompact(*StoreValueParser::MakeDataStore(text)) != text) {
        return state.SkipWithError("the store differs from what was written");
    }
    Measure(state, [&] { benchmark::DoNotOptimize(StoreValueParser::MakeDataStore(text)); });
}

void BM_JsonCpp(benchmark::State& state, MakeFn makeText) {
    const std::string text = makeText().toStdString();
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Measure(state, [&] {
        Json::Value root;
        if (!reader->parse(text.data(), text.data() + text.size(), &root, nullptr)) {
            state.SkipWithError("the peer refuses the text");
        }
        benchmark::DoNotOptimize(root);
    });
}

BENCHMARK_CAPTURE(BM_Lum, Real64Uniform, MakeUniform)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_JsonCpp, Real64Uniform, MakeUniform)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Lum, Real64Price, MakePrices)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_JsonCpp, Real64Price, MakePrices)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Lum, Int32, MakeIntegers)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_JsonCpp, Int32, MakeIntegers)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Lum, Strings, MakeNames)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_JsonCpp, Strings, MakeNames)->Unit(benchmark::kMillisecond);

}  // namespace
