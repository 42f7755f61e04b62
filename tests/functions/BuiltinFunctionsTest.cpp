#include <gtest/gtest.h>

#include "tests/functions/BuiltinTables.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/FoldingCollatorPool.h"

namespace lum::core::functions_test {
namespace {

struct Family {
    const char* name;
    void (*add)(FunctionTable&);
};

constexpr Family kUnary[] = {
    {"Filters", AddFilters},         {"Sets", AddSets}, {"Arithmetic", AddArithmetic},
    {"Comparisons", AddComparisons}, {"Maps", AddMaps}, {"Conversions", AddConversions}};
constexpr Family kBinary[] = {
    {"Best", AddBest}, {"Sums", AddSums}, {"Counts", AddCounts}, {"ZipWith", AddZipWith}};

class BuiltinFunctionsTest : public testing::TestWithParam<Family> {};

TEST_P(BuiltinFunctionsTest, AgreeWithTheirModels) {
    // Members of sets and equal texts are found by their code units, whatever the order is.
    const test::CollatorPoolGuard pool{std::make_shared<test::FoldingCollatorPool>()};
    FunctionTable table;
    GetParam().add(table);
    table.Check(*MakeBuiltinRegistry());
}

const auto kNameOfFamily = [](const auto& info) { return info.param.name; };
INSTANTIATE_TEST_SUITE_P(Unary, BuiltinFunctionsTest, testing::ValuesIn(kUnary), kNameOfFamily);
INSTANTIATE_TEST_SUITE_P(Binary, BuiltinFunctionsTest, testing::ValuesIn(kBinary), kNameOfFamily);

TEST(BuiltinRegistryTest, HasTheseFunctionsAndNoOthers) {
    const test::CollatorPoolGuard pool;  // The order of sets of strings.
    const auto registry = MakeBuiltinRegistry();
    FunctionTable unary;
    for (const Family& family : kUnary) {
        family.add(unary);
    }
    unary.ExpectToBe(registry->GetUnaryFunctions(), *registry);
    FunctionTable binary;
    for (const Family& family : kBinary) {
        family.add(binary);
    }
    binary.ExpectToBe(registry->GetBinaryFunctions(), *registry);
}

}  // namespace
}  // namespace lum::core::functions_test
