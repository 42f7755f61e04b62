// Programs over a few small columns, for what each operator gives and how it fails.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/utility/LumException.h"
#include "lum/core/utility/LumThreadPool.h"
#include "tests/host/CaseName.h"
#include "tests/host/EngineFixture.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/Random.h"

namespace lumhost::test {
namespace {

using namespace lum::core;
using lum::test::ColumnOf;
using lum::test::SetOf;

std::unique_ptr<IDataStore> MakeTestStore() {
    std::unordered_map<RInternString, SV> members;
    members.emplace(L"n", ColumnOf("i: 3 1 - 2 1"));
    members.emplace(L"m", ColumnOf("i: 10 20 30 40 50"));
    members.emplace(L"r", ColumnOf("r: 2.5 nan -1 !Missing -"));
    members.emplace(L"s", ColumnOf("s: b a b - c"));
    members.emplace(L"short", ColumnOf("i: 4 0"));
    members.emplace(L"none", ColumnOf("i:"));
    members.emplace(L"where", ColumnOf("i: 1 1 4"));
    members.emplace(L"hole", ColumnOf("i: 0 -"));
    members.emplace(L"far", ColumnOf("i: 0 5"));
    members.emplace(L"set", SetOf("i: 5"));
    members.emplace(L"one", factory::MakeInt32(1));
    members.emplace(L"zero", factory::MakeInt32(0));
    members.emplace(L"real", factory::MakeReal64(2.5));
    return factory::MakeDataStore(std::move(members));
}

class EngineTest : public EngineFixture {
protected:
    EngineTest() : EngineFixture(MakeTestStore()) {}
};

class EngineOperatorTest : public EngineTest, public testing::WithParamInterface<OperatorCase> {};

TEST_P(EngineOperatorTest, Gives) {
    Run(GetParam().program);
    EXPECT_EQ(Show("out"), GetParam().expected);
}

#define TABLE "n m s -> createTable -> t\n"

INSTANTIATE_TEST_SUITE_P(
    Table, EngineOperatorTest,
    testing::Values(
        OperatorCase{"Constant", "-> constant :-7:i -> out", "-7"},
        OperatorCase{"ConstantSpecial", "-> constant :Missing:r -> out", "!Missing"},
        OperatorCase{"Copy", "s -> copy -> out", "s: b a b - c"},
        OperatorCase{"CopyOfAKeyMapIsItsOwn",
                     "one -> copy -> k/a\nk -> copy -> out\none -> copy -> k/b", R"({"a:i":1})"},
        OperatorCase{"Map", "n -> map (inc) -> out", "i: 4 2 - 3 2"},
        OperatorCase{"MapConstants", "n -> map (addConstant :10:i) -> out", "i: 13 11 - 12 11"},
        OperatorCase{"MapKeyAsConstant", "n -> map (addConstant one) -> out", "i: 4 2 - 3 2"},
        OperatorCase{"MapSetAsConstant", "n -> map (isNotInSet set) -> out",
                     "b: true true - true true"},
        OperatorCase{"MapOfATablesColumn", TABLE "t/n -> map (inc) -> out", "i: 4 2 - 3 2"},
        OperatorCase{"MapOfASet", "set -> map (inc) -> out", "S i: 6"},
        OperatorCase{"ZipWith", "n m -> zipWith (+) -> out", "i: 13 21 - 42 51"},
        OperatorCase{"ZipWithKeepsTheOrderOfInputs", "m n -> zipWith (-) -> out",
                     "i: 7 19 - 38 49"},
        OperatorCase{"Filter", "n -> filter :false (> :1:i) -> out", "i!: 3 2"},
        OperatorCase{"FilterBySpecialForm", "r -> filter :false (keepOnlyNormal) -> out",
                     "r!: 2.5 nan -1"},
        OperatorCase{"FilterOfNothing", "none -> filter :false (> :1:i) -> out", "i:"},
        OperatorCase{"FilterOfATable",
                     TABLE "t/n -> filter :true (> :1:i) -> u\nu/m -> copy -> out", "i: 10 40"},
        OperatorCase{"FilterOfASet", "set -> filter :false (> :7:i) -> out", "S i:"},
        OperatorCase{"Reduce", "n -> reduce :100:i (sum) -> out", "107"},
        OperatorCase{"ReduceFromSpecial", "n -> reduce :Null:i (min) -> out", "1"},
        OperatorCase{"ReduceToAnotherType", "s -> reduce :0:i (countNulls) -> out", "1"},
        OperatorCase{"ReduceOfASet", "set -> reduce :1:i (sum) -> out", "6"},
        OperatorCase{"Scan", "m -> scan :0:i (sum) -> out", "i: 10 30 60 100 150"},
        OperatorCase{"ScanRight", "m -> scanRight :0:i (sum) -> out", "i: 150 140 120 90 50"},
        OperatorCase{"DistinctWithSpecials", "n -> distinct :true -> out", "i: 3 1 - 2"},
        OperatorCase{"DistinctWithout", "n -> distinct :false -> out", "i!: 3 1 2"},
        OperatorCase{"DistinctKindsApart", "r -> distinct :true -> out",
                     "r: 2.5 nan -1 !Missing -"},
        OperatorCase{"DistinctStrings", "s -> distinct :true -> out", "s: b a - c"},
        OperatorCase{"Reverse", "s -> reverse -> out", "s: c - b a b"},
        OperatorCase{"ReverseOfNothing", "none -> reverse -> out", "i:"},
        OperatorCase{"Slice", "m -> slice (range :1:i :2:i) -> out", "i: 20 30"},
        OperatorCase{"SliceStep", "m -> slice (range one :9:i :2:i) -> out", "i: 20 40"},
        OperatorCase{"SliceDown", "m -> slice (range :3:i :9:i :-2:i) -> out", "i: 40 20"},
        OperatorCase{"SliceOfLengthZero", "m -> slice (range :1:i :0:i :2:i) -> out", "i:"},
        OperatorCase{"SliceBeyondTheEnd", "m -> slice (range :5:i :1:i) -> out", "i:"},
        OperatorCase{"SliceStepsPastAllIntegers",
                     "m -> slice (range :4:i :2147483647:i :2147483647:i) -> out", "i: 50"},
        OperatorCase{"SliceOfATable", TABLE "t -> slice (range :1:i :2:i) -> u\nu/s -> copy -> out",
                     "s!: a b"},
        OperatorCase{"IndexByLiteral", "s -> index :4 -> out", "c"},
        OperatorCase{"IndexOfASpecial", "n -> index :2 -> out", "!Null"},
        OperatorCase{"IndexByScalar", "s one -> index -> out", "a"},
        OperatorCase{"IndexByArray", "s where -> index -> out", "s!: a a c"},
        OperatorCase{"IndexOfATable", TABLE "t where -> index -> u\nu/n -> copy -> out",
                     "i!: 1 1 1"},
        OperatorCase{"IndexOfATableByNumber", TABLE "t -> index :3 -> u\nu/m -> copy -> out",
                     "i: 40"},
        OperatorCase{"Concat", "short n none -> concat -> out", "i: 4 0 3 1 - 2 1"},
        OperatorCase{"ConcatOfOne", "short -> concat -> out", "i: 4 0"},
        OperatorCase{"ConcatOfTables",
                     "n -> createTable -> t\nt t -> concat -> u\nu/n -> copy -> out",
                     "i: 3 1 - 2 1 3 1 - 2 1"},
        OperatorCase{"MultiSort", "n -> multiSort :true -> out", "i: 1 4 3 0 2"},
        OperatorCase{"MultiSortWithoutSpecials", "n -> multiSort :false -> out", "i: 1 4 3 0"},
        OperatorCase{"MultiSortDown", "n -> multiSort :true (order :DESC:s) -> out",
                     "i: 0 3 1 4 2"},
        OperatorCase{"MultiSortOfTwo", "n m -> multiSort :true (order :ASC:s :DESC:s) -> out",
                     "i: 4 1 3 0 2"},
        OperatorCase{"MultiSortReals", "r -> multiSort :true -> out", "i: 2 0 1 4 3"},
        OperatorCase{"MultiSortRealsDown", "r -> multiSort :false (order :DESC:s) -> out",
                     "i: 1 0 2"},
        OperatorCase{"MultiSortStrings", "s -> multiSort :true -> out", "i: 1 0 2 4 3"},
        OperatorCase{"MultiSortIsUsedByIndex",
                     "n -> multiSort :true -> order\nm order -> index -> out", "i: 20 50 40 10 30"},
        OperatorCase{"SetValueNew", "one -> setValue (inc) -> out", "2"},
        OperatorCase{"SetValueOld",
                     "one -> copy -> out\nout -> setValue (inc) -> out\n"
                     "out one -> setValue (+) -> out",
                     "3"},
        OperatorCase{"SetValueByConstant", "one -> setValue (addConstant :5:i) -> out", "6"},
        OperatorCase{"SetValueOfASpecial", "n -> index :2 -> null\nnull -> setValue (inc) -> out",
                     "!Null"},
        OperatorCase{"SetValueMulti", "one -> setValueMulti (- :5:i) -> out", "-4"},
        OperatorCase{"SetValueMultiOfTwoTypes", "one real -> setValueMulti (<) -> out", "true"},
        OperatorCase{"CaseWhen",
                     "one -> case -> out\n  one -> when (== :1:i) ->\n"
                     "    one -> setValue (dec) -> mine\n    mine -> copy -> out\n"
                     "  -> else ->\n    one -> copy -> out",
                     "0"},
        OperatorCase{"CaseElse",
                     "one -> case -> out\n  one -> when (== :2:i) ->\n"
                     "    one -> setValue (dec) -> out\n  one -> when (> :3:i) ->\n"
                     "    one -> setValue (dec) -> out\n"
                     "  -> else ->\n    one -> copy -> out",
                     "1"},
        OperatorCase{"BlockBehindItsCall",
                     "short one -> call :pick -> out rest\n"
                     "a b -> block :pick ->\n  a b -> index -> x\n  x a -> return ->",
                     "0"},
        OperatorCase{"BlockCalledTwice",
                     "a -> block :twice ->\n  a -> map (multiplyConstant :2:i) -> b\n"
                     "  b -> return ->\n"
                     "short -> call :twice -> x\nx -> call :twice -> out",
                     "i: 16 0"},
        OperatorCase{"NoOp", "// nothing\nn -> noOp -> x\none -> copy -> out", "1"}),
    CaseName());

class EngineFaultTest : public EngineTest, public testing::WithParamInterface<FaultCase> {};

TEST_P(EngineFaultTest, IsReported) {
    ExpectFault(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Table, EngineFaultTest,
    testing::Values(
        FaultCase{"MissingKey", "nowhere -> copy -> out", LumError::KeyNotFound, "nowhere"},
        FaultCase{"MissingColumn", "n -> createTable -> t\nt/m -> copy -> out",
                  LumError::KeyNotFound, "t/m"},
        FaultCase{"NotInTheEngine", "n -> internalCreateKeyMap -> out", LumError::NotImplemented,
                  "internalCreateKeyMap"},
        FaultCase{"KeyIsThere", "n -> copy -> m", LumError::ValueAlreadySet, "m"},
        FaultCase{"NoOutput", "n -> copy ->", LumError::OneOutputNeeded},
        FaultCase{"TwoOutputs", "n -> copy -> out b", LumError::OneOutputNeeded},
        FaultCase{"BelowAScalar", "n -> copy -> one/out", LumError::IllegalOutputKey, "one/out"},
        FaultCase{"BelowAnArray", "one -> copy -> n/0", LumError::IllegalOutputKey},
        FaultCase{"EmptyName", "one -> copy -> a/''/out", LumError::IllegalOutputKey},
        FaultCase{"NoInput", "-> copy -> out", LumError::OneInputNeeded},
        FaultCase{"CopyIntoItself", "one -> copy -> k/a\nk -> copy -> k/b", LumError::CopyIntoSelf},
        FaultCase{"CopyWithFunction", "n -> copy (inc) -> out", LumError::FunctionNotUsed},
        FaultCase{"ConstantWithInput", "n -> constant :1:i -> out", LumError::EmptyInputNeeded},
        FaultCase{"ConstantWithoutValue", "-> constant -> out", LumError::NullValue},
        FaultCase{"MapWithoutFunction", "n -> map -> out", LumError::FunctionNeeded},
        FaultCase{"MapOfAScalar", "one -> map (inc) -> out", LumError::MapInputType},
        FaultCase{"MapByNothingKnown", "n -> map (nosuch) -> out", LumError::FunctionNotFound},
        FaultCase{"MapConstantsOfNoCreator", "n -> map (inc :1:i) -> out",
                  LumError::NonCreatorCalledAsCreator, "inc"},
        FaultCase{"MapConstantMissing", "n -> map (addConstant) -> out",
                  LumError::CreatorInputCount, "addConstant"},
        FaultCase{"MapConstantOfAnotherType", "n -> map (addConstant :1:r) -> out",
                  LumError::CreatorInputType, "addConstant"},
        FaultCase{"MapSetOfAnotherType", "s -> map (isInSet set) -> out",
                  LumError::CreatorInputType, "isInSet"},
        FaultCase{"ZipWithOne", "n -> zipWith (+) -> out", LumError::TwoInputsNeeded},
        FaultCase{"ZipWithAScalar", "n one -> zipWith (+) -> out", LumError::ZipWithInputType},
        FaultCase{"ZipWithOfTwoLengths", "n short -> zipWith (+) -> out",
                  LumError::VectorFunctionSize},
        FaultCase{"ZipWithDividesByZero", "short short -> zipWith ('/') -> out",
                  LumError::DivideByZero},
        FaultCase{"FilterWithoutFlag", "n -> filter (> :1:i) -> out",
                  LumError::MakeTableFlagNeeded},
        FaultCase{"FilterOfAScalar", "one -> filter :false (> :1:i) -> out",
                  LumError::FilterInputType},
        FaultCase{"FilterByNoBool", "n -> filter :false (inc) -> out",
                  LumError::FilterFunctionNotBool},
        FaultCase{"FilterTableNotNested", "n -> filter :true (> :1:i) -> out",
                  LumError::FilterKeyNotNested},
        FaultCase{"FilterParentIsNoTable", "n -> copy -> k/n\nk/n -> filter :true (> :1:i) -> out",
                  LumError::FilterParentNotTable},
        FaultCase{"ReduceWithoutInitial", "n -> reduce (sum) -> out", LumError::InitialValueNeeded},
        FaultCase{"ReduceFromAnotherType", "n -> reduce :0:r (sum) -> out",
                  LumError::ReduceInitialType},
        FaultCase{"ReduceByNothingKnown", "n -> reduce :0:i (nosuch) -> out",
                  LumError::FunctionNotFound},
        FaultCase{"ReduceOfAScalar", "one -> reduce :0:i (sum) -> out", LumError::ReduceInputType},
        FaultCase{"ReduceWithConstants", "n -> reduce :0:i (sum :1:i) -> out",
                  LumError::NonCreatorCalledAsCreator, "sum"},
        FaultCase{"ScanFromAnotherType", "n -> scan :0:r (sum) -> out", LumError::ScanInitialType},
        FaultCase{"ScanOfASet", "set -> scan :0:i (sum) -> out", LumError::ScanInputType},
        FaultCase{"ScanRightFromAnotherType", "n -> scanRight :0:r (sum) -> out",
                  LumError::ScanRightInitialType},
        FaultCase{"ScanRightOfASet", "set -> scanRight :0:i (sum) -> out",
                  LumError::ScanRightInputType},
        FaultCase{"DistinctWithoutFlag", "n -> distinct -> out",
                  LumError::IncludeSpecialsFlagNeeded},
        FaultCase{"DistinctOfAScalar", "one -> distinct :true -> out", LumError::DistinctInputType},
        FaultCase{"ReverseOfASet", "set -> reverse -> out", LumError::ReverseInputType},
        FaultCase{"SliceOfAScalar", "one -> slice (range :0:i :1:i) -> out",
                  LumError::SliceInputType},
        FaultCase{"SliceByAnotherFunction", "n -> slice (inc :0:i :1:i) -> out",
                  LumError::InvalidSliceRangeType},
        FaultCase{"SliceByReals", "n -> slice (range :0:r :1:r) -> out",
                  LumError::InvalidSliceRangeType},
        FaultCase{"SliceWithoutLength", "n -> slice (range :0:i) -> out",
                  LumError::InvalidSliceRangeType},
        FaultCase{"SliceByNoSteps", "n -> slice (range :0:i :1:i :0:i) -> out",
                  LumError::OutOfBounds},
        FaultCase{"SliceFromBeforeTheStart", "n -> slice (range :-1:i :1:i) -> out",
                  LumError::OutOfBounds},
        FaultCase{"IndexOfAScalar", "one -> index :0 -> out", LumError::IndexInputType},
        FaultCase{"IndexWithoutPosition", "n -> index -> out", LumError::ValueAndInputNeeded},
        FaultCase{"IndexWithTwoPositions", "n one -> index :0 -> out",
                  LumError::ValueAndInputNeeded},
        FaultCase{"IndexByAReal", "n real -> index -> out", LumError::Int32Needed},
        FaultCase{"IndexByASpecial", "n hole -> index -> out", LumError::Int32Needed},
        FaultCase{"IndexByStrings", "n s -> index -> out", LumError::Int32Needed},
        FaultCase{"IndexBehindTheEnd", "n -> index :5 -> out", LumError::OutOfBounds},
        FaultCase{"IndexBeforeTheStart", "n -> index :-1 -> out", LumError::OutOfBounds},
        FaultCase{"IndexOneBehindTheEnd", "n far -> index -> out", LumError::OutOfBounds},
        FaultCase{"ConcatOfNothing", "-> concat -> out", LumError::AtLeastOneInputNeeded},
        FaultCase{"ConcatOfScalars", "one one -> concat -> out", LumError::ConcatInputType},
        FaultCase{"ConcatOfTwoTypes", "n s -> concat -> out", LumError::TypeMismatch},
        FaultCase{"ConcatOfTwoTypesOfColumns",
                  "n -> createTable -> t\nr -> copy -> k/n\nk/n -> createTable -> u\n"
                  "t u -> concat -> out",
                  LumError::TypeMismatch},
        FaultCase{"ConcatOfTwoShapes",
                  "n -> createTable -> t\nm -> createTable -> u\nt u -> concat -> out",
                  LumError::ConcatenatedColumnsDiffer},
        FaultCase{"TableOfTwoLengths", "n short -> createTable -> out", LumError::TableArraySize},
        FaultCase{"TableOfOneNameTwice", "n n -> createTable -> out", LumError::DuplicateTableKey,
                  "n"},
        FaultCase{"TableOfScalars", "one -> createTable -> out", LumError::CreateTableInputType},
        FaultCase{"MultiSortWithoutFlag", "n -> multiSort -> out",
                  LumError::IncludeSpecialsFlagNeeded},
        FaultCase{"MultiSortOfAScalar", "one -> multiSort :true -> out",
                  LumError::MultiSortInputType},
        FaultCase{"MultiSortByAnotherFunction", "n -> multiSort :true (inc) -> out",
                  LumError::InvalidSortAlgorithm},
        FaultCase{"MultiSortByAnotherOrder", "n -> multiSort :true (order :UP:s) -> out",
                  LumError::InvalidSortOrderOption},
        FaultCase{"MultiSortOrdersMissing", "n m -> multiSort :true (order :ASC:s) -> out",
                  LumError::InvalidSortOrderOption},
        FaultCase{"SetValueOfAnArray", "n -> setValue (inc) -> out", LumError::SetValueTypeMismatch,
                  "inc"},
        FaultCase{"SetValueOfAnotherType", "one -> setValue (toInt64) -> one",
                  LumError::SetValueTypeMismatch, "toInt64"},
        FaultCase{"SetValueOverAnArray", "one -> setValue (inc) -> n", LumError::KeyNotUpdatable,
                  "n"},
        FaultCase{"SetValueMultiOfThree", "one one one -> setValueMulti (+) -> out",
                  LumError::FunctionNotFound},
        FaultCase{"SetValueMultiDividesByZero", "one zero -> setValueMulti ('/') -> out",
                  LumError::DivideByZero},
        FaultCase{"SetValueMultiHasNoQuotient",
                  "-> constant :-2147483648:i -> low\nlow -> setValueMulti ('/' :-1:i) -> out",
                  LumError::OutOfBounds},
        FaultCase{"CaseWithoutElse",
                  "one -> case -> out\n  one -> when (== :1:i) ->\n  one -> when (== :2:i) ->",
                  LumError::ElseNeedsCase},
        FaultCase{"CaseOfOne", "one -> case -> out\n  -> else ->", LumError::CaseNeedsTwoChildren},
        FaultCase{"CaseOfAnotherStatement",
                  "one -> case -> out\n  one -> copy -> out\n  -> else ->",
                  LumError::WhenNeedsCase},
        FaultCase{"CaseReadsMore",
                  "one -> case -> out\n  one -> when (== :1:i) ->\n    n -> copy -> out\n"
                  "  -> else ->\n    one -> copy -> out",
                  LumError::CaseMissingInput, "n"},
        FaultCase{"CaseWritesLess",
                  "one -> case -> out\n  one -> when (== :1:i) ->\n    one -> copy -> x\n"
                  "  -> else ->\n    one -> copy -> out",
                  LumError::BranchMissingOutput, "out"},
        FaultCase{"WhenByNoBool",
                  "one -> case -> out\n  one -> when (+ :1:i) ->\n    one -> copy -> out\n"
                  "  -> else ->\n    one -> copy -> out",
                  LumError::WhenNeedsBool},
        FaultCase{"WhenAlone", "one -> when (== :1:i) ->", LumError::WhenOrElseExpected},
        FaultCase{"ReturnAlone", "one -> return ->", LumError::ReturnOutsideBlock},
        FaultCase{"ReturnBeforeTheEnd",
                  "-> call :b ->\n-> block :b ->\n  -> return ->\n  -> constant :1:i -> x",
                  LumError::ReturnOutsideBlock},
        FaultCase{"BlockWithoutName", "-> block ->\n  -> constant :1:i -> x",
                  LumError::BlockNameNeeded},
        FaultCase{"BlockOfOneNameTwice",
                  "-> block :b ->\n  -> return ->\n-> block :b ->\n  -> return ->",
                  LumError::DuplicateTransformSpecs, "b"},
        FaultCase{"BlockInABlock",
                  "-> call :b ->\n-> block :b ->\n  -> block :c ->\n    -> return ->",
                  LumError::NestedBlocks},
        FaultCase{"BlockCallsItself",
                  "-> call :b ->\n-> block :b ->\n  -> call :c ->\n-> block :c ->\n"
                  "  -> call :b ->",
                  LumError::BlockFunctionCalled, "b"},
        FaultCase{"CallOfNothing", "-> call :b -> out", LumError::BlockNotDefined, "b"},
        FaultCase{"CallWithMore", "one -> call :b ->\n-> block :b ->\n  -> return ->",
                  LumError::BlockInputCount},
        FaultCase{"CallForMore", "-> call :b -> out\n-> block :b ->\n  -> return ->",
                  LumError::InvalidInputCount, "b"},
        FaultCase{"CallGivesOneKeyTwice",
                  "one -> call :b -> out out\nx -> block :b ->\n  x x -> return ->",
                  LumError::IllegalOutputKey, "out"},
        FaultCase{"BlockSeesNothingOutside",
                  "-> call :b -> out\n-> block :b ->\n  one -> return ->", LumError::KeyNotFound}),
    CaseName());

TEST_F(EngineTest, StatementsBeforeAFaultStayAndAreCounted) {
    EXPECT_LUM_ERROR(KeyNotFound, "nowhere",
                     Run("one -> copy -> a\nnowhere -> copy -> b\none -> copy -> c"));
    EXPECT_EQ(m_finished, 1);
    EXPECT_EQ(Show("a"), "1");
    EXPECT_EQ(m_store->TryGetValue(KeyPath(L"c")), nullptr);
}

TEST_F(EngineTest, NestsAsDeepAsTheParser) {
    // Cases within cases; the engine has a limit of its own, so that no program ends the stack.
    const auto nest = [](int depth) {
        std::string text;
        for (int level = 0; level < depth; ++level) {
            const std::string indent(static_cast<std::size_t>(4 * level), ' ');
            text += indent + "one -> case -> out\n" + indent + "  one -> when (== :1:i) ->\n";
        }
        text += std::string(static_cast<std::size_t>(4 * depth), ' ') + "one -> copy -> out\n";
        for (int level = depth; level-- > 0;) {
            text += std::string(static_cast<std::size_t>(4 * level + 2), ' ') + "-> else ->\n";
        }
        return text;
    };
    Run(nest(100));
    EXPECT_EQ(Show("out"), "1");
}

TEST_F(EngineTest, CallsNoDeeperThanItsLimit) {
    std::string text = "-> call :b0 ->\n";
    for (int i = 0; i < 1000; ++i) {
        text += "-> block :b" + std::to_string(i) + " ->\n  -> call :b" + std::to_string(i + 1) +
                " ->\n";
    }
    EXPECT_LUM_ERROR(InvalidNesting, "", Run(text));
}

std::string MakeRandomProgram(lum::test::Random& random) {
    std::string text = "n m -> createTable -> t\nn -> createTable -> u\n";
    const auto key = [&] { return "k" + std::to_string(random.Below(12)); };
    for (int i = 0; i < 4; ++i) {
        text += "n -> copy -> k" + std::to_string(i) + "\n";
    }
    for (int i = 0; i < 12; ++i) {
        const char* const patterns[] = {"K -> map (inc) -> K",
                                        "K K -> zipWith (+) -> K",
                                        "K -> reverse -> K",
                                        "K -> scan :0:i (sum) -> K",
                                        "K K -> concat -> K",
                                        "K -> filter :false (> :1:i) -> K",
                                        "K -> reduce :0:i (sum) -> K",
                                        "K -> distinct :true -> K",
                                        "K -> multiSort :true -> K",
                                        "K -> setValue (inc) -> one",
                                        "K m -> zip -> K",
                                        "t/n -> groupBy -> K",
                                        "t/n -> groupBy -> g\n  t/m -> reduce :0:i (sum) -> g/m",
                                        "t/n u/n -> fullOuterJoin -> K",
                                        "one K -> copy -> K/below",
                                        "K -> copy -> K/below",
                                        "one -> setValueMulti (+ :1:i) -> one"};
        for (const char c : std::string(random.OneOf(patterns))) {
            text += c == 'K' ? key() : std::string(1, c);
        }
        text += "\n";
    }
    return text;
}

// Most of these programs fail somewhere, which must be the same place.
TEST_F(EngineTest, RunsAtOnceAsOneAfterAnother) {
    lum::test::Random random;
    SCOPED_TRACE(random.Trace());
    LumThreadPool::Initialize(4);
    for (int round = 0; round < 300; ++round) {
        const std::string program = MakeRandomProgram(random);
        SCOPED_TRACE(program);
        const auto outcome = [&](bool isParallel) {
            m_store = MakeTestStore();
            m_finished = 0;
            std::string failure;
            try {
                Run(program, isParallel);
            } catch (const LumRuntimeException& error) {
                failure = error.what();
            }
            return failure + " " + std::to_string(m_finished) + " " +
                   SerializeDataStoreCompact(*m_store).toStdString();
        };
        const std::string expected = outcome(false);
        ASSERT_EQ(outcome(true), expected);
    }
}

}  // namespace
}  // namespace lumhost::test
