// The parts of the binary form below values, each beside a peer. Held, as the share of the peer's
// time: base-128 numbers 1.1 (short) and 0.8 (of all lengths) of protobuf's CodedInputStream; a
// million distinct strings decoded 0.5 of a vector of std::u16string; a million small events,
// checked, 4.0 of msgpack's packer, which checks nothing; a million short strings written, of 1,000
// distinct ones 2.2 and of 100,000 distinct ones 10 times msgpack's packer, which writes each in
// full.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "core/main/serialize/BinaryBufferCreator.h"
#include "core/main/serialize/BinaryBufferReader.h"
#include "core/main/serialize/StringTableCreator.h"
#include "core/main/serialize/StringTableReader.h"
#include "lum/core/serialize/BinaryProtocolCreator.h"

#ifdef LUM_HAVE_PROTOBUF
#include <google/protobuf/io/coded_stream.h>
#endif
#ifdef LUM_HAVE_MSGPACK
#include <msgpack.hpp>
#endif

namespace lum::core {
namespace {

constexpr lumsize_t kCount = 1'000'000;

void SetCount(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCount));
}

// Base-128 ----------------------------------------------------------------------------------------

struct Numbers {
    std::vector<unsigned char> bytes;
    uint64 sum = 0;
};

// Numbers of one byte, or of one to five bytes in no order.
Numbers MakeNumbers(bool isShort) {
    std::mt19937 random(42);
    BinaryBufferCreator buffer;
    Numbers numbers;
    for (lumsize_t i = 0; i < kCount; ++i) {
        const unsigned int length = isShort ? 1 : 1 + static_cast<unsigned int>(random()) % 5;
        const auto bits = static_cast<unsigned int>(random());
        const unsigned int value = length == 5 ? bits | 0x10000000u : bits % (1u << 7 * length);
        buffer.AppendBase128(value);
        numbers.sum += value;
    }
    numbers.bytes.assign(buffer.GetBuffer().begin(), buffer.GetBuffer().end());
    return numbers;
}

void BM_Base128(benchmark::State& state, bool isShort) {
    const Numbers numbers = MakeNumbers(isShort);
    for (auto _ : state) {
        BinaryBufferReader reader(numbers.bytes.data(), LumSizeCastSafe(numbers.bytes.size()));
        uint64 sum = 0;
        for (lumsize_t i = 0; i < kCount; ++i) {
            sum += reader.ReadBase128();
        }
        if (sum != numbers.sum) {
            return state.SkipWithError("wrong sum");
        }
    }
    SetCount(state);
}
BENCHMARK_CAPTURE(BM_Base128, Short, true);
BENCHMARK_CAPTURE(BM_Base128, Mixed, false);

#ifdef LUM_HAVE_PROTOBUF
void BM_Base128Protobuf(benchmark::State& state, bool isShort) {
    const Numbers numbers = MakeNumbers(isShort);
    for (auto _ : state) {
        google::protobuf::io::CodedInputStream reader(numbers.bytes.data(),
                                                      static_cast<int>(numbers.bytes.size()));
        uint64 sum = 0;
        for (lumsize_t i = 0; i < kCount; ++i) {
            std::uint32_t value = 0;
            reader.ReadVarint32(&value);
            sum += value;
        }
        if (sum != numbers.sum) {
            return state.SkipWithError("wrong sum");
        }
    }
    SetCount(state);
}
BENCHMARK_CAPTURE(BM_Base128Protobuf, Short, true);
BENCHMARK_CAPTURE(BM_Base128Protobuf, Mixed, false);
#endif

// Strings -----------------------------------------------------------------------------------------

// `distinct` texts of 6 to 14 letters.
std::vector<std::string> MakeWords(lumsize_t distinct) {
    std::vector<std::string> words;
    std::mt19937 random(7);
    for (lumsize_t i = 0; i < distinct; ++i) {
        std::string word = std::to_string(i);
        const std::size_t length = 6 + random() % 9;
        while (word.size() < length) {
            word += static_cast<char>('a' + random() % 26);
        }
        words.push_back(word);
    }
    return words;
}

struct WordTable {
    StringTableCreator creator;
    uint64 units = 0;
};

const WordTable& GetWordTable() {
    static const auto s_table = [] {
        auto table = std::make_unique<WordTable>();
        for (const std::string& word : MakeWords(kCount)) {
            table->creator.Add(TStringCore::fromUtf8(word));
            table->units += word.size();
        }
        return table;
    }();
    return *s_table;
}

void BM_DecodeStrings(benchmark::State& state) {
    const WordTable& table = GetWordTable();
    const BinaryBufferCreator& indexBuffer = *table.creator.GetIndicesBuffer();
    const BinaryBufferCreator& stringBuffer = *table.creator.GetStringsBuffer();
    for (auto _ : state) {
        StringTableReader reader;
        BinaryBufferReader indices(indexBuffer.GetBuffer().data(), indexBuffer.GetLength());
        BinaryBufferReader strings(stringBuffer.GetBuffer().data(), stringBuffer.GetLength());
        reader.AppendPayloadStrings(indices, strings);
        uint64 units = 0;
        for (lumsize_t i = 1; i <= kCount; ++i) {
            units += reader.GetString(i).length();
        }
        if (units != table.units) {
            return state.SkipWithError("wrong strings");
        }
    }
    SetCount(state);
}
BENCHMARK(BM_DecodeStrings);

// Strict UTF-8 is no part of what is measured: the texts are plain, and the peer decodes those
// only.
std::u16string DecodePlain(const unsigned char* bytes, std::size_t count) {
    return std::u16string(bytes, bytes + count);
}

