// Stores as payloads, each case beside a peer that does the same. Held, as the share of the peer's
// time: 100 columns of reals written 2.1 of one copy of the same bytes into warm memory; a payload
// opened and the first element of each of its 100 columns reached 1.8 of Cap'n Proto's walk over
// the same table, and the same time for any length of the columns; a million short strings opened
// and all read 1.0 of Cap'n Proto's.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "lum/core/serialize/BinaryProtocolCreator.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/serialize/StoreValueBinarySerializer.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"

#ifdef LUM_HAVE_CAPNP
#include <capnp/any.h>
#include <capnp/message.h>
#include <capnp/serialize.h>
#endif
#ifdef LUM_HAVE_FLATBUFFERS
#include <flatbuffers/flatbuffers.h>
#endif
#ifdef LUM_HAVE_MSGPACK
#include <msgpack.hpp>
#endif

namespace lum::core {
namespace {

constexpr int kColumns = 100;
constexpr lumsize_t kStrings = 1'000'000;

class Payload final : public ISharedArrayBuffer {
public:
    explicit Payload(std::vector<unsigned char> bytes) : m_bytes(std::move(bytes)) {}
    ArrayView<const unsigned char> GetView() const override { return m_bytes; }

private:
    std::vector<unsigned char> m_bytes;
};

std::string NameOf(int column) {
    return "column " + std::to_string(column);
}

std::vector<double> MakeReals(lumsize_t rows) {
    std::vector<double> reals;
    for (lumsize_t i = 0; i < rows; ++i) {
        reals.push_back(i * 0.5);
    }
    return reals;
}

// A hundred columns of a million rows, of 800 MB, only where there is memory for the store, its
// payload and a peer's.
void ApplyRows(benchmark::internal::Benchmark* bench) {
    constexpr std::uint64_t kRoomForAll = 6ull << 30;
    const auto room = static_cast<std::uint64_t>(sysconf(_SC_AVPHYS_PAGES)) *
                      static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    bench->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
    if (room >= kRoomForAll) {
        bench->Arg(1'000'000);
    }
}

// Columns that each have storage of their own.
std::unique_ptr<IDataStore> MakeColumns(lumsize_t rows) {
    const std::vector<double> reals = MakeReals(rows);
    std::unordered_map<RInternString, SV> members;
    for (int i = 0; i < kColumns; ++i) {
        std::vector<unsigned long long> cells(rows);
        std::memcpy(cells.data(), reals.data(), rows * sizeof(double));
        members.emplace(
            RInternString(TStringCore::fromUtf8(NameOf(i))),
            factory::MakeArray(RealType::Get64(), std::move(cells), SortSpecOrder::UNKNOWN));
    }
    return factory::MakeDataStore(std::move(members));
}

std::vector<unsigned char> Write(const IDataStore& store) {
    BinaryProtocolCreator creator;
    SerializeDataStore(creator, store);
    return creator.FinalizePayload();
}

std::shared_ptr<IDataStore> Read(const std::shared_ptr<Payload>& payload) {
    BinaryProtocolReader reader(payload);
    return StoreValueParser::MakeDataStore(reader);
}

// Columns -----------------------------------------------------------------------------------------

void SetBytes(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * kColumns * state.range(0) *
                            static_cast<std::int64_t>(sizeof(double)));
}

void BM_WriteColumns(benchmark::State& state) {
    const auto store = MakeColumns(static_cast<lumsize_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(Write(*store).data());
    }
    SetBytes(state);
}
BENCHMARK(BM_WriteColumns)->Apply(ApplyRows);

// Payload after payload into the same memory.
void BM_WriteColumnsAgain(benchmark::State& state) {
    const auto store = MakeColumns(static_cast<lumsize_t>(state.range(0)));
    std::vector<unsigned char> payload;
    for (auto _ : state) {
        BinaryProtocolCreator creator;
        SerializeDataStore(creator, *store);
        creator.FinalizePayload(payload);
        benchmark::DoNotOptimize(payload.data());
    }
    SetBytes(state);
}
BENCHMARK(BM_WriteColumnsAgain)->Apply(ApplyRows);

void BM_WriteColumnsMemcpy(benchmark::State& state) {
    const auto rows = static_cast<std::size_t>(state.range(0));
    const std::vector<double> from(kColumns * rows, 0.5);
    std::vector<double> to(from.size(), 0.0);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), from.size() * sizeof(double));
        benchmark::ClobberMemory();
    }
    SetBytes(state);
}
BENCHMARK(BM_WriteColumnsMemcpy)->Apply(ApplyRows);

