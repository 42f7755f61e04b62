#include "TableText.h"

#include <gtest/gtest.h>

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "DisplayText.h"
#include "FileError.h"
#include "TabularValue.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"

namespace lumhost::test {
namespace {

using namespace lum::core;
using lum::test::ColumnOf;
using Members = std::unordered_map<RInternString, SV>;

std::string Format(const std::vector<SV>& columns, lumsize_t maxRows) {
    std::vector<NamedColumn> named;
    for (const SV& column : columns) {
        const std::string name = "c" + std::to_string(named.size());
        named.push_back({RInternString(TStringCore::fromUtf8(name)), column});
    }
    return FormatTable(named, maxRows);
}

TEST(TableTextTest, AlignsCellsOfEveryType) {
    const SV nested = factory::MakeArray<SV>(ArrayType::Get(IntType::Get32()),
                                             std::vector<SV>{ColumnOf("i: 1 2"), ColumnOf("i:")},
                                             SortSpecOrder::UNKNOWN);
    EXPECT_EQ(Format({ColumnOf("i: 7 -12 0!Missing"), ColumnOf("r: 0.1 1e300 5"),
                      ColumnOf("s: a '' '<b>'"), ColumnOf("d: '2012-01-31' - '1999-12-31'"),
                      ColumnOf("t: '2012-01-31' '2012-01-31T01:02:03' -")},
                     3),
              "       c0      c1  c2     c3          c4\n"
              "---------  ------  -----  ----------  -------------------\n"
              "        7     0.1  a      2012-01-31  2012-01-31T00:00:00\n"
              "      -12  1e+300         <Null>      2012-01-31T01:02:03\n"
              "<Missing>     5.0  '<b>'  1999-12-31  <Null>");
    EXPECT_EQ(Format({ColumnOf("b: true -"), ColumnOf("c: 'ff00aa01' -"), ColumnOf("f: 0.1 -"),
                      ColumnOf("l: 9000000000 -"), ColumnOf("P{i,s}: (1 x) (2 y)"), nested},
                     9),
              "c0      c1            c2          c3  c4       c5\n"
              "------  --------  ------  ----------  -------  --------\n"
              "true    ff00aa01     0.1  9000000000  [1,\"x\"]  A<i> x 2\n"
              "<Null>  <Null>    <Null>      <Null>  [2,\"y\"]  A<i> x 0");
}

TEST(TableTextTest, SaysHowManyRowsThereAreBeyond) {
    EXPECT_EQ(Format({ColumnOf("i: 1 2 3")}, 2), "c0\n--\n 1\n 2\n... 1 more row");
    EXPECT_EQ(Format({ColumnOf("i: 1 2 3")}, 0), "c0\n--\n... 3 more rows");
    EXPECT_EQ(Format({ColumnOf("i:")}, 5), "c0\n--");
    // Of four billion rows the first ones are looked at.
    EXPECT_EQ(Format({factory::MakeConstantArray<unsigned>(IntType::Get32(), 7u, ~0u)}, 1),
              "c0\n--\n 7\n... 4294967294 more rows");
}

TEST(TableTextTest, FitsTextsToATerminal) {
    struct {
        std::string text;
        const char* fitted;
        std::size_t width;
    } const cases[] = {
        {"123456", "123456", 6},
        {"1234567", "12345…", 6},
        {"日本語", "日本語", 6},
        {"日本語x", "日本…", 5},
        {"a日本語", "a日本…", 6},
        {"e\u0301te\u0301", "e\u0301te\u0301", 3},
        {"a\tb\nc\u202Ed", "a?b?c…", 6},
        {"\x1B[31m", "?[31m", 5},
        {"12345\u0301", "12345\u0301", 5},
        {"123456\u0301", "123456\u0301", 6},
        {"", "", 0},
    };
    for (const auto& testCase : cases) {
        EXPECT_EQ(FitForDisplay(testCase.text, 6), testCase.fitted) << testCase.text;
        EXPECT_EQ(DisplayWidth(testCase.fitted), testCase.width) << testCase.text;
    }
}

TEST(TabularValueTest, TakesTablesAndKeyMapsInOrder) {
    const lum::test::CollatorPoolGuard pool;
    const auto keyMap = [](Members members) { return factory::MakeKeyMap(std::move(members)); };
    const Members members = {
        {L"b", ColumnOf("i: 1 2")}, {L"a", ColumnOf("s: x y")}, {L"z", ColumnOf("i: 3 4")}};
    for (const SV& value : {factory::MakeTable(Members(members), {}), keyMap(members)}) {
        std::string names;
        for (const NamedColumn& column : TakeColumns(value, {L"z", L"no"}, "f", "/")) {
            names += TStringCore(column.name).toStdString();
        }
        EXPECT_EQ(names, "zab");
    }
    const std::pair<SV, const char*> cases[] = {
        {ColumnOf("i: 1"), "it is of type Array"},
        {factory::MakeSpecial(IntType::Get32(), SpecialKind::Null),
         "it is a special value of Int32"},
        {keyMap({}), "it has no members"},
        {keyMap({{L"a", ColumnOf("i: 1")}, {L"b", factory::MakeInt32(5)}}),
         "its member \"b\" is of type Int32, not an array"},
        {keyMap({{L"a", ColumnOf("i: 1")}, {L"b", ColumnOf("i: 1 2")}}),
         "its arrays differ in length: \"a\" has 1, \"b\" has 2"},
    };
    for (const auto& [value, reason] : cases) {
        try {
            TakeColumns(value, {}, "x.json", "p");
            ADD_FAILURE() << reason;
        } catch (const FileError& error) {
            EXPECT_EQ(error.what(),
                      std::string("x.json: what stands at \"p\" is not a table: ") + reason);
        }
    }
}

}  // namespace
}  // namespace lumhost::test
