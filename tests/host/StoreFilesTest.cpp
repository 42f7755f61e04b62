// Stores in files: what is written in a form is read back from it.

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "FileError.h"
#include "StoreAccess.h"
#include "StoreInput.h"
#include "StoreOutput.h"
#include "TemporaryFolder.h"
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
using Members = std::unordered_map<RInternString, SV>;

class StoreFilesTest : public testing::Test {
protected:
    StoreInput Read(const std::string& name) const {
        std::ostringstream terminal;
        Progress progress(terminal, false, "");
        return ReadStore(m_folder.PathOf(name), {}, progress);
    }
    void Write(const std::string& name, const IDataStore& store, const std::string& path = "/",
               const std::vector<RInternString>& order = {}) const {
        WriteStore(m_folder.PathOf(name), store, ParseKeyPath(path), order, "source");
    }
    void ExpectFault(const std::string& name, const IDataStore& store, const std::string& path,
                     const std::string& message) const {
        m_folder.WriteFile(name, "former");
        try {
            Write(name, store, path);
            ADD_FAILURE() << message;
        } catch (const FileError& error) {
            EXPECT_EQ(error.what(), "source: " + message);
        }
        EXPECT_EQ(m_folder.ReadFile(name), "former");
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_folder.GetPath()), {}), 1);
    }

    const TemporaryFolder m_folder;

private:
    lum::test::CollatorPoolGuard m_pool;
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
    const std::string text = lum::test::TextOf(store->GetValue(KeyPath()));
    for (const char* name : {"a.lum", "b.json", "c.lum"}) {
        EXPECT_EQ(lum::test::TextOf(Read(name).store->GetValue(KeyPath())), text) << name;
    }
    // A part of it, which is a table.
    Write("d.json", *store, "deep/'a table'");
    EXPECT_EQ(lum::test::TextOf(Read("d.json").store->GetValue(KeyPath(L"k"))), "i: 1 !Missing");
}

// The columns of the store are pages of the file that is replaced.
TEST_F(StoreFilesTest, AFileCanBeReplacedByWhatIsMadeOfIt) {
    Write("a.lum", *MakeStore({{RInternString(L"n"), ColumnOf("i: 1 2 3")}}));
    const StoreInput input = Read("a.lum");
    input.store->AddValue(KeyPath(L"m"), ColumnOf("r: 1"));
    Write("a.lum", *input.store);
    EXPECT_EQ(lum::test::TextOf(input.store->GetValue(KeyPath(L"n"))), "i: 1 2 3");
    EXPECT_EQ(lum::test::TextOf(Read("a.lum").store->GetValue(KeyPath())),
              lum::test::TextOf(input.store->GetValue(KeyPath())));
}

TEST_F(StoreFilesTest, WhatCannotBeWrittenLeavesTheFile) {
    const auto store = factory::MakeDataStore(Members());
    store->AddValue(ParseKeyPath("n"), ColumnOf("i: 1 2!Missing"));
    store->AddValue(ParseKeyPath("deep/rows"), ColumnOf("P{i,s}: (1 x)"));
    ExpectFault("a.csv", *store, "none", "there is no value at the key path \"none\"");
    ExpectFault(
        "a.csv", *store, "/",
        "what stands at \"/\" is not a table: its member \"deep\" is of type KeyMap, not an "
        "array");
    ExpectFault("a.csv", *store, "deep",
                "column \"rows\" is of type A<P{i, s<ROOT>}>, which comma-separated text cannot "
                "hold");
    ExpectFault("a.csv", *MakeStore({{RInternString(L"n"), store->GetValue(KeyPath(L"n"))}}), "/",
                "column \"n\" has Missing in row 1, which comma-separated text cannot hold");
    std::filesystem::remove(m_folder.PathOf("a.csv"));
    ExpectFault("a.lum", *store, "n",
                "what stands at \"n\" is neither a key map nor a table, and cannot be a file's "
                "root");
}

TEST_F(StoreFilesTest, FaultsOfInputsNameTheFile) {
    const std::pair<const char*, std::pair<std::string, std::string>> cases[] = {
        {"a.json", {"{\"n:i\":}", "a.json: "}},
        {"a.json", {"{\"n\":1}", "a.json: "}},
        {"a.json", {"{\"n:s\":\"\xFF\"}", "a.json: the text is not UTF-8"}},
        {"a.json", {"{\"n:P{i}\":[1,2]}", "a.json: invalid vector subscript"}},
        {"a.lum", {"", "a.lum: the file is empty"}},
        {"a.lum", {"n\n1\n", "a.lum: "}},
    };
    for (const auto& [name, texts] : cases) {
        m_folder.WriteFile(name, texts.first);
        try {
            Read(name);
            ADD_FAILURE() << texts.first;
        } catch (const FileError& error) {
            EXPECT_NE(std::string(error.what()).find(texts.second), std::string::npos)
                << error.what();
        }
    }
}

}  // namespace
}  // namespace lumhost::test