void BM_DecodeStringsU16(benchmark::State& state) {
    const WordTable& table = GetWordTable();
    const BinaryBufferCreator& indexBuffer = *table.creator.GetIndicesBuffer();
    const BinaryBufferCreator& stringBuffer = *table.creator.GetStringsBuffer();
    for (auto _ : state) {
        std::vector<std::u16string> decoded;
        BinaryBufferReader indices(indexBuffer.GetBuffer().data(), indexBuffer.GetLength());
        indices.Read<unsigned int>();
        unsigned int start = indices.Read<unsigned int>();
        while (start < stringBuffer.GetLength()) {
            const unsigned int end =
                indices.IsAtEnd() ? stringBuffer.GetLength() : indices.Read<unsigned int>();
            decoded.push_back(DecodePlain(stringBuffer.GetBuffer().data() + start, end - start));
            start = end;
        }
        uint64 units = 0;
        for (const std::u16string& text : decoded) {
            units += text.size();
        }
        if (units != table.units) {
            return state.SkipWithError("wrong strings");
        }
    }
    SetCount(state);
}
BENCHMARK(BM_DecodeStringsU16);

// A million short strings in no order, as handles or as bytes.
template <typename Text, typename Make>
std::vector<Text> MakeTexts(lumsize_t distinct, Make make) {
    const std::vector<std::string> words = MakeWords(distinct);
    std::vector<Text> known;
    for (const std::string& word : words) {
        known.push_back(make(word));
    }
    std::mt19937 random(42);
    std::vector<Text> texts;
    for (lumsize_t i = 0; i < kCount; ++i) {
        texts.push_back(known[random() % distinct]);
    }
    return texts;
}

void BM_WriteStrings(benchmark::State& state) {
    const auto texts = MakeTexts<RIndirectString>(
        static_cast<lumsize_t>(state.range(0)),
        [](const std::string& word) { return RIndirectString(TStringCore::fromUtf8(word)); });
    for (auto _ : state) {
        BinaryProtocolCreator creator;
        creator.BeginListType(BinaryListType::ArrayNoSpecials);
        creator.BeginListData(kCount);
        creator.AppendStrings(texts);
        creator.EndListData();
        creator.EndListType();
        benchmark::DoNotOptimize(creator.FinalizePayload().data());
    }
    SetCount(state);
}
BENCHMARK(BM_WriteStrings)->Arg(1'000)->Arg(100'000);

#ifdef LUM_HAVE_MSGPACK
void BM_WriteStringsMsgpack(benchmark::State& state) {
    const auto texts = MakeTexts<std::string>(static_cast<lumsize_t>(state.range(0)),
                                              [](const std::string& word) { return word; });
    for (auto _ : state) {
        msgpack::sbuffer buffer;
        msgpack::packer<msgpack::sbuffer> packer(buffer);
        packer.pack_array(kCount);
        for (const std::string& text : texts) {
            packer.pack(text);
        }
        benchmark::DoNotOptimize(buffer.data());
    }
    SetCount(state);
}
BENCHMARK(BM_WriteStringsMsgpack)->Arg(1'000)->Arg(100'000);
#endif

// Events ------------------------------------------------------------------------------------------

// A list of a million integers, one event each.
void BM_SmallEvents(benchmark::State& state) {
    for (auto _ : state) {
        BinaryProtocolCreator creator;
        BinaryProtocolCreator* const events = &creator;
        benchmark::DoNotOptimize(events);
        events->BeginListType(BinaryListType::ArrayNoSpecials);
        events->BeginListData(kCount);
        for (lumsize_t i = 0; i < kCount; ++i) {
            events->AppendData(i);
        }
        events->EndListData();
        events->EndListType();
        benchmark::DoNotOptimize(events->FinalizePayload().data());
    }
    SetCount(state);
}
BENCHMARK(BM_SmallEvents);

constexpr lumsize_t kRows = kCount / 6;

// A list of pairs, six events each.
void BM_TupleEvents(benchmark::State& state) {
    for (auto _ : state) {
        BinaryProtocolCreator creator;
        BinaryProtocolCreator* const events = &creator;
        benchmark::DoNotOptimize(events);
        events->BeginListType(BinaryListType::ArrayNoSpecials);
        events->BeginListData(kRows);
        for (lumsize_t i = 0; i < kRows; ++i) {
            events->BeginListType(BinaryListType::TupleNoSpecials);
            events->BeginListData(2);
            events->AppendData(i);
            events->AppendData(0.5);
            events->EndListData();
            events->EndListType();
        }
        events->EndListData();
        events->EndListType();
        benchmark::DoNotOptimize(events->FinalizePayload().data());
    }
    SetCount(state);
}
BENCHMARK(BM_TupleEvents);

#ifdef LUM_HAVE_MSGPACK
void BM_SmallEventsMsgpack(benchmark::State& state) {
    for (auto _ : state) {
        msgpack::sbuffer buffer;
        msgpack::packer<msgpack::sbuffer> packer(buffer);
        packer.pack_array(kCount);
        for (lumsize_t i = 0; i < kCount; ++i) {
            packer.pack(i);
        }
        benchmark::DoNotOptimize(buffer.data());
    }
    SetCount(state);
}
BENCHMARK(BM_SmallEventsMsgpack);

void BM_TupleEventsMsgpack(benchmark::State& state) {
    for (auto _ : state) {
        msgpack::sbuffer buffer;
        msgpack::packer<msgpack::sbuffer> packer(buffer);
        packer.pack_array(kRows);
        for (lumsize_t i = 0; i < kRows; ++i) {
            packer.pack_array(2);
            packer.pack(i);
            packer.pack(0.5);
        }
        benchmark::DoNotOptimize(buffer.data());
    }
    SetCount(state);
}
BENCHMARK(BM_TupleEventsMsgpack);
#endif

}  // namespace
}  // namespace lum::core
