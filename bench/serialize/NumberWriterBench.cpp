// Columns of a million numbers as the elements of a JSON array, in UTF-16. Held: reals within 0.32
// of the time of RapidJSON's writer over the same column and below std::to_chars of 17 digits,
// integers within 0.7 of RapidJSON's writer. RapidJSON writes the shortest digits that read back as
// the same value where we write 17, so its texts differ; those of std::to_chars must not.

#include "core/main/serialize/NumberWriter.h"

#include <benchmark/benchmark.h>
#include <rapidjson/encodings.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace {

constexpr std::size_t kCount = 1'000'000;

// Columns -----------------------------------------------------------------------------------------

template <typename T, typename Make>
std::vector<T> MakeColumn(Make make) {
    std::mt19937_64 random(42);
    std::vector<T> column(kCount);
    for (T& value : column) {
        value = make(random);
    }
    return column;
}

std::vector<double> MakeUniform() {
    return MakeColumn<double>([](auto& random) { return std::ldexp(double(random() >> 11), -53); });
}

std::vector<double> MakeRandomBits() {
    return MakeColumn<double>([](auto& random) {
        double value = 0;
        do {
            value = std::bit_cast<double>(random());
        } while (!std::isfinite(value));
        return value;
    });
}

std::vector<double> MakePrices() {
    return MakeColumn<double>([](auto& random) { return double(random() % 1'000'000) / 100; });
}

std::vector<int> MakeIntegers() {
    return MakeColumn<int>([](auto& random) { return static_cast<int>(random()); });
}

// Writers -----------------------------------------------------------------------------------------

class LumWriter {
public:
    explicit LumWriter(std::size_t count) : m_units(count * (lum::core::kNumberCapacity + 1) + 2) {}

    template <typename T>
    std::u16string_view Write(const std::vector<T>& column) {
        char16_t* out = m_units.data();
        *out++ = u'[';
        for (const T value : column) {
            if constexpr (std::is_same_v<T, double>) {
                out = lum::core::WriteReal64(value, out);
            } else {
                out = lum::core::WriteInt32(value, out);
            }
            *out++ = u',';
        }
        out[-1] = u']';
        return {m_units.data(), out};
    }

private:
    std::vector<char16_t> m_units;
};

// Writes through a small buffer, as it makes bytes.
class ToCharsWriter {
public:
    explicit ToCharsWriter(std::size_t count)
        : m_units(count * (lum::core::kNumberCapacity + 1) + 2) {}

    template <typename T>
    std::u16string_view Write(const std::vector<T>& column) {
        char16_t* out = m_units.data();
        *out++ = u'[';
        for (const T value : column) {
            char text[lum::core::kNumberCapacity];
            const char* end = ToChars(value, text);
            for (const char* unit = text; unit != end; ++unit) {
                *out++ = static_cast<char16_t>(*unit);
            }
            *out++ = u',';
        }
        out[-1] = u']';
        return {m_units.data(), out};
    }

private:
    static char* ToChars(double value, char (&text)[lum::core::kNumberCapacity]) {
        return std::to_chars(text, std::end(text), value, std::chars_format::general, 17).ptr;
    }
    static char* ToChars(int value, char (&text)[lum::core::kNumberCapacity]) {
        return std::to_chars(text, std::end(text), value).ptr;
    }

    std::vector<char16_t> m_units;
};

class RapidJsonWriter {
public:
    explicit RapidJsonWriter(std::size_t) {}

    template <typename T>
    std::u16string_view Write(const std::vector<T>& column) {
        m_buffer.Clear();
        rapidjson::Writer<Buffer, Encoding, Encoding> writer(m_buffer);
        writer.StartArray();
        for (const T value : column) {
            if constexpr (std::is_same_v<T, double>) {
                writer.Double(value);
            } else {
                writer.Int(value);
            }
        }
        writer.EndArray();
        return {m_buffer.GetString(), m_buffer.GetSize() / sizeof(char16_t)};
    }

private:
    using Encoding = rapidjson::UTF16<char16_t>;
    using Buffer = rapidjson::GenericStringBuffer<Encoding>;

    Buffer m_buffer;
};

// Cases -------------------------------------------------------------------------------------------

template <typename Writer, typename T>
void BM_WriteColumn(benchmark::State& state, std::vector<T> (*makeColumn)()) {
    const std::vector<T> column = makeColumn();
    Writer writer(column.size());
    if constexpr (std::is_same_v<Writer, LumWriter>) {
        ToCharsWriter peer(column.size());
        if (writer.Write(column) != peer.Write(column)) {
            state.SkipWithError("the text differs from that of std::to_chars");
            return;
        }
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(writer.Write(column));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(column.size()));
}

template <typename Writer, typename T>
void RegisterCase(const char* name, std::vector<T> (*makeColumn)()) {
    benchmark::RegisterBenchmark(name, BM_WriteColumn<Writer, T>, makeColumn)
        ->Unit(benchmark::kMillisecond);
}

template <typename T>
void RegisterCases(const std::string& column, std::vector<T> (*makeColumn)()) {
    RegisterCase<LumWriter>(("WriteColumn/" + column + "/Lum").c_str(), makeColumn);
    RegisterCase<ToCharsWriter>(("WriteColumn/" + column + "/ToChars").c_str(), makeColumn);
    RegisterCase<RapidJsonWriter>(("WriteColumn/" + column + "/RapidJson").c_str(), makeColumn);
}

}  // namespace

int main(int argc, char** argv) {
    RegisterCases("Real64Uniform", MakeUniform);
    RegisterCases("Real64RandomBits", MakeRandomBits);
    RegisterCases("Real64Price", MakePrices);
    RegisterCases("Int32", MakeIntegers);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
