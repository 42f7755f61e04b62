#include "ColumnFunctions.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "FunctionCommands.h"
#include "lum/core/functions/RegisterFunction.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/Random.h"
#include "tests/support/RandomColumns.h"

namespace lumhost::test {
namespace {

using namespace lum::core;
using namespace lumengine;
using lum::test::ColumnOf;
using lum::test::TextOf;

RIndirectString Label(const int& number) {
    return TStringCore::fromUtf8("number " + std::to_string(number) + " in a text of some length");
}

class WeightedSum {
public:
    explicit WeightedSum(const std::vector<SV>& values)
        : m_first(FetchStoreValue<int>(values[0])), m_second(FetchStoreValue<int>(values[1])) {}
    int operator()(const int& a, const int& b) const { return m_first * a + m_second * b; }

private:
    int m_first;
    int m_second;
};

double Mix(const int& accumulator, const double& element) {
    return accumulator + element;
}

RIndirectString Longest(const RIndirectString& a, const RIndirectString& b) {
    return b.toStdString().size() > a.toStdString().size() ? b : a;
}

// The cells of a column, or a set, as values: "i: 1 2", "S s: a b".
std::vector<SV> ValuesOf(const std::string& text) {
    if (text.starts_with("S ")) {
        return {lum::test::SetOf(text.substr(2))};
    }
    const SV column = ColumnOf(text);
    std::vector<SV> values;
    for (lumsize_t i = 0; i < column->AsArray().GetCount(); ++i) {
        values.push_back(column->AsArray().GetElement(i));
    }
    return values;
}

SV Reverse(const SV& column) {
    std::vector<unsigned> indices;
    for (lumsize_t index = column->AsArray().GetCount(); index-- > 0;) {
        indices.push_back(index);
    }
    return column->AsArray().ComposeIndices(std::move(indices), SortSpecOrder::UNKNOWN);
}

class ColumnFunctionsTest : public testing::Test {
protected:
    ColumnFunctionsTest() {
        const Type* const integer = IntType::Get32();
        const Type* const text = StringType::Get();
        const auto pair = [](const wchar_t* name, const Type* first, const Type* second) {
            return FunctionKey(name, first, second, FunctionKey::ArgContainer::Separate);
        };
        auto& binary = m_registry->GetBinaryFunctions();
        RegisterFunction<Label>(m_registry->GetUnaryFunctions(), FunctionKey(L"label", integer),
                                text);
        RegisterFunction<WeightedSum>(binary, pair(L"weightedSum", integer, integer), integer,
                                      {integer, integer});
        RegisterFunction<Mix>(binary, pair(L"mix", integer, RealType::Get64()), RealType::Get64());
        RegisterFunction<Longest>(binary, pair(L"longest", text, text), text);
    }

    SV Apply(const wchar_t* name, const std::vector<SV>& columns,
             const std::vector<SV>& constants = {}) const {
        return ApplyFunction(*m_registry, name, columns, constants);
    }
    SV Fold(const wchar_t* name, const SV& column, const SV& initial,
            std::optional<FoldDirection> steps = std::nullopt) const {
        return FoldColumn(*m_registry, name, column, initial, steps);
    }

    // A fold is where its scan ends, and a scan up is the scan down of the reverse.
    void ExpectFoldsToAgree(const wchar_t* name, const SV& column, const SV& initial) const {
        const SV scan = Fold(name, column, initial, FoldDirection::Forward);
        const lumsize_t count = column->AsArray().GetCount();
        EXPECT_EQ(TextOf(Fold(name, column, initial)),
                  TextOf(count == 0 ? initial : scan->AsArray().GetElement(count - 1)));
        const SV up = Fold(name, Reverse(column), initial, FoldDirection::Backward);
        EXPECT_EQ(TextOf(Reverse(up)), TextOf(Reverse(Reverse(scan))));
    }

