#include "PayloadBuffers.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

#include "FileError.h"
#include "StoreAccess.h"
#include "StoreOutput.h"
#include "TemporaryFolder.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/StoreValue.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"

namespace lumhost::test {
namespace {

using namespace lum::core;

std::vector<unsigned char> MakeSomePayload() {
    return MakePayload(*MakeStore({{RInternString(L"n"), lum::test::ColumnOf("i: 1 2 0!Null 4")}}));
}

SV ReadColumn(std::shared_ptr<ISharedArrayBuffer> buffer) {
    BinaryProtocolReader reader(buffer);
    return StoreValueParser::MakeDataStore(reader)->GetValue(KeyPath(L"n"));
}

// The last share of the buffer is the column's, and its values are the buffer's own bytes.
template <typename Buffer>
void ExpectColumnKeepsBuffer(std::shared_ptr<Buffer> buffer) {
    const std::weak_ptr<Buffer> watch = buffer;
    const ArrayView<const unsigned char> bytes = buffer->GetView();
    SV column = ReadColumn(std::move(buffer));
    ASSERT_FALSE(watch.expired());
    EXPECT_EQ(lum::test::TextOf(column), "i: 1 2 - 4");
    TemporaryRawData scratch;
    const auto values = column->AsArray().GetValuesView(scratch, 0, 4).ViewAs<unsigned int>();
    const auto* const first = reinterpret_cast<const unsigned char*>(values.GetData());
    EXPECT_TRUE(bytes.begin() <= first && first < bytes.end());
    column = nullptr;
    EXPECT_TRUE(watch.expired());
}

TEST(PayloadBuffersTest, ColumnsOutliveTheHandles) {
    const lum::test::CollatorPoolGuard pool;
    const TemporaryFolder folder;
    const std::vector<unsigned char> payload = MakeSomePayload();
    folder.WriteFile("some.lum", std::string(payload.begin(), payload.end()));
    MemoryMap map = MemoryMap::Open(folder.PathOf("some.lum"));
    std::filesystem::remove(folder.PathOf("some.lum"));  // The pages stay.
    ExpectColumnKeepsBuffer(std::make_shared<MappedBuffer>(std::move(map)));
    ExpectColumnKeepsBuffer(std::make_shared<VectorBuffer>(payload));
}

TEST(PayloadBuffersTest, MovingAMapLeavesAnEmptyOne) {
    const TemporaryFolder folder;
    folder.WriteFile("a", "first");
    folder.WriteFile("b", "second one");
    MemoryMap first = MemoryMap::Open(folder.PathOf("a"));
    MemoryMap second = MemoryMap::Open(folder.PathOf("b"));
    const unsigned char* const place = second.GetBytes().GetData();
    first = std::move(second);
    EXPECT_EQ(first.GetBytes().GetData(), place);
    EXPECT_EQ(first.GetBytes().GetSize(), 10u);
    EXPECT_TRUE(second.GetBytes().IsEmpty());  // NOLINT(bugprone-use-after-move)
    const MemoryMap third(std::move(first));
    EXPECT_EQ(third.GetBytes()[9], 'e');
    EXPECT_TRUE(first.GetBytes().IsEmpty());  // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(VectorBuffer({}).GetView().IsEmpty());
}

TEST(PayloadBuffersTest, RefusesWhatCannotBeMapped) {
    const TemporaryFolder folder;
    folder.WriteFile("empty", "");
    folder.WriteFile("locked", "some");
    std::filesystem::permissions(folder.PathOf("locked"), std::filesystem::perms::none);
    ASSERT_EQ(::mkfifo(folder.PathOf("pipe").c_str(), 0600), 0);
    std::vector<std::pair<std::string, std::string>> cases = {
        {"none", "No such file or directory"},
        {"empty", "the file is empty"},
        {".", "this is not a regular file, and cannot be mapped"},
        {"pipe", "this is not a regular file, and cannot be mapped"},
    };
    if (::geteuid() != 0) {
        cases.emplace_back("locked", "Permission denied");
    }
    for (const auto& [name, message] : cases) {
        try {
            MemoryMap::Open(folder.PathOf(name));
            ADD_FAILURE() << name;
        } catch (const FileError& error) {
            EXPECT_EQ(error.what(), folder.PathOf(name) + ": " + message);
        }
    }
}

}  // namespace
}  // namespace lumhost::test
