#include "Literal.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

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

// The literal as text, or the refusal.
std::string Read(const std::string& text, const char* type) {
    try {
        const SV value = ReadLiteral(text, TypeOf(type));
        EXPECT_EQ(value->GetType(), TypeOf(type));
        return TextOf(value);
    } catch (const UsageError& error) {
        return error.what();
    }
}

TEST(LiteralTest, ReadsEveryTypeOfColumn) {
    const struct {
        const char* type;
        const char* text;
        const char* value;
    } cases[] = {
        {"b", "true", "true"},
        {"i", "-7", "-7"},
        {"i", "Null", "!Null"},
        {"l", "2147483648", "2147483648"},
        {"f", "0.5", "0.5"},
        {"r", "5e-1", "0.5"},
        {"s", "two words", "'two words'"},
        {"s", "", "''"},
        {"s", "''", "''"},
        {"s", "'", "''''"},
        {"s", "Missing", "!Missing"},
        {"s", "'Missing'", "Missing"},
        {"s", "'it\\'s'", "'it''s'"},
        {"s", "'a\\\\b'", "'a\\b'"},
        {"s", "'a\\nb'", "'a\nb'"},
        {"d", "'2024-02-29'", "2024-02-29"},
        {"t", "2024-02-29T01:02:03.5", "2024-02-29T01:02:03.5000"},
        {"c", "ff000010", "ff000010"},
    };
    for (const auto& [type, text, value] : cases) {
        EXPECT_EQ(Read(text, type), value);
    }
    const std::pair<const char*, const char*> refused[] = {
        {"b", "1"},     {"i", "2147483648"}, {"i", "'7'"},     {"i", "null"},  {"i", "Normal"},
        {"i", ""},      {"r", "5 "},         {"s", "'a\\tb'"}, {"s", "'a\\'"}, {"s", "'a'b'"},
        {"s", "a\xFF"}, {"d", "2023-02-29"}, {"c", "ff00001"}};
    for (const auto& [type, text] : refused) {
        EXPECT_TRUE(Read(text, type).starts_with('"' + std::string(text) + "\" cannot be read as"))
            << text;
    }
    EXPECT_EQ(Read("1\n.5", "i"), "\"1?.5\" cannot be read as Int32");
}

TEST(LiteralTest, ReadsSets) {
    const lum::test::CollatorPoolGuard pool;
    EXPECT_EQ(TextOf(ReadSet({"2", "1", "2", "Null"}, IntType::Get32())), "S i: !Null 1 2");
    EXPECT_EQ(TextOf(ReadSet({"b", "'Null'", "a"}, StringType::Get())), "S s: Null a b");
    EXPECT_THROW(ReadSet({"1", "x"}, IntType::Get32()), UsageError);
}

}  // namespace
}  // namespace lumhost::test
