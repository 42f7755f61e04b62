// Stores in files: what is written in a form is read back from it, payloads are used where they
// stand, and what is refused leaves all as it was.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "FileError.h"
#include "FunctionCommands.h"
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
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"

namespace lumhost::test {
namespace {

using namespace lum::core;
using lum::test::ColumnOf;
using lum::test::TextOf;
using Members = std::unordered_map<RInternString, SV>;

std::shared_ptr<IDataStore> ReadPayload(const std::shared_ptr<ISharedArrayBuffer>& buffer) {
    BinaryProtocolReader reader(buffer);
    return StoreValueParser::MakeDataStore(reader);
}

// Whether the values of a column stand in the payload itself.
template <typename T>
bool IsInPlace(const SV& column, ArrayView<const unsigned char> payload) {
    TemporaryRawData scratch;
    const auto* const first = reinterpret_cast<const unsigned char*>(
        column->AsArray().GetValuesView(scratch, 0, 1).ViewAs<T>().GetData());
    return payload.begin() <= first && first < payload.end();
}

class StoreFilesTest : public testing::Test {
protected:
    StoreInput ReadFile(const std::string& path, const CsvImportOptions& options = {}) const {
        std::ostringstream terminal;
        Progress progress(terminal, false, "");
        return ReadStore(path, options, progress);
    }
    StoreInput Read(const std::string& name) const { return ReadFile(m_folder.PathOf(name)); }
    void Write(const std::string& name, const IDataStore& store, const std::string& path = "/",
               const std::vector<RInternString>& order = {}) const {
        WriteStore(m_folder.PathOf(name), store, ParseKeyPath(path), order, "source");
    }
    std::string FaultOf(const std::function<void()>& statement) const {
        try {
            statement();
            return "none";
        } catch (const FileError& error) {
            const std::string text = error.what();
            const std::string folder = m_folder.PathOf("");
            return text.starts_with(folder) ? text.substr(folder.size()) : text;
        }
    }

