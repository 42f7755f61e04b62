// The road of a request, end to end: a payload is mapped, a program read and run over it, the
// results stored, printed, and written for the next hop, which finds the same store.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "FunctionCommands.h"
#include "MemoryMap.h"
#include "PayloadBuffers.h"
#include "Program.h"
#include "StoreAccess.h"
#include "StoreInput.h"
#include "StoreOutput.h"
#include "TemporaryFolder.h"
#include "TextInput.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/serialize/VtlParser.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/StoreValue.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"

namespace lumhost::test {
namespace {

using namespace lum::core;

std::shared_ptr<IDataStore> ReadPayload(const std::shared_ptr<ISharedArrayBuffer>& buffer) {
    BinaryProtocolReader reader(buffer);
    return StoreValueParser::MakeDataStore(reader);
}

// Whether the numbers of a column stand in the payload itself.
bool IsInPlace(const IDataStore& store, const std::string& path, const ISharedArrayBuffer& buffer) {
    const SV column = store.GetValue(ParseKeyPath(path));
    TemporaryRawData scratch;
    const auto* const first = reinterpret_cast<const unsigned char*>(
        column->AsArray().GetValuesView(scratch, 0, 1).ViewAs<uint64>().GetData());
    return buffer.GetView().begin() <= first && first < buffer.GetView().end();
}

TEST(RoadTest, FromPayloadToTheNextHop) {
    const lum::test::CollatorPoolGuard pool;
    const TemporaryFolder folder;
    Progress progress(std::cerr, false, "");
    const std::string data = LUMHOST_TEST_DATA;
    WriteStore(folder.PathOf("days.lum"),
               *ReadStore(data + "/seattle-weather.csv", {true, {{"date", ColumnType::DateTime}}},
                          progress)
                    .store,
               KeyPath(), {}, "days");

    // The payload comes in, and is used where it stands.
    const auto buffer = std::make_shared<MappedBuffer>(MemoryMap::Open(folder.PathOf("days.lum")));
    const std::shared_ptr<IDataStore> store = ReadPayload(buffer);
    EXPECT_TRUE(IsInPlace(*store, "temp_max", *buffer));

    // The program runs over it, and its results join it.
    const std::vector<TransformSpec> program =
        ParseVtlList(ReadText(data + "/weather.vtl"), /*keepComments=*/false);
    lumengine::RunProgram(program, *store, *MakeRegistry());
    EXPECT_EQ(store->GetValue(KeyPath(L"hottest"))->AsReal64(), 35.6);
    EXPECT_EQ(store->GetValue(KeyPath(L"hotDayCount"))->AsInt32(), 53);

    // It is printed for whoever asked,
    const TStringCore json = SerializeDataStoreCompact(*store);
    EXPECT_EQ(SerializeDataStoreCompact(*StoreValueParser::MakeDataStore(json)), json);

    // and goes on as a payload, which holds the same store.
    const auto next = std::make_shared<VectorBuffer>(MakePayload(*store));
    const std::shared_ptr<IDataStore> again = ReadPayload(next);
    EXPECT_TRUE(IsInPlace(*again, "rainSoFar", *next));
    EXPECT_EQ(SerializeDataStoreCompact(*again), json);
    EXPECT_EQ(lum::test::TextOf(again->GetValue(KeyPath())),
              lum::test::TextOf(store->GetValue(KeyPath())));
}

}  // namespace
}  // namespace lumhost::test
