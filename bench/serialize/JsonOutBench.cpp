// A column of a million cells as a value to JSON text, from the array to the finished string. Held,
// as the share of the peer's time: reals 1.3 of std::to_chars with 17 digits alone, which makes no
// text at all; against RapidJSON's UTF-16 writer over the same cells, which has its string in the
// end too, reals 0.9, integers 0.9, strings 0.7. RapidJSON writes the shortest digits of a real
// that read back as the same value where we write 17, so there the texts differ; elsewhere they are
// compared before anything is measured, and reals with those of std::to_chars.

#include <benchmark/benchmark.h>

#include <bit>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"

#ifdef LUM_HAVE_RAPIDJSON
#include <rapidjson/encodings.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#endif

namespace {

using namespace lum::core;

// Columns -----------------------------------------------------------------------------------------

template <typename T, typename Make>
SV MakeColumn(const Type* type, Make make) {
    std::mt19937_64 random(42);
    std::vector<T> cells(1'000'000);
    for (T& cell : cells) {
        cell = make(random);
    }
    return factory::MakeArray<T>(type, std::move(cells), SortSpecOrder::UNORD);
}

SV MakeUniform() {
    return MakeColumn<unsigned long long>(RealType::Get64(), [](auto& random) {
        return std::bit_cast<unsigned long long>(std::uniform_real_distribution<double>()(random));
    });
}

SV MakePrices() {
    return MakeColumn<unsigned long long>(RealType::Get64(), [](auto& random) {
        return std::bit_cast<unsigned long long>(static_cast<double>(random() % 1'000'000) / 100);
    });
}

SV MakeIntegers() {
    return MakeColumn<unsigned int>(
        IntType::Get32(), [](auto& random) { return static_cast<unsigned int>(random()); });
}

// 6 to 14 units: some stand in the string object, some in a block of their own.
SV MakeNames() {
    return MakeColumn<RIndirectString>(StringType::Get(), [](auto& random) {
        std::u16string text(6 + random() % 9, u' ');
        for (char16_t& unit : text) {
            unit = static_cast<char16_t>(u'a' + random() % 26);
        }
        return RIndirectString(TStringCore(text));
    });
}

template <typename T>
ArrayView<const T> CellsOf(const SV& column) {
    return column->AsTypedArray<T>().GetValues();
}

// Writers -----------------------------------------------------------------------------------------

std::u16string WriteWithLum(const SV& column) {
    return std::u16string(SerializeValue(*column).view());
}

// Only the digits of the reals, one after the other into the same place.
class ToChars {
public:
    template <typename Take>
    static void ForEachText(const SV& column, Take take) {
        for (const unsigned long long cell : CellsOf<unsigned long long>(column)) {
            char text[32];
            const auto result =
                std::to_chars(std::begin(text), std::end(text), std::bit_cast<double>(cell),
                              std::chars_format::general, 17);
            take(text, result.ptr);
        }
    }
    static std::u16string Write(const SV& column) {
        std::u16string text = u"[";
        ForEachText(column, [&](const char* first, const char* last) {
            text.append(first, last);
            text += u',';
        });
        text.back() = u']';
        return text;
    }
};

#ifdef LUM_HAVE_RAPIDJSON
using Encoding = rapidjson::UTF16<char16_t>;
using Buffer = rapidjson::GenericStringBuffer<Encoding>;
using Writer = rapidjson::Writer<Buffer, Encoding, Encoding>;

template <typename T, typename AppendCell>
void WriteCells(Buffer& buffer, const SV& column, AppendCell appendCell) {
    Writer writer(buffer);
    writer.StartArray();
    for (const T& cell : CellsOf<T>(column)) {
        appendCell(writer, cell);
    }
    writer.EndArray();
}

void WriteReals(Buffer& buffer, const SV& column) {
    WriteCells<unsigned long long>(buffer, column, [](Writer& writer, unsigned long long cell) {
        writer.Double(std::bit_cast<double>(cell));
    });
}

void WriteIntegers(Buffer& buffer, const SV& column) {
    WriteCells<unsigned int>(buffer, column, [](Writer& writer, unsigned int cell) {
        writer.Int(std::bit_cast<int>(cell));
    });
}

void WriteStrings(Buffer& buffer, const SV& column) {
    WriteCells<RIndirectString>(buffer, column, [](Writer& writer, const RIndirectString& cell) {
        writer.String(cell->data(), static_cast<rapidjson::SizeType>(cell->length()));
    });
}
#endif

// Cases -------------------------------------------------------------------------------------------

using MakeFn = SV (*)();

void SetCells(benchmark::State& state, const SV& column) {
    state.SetItemsProcessed(state.iterations() * std::int64_t{column->GetCount()});
}

void BM_Lum(benchmark::State& state, MakeFn makeColumn) {
    const SV column = makeColumn();
    for (auto _ : state) {
        benchmark::DoNotOptimize(SerializeValue(*column));
    }
    SetCells(state, column);
}

void BM_ToChars(benchmark::State& state, MakeFn makeColumn) {
    const SV column = makeColumn();
    if (WriteWithLum(column) != ToChars::Write(column)) {
        return state.SkipWithError("the text differs from ours");
    }
    for (auto _ : state) {
        ToChars::ForEachText(column, [](const char* first, const char* last) {
            benchmark::DoNotOptimize(first);
            benchmark::DoNotOptimize(last);
        });
    }
    SetCells(state, column);
}

#ifdef LUM_HAVE_RAPIDJSON
void BM_RapidJson(benchmark::State& state, MakeFn makeColumn,
                  void (*write)(Buffer& buffer, const SV& column)) {
    const SV column = makeColumn();
    if (write != WriteReals) {
        Buffer buffer;
        write(buffer, column);
        if (WriteWithLum(column) != buffer.GetString()) {
            return state.SkipWithError("the text differs from ours");
        }
    }
    for (auto _ : state) {
        Buffer buffer;
        write(buffer, column);
        benchmark::DoNotOptimize(buffer.GetString());
    }
    SetCells(state, column);
}
#define LUM_BENCH_RAPIDJSON(name, makeColumn, write) \
    BENCHMARK_CAPTURE(BM_RapidJson, name, makeColumn, write)->Unit(benchmark::kMillisecond)
#else
#define LUM_BENCH_RAPIDJSON(name, makeColumn, write) static_assert(true)
#endif

BENCHMARK_CAPTURE(BM_Lum, Real64Uniform, MakeUniform)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ToChars, Real64Uniform, MakeUniform)->Unit(benchmark::kMillisecond);
LUM_BENCH_RAPIDJSON(Real64Uniform, MakeUniform, WriteReals);
BENCHMARK_CAPTURE(BM_Lum, Real64Price, MakePrices)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ToChars, Real64Price, MakePrices)->Unit(benchmark::kMillisecond);
LUM_BENCH_RAPIDJSON(Real64Price, MakePrices, WriteReals);
BENCHMARK_CAPTURE(BM_Lum, Int32, MakeIntegers)->Unit(benchmark::kMillisecond);
LUM_BENCH_RAPIDJSON(Int32, MakeIntegers, WriteIntegers);
BENCHMARK_CAPTURE(BM_Lum, Strings6To14, MakeNames)->Unit(benchmark::kMillisecond);
LUM_BENCH_RAPIDJSON(Strings6To14, MakeNames, WriteStrings);

}  // namespace