#ifdef LUM_HAVE_FLATBUFFERS
// A table with a vector of names and one of tables with the values, as the schema compiler would
// write it.
void BM_WriteColumnsFlatBuffers(benchmark::State& state) {
    const auto rows = static_cast<lumsize_t>(state.range(0));
    const std::vector<std::vector<double>> columns(kColumns, MakeReals(rows));
    for (auto _ : state) {
        flatbuffers::FlatBufferBuilder builder;
        std::vector<flatbuffers::Offset<flatbuffers::Table>> tables;
        for (int i = 0; i < kColumns; ++i) {
            const auto name = builder.CreateString(NameOf(i));
            const auto values = builder.CreateVector(columns[static_cast<std::size_t>(i)]);
            const auto start = builder.StartTable();
            builder.AddOffset(4, name);
            builder.AddOffset(6, values);
            tables.emplace_back(builder.EndTable(start));
        }
        const auto all = builder.CreateVector(tables);
        const auto start = builder.StartTable();
        builder.AddOffset(4, all);
        builder.Finish(flatbuffers::Offset<flatbuffers::Table>(builder.EndTable(start)));
        const flatbuffers::DetachedBuffer buffer = builder.Release();
        benchmark::DoNotOptimize(buffer.data());
    }
    SetBytes(state);
}
BENCHMARK(BM_WriteColumnsFlatBuffers)->Apply(ApplyRows);
#endif