    const lum::test::CollatorPoolGuard m_pool;
    const std::unique_ptr<FunctionRegistry> m_registry = MakeRegistry();
};

TEST_F(ColumnFunctionsTest, ApplyGivesTheSameForEveryFormOfAColumn) {
    const struct {
        const wchar_t* function;
        std::vector<const char*> columns;
        const char* expected;
        const char* constants = "i:";
    } cases[] = {
        {L"inc", {"i: 1 -2 7"}, "i: 2 -1 8"},
        {L"inc", {"i!: 1 2"}, "i: 2 3"},
        {L"inc", {"i:"}, "i:"},
        // The special form is taken where there is no other, and where an element is special.
        {L"sqrt", {"r: 4 0.25"}, "r: 2 0.5"},
        {L"sqrt", {"r: 4 -1"}, "r: 2 -"},
        {L"normalize", {"s: a -"}, "s: a ''"},
        {L"toReal64", {"l: 5 7!Missing"}, "r: 5 7!Null"},
        // The regular form alone keeps kinds, and sees no placeholder.
        {L"inc", {"i: 1 6!Null 3 8!Missing"}, "i: 2 - 4 !Missing"},
        {L"inc", {"i: - -"}, "i: - -"},
        {L"label",
         {"i: - 1 - - 23 -"},
         "s: - 'number 1 in a text of some length' - - 'number 23 in a text of some length' -"},
        {L"keepOnlyFirst", {"i: 7!Null 7 7 9 7!Null 9"}, "b: - true false true - false"},
        {L"keepOnlyFalse", {"b: true false"}, "b: false true"},
        {L"=", {"d: 2024-02-29"}, "d: 2024-02-29"},
        {L"<", {"i: 1 5 -"}, "b: true false -", "i: 3"},
        {L"isInSet", {"s: rain sun fog"}, "b: true false true", "S s: fog rain"},
        {L"-", {"i: 5 7", "i: 1 9"}, "i: 4 -2"},
        {L"+", {"i: 5 7 1", "i: 1 9!Missing 2"}, "i: 6 - 3"},
        {L"bitor", {"i: 1 2!Missing 4 8", "i: 16 16!Null 16!Null 16"}, "i: 17 !Missing - 24"},
        {L"weightedSum", {"i: 1 -", "i: 2 3"}, "i: 210 -", "i: 10 100"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.columns[0]);
        std::vector<SV> columns;
        for (const char* const column : row.columns) {
            columns.push_back(ColumnOf(column));
        }
        for (SV& column : columns) {
            const SV plain = column;
            lum::test::ForEachForm(plain, [&](const SV& form) {
                column = form;
                EXPECT_EQ(TextOf(Apply(row.function, columns, ValuesOf(row.constants))),
                          row.expected);
            });
            column = plain;
        }
    }
}

// The faults of programs are tested where these run.
TEST_F(ColumnFunctionsTest, RefusesWhatCannotBeApplied) {
    const SV two = ColumnOf("i: 1 2");
    EXPECT_LUM_ERROR(InvalidInputCount, "", Apply(L"inc", {}));
    EXPECT_LUM_ERROR(InvalidInputCount, "", Apply(L"+", {two, two, two}));
    EXPECT_LUM_ERROR(FunctionNotFound, "abs(i)", Apply(L"abs", {two}));
    EXPECT_LUM_ERROR(CreatorInputCount, "<", Apply(L"<", {two}, ValuesOf("i: 1 2")));
}

TEST_F(ColumnFunctionsTest, ScansGiveTheSameForEveryFormOfAColumn) {
    const struct {
        const wchar_t* function;
        const char* column;
        const char* initial;
        const char* scan;
    } cases[] = {
        {L"sum", "i: 1 2 3", "i: 10", "i: 11 13 16"},
        {L"sum", "i:", "i: 10", "i:"},
        // At a NaN the regular form gives the element, and the special form the accumulator.
        {L"min", "r: 3 nan", "r: 5", "r: 3 nan"},
        {L"min", "r: 3 nan -", "r: 5", "r: 3 3 3"},
        {L"sum", "i: - 2 3", "i: 0", "i: 0 2 5"},
        {L"sum", "i: - 2 3", "i: -", "i: - 2 5"},
        {L"max", "r: 2 1", "r: !Missing", "r: 2 2"},
        {L"min", "d: - -", "d: !Missing", "d: !Missing !Missing"},
        {L"countNulls", "s: a - -", "i: 0", "i: 0 1 2"},
        {L"countAll", "s: a -", "i: 3", "i: 4 5"},
        // The regular form alone skips specials.
        {L"and", "b: - true false!Null true false -", "b: true",
         "b: true true true true false false"},
        {L"xor", "b: - -", "b: true", "b: true true"},
        {L"longest", "s: a - 'as long as nothing else here' b -", "s: ab",
         "s: ab ab 'as long as nothing else here' 'as long as nothing else here' "
         "'as long as nothing else here'"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.column);
        const SV initial = ValuesOf(row.initial)[0];
        lum::test::ForEachForm(ColumnOf(row.column), [&](const SV& column) {
            EXPECT_EQ(TextOf(Fold(row.function, column, initial, FoldDirection::Forward)),
                      row.scan);
            ExpectFoldsToAgree(row.function, column, initial);
        });
    }
}

TEST_F(ColumnFunctionsTest, FoldsAndScansOfAnyColumnAgree) {
    lum::test::Random random;
    SCOPED_TRACE(random.Trace());
    const struct {
        const char* type;
        const wchar_t* function;
        const char* initial;
    } cases[] = {
        {"i", L"sum", "i: -"},      {"l", L"max", "l: 7"},     {"l", L"countNegatives", "i: 0"},
        {"b", L"and", "b: true"},   {"b", L"xor", "b: false"}, {"b", L"countAll", "i: 0"},
        {"s", L"longest", "s: ''"}, {"d", L"min", "d: -"},
    };
    for (lumsize_t count = 1; count <= 20; ++count) {
        for (const auto& [type, function, initial] : cases) {
            SCOPED_TRACE(TStringCore(function).toStdString());
            ExpectFoldsToAgree(function,
                               lum::test::MakeRandomColumn(random, lum::test::TypeOf(type), count),
                               ValuesOf(initial)[0]);
        }
    }
}

TEST_F(ColumnFunctionsTest, RefusesWhatCannotBeFolded) {
    const auto fold = [&](const wchar_t* name, const char* column, const char* initial) {
        const SV start = ValuesOf(initial)[0];
        // Both ways alike.
        EXPECT_ANY_THROW(Fold(name, ColumnOf(column), start, FoldDirection::Backward));
        return Fold(name, ColumnOf(column), start);
    };
    EXPECT_LUM_ERROR(FunctionNotFound, "sum(i, r<-1,-1>)", fold(L"sum", "r: 1", "i: 1"));
    EXPECT_LUM_ERROR(FunctionOutputMismatch, "mix", fold(L"mix", "r: 1", "i: 1"));
    EXPECT_LUM_ERROR(CreatorInputCount, "weightedSum", fold(L"weightedSum", "i: 1", "i: 1"));
    EXPECT_LUM_ERROR(ExpectedBool, "Bool (special kind: Null)", fold(L"or", "b: true", "b: -"));
}

TEST_F(ColumnFunctionsTest, FindsTheTypeOfAnAccumulator) {
    const auto find = [&](const wchar_t* name, const char* column) {
        return FindAccumulatorType(*m_registry, name, ColumnOf(column))->GetStoreType();
    };
    EXPECT_EQ(find(L"sum", "r: 1"), StoreType::Real64);
    EXPECT_EQ(find(L"count", "r: 1"), StoreType::Int32);
    EXPECT_EQ(find(L"mix", "r: 1"), StoreType::Int32);
    EXPECT_LUM_ERROR(FunctionNotFound, "count(b, b)", find(L"count", "b: true"));
}

}  // namespace
}  // namespace lumhost::test
