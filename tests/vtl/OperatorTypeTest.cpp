#include <gtest/gtest.h>

#include <iterator>
#include <optional>
#include <string>

#include "core/main/vtl/OperatorText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

static_assert(sizeof(OperatorType) == 4);

// What may follow the name in a statement.
enum class Argument { None, Bool, Int32, String, Typed };

struct OperatorCase {
    OperatorType type;
    const char* name;
    bool canHaveChildren;
    Argument argument;
};

// In order of the numbers, which are fixed.
const OperatorCase kOperators[] = {
    {OperatorType::ApplyByPartition, "applyByPartition", true, Argument::None},
    {OperatorType::Block, "block", true, Argument::String},
    {OperatorType::Call, "call", false, Argument::String},
    {OperatorType::Case, "case", true, Argument::None},
    {OperatorType::Concat, "concat", false, Argument::Typed},
    {OperatorType::Constant, "constant", false, Argument::Typed},
    {OperatorType::Copy, "copy", false, Argument::None},
    {OperatorType::CreateKeySet, "createKeySet", false, Argument::None},
    {OperatorType::CreateTable, "createTable", false, Argument::None},
    {OperatorType::CrossJoin, "crossJoin", false, Argument::None},
    {OperatorType::Distinct, "distinct", false, Argument::Bool},
    {OperatorType::Else, "else", true, Argument::None},
    {OperatorType::Filter, "filter", false, Argument::Bool},
    {OperatorType::FullOuterJoin, "fullOuterJoin", false, Argument::None},
    {OperatorType::GroupBy, "groupBy", true, Argument::None},
    {OperatorType::Index, "index", false, Argument::Int32},
    {OperatorType::InnerJoin, "innerJoin", false, Argument::None},
    {OperatorType::LeftOuterJoin, "leftOuterJoin", false, Argument::None},
    {OperatorType::Map, "map", false, Argument::None},
    {OperatorType::MultiSort, "multiSort", false, Argument::Bool},
    {OperatorType::NoOp, "noOp", false, Argument::None},
    {OperatorType::Reduce, "reduce", false, Argument::Typed},
    {OperatorType::Return, "return", false, Argument::None},
    {OperatorType::Reverse, "reverse", false, Argument::None},
    {OperatorType::Scan, "scan", false, Argument::Typed},
    {OperatorType::ScanRight, "scanRight", false, Argument::Typed},
    {OperatorType::SetValue, "setValue", false, Argument::None},
    {OperatorType::SetValueMulti, "setValueMulti", false, Argument::None},
    {OperatorType::Slice, "slice", false, Argument::None},
    {OperatorType::When, "when", true, Argument::None},
    {OperatorType::Zip, "zip", false, Argument::None},
    {OperatorType::ZipWith, "zipWith", false, Argument::None},
    {OperatorType::InternalCreateKeyMap, "internalCreateKeyMap", false, Argument::None},
};

std::optional<StoreType> FixedTypeOf(Argument argument) {
    switch (argument) {
        case Argument::Bool:
            return StoreType::Bool;
        case Argument::Int32:
            return StoreType::Int32;
        case Argument::String:
            return StoreType::String;
        default:
            return std::nullopt;
    }
}

TEST(OperatorTypeTest, TextsAndProperties) {
    int number = 0;
    for (const OperatorCase& row : kOperators) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(static_cast<int>(row.type), number++);
        EXPECT_EQ(OperatorTypeToString(row.type).toStdString(), row.name);
        EXPECT_EQ(OperatorTypeFromString(TStringCore::fromUtf8(row.name)), row.type);
        EXPECT_EQ(CanOperatorHaveChildTransforms(row.type), row.canHaveChildren);
        EXPECT_EQ(OperatorHasTypedArgument(row.type), row.argument == Argument::Typed);
        const std::optional<StoreType> fixedType = FixedTypeOf(row.argument);
        EXPECT_EQ(OperatorHasFixedArgumentType(row.type), fixedType.has_value());
        if (fixedType) {
            EXPECT_EQ(OperatorFixedArgumentType(row.type), *fixedType);
        } else {
            EXPECT_LUM_REPORT(OperatorForbidsStoreType, "", "",
                              OperatorFixedArgumentType(row.type));
        }
    }
}

TEST(OperatorTypeTest, NumbersWithoutAnOperator) {
    for (const int number : {static_cast<int>(std::size(kOperators)), 64, 65, -1, -33}) {
        SCOPED_TRACE(number);
        const auto type = static_cast<OperatorType>(number);
        EXPECT_LUM_REPORT(InvalidOperatorValue, "type",
                          "(typeIndex) <= ((sizeof(s_strings)/sizeof(*(s_strings))) - 1)",
                          OperatorTypeToString(type));
        EXPECT_LUM_REPORT(OperatorForbidsStoreType, "", "", OperatorFixedArgumentType(type));
        EXPECT_FALSE(CanOperatorHaveChildTransforms(type) || OperatorHasTypedArgument(type) ||
                     OperatorHasFixedArgumentType(type));
    }
}

TEST(OperatorTypeTest, TextsWithoutAnOperator) {
    for (const std::string text : {"Map", "NOOP", "", " map", "map ", "ma", "maps"}) {
        EXPECT_LUM_PLAIN_ERROR(UnknownTypeName, text,
                               OperatorTypeFromString(TStringCore::fromUtf8(text)));
    }
}

}  // namespace
}  // namespace lum::core
