#include "ColumnFunctions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "CaseName.h"
#include "Literal.h"
#include "lum/core/functions/BuiltinFunctions.h"
#include "lum/core/functions/FunctionRegistry.h"
#include "lum/core/functions/RegisterFunction.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/CollectionTypes.h"
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

// Regular functions that tell when they see a placeholder, which is 0 or the empty text here.
RIndirectString Label(const int& number) {
    if (number == 0) {
        throw std::logic_error("a placeholder was computed with");
    }
    return TStringCore::fromUtf8("number " + std::to_string(number) + " in a text of some length");
}

class Change {
public:
    int operator()(const int& number) {
        const int change = number - m_last;
        m_last = number;
        return change;
    }

private:
    int m_last = 0;
};

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

class ColumnFunctionsTest : public testing::Test {
protected:
    ColumnFunctionsTest() {
        const Type* const integer = IntType::Get32();
        const Type* const text = StringType::Get();
        const auto pair = [](const wchar_t* name, const Type* first, const Type* second) {
            return FunctionKey(name, first, second, FunctionKey::ArgContainer::Separate);
        };
        RegisterAllBuiltinFunctions(*m_registry);
        RegisterFunction<Label>(m_registry->GetUnaryFunctions(), FunctionKey(L"label", integer),
                                text);
        RegisterFunction<Change>(m_registry->GetUnaryFunctions(), FunctionKey(L"change", integer),
                                 integer);
        RegisterFunction<WeightedSum>(m_registry->GetBinaryFunctions(),
                                      pair(L"weightedSum", integer, integer), integer,
                                      {integer, integer});
        RegisterFunction<Mix>(m_registry->GetBinaryFunctions(),
                              pair(L"mix", integer, RealType::Get64()), RealType::Get64());
        RegisterFunction<Longest>(m_registry->GetBinaryFunctions(), pair(L"longest", text, text),
                                  text);
    }

    // The values that the function is made from, read as the types that it says.
    std::vector<SV> ConstantsOf(const RInternString& name, const std::vector<SV>& columns,
                                const std::vector<std::string>& texts) const {
        std::vector<SV> constants;
        const auto& types =
            m_registry->GetFunction(MakeQuery(name, columns)).GetCreatorInputTypes();
        if (types.size() == 1 && types[0]->Is(StoreType::Set)) {
            return {ReadSet(texts, types[0]->As<SetType>().GetElementType())};
        }
        for (std::size_t i = 0; i < types.size(); ++i) {
            constants.push_back(ReadLiteral(texts[i], types[i]));
        }
        return constants;
    }

    SV InitialOf(const RInternString& name, const SV& column, const std::string& text) const {
        return ReadLiteral(text, FindAccumulatorType(*m_registry, name, column));
    }

    const lum::test::CollatorPoolGuard m_pool;
    const std::unique_ptr<FunctionRegistry> m_registry = FunctionRegistry::Make();
};

struct ApplyCase {
    const char* name;
    const wchar_t* function;
    std::vector<std::string> columns;
    std::vector<std::string> constants;
    const char* expected;
};

void PrintTo(const ApplyCase& testCase, std::ostream* out) {
    *out << testCase.name;
}

class ApplyFunctionTest : public ColumnFunctionsTest,
                          public testing::WithParamInterface<ApplyCase> {};

