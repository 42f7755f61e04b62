// Programs that make tables and key sets, join tables, and run statements over partitions.

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/host/EngineFixture.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/Random.h"
#include "tests/support/RandomColumns.h"

namespace lumhost::test {
namespace {

using namespace lum::core;
using enum LumError;
using lum::test::ColumnOf;
using lum::test::TextOf;

using Columns = std::unordered_map<RInternString, SV>;

SV TableOf(const std::vector<std::pair<const wchar_t*, const char*>>& columns) {
    Columns members;
    for (const auto& [name, text] : columns) {
        members.emplace(name, ColumnOf(text));
    }
    return factory::MakeTable(std::move(members), {});
}

// Tables to join, one without rows and one without columns, and columns to put together.
std::unique_ptr<IDataStore> MakeTestStore() {
    return factory::MakeDataStore(Columns{
        {L"l", TableOf({{L"id", "i: 1 2 - 2 4"}, {L"s", "s: a b a c b"}, {L"x", "r: 1 2 3 4 -"}})},
        {L"r", TableOf({{L"id", "i: 2 - 5 2"}, {L"s", "s: b a b b"}})},
        {L"q", TableOf({{L"number", "i: 2 - 5 2"}, {L"y", "i: 10 20 30 40"}})},
        {L"pairs", TableOf({{L"id", "i: 7 2"}, {L"p", "P{i,s}: (1 a) (2 b)"}})},
        {L"empty", TableOf({{L"number", "i:"}, {L"y", "i:"}})},
        {L"bare", TableOf({})},
        {L"s", ColumnOf("s: b a - c")},
        {L"n", ColumnOf("i: 3 5!Null 7!Null 4")},
        {L"m", ColumnOf("i: 10 20 20 40")},
        {L"twice", ColumnOf("s: b a b c")},
        {L"nulls", ColumnOf("s: - a - c")},
        {L"short", ColumnOf("i: 4 0")},
        {L"none", ColumnOf("i:")},
        {L"one", factory::MakeInt32(1)},
    });
}

class TableOperatorsTest : public EngineFixture {
protected:
    TableOperatorsTest() : EngineFixture(MakeTestStore) {}
};

TEST_F(TableOperatorsTest, Give) {
    const OperatorCase cases[] = {
        {"q m -> createTable -> out",
         "m = i: 10 20 20 40, number = i: 2 - 5 2, y = i: 10 20 30 40"},
        {"none -> createTable -> out", "none = i:"},
        {"none none none -> zip -> out", "P{i,i,i}:"},
        // Whatever stands below them, the two Nulls are one value.
        {"n -> copy -> o\nn o -> zip -> z\nz -> distinct :true -> out",
         "P{i,i}: (3 3) (- -) (4 4)"},
        {"s m -> createKeySet -> out", "K<s<ROOT>,i>: !Null=20 a=20 b=10 c=40"},
        {"s m -> zip -> z\nz m -> createKeySet -> out",
         "K<P{s<ROOT>, i},i>: (- 20)=20 (a 20)=20 (b 10)=10 (c 40)=40"},
        {"none none -> createKeySet -> out", "K<i,i>:"},

        {"q pairs -> crossJoin -> j\nj/y j/id -> createTable -> out",
         "id = i: 7 2 7 2 7 2 7 2, y = i: 10 10 20 20 30 30 40 40"},
        {"r empty -> crossJoin -> out", "id = i!:, number = i:, s = s:, y = i:"},
        {"bare q -> crossJoin -> out", "number = i!:, y = i:"},
        // A key of another name is a column of its own.
        {"l/id q/number -> innerJoin -> out",
         "id = i!: 2 2 2 2, number = i!: 2 2 2 2, s = s: b b c c, x = r!: 2 2 4 4, "
         "y = i: 10 40 10 40"},
        {"r/id q/number -> leftOuterJoin -> out",
         "id = i: 2 2 - 5 2 2, number = i: 2 2 - 5 2 2, s = s: b b a b b b, "
         "y = i: 10 40 - 30 10 40"},
        // The keys of a row without a partner on the left are those of the right.
        {"l/id l/s -> createTable -> t\nt/s t/id r/s r/id -> fullOuterJoin -> out",
         "id = i: 1 2 2 - 2 4 - 5, s = s: a b b a c b a b"},

        {"l/id -> groupBy -> out\n  l/x -> reduce :0:r (sum) -> out/sum\n"
         "  l/s -> reduce :0:i (countAll) -> count\n  count -> setValue (inc) -> out/more\n"
         "  l/x -> index :0 -> out/first",
         "first = r: 1 2 3 -, id = i: 1 2 - 4, more = i: 2 3 2 2, sum = r: 1 6 3 0"},
        {"r/id r/s -> groupBy -> out", "id = i: 2 - 5, s = s: b a b"},
        {"empty/number -> groupBy -> out\n  empty/y -> reduce :0:i (sum) -> out/sum",
         "number = i:, sum = i:"},
        {"l/s -> groupBy -> out\n  l -> slice (range :0:i :1:i) -> top\n"
         "  top/id -> index :0 -> out/first",
         "first = i: 1 2 2, s = s: a b c"},
        {"l/s -> groupBy -> out\n  l/id -> groupBy -> ids\n"
         "  ids/id -> reduce :0:i (countAll) -> out/ids",
         "ids = i: 2 2 1, s = s: a b c"},
        {"r/id -> groupBy -> out\n  r/s -> reduce :0:i (countAll) -> count\n"
         "  count -> case -> out/many\n    count -> when (> :1:i) ->\n"
         "      -> constant :yes:s -> out/many\n    -> else ->\n"
         "      -> constant :no:s -> out/many",
         "id = i: 2 - 5, many = s: yes no no"},
        {"l/s -> applyByPartition -> out\n  l/id -> reverse -> out/back\n"
         "  l/x -> reduce :0:r (sum) -> out/total",
         "back = i: - 4 1 2 2, s = s: a b a c b, total = r: 4 2 4 4 2"},
        {"empty/number -> applyByPartition -> out\n  empty/y -> map (toReal64) -> out/real\n"
         "  -> constant :a:s -> out/text",
         "number = i:, real = r:, text = s:"},
    };
    ExpectOutputs(cases);
}

// The errors of docs/vtl.md.
TEST_F(TableOperatorsTest, FaultsAreReported) {
    const FaultCase cases[] = {
        {"one -> createTable -> out", CreateTableInputType},
        {"q short -> createTable -> out", TableArraySize},
        {"q q/y -> createTable -> out", DuplicateTableKey, "y"},
        {"m -> zip -> out", AtLeastTwoInputsNeeded},
        {"m one -> zip -> out", ZipInputType},
        {"m m -> zip -> z\nz m -> zip -> out", ZipInputType},
        {"m short -> zip -> out", ArraySizeMismatch},
        {"m m -> zip (inc) -> out", FunctionNotUsed},
        {"m -> createKeySet -> out", TwoInputsNeeded},
        {"m one -> createKeySet -> out", CreateKeySetInputType},
        {"m short -> createKeySet -> out", ArraySizeMismatch},
        {"m n -> createKeySet -> out", ArrayHasSpecials},
        {"twice m -> createKeySet -> out", DuplicateMapKey},
        {"nulls m -> createKeySet -> out", DuplicateMapKey},

        {"q -> crossJoin -> out", TwoInputsNeeded},
        {"q m -> crossJoin -> out", CrossJoinInputType},
        {"m -> createTable -> t\nt t -> crossJoin -> out", JoinColumnNameClash, "m"},
        {"-> innerJoin -> out", InvalidInputCount},
        {"l/id q/y q/number -> innerJoin -> out", InvalidInputCount},
        {"l/id m -> innerJoin -> out", JoinKeyNotColumn, "m"},
        {"l/id q/id -> innerJoin -> out", JoinKeyNotColumn, "q/id"},
        {"l/id k/id -> leftOuterJoin -> out", JoinKeyNotColumn, "k/id"},
        {"l/id q/y q/number l/s -> innerJoin -> out", JoinKeyNotColumn, "q/y"},
        {"l/x q/number -> innerJoin -> out", JoinKeyTypesDiffer},
        {"pairs/p pairs/p -> innerJoin -> out", JoinTypeUnsupported},
        {"l/id r/id -> fullOuterJoin -> out", JoinColumnNameClash, "s"},
        {"l/s r/s -> innerJoin -> out", JoinColumnNameClash, "id"},
        {"q/number pairs/id -> leftOuterJoin -> out", NestedCollectionSpecials},

        {"-> groupBy -> out", IncorrectPartitionInputs},
        {"m -> groupBy -> out", IncorrectPartitionInputs},
        {"pairs/p -> groupBy -> out", IncorrectPartitionInputs},
        {"m -> copy -> k/m\nk/m -> groupBy -> out", PartitionNeedsTable},
        {"l/id r/id -> groupBy -> out", SeveralPartitionTables},
        {"l/y -> groupBy -> out", KeyNotFound, "l/y"},
        {"l/id -> groupBy -> out b", OneOutputNeeded},
        {"l/id -> groupBy -> out\n  l/x -> copy -> out/x", GroupByOutputType},
        {"l/id -> groupBy -> out\n  -> constant :1:i -> out/x/y", GroupByOutputType},
        {"l/id -> groupBy -> out\n  -> constant :1:i -> other", PartitionWithoutOutput},
        {"l/id -> groupBy -> out\n  -> constant :1:i -> out/id", PartitionKeyOverwritten},
        {"l/id -> groupBy -> out\n  l/id -> reduce :Null:i (max) -> most\n"
         "  most -> case -> out/x\n    most -> when (> :1:i) ->\n"
         "      -> constant :1:i -> out/x\n    -> else ->\n      -> constant :a:s -> out/x",
         PartitionOutputMismatch, "out/x"},
        {"l/id -> groupBy -> out\n  m -> reduce :0:i (sum) -> out/x", KeyNotFound, "m"},
        {"l/id -> groupBy -> out\n  -> constant :1:i -> l/y\n  l/y -> copy -> out/y",
         IllegalOutputKey, "l/y"},
        {"l/id -> applyByPartition -> out\n  l -> copy -> out/x", PartitionOutputType},
        {"l/id -> applyByPartition -> out\n  l/x -> slice (range :0:i :1:i) -> out/x",
         PartitionArraySize},
    };
    ExpectFaults(cases);
}

// Joins and partitions of random tables against loops over all rows, with keys in every form that
// a column has in memory.
class RandomTablesTest : public TableOperatorsTest {
protected:
    using Keys = std::vector<std::string>;

