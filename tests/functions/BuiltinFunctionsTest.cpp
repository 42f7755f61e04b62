#include <gtest/gtest.h>

#include "tests/functions/BuiltinTables.h"
#include "tests/support/CollatorPoolGuard.h"

namespace lum::core::functions_test {
namespace {

TEST(BuiltinFunctions, AreTheseAndNoOthers) {
    const test::CollatorPoolGuard pool;  // The order of sets of strings.
    const auto registry = MakeBuiltinRegistry();
    FunctionTable unary;
    for (const auto add :
         {AddFilters, AddSets, AddArithmetic, AddComparisons, AddMaps, AddConversions}) {
        add(unary);
    }
    unary.ExpectToBe(registry->GetUnaryFunctions(), *registry);
    FunctionTable binary;
    for (const auto add : {AddBest, AddSums, AddCounts, AddZipWith}) {
        add(binary);
    }
    binary.ExpectToBe(registry->GetBinaryFunctions(), *registry);
}

}  // namespace
}  // namespace lum::core::functions_test
