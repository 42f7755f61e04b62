// Programs over a few small columns, for what each operator gives and how it fails; docs/vtl.md
// shows the plain cases.

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <unordered_map>

#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/utility/LumThreadPool.h"
#include "tests/host/EngineFixture.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/Random.h"

namespace lumhost::test {
namespace {

using namespace lum::core;
using enum LumError;
using lum::test::ColumnOf;
using Members = std::unordered_map<RInternString, SV>;

std::unique_ptr<IDataStore> MakeTestStore() {
    const SV n = ColumnOf("i: 3 1 - 2 1");
    const SV m = ColumnOf("i: 10 20 30 40 50");
    const SV s = ColumnOf("s: b a b - c");
    return factory::MakeDataStore(Members{
        {L"n", n},
        {L"m", m},
        {L"s", s},
        {L"t", factory::MakeTable(Members{{L"n", n}, {L"m", m}, {L"s", s}}, {})},
        {L"r", ColumnOf("r: 2.5 nan -1 !Missing -")},
        {L"short", ColumnOf("i: 4 0")},
        {L"none", ColumnOf("i:")},
        {L"hole", ColumnOf("i: 0 -")},
        {L"far", ColumnOf("i: 0 5")},
        {L"set", lum::test::SetOf("i: 5")},
        {L"one", factory::MakeInt32(1)},
        {L"zero", factory::MakeInt32(0)},
        {L"real", factory::MakeReal64(2.5)},
    });
}

class EngineTest : public EngineFixture {
protected:
    EngineTest() : EngineFixture(MakeTestStore) {}
};

TEST_F(EngineTest, OperatorsGive) {
    const OperatorCase cases[] = {
        {"// nothing\nn -> noOp -> x\none -> copy -> out", "1"},
        {"-> constant :Missing:r -> out", "!Missing"},
        // A copied key map is one of its own.
        {"one -> copy -> k/a\nk -> copy -> out\none -> copy -> k/b", "{a = 1}"},

        {"n -> map (addConstant one) -> out", "i: 4 2 - 3 2"},
        {"n -> map (isNotInSet set) -> out", "b: true true - true true"},
        {"set -> map (inc) -> out", "S i: 6"},
        {"m n -> zipWith (-) -> out", "i: 7 19 - 38 49"},
        {"set -> reduce :1:i (sum) -> out", "6"},
        {"one -> copy -> out\nout one -> setValue (+) -> out", "2"},
        {"n -> index :2 -> null\nnull -> setValue (inc) -> out", "!Null"},
        {"one -> setValue (addConstant :5:i) -> out", "6"},
        {"one -> setValueMulti (- :5:i) -> out", "-4"},
        {"one real -> setValueMulti (<) -> out", "true"},

        {"n -> filter :false (> :1:i) -> out", "i!: 3 2"},
        {"r -> filter :false (keepOnlyNormal) -> out", "r!: 2.5 nan -1"},
        {"none -> filter :false (> :1:i) -> out", "i:"},
        {"set -> filter :false (> :7:i) -> out", "S i:"},
        {"t/n -> filter :true (> :1:i) -> out", "m = i: 10 40, n = i!: 3 2, s = s: b -"},
        {"n -> distinct :false -> out", "i!: 3 1 2"},
        {"r -> distinct :true -> out", "r: 2.5 nan -1 !Missing -"},
        {"none -> reverse -> out", "i:"},
        {"m -> slice (range one :9:i :2:i) -> out", "i: 20 40"},
        {"m -> slice (range :3:i :9:i :-2:i) -> out", "i: 40 20"},
        {"m -> slice (range :1:i :0:i) -> out", "i:"},
        {"m -> slice (range :5:i :1:i) -> out", "i:"},
        {"m -> slice (range :4:i :2147483647:i :2147483647:i) -> out", "i: 50"},
        {"n -> index :2 -> out", "!Null"},
        {"s one -> index -> out", "a"},
        {"t short -> index -> out", "m = i: 50 10, n = i!: 1 3, s = s!: c b"},
        {"t -> index :3 -> out", "m = i: 40, n = i!: 2, s = s: -"},
        {"short n none -> concat -> out", "i: 4 0 3 1 - 2 1"},
        {"n -> createTable -> u\nu u -> concat -> out", "n = i: 3 1 - 2 1 3 1 - 2 1"},

        {"n -> multiSort :true -> out", "i: 1 4 3 0 2"},
        {"n -> multiSort :false -> out", "i: 1 4 3 0"},
        {"n m -> multiSort :true (order :DESC:s :DESC:s) -> out", "i: 0 3 4 1 2"},
        {"r -> multiSort :true -> out", "i: 2 0 1 4 3"},
        {"r -> multiSort :false (order :DESC:s) -> out", "i: 1 0 2"},
        {"s -> multiSort :true -> out", "i: 1 0 2 4 3"},

        {"one -> case -> out\n"
         "  one -> when (== :1:i) ->\n"
         "    one -> setValue (dec) -> mine\n    mine -> copy -> out\n"
         "  -> else ->\n    one -> copy -> out",
         "0"},
        {"one -> case -> out\n"
         "  one -> when (> :3:i) ->\n    one -> setValue (dec) -> out\n"
         "  -> else ->\n    one -> copy -> out",
         "1"},
        // A block may stand behind its call, and be called again.
        {"short one -> call :pick -> out rest\n"
         "a b -> block :pick ->\n  a b -> index -> x\n  x a -> return ->",
         "0"},
        {"a -> block :twice ->\n  a -> map (multiplyConstant :2:i) -> b\n  b -> return ->\n"
         "short -> call :twice -> x\nx -> call :twice -> out",
         "i: 16 0"},
    };
    ExpectOutputs(cases);
}

// The errors of docs/vtl.md.
TEST_F(EngineTest, FaultsAreReported) {
    const FaultCase cases[] = {
        {"nowhere -> copy -> out", KeyNotFound, "nowhere"},
        {"t/x -> copy -> out", KeyNotFound, "t/x"},
        {"n -> internalCreateKeyMap -> out", NotImplemented, "internalCreateKeyMap"},
        {"n -> copy -> m", ValueAlreadySet, "m"},
        {"n -> copy ->", OneOutputNeeded},
        {"n -> copy -> out b", OneOutputNeeded},
        {"n -> copy -> one/out", IllegalOutputKey, "one/out"},
        {"one -> copy -> n/0", IllegalOutputKey, "n/0"},
        {"one -> copy -> a/''/out", IllegalOutputKey, "a//out"},
        {"-> copy -> out", OneInputNeeded},
        {"one -> copy -> k/a\nk -> copy -> k/b", CopyIntoSelf},
        {"n -> copy (inc) -> out", FunctionNotUsed},
        {"n -> constant :1:i -> out", EmptyInputNeeded},
        {"-> constant -> out", NullValue},

        {"n -> map -> out", FunctionNeeded},
        {"one -> map (inc) -> out", MapInputType},
        {"n -> map (nosuch) -> out", FunctionNotFound, "nosuch(i)"},
        {"n -> map (inc :1:i) -> out", NonCreatorCalledAsCreator, "inc"},
        {"n -> map (addConstant) -> out", CreatorInputCount, "addConstant"},
        {"n -> map (addConstant :1:r) -> out", CreatorInputType, "addConstant"},
        {"s -> map (isInSet set) -> out", CreatorInputType, "isInSet"},
        {"n -> zipWith (+) -> out", TwoInputsNeeded},
        {"n one -> zipWith (+) -> out", ZipWithInputType},
        {"n short -> zipWith (+) -> out", VectorFunctionSize},
        {"short short -> zipWith ('/') -> out", DivideByZero},

        {"n -> filter (> :1:i) -> out", MakeTableFlagNeeded},
        {"one -> filter :false (> :1:i) -> out", FilterInputType},
        {"n -> filter :false (inc) -> out", FilterFunctionNotBool},
        {"n -> filter :true (> :1:i) -> out", FilterKeyNotNested},
        {"n -> copy -> k/n\nk/n -> filter :true (> :1:i) -> out", FilterParentNotTable},
        {"n -> reduce (sum) -> out", InitialValueNeeded},
        {"n -> reduce :0:r (sum) -> out", ReduceInitialType},
        {"n -> reduce :0:i (nosuch) -> out", FunctionNotFound, "nosuch(i, i)"},
        {"one -> reduce :0:i (sum) -> out", ReduceInputType},
        {"n -> reduce :0:i (sum :1:i) -> out", NonCreatorCalledAsCreator, "sum"},
        {"n -> scan :0:r (sum) -> out", ScanInitialType},
        {"set -> scan :0:i (sum) -> out", ScanInputType},
        {"n -> scanRight :0:r (sum) -> out", ScanRightInitialType},
        {"set -> scanRight :0:i (sum) -> out", ScanRightInputType},

        {"n -> distinct -> out", IncludeSpecialsFlagNeeded},
        {"one -> distinct :true -> out", DistinctInputType},
        {"set -> reverse -> out", ReverseInputType},
        {"one -> slice (range :0:i :1:i) -> out", SliceInputType},
        {"n -> slice (inc :0:i :1:i) -> out", InvalidSliceRangeType},
        {"n -> slice (range :0:r :1:r) -> out", InvalidSliceRangeType},
        {"n -> slice (range :0:i) -> out", InvalidSliceRangeType},
        {"n -> slice (range :0:i :1:i :0:i) -> out", OutOfBounds},
        {"n -> slice (range :-1:i :1:i) -> out", OutOfBounds},
        {"one -> index :0 -> out", IndexInputType},
        {"n -> index -> out", ValueAndInputNeeded},
        {"n one -> index :0 -> out", ValueAndInputNeeded},
        {"n real -> index -> out", Int32Needed},
        {"n hole -> index -> out", Int32Needed},
        {"n s -> index -> out", Int32Needed},
        {"n -> index :5 -> out", OutOfBounds},
        {"n -> index :-1 -> out", OutOfBounds},
        {"n far -> index -> out", OutOfBounds},
        {"-> concat -> out", AtLeastOneInputNeeded},
        {"one one -> concat -> out", ConcatInputType},
        {"n s -> concat -> out", TypeMismatch},
        {"r -> copy -> k/n\nk/n m s -> createTable -> u\nt u -> concat -> out", TypeMismatch},
        {"n -> createTable -> u\nt u -> concat -> out", ConcatenatedColumnsDiffer},
        {"n -> multiSort -> out", IncludeSpecialsFlagNeeded},
        {"one -> multiSort :true -> out", MultiSortInputType},
        {"n -> multiSort :true (inc) -> out", InvalidSortAlgorithm},
        {"n -> multiSort :true (order :UP:s) -> out", InvalidSortOrderOption},
        {"n m -> multiSort :true (order :ASC:s) -> out", InvalidSortOrderOption},

        {"n -> setValue (inc) -> out", SetValueTypeMismatch, "inc"},
        {"one -> setValue (toInt64) -> one", SetValueTypeMismatch, "toInt64"},
        {"one -> setValue (inc) -> n", KeyNotUpdatable, "n"},
        {"one one one -> setValueMulti (+) -> out", FunctionNotFound, "+(vector {i, i, i})"},
        {"one zero -> setValueMulti ('/') -> out", DivideByZero},
        {"-> constant :-2147483648:i -> low\nlow -> setValueMulti ('/' :-1:i) -> out", OutOfBounds},

        {"one -> case -> out\n  one -> when (== :1:i) ->\n  one -> when (== :2:i) ->",
         ElseNeedsCase},
        {"one -> case -> out\n  -> else ->", CaseNeedsTwoChildren},
        {"one -> case -> out\n  one -> copy -> out\n  -> else ->", WhenNeedsCase},
        {"one -> case -> out\n  one -> when (== :1:i) ->\n    n -> copy -> out\n  -> else ->",
         CaseMissingInput, "n"},
        {"one -> case -> out\n  one -> when (== :1:i) ->\n    one -> copy -> x\n  -> else ->",
         BranchMissingOutput, "out"},
        {"one -> case -> out\n  one -> when (+ :1:i) ->\n  -> else ->", WhenNeedsBool},
        {"one -> when (== :1:i) ->", WhenOrElseExpected},
        {"one -> return ->", ReturnOutsideBlock},
        {"-> call :b ->\n-> block :b ->\n  -> return ->\n  -> constant :1:i -> x",
         ReturnOutsideBlock},
        {"-> block ->\n  -> constant :1:i -> x", BlockNameNeeded},
        {"-> block :b ->\n  -> return ->\n-> block :b ->\n  -> return ->", DuplicateTransformSpecs,
         "b"},
        {"-> call :b ->\n-> block :b ->\n  -> block :c ->\n    -> return ->", NestedBlocks},
        {"-> call :b ->\n-> block :b ->\n  -> call :c ->\n-> block :c ->\n  -> call :b ->",
         BlockFunctionCalled, "b"},
        {"-> call :b -> out", BlockNotDefined, "b"},
        {"one -> call :b ->\n-> block :b ->\n  -> return ->", BlockInputCount},
        {"-> call :b -> out\n-> block :b ->\n  -> return ->", InvalidInputCount, "b"},
        {"one -> call :b -> out out\nx -> block :b ->\n  x x -> return ->", IllegalOutputKey,
         "out"},
        {"-> call :b -> out\n-> block :b ->\n  one -> return ->", KeyNotFound, "one"},
    };
    ExpectFaults(cases);
}

TEST_F(EngineTest, StatementsBeforeAFaultStayAndAreCounted) {
    EXPECT_LUM_ERROR(KeyNotFound, "nowhere",
                     Run("one -> copy -> a\nnowhere -> copy -> b\none -> copy -> c"));
    EXPECT_EQ(m_finished, 1);
    EXPECT_EQ(Show("a"), "1");
    EXPECT_EQ(m_store->TryGetValue(KeyPath(L"c")), nullptr);
}

TEST_F(EngineTest, NestsAsDeepAsTheParser) {
    std::string program = "one -> copy -> out\n";
    for (int depth = 0; depth < 100; ++depth) {
        std::string inner;
        std::istringstream lines(program);
        for (std::string line; std::getline(lines, line);) {
            inner += "    " + line + "\n";
        }
        program = "one -> case -> out\n  one -> when (== :1:i) ->\n" + inner + "  -> else ->\n";
    }
    Run(program);
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

// Statements over random keys, each "K" another one.
constexpr const char* kPatterns[] = {
    "K -> map (inc) -> K",
    "K K -> zipWith (+) -> K",
    "K -> reverse -> K",
    "K K -> concat -> K",
    "K -> filter :false (> :1:i) -> K",
    "K -> reduce :0:i (sum) -> K",
    "K -> setValue (inc) -> one",
    "t/n -> groupBy -> K",
    "t/n -> groupBy -> g\n  t/m -> reduce :0:i (sum) -> g/m",
    "t/n u/n -> fullOuterJoin -> K",
    "one K -> copy -> K/below",
    "K -> copy -> K/below",
    "one -> setValueMulti (+ :1:i) -> one",
};

std::string MakeRandomProgram(lum::test::Random& random) {
    std::string text = "n -> createTable -> u\nn -> copy -> k0\nn -> copy -> k1\nn -> copy -> k2\n";
    for (int i = 0; i < 12; ++i) {
        for (const char c : std::string(random.OneOf(kPatterns))) {
            text += c == 'K' ? "k" + std::to_string(random.Below(12)) : std::string(1, c);
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
        const auto outcome = [&](bool isParallel) {
            StartAfresh();
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
        ASSERT_EQ(outcome(true), expected) << program;
    }
}

}  // namespace
}  // namespace lumhost::test