// What is reached: the name's length, the column's, and the last element.
void BM_OpenColumns(benchmark::State& state) {
    const auto rows = static_cast<lumsize_t>(state.range(0));
    const auto payload = std::make_shared<Payload>(Write(*MakeColumns(rows)));
    for (auto _ : state) {
        const std::shared_ptr<IDataStore> store = Read(payload);
        double sum = 0;
        for (const auto& [name, column] : store->GetRootKeyMap()->GetEntries()) {
            const auto values = column->AsTypedArray<unsigned long long>().GetValues();
            sum += static_cast<double>(name.GetValue().length() + values.GetSize());
            sum += std::bit_cast<double>(values[values.GetSize() - 1]);
        }
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(BM_OpenColumns)->Apply(ApplyRows);

#ifdef LUM_HAVE_CAPNP
constexpr capnp::ReaderOptions kNoLimits{~0ull, 64};

// The lists of a schema's Table { names :List(Text); columns :List(List(Float64)); }.
template <typename Fill>
kj::Array<capnp::word> WriteCapnp(const Fill& fill) {
    capnp::MallocMessageBuilder message;
    fill(message.getRoot<capnp::AnyPointer>().initAsAnyStruct(0, 2));
    return capnp::messageToFlatArray(message);
}

void BM_OpenColumnsCapnp(benchmark::State& state) {
    const auto rows = static_cast<lumsize_t>(state.range(0));
    const std::vector<double> reals = MakeReals(rows);
    const auto words = WriteCapnp([&](capnp::AnyStruct::Builder table) {
        auto names = table.getPointerSection()[0].initAs<capnp::List<capnp::Text>>(kColumns);
        auto columns =
            table.getPointerSection()[1].initAs<capnp::List<capnp::List<double>>>(kColumns);
        for (unsigned int i = 0; i < kColumns; ++i) {
            names.set(i, NameOf(static_cast<int>(i)).c_str());
            auto column = columns.init(i, rows);
            for (lumsize_t row = 0; row < rows; ++row) {
                column.set(row, reals[row]);
            }
        }
    });
    for (auto _ : state) {
        capnp::FlatArrayMessageReader message(words.asPtr(), kNoLimits);
        const auto table = message.getRoot<capnp::AnyPointer>().getAs<capnp::AnyStruct>();
        const auto names = table.getPointerSection()[0].getAs<capnp::List<capnp::Text>>();
        const auto columns = table.getPointerSection()[1].getAs<capnp::List<capnp::List<double>>>();
        double sum = 0;
        for (unsigned int i = 0; i < columns.size(); ++i) {
            const auto column = columns[i];
            sum += static_cast<double>(names[i].size() + column.size());
            sum += column[column.size() - 1];
        }
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(BM_OpenColumnsCapnp)->Apply(ApplyRows);
#endif

// Strings -----------------------------------------------------------------------------------------

// A million texts of 6 to 14 letters in no order, `distinct` of them different.
std::vector<std::string> MakeTexts(lumsize_t distinct) {
    std::mt19937 random(7);
    std::vector<std::string> words;
    for (lumsize_t i = 0; i < distinct; ++i) {
        std::string word = std::to_string(i);
        const std::size_t length = 6 + random() % 9;
        while (word.size() < length) {
            word += static_cast<char>('a' + random() % 26);
        }
        words.push_back(word);
    }
    std::vector<std::string> texts;
    for (lumsize_t i = 0; i < kStrings; ++i) {
        texts.push_back(words[random() % distinct]);
    }
    return texts;
}

std::unique_ptr<IDataStore> MakeStringStore(const std::vector<std::string>& texts) {
    std::unordered_map<std::string, RIndirectString> known;
    std::vector<RIndirectString> cells;
    for (const std::string& text : texts) {
        cells.push_back(known.try_emplace(text, TStringCore::fromUtf8(text)).first->second);
    }
    std::unordered_map<RInternString, SV> members;
    members.emplace(RInternString(L"text"), factory::MakeArray(StringType::Get(), std::move(cells),
                                                               SortSpecOrder::UNKNOWN));
    return factory::MakeDataStore(std::move(members));
}

void SetStrings(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kStrings));
}

void BM_WriteStringColumn(benchmark::State& state) {
    const auto store = MakeStringStore(MakeTexts(static_cast<lumsize_t>(state.range(0))));
    for (auto _ : state) {
        benchmark::DoNotOptimize(Write(*store).data());
    }
    SetStrings(state);
}
BENCHMARK(BM_WriteStringColumn)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

#ifdef LUM_HAVE_MSGPACK
void BM_WriteStringColumnMsgpack(benchmark::State& state) {
    const std::vector<std::string> texts = MakeTexts(static_cast<lumsize_t>(state.range(0)));
    for (auto _ : state) {
        msgpack::sbuffer buffer;
        msgpack::packer<msgpack::sbuffer> packer(buffer);
        packer.pack_map(1);
        packer.pack("text");
        packer.pack_array(kStrings);
        for (const std::string& text : texts) {
            packer.pack(text);
        }
        benchmark::DoNotOptimize(buffer.data());
    }
    SetStrings(state);
}
BENCHMARK(BM_WriteStringColumnMsgpack)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
#endif

uint64 CountUnits(const std::vector<std::string>& texts) {
    uint64 units = 0;
    for (const std::string& text : texts) {
        units += text.size();
    }
    return units;
}

void BM_ReadStringColumn(benchmark::State& state) {
    const std::vector<std::string> texts = MakeTexts(static_cast<lumsize_t>(state.range(0)));
    const auto payload = std::make_shared<Payload>(Write(*MakeStringStore(texts)));
    const uint64 expected = CountUnits(texts);
    const KeyPath path(RInternString(L"text"));
    for (auto _ : state) {
        const SV column = Read(payload)->GetValue(path);
        uint64 units = 0;
        for (const RIndirectString& text : column->AsTypedArray<RIndirectString>().GetValues()) {
            units += text->length();
        }
        if (units != expected) {
            return state.SkipWithError("wrong strings");
        }
    }
    SetStrings(state);
}
BENCHMARK(BM_ReadStringColumn)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

#ifdef LUM_HAVE_CAPNP
void BM_ReadStringColumnCapnp(benchmark::State& state) {
    const std::vector<std::string> texts = MakeTexts(static_cast<lumsize_t>(state.range(0)));
    const auto words = WriteCapnp([&](capnp::AnyStruct::Builder table) {
        auto list = table.getPointerSection()[0].initAs<capnp::List<capnp::Text>>(kStrings);
        for (lumsize_t i = 0; i < kStrings; ++i) {
            list.set(i, texts[i].c_str());
        }
    });
    const uint64 expected = CountUnits(texts);
    for (auto _ : state) {
        capnp::FlatArrayMessageReader message(words.asPtr(), kNoLimits);
        const auto table = message.getRoot<capnp::AnyPointer>().getAs<capnp::AnyStruct>();
        uint64 units = 0;
        for (const auto text : table.getPointerSection()[0].getAs<capnp::List<capnp::Text>>()) {
            units += text.size();
        }
        if (units != expected) {
            return state.SkipWithError("wrong strings");
        }
    }
    SetStrings(state);
}
BENCHMARK(BM_ReadStringColumnCapnp)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
}  // namespace lum::core