    const TemporaryFolder m_folder;
    const lum::test::CollatorPoolGuard m_pool;
};

// Every type of column that the inference knows, with what needs quotes.
TEST_F(StoreFilesTest, ColumnsGoThroughAllForms) {
    const std::string csv =
        "i,\"a, b\",t,s,r,d,l,b\n"
        "1,x,2012-01-31T00:00:00,\"\",0.1,2012-01-31,9000000000,true\n"
        ",\"NA\",2012-01-31T10:11:12.5000,\"a \"\"b\"\"\",1e+300,,-1,\n"
        "-5,,,\"1\n2\",5.0,1999-12-31,,false\n";
    m_folder.WriteFile("a.csv", csv);
    const StoreInput columns = Read("a.csv");
    Write("b.lum", *columns.store);
    Write("c.json", *Read("b.lum").store);
    Write("d.lum", *Read("c.json").store);
    Write("e.csv", *Read("d.lum").store, "/", columns.names);
    EXPECT_EQ(m_folder.ReadFile("e.csv"), csv);
}

TEST_F(StoreFilesTest, AnyStoreGoesThroughJsonAndPayloads) {
    const SV table = factory::MakeTable(Members{{RInternString(L"k"), ColumnOf("i: 1 0!Missing")}},
                                        {{RInternString(L"k"), SortSpecOrder::DESC}});
    const auto store = factory::MakeDataStore(Members());
    store->AddValue(ParseKeyPath("deep/'a table'"), table);
    store->AddValue(ParseKeyPath("deep/n"), factory::MakeInt64(-1));
    store->AddValue(ParseKeyPath("set"), lum::test::SetOf("s: a b -"));
    Write("a.lum", *store);
    Write("b.json", *Read("a.lum").store);
    Write("c.lum", *Read("b.json").store);
    for (const char* name : {"a.lum", "b.json", "c.lum"}) {
        EXPECT_EQ(TextOf(Read(name).store->GetValue(KeyPath())), TextOf(store->GetValue(KeyPath())))
            << name;
    }
    // A part of it, which is a table.
    Write("d.json", *store, "deep/'a table'");
    EXPECT_EQ(TextOf(Read("d.json").store->GetValue(KeyPath(L"k"))), "i: 1 !Missing");
}

// The columns of the store are pages of the file that is replaced.
TEST_F(StoreFilesTest, AFileCanBeReplacedByWhatIsMadeOfIt) {
    Write("a.lum", *MakeStore({{RInternString(L"n"), ColumnOf("i: 1 2 3")}}));
    const StoreInput input = Read("a.lum");
    input.store->AddValue(KeyPath(L"m"), ColumnOf("r: 1"));
    Write("a.lum", *input.store);
    EXPECT_EQ(TextOf(input.store->GetValue(KeyPath(L"n"))), "i: 1 2 3");
    EXPECT_EQ(TextOf(Read("a.lum").store->GetValue(KeyPath())),
              TextOf(input.store->GetValue(KeyPath())));
}

TEST_F(StoreFilesTest, WhatCannotBeWrittenLeavesTheFile) {
    const auto store = factory::MakeDataStore(Members());
    store->AddValue(ParseKeyPath("n"), ColumnOf("i: 1 2!Missing"));
    store->AddValue(ParseKeyPath("deep/rows"), ColumnOf("P{i,s}: (1 x)"));
    store->AddValue(ParseKeyPath("flat/n"), ColumnOf("i: 1 2!Missing"));
    const struct {
        const char* name;
        const char* path;
        const char* fault;
    } cases[] = {
        {"a.csv", "none", "there is no value at the key path \"none\""},
        {"a.csv", "/",
         "what stands at \"/\" is not a table: its member \"deep\" is of type KeyMap, not an "
         "array"},
        {"a.csv", "deep",
         "column \"rows\" is of type A<P{i, s<ROOT>}>, which comma-separated text cannot hold"},
        {"a.csv", "flat",
         "column \"n\" has Missing in row 1, which comma-separated text cannot hold"},
        {"a.lum", "n",
         "what stands at \"n\" is neither a key map nor a table, and cannot be a file's root"},
    };
    for (const auto& row : cases) {
        m_folder.WriteFile(row.name, "former");
        EXPECT_EQ(FaultOf([&] { Write(row.name, *store, row.path); }),
                  "source: " + std::string(row.fault));
        EXPECT_EQ(m_folder.ReadFile(row.name), "former");
        std::filesystem::remove(m_folder.PathOf(row.name));
        EXPECT_TRUE(std::filesystem::is_empty(m_folder.GetPath()));
    }
}

TEST_F(StoreFilesTest, FaultsOfInputsNameTheFile) {
    const struct {
        const char* name;
        const char* text;
        const char* fault;
    } cases[] = {
        {"a.json", "{\"n:i\":}", "a.json: "},
        {"a.json", "{\"n\":1}", "a.json: "},
        {"a.json", "{\"n:s\":\"\xFF\"}", "a.json: the text is not UTF-8"},
        {"a.json", "{\"n:P{i}\":[1,2]}", "a.json: invalid vector subscript"},
        {"a.lum", "n\n1\n", "a.lum: "},
        {"a.lum", "", "a.lum: the file is empty"},
    };
    for (const auto& row : cases) {
        m_folder.WriteFile(row.name, row.text);
        EXPECT_TRUE(FaultOf([&] { Read(row.name); }).starts_with(row.fault)) << row.text;
    }
    ASSERT_EQ(::mkfifo(m_folder.PathOf("pipe").c_str(), 0600), 0);
    m_folder.WriteFile("locked", "some");
    std::filesystem::permissions(m_folder.PathOf("locked"), std::filesystem::perms::none);
    std::vector<std::pair<std::string, std::string>> unmapped = {
        {"none", "No such file or directory"},
        {".", "this is not a regular file, and cannot be mapped"},
        {"pipe", "this is not a regular file, and cannot be mapped"},
    };
    if (::geteuid() != 0) {
        unmapped.emplace_back("locked", "Permission denied");
    }
    for (const auto& row : unmapped) {
        EXPECT_EQ(FaultOf([&] { MemoryMap::Open(m_folder.PathOf(row.first)); }),
                  row.first + ": " + row.second);
    }
}

// The last share of the buffer is the column's, and its values are the buffer's own bytes.
template <typename Buffer>
void ExpectColumnKeepsBuffer(std::shared_ptr<Buffer> buffer) {
    const std::weak_ptr<Buffer> watch = buffer;
    const ArrayView<const unsigned char> bytes = buffer->GetView();
    SV column = ReadPayload(buffer)->GetValue(KeyPath(L"n"));
    buffer = nullptr;
    ASSERT_FALSE(watch.expired());
    EXPECT_EQ(TextOf(column), "i: 1 2 - 4");
    EXPECT_TRUE(IsInPlace<unsigned>(column, bytes));
    column = nullptr;
    EXPECT_TRUE(watch.expired());
}

TEST_F(StoreFilesTest, ColumnsOutliveTheHandles) {
    const auto store = MakeStore({{RInternString(L"n"), ColumnOf("i: 1 2 0!Null 4")}});
    Write("some.lum", *store);
    MemoryMap map = MemoryMap::Open(m_folder.PathOf("some.lum"));
    std::filesystem::remove(m_folder.PathOf("some.lum"));  // The pages stay.
    ExpectColumnKeepsBuffer(std::make_shared<MappedBuffer>(std::move(map)));
    EXPECT_TRUE(map.GetBytes().IsEmpty());  // NOLINT(bugprone-use-after-move)
    ExpectColumnKeepsBuffer(std::make_shared<VectorBuffer>(MakePayload(*store)));
    EXPECT_TRUE(VectorBuffer({}).GetView().IsEmpty());
}

// The road of a request: a payload is mapped, a program run over it, the results printed, and
// written for the next hop, which finds the same store.
TEST_F(StoreFilesTest, FromPayloadToTheNextHop) {
    const std::string data = LUMHOST_TEST_DATA;
    Write("days.lum",
          *ReadFile(data + "/seattle-weather.csv", {true, {{"date", ColumnType::DateTime}}}).store);
    const auto buffer =
        std::make_shared<MappedBuffer>(MemoryMap::Open(m_folder.PathOf("days.lum")));
    const std::shared_ptr<IDataStore> store = ReadPayload(buffer);
    EXPECT_TRUE(IsInPlace<uint64>(store->GetValue(KeyPath(L"temp_max")), buffer->GetView()));

    const std::vector<TransformSpec> program =
        ParseVtlList(ReadText(data + "/weather.vtl"), /*keepComments=*/false);
    lumengine::RunProgram(program, *store, *MakeRegistry());
    EXPECT_EQ(store->GetValue(KeyPath(L"hottest"))->AsReal64(), 35.6);
    EXPECT_EQ(store->GetValue(KeyPath(L"hotDayCount"))->AsInt32(), 53);

    const TStringCore json = SerializeDataStoreCompact(*store);
    EXPECT_EQ(SerializeDataStoreCompact(*StoreValueParser::MakeDataStore(json)), json);
    const auto next = std::make_shared<VectorBuffer>(MakePayload(*store));
    const std::shared_ptr<IDataStore> again = ReadPayload(next);
    EXPECT_TRUE(IsInPlace<uint64>(again->GetValue(KeyPath(L"rainSoFar")), next->GetView()));
    EXPECT_EQ(SerializeDataStoreCompact(*again), json);
    EXPECT_EQ(TextOf(again->GetValue(KeyPath())), TextOf(store->GetValue(KeyPath())));
}

}  // namespace
}  // namespace lumhost::test
