// Programs that make tables and key sets, join tables, and run statements over partitions.

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Statement.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/host/CaseName.h"
#include "tests/host/EngineFixture.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/Random.h"
#include "tests/support/RandomColumns.h"

namespace lumhost::test {
namespace {

using namespace lum::core;
using lum::test::ColumnOf;
using lum::test::TextOf;

using Columns = std::unordered_map<RInternString, SV>;

SV TableOf(const std::vector<std::pair<const wchar_t*, const char*>>& columns,
           IStoreTable::SortColumns&& sortColumns = {}) {
    Columns members;
    for (const auto& [name, text] : columns) {
        members.emplace(name, ColumnOf(text));
    }
    return factory::MakeTable(std::move(members), std::move(sortColumns));
}

// Two tables to join, one without rows and one without columns, and columns to put together.
std::unique_ptr<IDataStore> MakeTestStore() {
    Columns members;
    members.emplace(
        L"l", TableOf({{L"id", "i: 1 2 - 2 4"}, {L"s", "s: a b a c b"}, {L"x", "r: 1 2 3 4 -"}},
                      {{L"x", SortSpecOrder::ASC}}));
    members.emplace(L"r", TableOf({{L"id", "i: 2 - 5 2"}, {L"s", "s: b a b b"}}));
    members.emplace(L"q", TableOf({{L"number", "i: 2 - 5 2"}, {L"y", "i: 10 20 30 40"}}));
    members.emplace(L"pairs", TableOf({{L"id", "i: 7 2"}, {L"p", "P{i,s}: (1 a) (2 b)"}}));
    members.emplace(L"empty", TableOf({{L"number", "i:"}, {L"y", "i:"}}));
    members.emplace(L"bare", TableOf({}));
    members.emplace(L"s", ColumnOf("s: b a - c"));
    members.emplace(L"n", ColumnOf("i: 3 5!Null 7!Null 4"));
    members.emplace(L"m", ColumnOf("i: 10 20 20 40"));
    members.emplace(L"twice", ColumnOf("s: b a b c"));
    members.emplace(L"nulls", ColumnOf("s: - a - c"));
    members.emplace(L"short", ColumnOf("i: 4 0"));
    members.emplace(L"none", ColumnOf("i:"));
    members.emplace(L"one", ColumnOf("i: 1")->AsArray().GetElement(0));
    return factory::MakeDataStore(std::move(members));
}

class TableOperatorsTest : public EngineFixture {
protected:
    TableOperatorsTest() : EngineFixture(MakeTestStore()) {}
};

class TableOperatorTest : public TableOperatorsTest,
                          public testing::WithParamInterface<OperatorCase> {};

TEST_P(TableOperatorTest, Gives) {
    Run(GetParam().program);
    EXPECT_EQ(Show("out"), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, TableOperatorTest,
    testing::Values(
        OperatorCase{"TableOfTablesAndArrays", "q m -> createTable -> t\nt -> copy -> out",
                     R"({"m:A<i>":[10,20,20,40],"number:A<i>":[2,[0,"Null"],5,2],)"
                     R"("y:A<i>":[10,20,30,40]})"},
        OperatorCase{"TableWithoutRows", "none -> createTable -> out", R"({"none:A<i>":[]})"},
        OperatorCase{"Zip", "s m -> zip -> out", "P{s,i}: (b 10) (a 20) (- 20) (c 40)"},
        OperatorCase{"ZipOfNothing", "none none none -> zip -> out", "P{i,i,i}:"},
        // Whatever stands below them, the two Nulls are one value.
        OperatorCase{"ZippedRowsAreEqual",
                     "n -> copy -> o\nn o -> zip -> z\n"
                     "z -> distinct :true -> out",
                     "P{i,i}: (3 3) (- -) (4 4)"},
        OperatorCase{"KeySet", "s m -> createKeySet -> out",
                     "K<s<ROOT>,i>: !Null=20 a=20 b=10 c=40"},
        OperatorCase{"KeySetIsReadByKey", "s m -> createKeySet -> ks\nks/c -> copy -> out", "40"},
        OperatorCase{"KeySetUnderRows",
                     "s m -> zip -> z\nz s -> createTable -> t\n"
                     "t/z m -> createKeySet -> out",
                     "K<P{s<ROOT>, i},i>: (- 20)=20 (a 20)=20 (b 10)=10 (c 40)=40"},
        OperatorCase{"KeySetOfNothing", "none none -> createKeySet -> out", "K<i,i>:"},
        OperatorCase{"CrossJoin", "q pairs -> crossJoin -> j\nj/y j/id -> createTable -> out",
                     R"({"id:A<i>":[7,2,7,2,7,2,7,2],"y:A<i>":[10,10,20,20,30,30,40,40]})"},
        OperatorCase{"CrossJoinOfNoRows", "r empty -> crossJoin -> out",
                     R"({"id:A<i>":[],"number:A<i>":[],"s:A<s>":[],"y:A<i>":[]})"},
        OperatorCase{"CrossJoinOfNoColumns", "bare q -> crossJoin -> out",
                     R"({"number:A<i>":[],"y:A<i>":[]})"},
        // A key of another name is a column of its own.
        OperatorCase{"InnerJoin", "l/id q/number -> innerJoin -> out",
                     R"({"id:A<i>":[2,2,2,2],"number:A<i>":[2,2,2,2],"s:A<s>":["b","b","c","c"],)"
                     R"("x:A<r>":[2,2,4,4],"y:A<i>":[10,40,10,40]})"},
        OperatorCase{"InnerJoinBySeveralKeys", "l/s l/id r/s r/id -> innerJoin -> out",
                     R"({"id:A<i>":[2,2],"s:A<s>":["b","b"],"x:A<r>":[2,2]})"},
        OperatorCase{"InnerJoinWithoutPartners", "l/id empty/number -> innerJoin -> out",
                     R"({"id:A<i>":[],"number:A<i>":[],"s:A<s>":[],"x:A<r>":[],"y:A<i>":[]})"},
        OperatorCase{"LeftOuterJoin", "l/id q/number -> leftOuterJoin -> out",
                     R"({"id:A<i>":[1,2,2,[0,"Null"],2,2,4],)"
                     R"("number:A<i>":[[0,"Null"],2,2,[0,"Null"],2,2,[0,"Null"]],)"
                     R"("s:A<s>":["a","b","b","a","c","c","b"],)"
                     R"("x:A<r>":[1,2,2,3,4,4,[0,"Null"]],)"
                     R"("y:A<i>":[[0,"Null"],10,40,[0,"Null"],10,40,[0,"Null"]]})"},
        OperatorCase{"LeftOuterJoinWithNothing",
                     "m -> createTable -> t\nt/m empty/number -> leftOuterJoin -> out",
                     R"({"m:A<i>":[10,20,20,40],)"
                     R"("number:A<i>":[[0,"Null"],[0,"Null"],[0,"Null"],[0,"Null"]],)"
                     R"("y:A<i>":[[0,"Null"],[0,"Null"],[0,"Null"],[0,"Null"]]})"},
        OperatorCase{"FullOuterJoin",
                     "l/id l/s -> createTable -> t\n"
                     "t/s t/id r/s r/id -> fullOuterJoin -> out",
                     R"({"id:A<i>":[1,2,2,[0,"Null"],2,4,[0,"Null"],5],)"
                     R"("s:A<s>":["a","b","b","a","c","b","a","b"]})"},
        OperatorCase{"FullOuterJoinWithNothing", "empty/number r/id -> fullOuterJoin -> out",
                     R"({"id:A<i>":[2,[0,"Null"],5,2],)"
                     R"("number:A<i>":[[0,"Null"],[0,"Null"],[0,"Null"],[0,"Null"]],)"
                     R"("s:A<s>":["b","a","b","b"],)"
                     R"("y:A<i>":[[0,"Null"],[0,"Null"],[0,"Null"],[0,"Null"]]})"},
        OperatorCase{"GroupBy",
                     "l/id -> groupBy -> out\n  l/x -> reduce :0:r (sum) -> out/sum\n"
                     "  l/s -> reduce :0:i (countAll) -> count\n"
                     "  count -> setValue (inc) -> out/more\n"
                     "  l/x -> index :0 -> out/first",
                     R"({"first:A<r>":[1,2,3,[0,"Null"]],"id:A<i>":[1,2,[0,"Null"],4],)"
                     R"("more:A<i>":[2,3,2,2],"sum:A<r>":[1,6,3,0]})"},
        OperatorCase{"GroupByKeysAlone", "r/id r/s -> groupBy -> out",
                     R"({"id:A<i>":[2,[0,"Null"],5],"s:A<s>":["b","a","b"]})"},
        OperatorCase{"GroupByOfNoRows",
                     "empty/number -> groupBy -> out\n"
                     "  empty/y -> reduce :0:i (sum) -> out/sum",
                     R"({"number:A<i>":[],"sum:A<i>":[]})"},
        OperatorCase{"GroupByOfATableInside",
                     "l/s -> groupBy -> out\n  l -> slice (range :0:i :1:i) -> top\n"
                     "  top/id -> index :0 -> out/first",
                     R"({"first:A<i>":[1,2,2],"s:A<s>":["a","b","c"]})"},
        OperatorCase{"GroupByInsideGroupBy",
                     "l/s -> groupBy -> out\n  l/id -> groupBy -> ids\n"
                     "  ids/id -> reduce :0:i (countAll) -> out/ids",
                     R"({"ids:A<i>":[2,2,1],"s:A<s>":["a","b","c"]})"},
        OperatorCase{"GroupByWritesByCase",
                     "r/id -> groupBy -> out\n  r/s -> reduce :0:i (countAll) -> count\n"
                     "  count -> case -> out/many\n    count -> when (> :1:i) ->\n"
                     "      -> constant :yes:s -> out/many\n    -> else ->\n"
                     "      -> constant :no:s -> out/many",
                     R"({"id:A<i>":[2,[0,"Null"],5],"many:A<s>":["yes","no","no"]})"},
        OperatorCase{"ApplyByPartition",
                     "l/s -> applyByPartition -> out\n  l/id -> scan :0:i (sum) -> out/soFar\n"
                     "  l/x -> reduce :0:r (sum) -> out/total",
                     R"({"s:A<s>":["a","b","a","c","b"],"soFar:A<i>":[1,2,1,2,6],)"
                     R"("total:A<r>":[4,2,4,4,2]})"},
        OperatorCase{"ApplyByPartitionOfNoRows",
                     "empty/number -> applyByPartition -> out\n"
                     "  empty/y -> map (toReal64) -> out/real\n"
                     "  -> constant :a:s -> out/text",
                     R"({"number:A<i>":[],"real:A<r>":[],"text:A<s>":[]})"},
        OperatorCase{"ApplyByPartitionKeepsKinds",
                     "l/s -> applyByPartition -> out\n  l/id -> reverse -> out/back",
                     R"({"back:A<i>":[[0,"Null"],4,1,2,2],"s:A<s>":["a","b","a","c","b"]})"}),
    CaseName());

class TableFaultTest : public TableOperatorsTest, public testing::WithParamInterface<FaultCase> {};

TEST_P(TableFaultTest, IsReported) {
    ExpectFault(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Table, TableFaultTest,
    testing::Values(
        FaultCase{"TableOfAScalar", "one -> createTable -> out", LumError::CreateTableInputType},
        FaultCase{"TableOfTwoLengths", "q short -> createTable -> out", LumError::TableArraySize},
        FaultCase{"TableOfOneColumnTwice", "q q/y -> createTable -> out",
                  LumError::DuplicateTableKey, "y"},
        FaultCase{"ZipOfOne", "m -> zip -> out", LumError::AtLeastTwoInputsNeeded},
        FaultCase{"ZipOfAScalar", "m one -> zip -> out", LumError::ZipInputType},
        FaultCase{"ZipOfRows", "m m -> zip -> z\nz m -> zip -> out", LumError::ZipInputType},
        FaultCase{"ZipOfTwoLengths", "m short -> zip -> out", LumError::ArraySizeMismatch},
        FaultCase{"ZipWithLiteral", "m m -> zip (inc) -> out", LumError::FunctionNotUsed},
        FaultCase{"KeySetOfOne", "m -> createKeySet -> out", LumError::TwoInputsNeeded},
        FaultCase{"KeySetOfAScalar", "m one -> createKeySet -> out",
                  LumError::CreateKeySetInputType},
        FaultCase{"KeySetOfTwoLengths", "m short -> createKeySet -> out",
                  LumError::ArraySizeMismatch},
        FaultCase{"KeySetOfSpecials", "m n -> createKeySet -> out", LumError::ArrayHasSpecials},
        FaultCase{"KeySetUnderOneKeyTwice", "twice m -> createKeySet -> out",
                  LumError::DuplicateMapKey},
        FaultCase{"KeySetUnderOneSpecialTwice", "nulls m -> createKeySet -> out",
                  LumError::DuplicateMapKey},
        FaultCase{"CrossJoinOfOne", "q -> crossJoin -> out", LumError::TwoInputsNeeded},
        FaultCase{"CrossJoinOfAnArray", "q m -> crossJoin -> out", LumError::CrossJoinInputType},
        FaultCase{"CrossJoinOfItself", "q q -> crossJoin -> out", LumError::JoinColumnNameClash},
        FaultCase{"JoinOfNothing", "-> innerJoin -> out", LumError::InvalidInputCount},
        FaultCase{"JoinOfThree", "l/id q/y q/number -> innerJoin -> out",
                  LumError::InvalidInputCount},
        FaultCase{"JoinByNoColumn", "l/id m -> innerJoin -> out", LumError::JoinKeyNotColumn, "m"},
        FaultCase{"JoinByAMissingColumn", "l/id q/id -> innerJoin -> out",
                  LumError::JoinKeyNotColumn, "q/id"},
        FaultCase{"JoinByAMissingTable", "l/id k/id -> leftOuterJoin -> out",
                  LumError::JoinKeyNotColumn, "k/id"},
        FaultCase{"JoinByTwoTables", "l/id q/y q/number l/s -> innerJoin -> out",
                  LumError::JoinKeyNotColumn, "q/y"},
        FaultCase{"JoinByTwoTypes", "l/x q/number -> innerJoin -> out",
                  LumError::JoinKeyTypesDiffer},
        FaultCase{"JoinByRows", "pairs/p pairs/p -> innerJoin -> out",
                  LumError::JoinTypeUnsupported},
        FaultCase{"JoinOfOneNameTwice", "l/id r/id -> fullOuterJoin -> out",
                  LumError::JoinColumnNameClash},
        FaultCase{"JoinKeyIsNoKeyThere", "l/s r/s -> innerJoin -> out",
                  LumError::JoinColumnNameClash},
        FaultCase{"JoinLeavesRowsWithoutPartner", "q/number pairs/id -> leftOuterJoin -> out",
                  LumError::NestedCollectionSpecials},
        FaultCase{"GroupByNothing", "-> groupBy -> out", LumError::IncorrectPartitionInputs},
        FaultCase{"GroupByAnArray", "m -> groupBy -> out", LumError::IncorrectPartitionInputs},
        FaultCase{"GroupByRows", "pairs/p -> groupBy -> out", LumError::IncorrectPartitionInputs},
        FaultCase{"GroupByInAKeyMap", "m -> copy -> k/m\nk/m -> groupBy -> out",
                  LumError::PartitionNeedsTable},
        FaultCase{"GroupByTwoTables", "l/id r/id -> groupBy -> out",
                  LumError::SeveralPartitionTables},
        FaultCase{"GroupByAMissingColumn", "l/y -> groupBy -> out", LumError::KeyNotFound, "l/y"},
        FaultCase{"GroupByForTwo", "l/id -> groupBy -> out b", LumError::OneOutputNeeded},
        FaultCase{"GroupByMakesAnArray", "l/id -> groupBy -> out\n  l/x -> copy -> out/x",
                  LumError::GroupByOutputType},
        FaultCase{"GroupByMakesAKeyMap", "l/id -> groupBy -> out\n  -> constant :1:i -> out/x/y",
                  LumError::GroupByOutputType},
        FaultCase{"GroupByMakesNothing", "l/id -> groupBy -> out\n  -> constant :1:i -> other",
                  LumError::PartitionWithoutOutput},
        FaultCase{"GroupByWritesAKey", "l/id -> groupBy -> out\n  -> constant :1:i -> out/id",
                  LumError::PartitionKeyOverwritten},
        FaultCase{
            "GroupByMakesTwoTypes",
            "l/id -> groupBy -> out\n  l/id -> reduce :Null:i (max) -> most\n"
            "  most -> case -> out/x\n    most -> when (> :1:i) ->\n"
            "      -> constant :1:i -> out/x\n    -> else ->\n      -> constant :a:s -> out/x",
            LumError::PartitionOutputMismatch, "out/x"},
        FaultCase{"GroupByReadsOutside",
                  "l/id -> groupBy -> out\n  m -> reduce :0:i (sum) -> out/x",
                  LumError::KeyNotFound, "m"},
        FaultCase{"GroupByWritesIntoTheTable",
                  "l/id -> groupBy -> out\n  -> constant :1:i -> l/y\n"
                  "  l/y -> copy -> out/y",
                  LumError::IllegalOutputKey, "l/y"},
        FaultCase{"ApplyByPartitionMakesATable",
                  "l/id -> applyByPartition -> out\n  l -> copy -> out/x",
                  LumError::PartitionOutputType},
        FaultCase{"ApplyByPartitionMakesFewer",
                  "l/id -> applyByPartition -> out\n  l/x -> slice (range :0:i :1:i) -> out/x",
                  LumError::PartitionArraySize}),
    CaseName());

// Joins and partitions of random tables against loops over all rows, with keys in every form that
// a column has in memory.
class RandomTablesTest : public TableOperatorsTest {
protected:
    using Keys = std::vector<std::string>;

    // A table of two key columns and of the rows' numbers under `numbers`; gives the keys' texts,
    // which are empty for a row with a special.
    Keys AddTable(const wchar_t* name, const wchar_t* numbers, const Type* keyType) {
        const auto count = static_cast<lumsize_t>(m_random.Below(12));
        Columns columns;
        std::vector<unsigned> rows(count);
        Keys keys(count);
        std::vector<bool> isSpecial(count);
        for (const wchar_t* const key : {L"k1", L"k2"}) {
            const Type* const type = key[1] == L'1' ? keyType : IntType::Get32();
            SV column = lum::test::MakeRandomColumn(m_random, type, count);
            std::vector<SV> forms;
            lum::test::ForEachForm(column, [&](const SV& form) { forms.push_back(form); });
            column = forms[m_random.Below(forms.size())];
            for (lumsize_t row = 0; row < count; ++row) {
                const SV cell = column->AsArray().GetElement(row);
                keys[row] += TextOf(cell) + "|";
                isSpecial[row] = isSpecial[row] || cell->IsSpecial();
            }
            columns.emplace(key, column);
        }
        for (lumsize_t row = 0; row < count; ++row) {
            rows[row] = row;
            m_groups[name].push_back(keys[row]);
            keys[row] = isSpecial[row] ? "" : keys[row];
        }
        columns.emplace(numbers, factory::MakeArray<unsigned>(IntType::Get32(), std::move(rows),
                                                              SortSpecOrder::UNKNOWN));
        m_store->SetValue(KeyPath(name), factory::MakeTable(std::move(columns), {}));
        return keys;
    }

    // The numbers of the rows that a join pairs, as its columns x and y show them.
    static std::string Pair(const Keys& left, const Keys& right, bool keepsLeft, bool keepsRight) {
        std::string x = "i:";
        std::string y = "i:";
        std::vector<bool> isMet(right.size());
        for (std::size_t i = 0; i < left.size(); ++i) {
            bool isAlone = true;
            for (std::size_t j = 0; j < right.size(); ++j) {
                if (left[i].empty() || left[i] != right[j]) {
                    continue;
                }
                isAlone = false;
                isMet[j] = true;
                x += " " + std::to_string(i);
                y += " " + std::to_string(j);
            }
            if (isAlone && keepsLeft) {
                x += " " + std::to_string(i);
                y += " -";
            }
        }
        for (std::size_t j = 0; keepsRight && j < right.size(); ++j) {
            if (!isMet[j]) {
                x += " -";
                y += " " + std::to_string(j);
            }
        }
        return x + " " + y;
    }

    // Of each row, the sum of the numbers of the rows with the same keys up to it.
    static std::string SumByKeys(const Keys& keys) {
        std::map<std::string, std::size_t> sums;
        std::string text = "i:";
        for (std::size_t row = 0; row < keys.size(); ++row) {
            text += " " + std::to_string(sums[keys[row]] += row);
        }
        return text;
    }

    lum::test::Random m_random;
    std::map<std::wstring, Keys> m_groups;  // With specials apart by their kind.
};

TEST_F(RandomTablesTest, AreJoinedAndPartedAsByHand) {
    SCOPED_TRACE(m_random.Trace());
    for (int round = 0; round < 40; ++round) {
        for (const Type* const type : lum::test::GetElementTypes()) {
            if (!lumengine::IsPrimitive(type)) {
                continue;
            }
            SCOPED_TRACE(type->ToString().toStdString());
            m_store = factory::MakeDataStore(Columns());
            m_groups.clear();
            const Keys left = AddTable(L"l", L"x", type);
            const Keys right = AddTable(L"r", L"y", type);
            Run("l/k1 l/k2 r/k1 r/k2 -> innerJoin -> inner\n"
                "l/k1 l/k2 r/k1 r/k2 -> leftOuterJoin -> left\n"
                "l/k1 l/k2 r/k1 r/k2 -> fullOuterJoin -> full\n"
                "l/k1 l/k2 -> applyByPartition -> parts\n"
                "  l/x -> scan :0:i (sum) -> parts/sum\n"
                "l/k1 l/k2 -> groupBy -> groups\n"
                "  l/x -> reduce :0:i (sum) -> groups/sum\n"
                "groups/sum -> reduce :0:i (sum) -> total\n"
                "l/x -> reduce :0:i (sum) -> expected");
            const auto show = [&](const std::string& table) {
                const std::string text =
                    Show((table + "/x").c_str()) + " " + Show((table + "/y").c_str());
                std::string plain;  // Room for kinds says nothing of the rows.
                for (const char c : text) {
                    plain += c == '!' ? "" : std::string(1, c);
                }
                return plain;
            };
            EXPECT_EQ(show("inner"), Pair(left, right, false, false));
            EXPECT_EQ(show("left"), Pair(left, right, true, false));
            EXPECT_EQ(show("full"), Pair(left, right, true, true));
            EXPECT_EQ(Show("parts/sum"), SumByKeys(m_groups[L"l"]));
            EXPECT_EQ(Show("total"), Show("expected"));
            ASSERT_FALSE(HasFailure());
        }
    }
}

}  // namespace
}  // namespace lumhost::test