TEST_P(ApplyFunctionTest, GivesTheSameForEveryFormOfAColumn) {
    const ApplyCase& testCase = GetParam();
    std::vector<SV> columns;
    for (const std::string& column : testCase.columns) {
        columns.push_back(ColumnOf(column));
    }
    const std::vector<SV> constants = ConstantsOf(testCase.function, columns, testCase.constants);
    for (SV& column : columns) {
        const SV plain = column;
        lum::test::ForEachForm(plain, [&](const SV& form) {
            column = form;
            EXPECT_EQ(TextOf(ApplyFunction(*m_registry, testCase.function, columns, constants)),
                      testCase.expected);
        });
        column = plain;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, ApplyFunctionTest,
    testing::Values(
        ApplyCase{"RegularForm", L"inc", {"i: 1 -2 7"}, {}, "i: 2 -1 8"},
        ApplyCase{"RoomForKindsThatAreAllNormal", L"inc", {"i!: 1 2"}, {}, "i: 2 3"},
        ApplyCase{"NoElements", L"inc", {"i:"}, {}, "i:"},
        ApplyCase{"SpecialFormForNormalElements", L"sqrt", {"r: 4 0.25"}, {}, "r: 2 0.5"},
        ApplyCase{"SpecialsThatTheFunctionMakes", L"sqrt", {"r: 4 -1"}, {}, "r: 2 -"},
        ApplyCase{"SpecialsThatTheFunctionTakesAway", L"normalize", {"s: a -"}, {}, "s: a ''"},
        ApplyCase{"SpecialFormBeforeRegular", L"toReal64", {"l: 5 7!Missing"}, {}, "r: 5 7!Null"},
        ApplyCase{"RegularFormAloneKeepsKinds",
                  L"inc",
                  {"i: 1 6!Null 3 8!Missing"},
                  {},
                  "i: 2 - 4 !Missing"},
        ApplyCase{"RegularFormAloneWithSpecialsAlone", L"inc", {"i: - -"}, {}, "i: - -"},
        ApplyCase{"RegularFormSeesNoPlaceholder",
                  L"label",
                  {"i: - 1 - - 23 -"},
                  {},
                  "s: - 'number 1 in a text of some length' - - "
                  "'number 23 in a text of some length' -"},
        ApplyCase{"StateSeesNoPlaceholder", L"change", {"i: 3 - 5 5"}, {}, "i: 3 - 2 0"},
        ApplyCase{"StatefulCreator", L"keepOnlyFirst", {"i: 1 - 1 2"}, {}, "b: true - false true"},
        ApplyCase{"Bools", L"keepOnlyFalse", {"b: true false"}, {}, "b: false true"},
        ApplyCase{"Constant", L"<", {"i: 1 5 -"}, {"3"}, "b: true false -"},
        ApplyCase{"Set", L"isInSet", {"s: rain sun fog"}, {"fog", "rain"}, "b: true false true"},
        ApplyCase{"Dates", L"=", {"d: 2024-02-29"}, {}, "d: 2024-02-29"},
        ApplyCase{"TwoColumns", L"-", {"i: 5 7", "i: 1 9"}, {}, "i: 4 -2"},
        ApplyCase{"TwoColumnsSpecial", L"+", {"i: 5 7 1", "i: 1 9!Missing 2"}, {}, "i: 6 - 3"},
        ApplyCase{"TwoColumnsRegularAlone",
                  L"bitor",
                  {"i: 1 2!Missing 4 8", "i: 16 16!Null 16!Null 16"},
                  {},
                  "i: 17 !Missing - 24"},
        ApplyCase{"TwoColumnsTwoConstants",
                  L"weightedSum",
                  {"i: 1 -", "i: 2 3"},
                  {"10", "100"},
                  "i: 210 -"}),
    CaseName());

TEST_F(ColumnFunctionsTest, RefusesWhatCannotBeApplied) {
    const SV integers = ColumnOf("i: 1 2");
    const SV constant = factory::MakeInt32(1);
    const auto apply = [&](const wchar_t* name, const std::vector<SV>& columns,
                           const std::vector<SV>& constants = {}) {
        return ApplyFunction(*m_registry, name, columns, constants);
    };
    EXPECT_LUM_ERROR(InvalidInputCount, "", apply(L"inc", {}));
    EXPECT_LUM_ERROR(InvalidInputCount, "", apply(L"+", {integers, integers, integers}));
    EXPECT_LUM_ERROR(FunctionNotFound, "abs(i)", apply(L"abs", {integers}));
    EXPECT_LUM_ERROR(VectorFunctionSize, "", apply(L"+", {integers, ColumnOf("i: 1")}));
    EXPECT_LUM_ERROR(NonCreatorCalledAsCreator, "inc", apply(L"inc", {integers}, {constant}));
    EXPECT_LUM_ERROR(CreatorInputCount, "<", apply(L"<", {integers}));
    EXPECT_LUM_ERROR(CreatorInputCount, "<", apply(L"<", {integers}, {constant, constant}));
    EXPECT_LUM_ERROR(DivideByZero, "",
                     apply(L"divideConstant", {integers}, {factory::MakeInt32(0)}));
}

struct FoldCase {
    const char* name;
    const wchar_t* function;
    const char* column;
    const char* initial;
    const char* value;
    const char* scan;
    const char* scanRight;
};

void PrintTo(const FoldCase& testCase, std::ostream* out) {
    *out << testCase.name;
}

class FoldColumnTest : public ColumnFunctionsTest, public testing::WithParamInterface<FoldCase> {};

TEST_P(FoldColumnTest, GivesTheSameForEveryFormOfAColumn) {
    const FoldCase& testCase = GetParam();
    const RInternString name(testCase.function);
    lum::test::ForEachForm(ColumnOf(testCase.column), [&](const SV& column) {
        const SV initial = InitialOf(name, column, testCase.initial);
        const auto scan = [&](FoldDirection direction) {
            return TextOf(ScanColumn(*m_registry, name, column, initial, direction));
        };
        EXPECT_EQ(TextOf(FoldColumn(*m_registry, name, column, initial)), testCase.value);
        EXPECT_EQ(scan(FoldDirection::Forward), testCase.scan);
        EXPECT_EQ(scan(FoldDirection::Backward), testCase.scanRight);
    });
}

INSTANTIATE_TEST_SUITE_P(
    Table, FoldColumnTest,
    testing::Values(
        FoldCase{"Regular", L"sum", "i: 1 2 3", "10", "16", "i: 11 13 16", "i: 16 15 13"},
        // At a NaN the regular form gives the element, and the special form the accumulator.
        FoldCase{"RegularBeforeSpecial", L"min", "r: 3 nan", "5", "nan", "r: 3 nan", "r: 3 nan"},
        FoldCase{"SpecialBeforeRegular", L"min", "r: 3 nan -", "5", "3", "r: 3 3 3", "r: 3 5 5"},
        FoldCase{"NoElements", L"sum", "i:", "10", "10", "i:", "i:"},
        FoldCase{"SpecialElements", L"sum", "i: - 2 3", "0", "5", "i: 0 2 5", "i: 5 5 3"},
        FoldCase{"SpecialInitial", L"sum", "i: - 2 3", "Null", "5", "i: - 2 5", "i: 5 5 3"},
        FoldCase{"SpecialInitialOverNormalElements", L"max", "r: 2 1", "Missing", "2", "r: 2 2",
                 "r: 2 1"},
        FoldCase{"SpecialResult", L"min", "d: - -", "Missing", "!Missing", "d: !Missing !Missing",
                 "d: !Missing !Missing"},
        FoldCase{"Dates", L"min", "d: 2024-02-29 2012-01-01", "Null", "2012-01-01",
                 "d: 2024-02-29 2012-01-01", "d: 2012-01-01 2012-01-01"},
        FoldCase{"SpecialFormAlone", L"countNulls", "s: a - -", "0", "2", "i: 0 1 2", "i: 2 2 1"},
        FoldCase{"AccumulatorOfAnotherType", L"countAll", "s: a -", "3", "5", "i: 4 5", "i: 5 4"},
        FoldCase{"RegularFormAloneSkips", L"and", "b: - true false!Null true false -", "true",
                 "false", "b: true true true true false false",
                 "b: false false false false false true"},
        FoldCase{"RegularFormAloneWithSpecialsAlone", L"xor", "b: - -", "true", "true",
                 "b: true true", "b: true true"},
        FoldCase{"Strings", L"longest", "s: a - 'as long as nothing else here' b -", "ab",
                 "'as long as nothing else here'",
                 "s: ab ab 'as long as nothing else here' 'as long as nothing else here' "
                 "'as long as nothing else here'",
                 "s: 'as long as nothing else here' 'as long as nothing else here' "
                 "'as long as nothing else here' ab ab"}),
    CaseName());

TEST_F(ColumnFunctionsTest, RefusesWhatCannotBeFolded) {
    const auto fold = [&](const wchar_t* name, const SV& column, const SV& initial) {
        // Both ways alike.
        EXPECT_ANY_THROW(ScanColumn(*m_registry, name, column, initial, FoldDirection::Backward));
        return FoldColumn(*m_registry, name, column, initial);
    };
    const SV one = factory::MakeInt32(1);
    EXPECT_LUM_ERROR(FunctionNotFound, "sum(i, r<-1,-1>)", fold(L"sum", ColumnOf("r: 1"), one));
    EXPECT_LUM_ERROR(FunctionOutputMismatch, "mix", fold(L"mix", ColumnOf("r: 1"), one));
    EXPECT_LUM_ERROR(CreatorInputCount, "weightedSum", fold(L"weightedSum", ColumnOf("i: 1"), one));
    EXPECT_LUM_ERROR(
        ExpectedBool, "Bool (special kind: Null)",
        fold(L"or", ColumnOf("b: true"), factory::MakeSpecial(BoolType::Get(), SpecialKind::Null)));
}

TEST_F(ColumnFunctionsTest, FindsTheTypeOfAnAccumulator) {
    const auto find = [&](const wchar_t* name, const char* column) {
        return FindAccumulatorType(*m_registry, name, ColumnOf(column));
    };
    EXPECT_EQ(find(L"sum", "r: 1")->GetStoreType(), StoreType::Real64);
    EXPECT_EQ(find(L"count", "r: 1")->GetStoreType(), StoreType::Int32);
    EXPECT_EQ(find(L"count", "i: 1")->GetStoreType(), StoreType::Int32);
    EXPECT_EQ(find(L"mix", "r: 1")->GetStoreType(), StoreType::Int32);
    EXPECT_LUM_ERROR(FunctionNotFound, "count(b, b)", find(L"count", "b: true"));
}

// For any column: a fold is where its scan ends, and a scan up is the scan down of the reverse.
TEST_F(ColumnFunctionsTest, FoldsAndScansAgree) {
    lum::test::Random random;
    const auto reverse = [](const SV& column) {
        std::vector<unsigned> indices;
        for (lumsize_t index = column->AsArray().GetCount(); index-- > 0;) {
            indices.push_back(index);
        }
        return column->AsArray().ComposeIndices(std::move(indices), SortSpecOrder::UNKNOWN);
    };
    struct {
        const Type* type;
        const wchar_t* function;
        const char* initial;
    } const cases[] = {
        {IntType::Get32(), L"sum", "Null"},         {IntType::Get64(), L"max", "7"},
        {IntType::Get64(), L"countNegatives", "0"}, {BoolType::Get(), L"and", "true"},
        {BoolType::Get(), L"xor", "false"},         {BoolType::Get(), L"countAll", "0"},
        {StringType::Get(), L"longest", "''"},      {DateType::Get(), L"min", "Null"},
    };
    for (int round = 0; round < 20; ++round) {
        for (const auto& [type, function, initialText] : cases) {
            SCOPED_TRACE(TStringCore(function).toStdString());
            const lumsize_t count = 1 + static_cast<lumsize_t>(round);
            const SV column = lum::test::MakeRandomColumn(random, type, count);
            const SV initial = InitialOf(function, column, initialText);
            const SV scan =
                ScanColumn(*m_registry, function, column, initial, FoldDirection::Forward);
            EXPECT_EQ(TextOf(FoldColumn(*m_registry, function, column, initial)),
                      TextOf(scan->AsArray().GetElement(count - 1)));
            EXPECT_EQ(TextOf(reverse(ScanColumn(*m_registry, function, reverse(column), initial,
                                                FoldDirection::Backward))),
                      TextOf(reverse(reverse(scan))));
        }
    }
}

}  // namespace
}  // namespace lumhost::test
