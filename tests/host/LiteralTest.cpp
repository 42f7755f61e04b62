#include "Literal.h"

#include <gtest/gtest.h>

#include <string>

#include "Options.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"

namespace lumhost::test {
namespace {

using namespace lum::core;
using lum::test::TextOf;
using lum::test::TypeOf;

TEST(LiteralTest, ReadsEveryTypeOfColumn) {
    struct {
        const char* type;
        const char* text;
        const char* value;  // Null where the text is refused.
        StoreType storeType;
    } const cases[] = {
        {"b", "true", "true", StoreType::Bool},
        {"b", "1", nullptr, StoreType::Bool},
        {"i", "-7", "-7", StoreType::Int32},
        {"i", "2147483648", nullptr, StoreType::Int32},
        {"i", "'7'", nullptr, StoreType::Int32},
        {"i", "Null", "!Null", StoreType::Int32},
        {"i", "null", nullptr, StoreType::Int32},
        {"i", "Normal", nullptr, StoreType::Int32},
        {"i", "", nullptr, StoreType::Int32},
        {"l", "2147483648", "2147483648", StoreType::Int64},
        {"f", "0.5", "0.5", StoreType::Real32},
        {"r", "5", "5", StoreType::Real64},
        {"r", "5e-1", "0.5", StoreType::Real64},
        {"r", "5 ", nullptr, StoreType::Real64},
        {"s", "two words", "'two words'", StoreType::String},
        {"s", "", "''", StoreType::String},
        {"s", "''", "''", StoreType::String},
        {"s", "'", "''''", StoreType::String},
        {"s", "Missing", "!Missing", StoreType::String},
        {"s", "'Missing'", "Missing", StoreType::String},
        {"s", "'it\\'s'", "'it''s'", StoreType::String},
        {"s", "'a\\\\b'", "'a\\b'", StoreType::String},
        {"s", "'a\\nb'", "'a\nb'", StoreType::String},
        {"s", "'a\\tb'", nullptr, StoreType::String},
        {"s", "'a\\'", nullptr, StoreType::String},
        {"s", "'a'b'", nullptr, StoreType::String},
        {"s", "a\xFF", nullptr, StoreType::String},
        {"d", "2024-02-29", "2024-02-29", StoreType::Date},
        {"d", "'2024-02-29'", "2024-02-29", StoreType::Date},
        {"d", "2023-02-29", nullptr, StoreType::Date},
        {"t", "2024-02-29T01:02:03.5", "2024-02-29T01:02:03.5000", StoreType::DateTime},
        {"c", "ff000010", "ff000010", StoreType::Color},
        {"c", "ff00001", nullptr, StoreType::Color},
    };
    for (const auto& testCase : cases) {
        SCOPED_TRACE(std::string(testCase.type) + ": " + testCase.text);
        try {
            const SV value = ReadLiteral(testCase.text, TypeOf(testCase.type));
            EXPECT_EQ(TextOf(value), testCase.value == nullptr ? "refusal" : testCase.value);
            EXPECT_EQ(value->GetStoreType(), testCase.storeType);
        } catch (const UsageError&) {
            EXPECT_EQ(testCase.value, nullptr);
        }
    }
}

TEST(LiteralTest, ReadsSets) {
    const lum::test::CollatorPoolGuard pool;
    EXPECT_EQ(TextOf(ReadSet({"2", "1", "2", "Null"}, IntType::Get32())), "S i: !Null 1 2");
    EXPECT_EQ(TextOf(ReadSet({"b", "'Null'", "a"}, StringType::Get())), "S s: Null a b");
    EXPECT_THROW(ReadSet({"1", "x"}, IntType::Get32()), UsageError);
}

TEST(LiteralTest, NamesWhatItRefuses) {
    try {
        ReadLiteral("1\n.5", IntType::Get32());
        ADD_FAILURE();
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "\"1?.5\" cannot be read as Int32");
    }
}

}  // namespace
}  // namespace lumhost::test