    // A table of two key columns and of the rows' numbers under `numbers`; gives the keys' texts.
    Keys AddTable(const wchar_t* name, const wchar_t* numbers, const Type* keyType) {
        const auto count = static_cast<lumsize_t>(m_random.Below(12));
        Columns columns;
        Keys keys(count);
        for (const wchar_t* const key : {L"k1", L"k2"}) {
            const Type* const type = key[1] == L'1' ? keyType : IntType::Get32();
            std::vector<SV> forms;
            lum::test::ForEachForm(lum::test::MakeRandomColumn(m_random, type, count),
                                   [&](const SV& form) { forms.push_back(form); });
            const SV column = forms[m_random.Below(forms.size())];
            for (lumsize_t row = 0; row < count; ++row) {
                keys[row] += TextOf(column->AsArray().GetElement(row)) + "|";
            }
            columns.emplace(key, column);
        }
        std::string rows = "i:";
        for (lumsize_t row = 0; row < count; ++row) {
            rows += " " + std::to_string(row);
        }
        columns.emplace(numbers, ColumnOf(rows));
        m_store->SetValue(KeyPath(name), factory::MakeTable(std::move(columns), {}));
        return keys;
    }

    // The numbers of the rows that a join pairs, as its columns x and y show them.
    static std::string Pair(const Keys& left, const Keys& right, bool keepsLeft, bool keepsRight) {
        std::string x = "i:";
        std::string y = "i:";
        const auto add = [&](std::optional<std::size_t> i, std::optional<std::size_t> j) {
            x += i ? " " + std::to_string(*i) : " -";
            y += j ? " " + std::to_string(*j) : " -";
        };
        std::vector<bool> isMet(right.size());
        for (std::size_t i = 0; i < left.size(); ++i) {
            bool isAlone = true;
            for (std::size_t j = 0; j < right.size(); ++j) {
                const bool isSpecial = left[i].find('!') != std::string::npos;
                if (!isSpecial && left[i] == right[j]) {
                    isAlone = false;
                    isMet[j] = true;
                    add(i, j);
                }
            }
            if (isAlone && keepsLeft) {
                add(i, {});
            }
        }
        for (std::size_t j = 0; keepsRight && j < right.size(); ++j) {
            if (!isMet[j]) {
                add({}, j);
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
};

TEST_F(RandomTablesTest, AreJoinedAndPartedAsByHand) {
    for (int round = 0; round < 400; ++round) {
        const std::string code(1, "bilfrsdtc"[m_random.Below(9)]);
        SCOPED_TRACE(m_random.Trace() + ", keys of type " + code);
        m_store = factory::MakeDataStore(Columns());
        const Keys left = AddTable(L"l", L"x", lum::test::TypeOf(code));
        const Keys right = AddTable(L"r", L"y", lum::test::TypeOf(code));
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
            std::string text = Show(table + "/x") + " " + Show(table + "/y");
            std::erase(text, '!');  // Room for kinds says nothing of the rows.
            return text;
        };
        EXPECT_EQ(show("inner"), Pair(left, right, false, false));
        EXPECT_EQ(show("left"), Pair(left, right, true, false));
        EXPECT_EQ(show("full"), Pair(left, right, true, true));
        EXPECT_EQ(Show("parts/sum"), SumByKeys(left));
        EXPECT_EQ(Show("total"), Show("expected"));
        ASSERT_FALSE(HasFailure());
    }
}

}  // namespace
}  // namespace lumhost::test
