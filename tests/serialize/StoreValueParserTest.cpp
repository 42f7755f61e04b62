#include "lum/core/serialize/StoreValueParser.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "lum/core/serialize/IJsonObject.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/serialize/JsonForms.h"
#include "tests/serialize/SerializeTest.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using test::Repeat;

class StoreValueParserTest : public test::SerializeTest {};

SV Read(const std::string& json) {
    return StoreValueParser::MakeKeyMap(TStringCore::fromUtf8(json));
}

std::string ReadAndWrite(const std::string& json) {
    return SerializeValue(*Read(json)).toStdString();
}

// A member under a key of that type.
std::string Member(const std::string& type, const std::string& json) {
    return "{\"a:" + type + "\":" + json + "}";
}

struct ReadCase {
    const char* type;
    const char* json;
    const char* written = nullptr;  // Null where it is the same text.
};

// What is written otherwise than it is read here, and what random stores lack; JsonRoundTripTest
// has the rest. The written text tells a special value ("Null") from a string of that text
// ("'Null'"), so that it says what was read.
TEST_F(StoreValueParserTest, Values) {
    const ReadCase cases[] = {
        {"b", "3", "true"},
        {"i", "null", "0"},
        {"i", "1.9", "1"},
        {"i", R"(" Missing ")", R"("Missing")"},
        {"f<7,2>", "0.5"},
        {"r<10,2>", "0.5"},
        {"r", R"("1.5")", "1.5"},
        {"f", R"("+inf")"},
        {"d", R"("'2024-03-01'")", R"("2024-03-01")"},
        {"c", R"("FF0000")", R"("00ff0000")"},
        {"x<bytes>", R"("000Aff")", R"("000aff")"},
        // Text or special
        {"s", R"("'Null'")"},
        {"s", R"("Nullable")"},
        {"s", R"("true")"},
        {"s", R"(" true")"},
        {"s", R"(" abc\r")", R"("abc")"},
        {"s", R"("'abc'")", R"("abc")"},
        {"s", R"("'abc")", R"("'\\'abc'")"},
        {"s", R"("'a\\nb\\\\c\\'d'")", R"("a\nb\\c'd")"},
        {"s", R"("'a' ")", R"("a")"},
        {"s", R"("'a' 'b'")", R"("'\\'a\\' \\'b\\''")"},
        {"s", R"("Null Null")"},
        // Arrays
        {"A<i>", R"([1,[5,"Null"],3])"},
        {"A<i>", R"([1,[5,"Normal"]])", "[1,5]"},
        {"A<S<i>>", R"([[1,2],[[1,2],["Null"]]])"},
        // Sets
        {"S<i>", "[3,1,3]", "[1,3]"},
        {"S<i>", R"([[2,1],["Null","All","Null"]])", R"([[1,2],["Null","All"]])"},
        {"S<i>", "[[1],[]]", "[1]"},
        {"S<s>", R"(["Null","a"])"},
        {"S<P{ i }>", "[[2],[1]]", "[[1],[2]]"},
        {"S<x<bytes>>", R"(["0a"])"},
        // Key sets
        {"K<i,s>", R"({"2":"Null","01":"b","1":"c"})", R"({"1":"b","2":"Null"})"},
        {"K<s,i>", R"([{"Null":1},{"All":2,"Null":3}])", R"([{"Null":1},{"Null":3,"All":2}])"},
        {"K<s,i>", "[{\"b\":1},{}]", R"({"b":1})"},
        {"K<l,r>", R"({"-5000000000":0.10000000000000001,"9223372036854775807":-0})"},
        {"K<f,d>", R"({"0.1":"2024-02-29","nan":"0400-01-01"})"},
        {"K<t,c>", R"({"2024-02-29":"00000000","23829-12-31T23:59:59.9999":"80ff000a"})"},
        {"K<c,l>", R"({"ffff0000":-9223372036854775808,"00000001":0})"},
        {"K<r,A<i>>", R"({"-inf":[1],"0.5":[2,[3,"Null"]]})"},
        {"K<P{ s },i>", R"({"[\"a\\nb\"]":1})"},
        // Unescaped once with the document and once as a key: what was "a\b" ends without its b.
        {"K<P{ s },i>", R"({"[\"a\\\\\\\\b\"]":1})", R"({"[\"a\\\\b\"]":1})"},
        // Rows
        {"P{ i, s, s, s }", R"(["Null","Null","'Null'","a"])"},
        // Dictionaries
        {"M", R"("Missing")"},
    };
    for (const ReadCase& expected : cases) {
        const std::string json = Member(expected.type, expected.json);
        SCOPED_TRACE(json);
        const std::string written = expected.written != nullptr ? expected.written : expected.json;
        EXPECT_EQ(ReadAndWrite(json), Member(expected.type, written));
    }
}

TEST_F(StoreValueParserTest, Keys) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({" 'b c' : i ":1})", R"({"'b c':i":1})"},
        {R"({"007:i":1})", R"({"7:i":1})"},
        {R"({"a:i":1,"a:i":2})", R"({"a:i":2})"},
        {R"({"a:i":1,"'a':i":2})", R"({"a:i":2})"},  // The quoted one comes first by its bytes.
        {R"({"a:M":{"b:M":{"c:i":1}}})", R"({"a:M{ b:M{ c:i } }":{"b:M{ c:i }":{"c:i":1}}})"},
    };
    for (const auto& [json, written] : cases) {
        EXPECT_EQ(ReadAndWrite(json), written);
    }
}

TEST_F(StoreValueParserTest, Stores) {
    const auto store = StoreValueParser::MakeDataStore(L"{\"a:M\":{\"b:i\":5}}");
    store->AddValue(KeyPath::ParseString(L"a/c"), store->GetValue(KeyPath::ParseString(L"a/b")));
    EXPECT_EQ(SerializeDataStoreCompact(*store).toStdString(),
              R"({"a:M{ b:i, c:i }":{"b:i":5,"c:i":5}})");
}

struct RefusalCase {
    LumError error;
    const char* condition;  // Of the report.
    const char* type;
    const char* json;
};

TEST_F(StoreValueParserTest, RefusedValues) {
    constexpr const char* kPairEnd = "!(subArray == subArrayEnd)";
    constexpr const char* kIsArray = "(o->IsArray())";
    constexpr const char* kIsKeySet = "(obj->IsDictionary() || obj->IsArray())";
    constexpr const char* kIsDictionary = "(o->IsDictionary())";
    constexpr const char* kIsKind = "(found != s_kinds.end())";
    constexpr const char* kIsRow = "(i == LumSizeCastSafe(types.size()))";
    constexpr const char* kHasType = "(type) != nullptr";
    constexpr const char* kNoPair = "!(IsPairOfCollection(object))";
    constexpr const char* kHasContent = "(arrayIter != arrayEnd)";
    using enum LumError;
    const RefusalCase cases[] = {
        {JsonStringExpected, "(o->IsString())", "s", "5"},
        {JsonStringExpected, "(o->IsString())", "P{s}", "[5]"},
        {CannotParseReal64, "", "r", R"("x")"},
        {CannotParseReal32, "", "f", R"("x")"},
        {CannotParseDateTime, "", "d", R"("2024-03")"},
        {EmptyHexString, "", "c", R"("")"},
        {LongHexString, "", "c", R"("123456789")"},
        {InvalidHexCharacter, "", "A<c>", R"(["g"])"},
        {OddHexString, "(s.length() % 2 == 0)", "x<bytes>", R"("0a0")"},
        {InvalidHexCharacter, "(isOk)", "x<bytes>", R"("0g")"},
        {NullArgument, "(value) != nullptr", "x<bytes>", R"("ff")"},
        // Dictionaries
        {KeyMapNeedsDictionary, kIsDictionary, "M", "[]"},
        {KeyMapNeedsDictionary, kIsDictionary, "T", "5"},
        {KeyPathLacksType, kHasType, "M", R"({"b":1})"},
        {KeyPathLacksType, kHasType, "T", R"({"b":[1]})"},
        {TableValueNotArray, "(StoreType::Array == type->GetStoreType())", "T", R"({"b:i":1})"},
        {JsonArrayExpected, kIsArray, "T", R"({"b:A<i>":"Missing"})"},
        // Arrays
        {JsonArrayExpected, kIsArray, "A<i>", "{}"},
        {JsonArrayExpected, kIsArray, "A<s>", R"("a")"},
        {ArrayContentExpected, "(v->IsArray())", "A<i>", "[1,{}]"},
        {SpecialPairEmpty, kPairEnd, "A<i>", "[1,[]]"},
        {SpecialPairShort, kPairEnd, "A<i>", "[1,[2]]"},
        {SpecialPairLong, "(subArray == subArrayEnd)", "A<i>", R"([1,[2,"Null",3]])"},
        {CannotParseSpecialKind, kIsKind, "A<i>", R"([[2,"null"]])"},
        {CollectionArraySpecials, kNoPair, "A<A<i>>", R"([[[1],"Null"]])"},
        {CollectionArraySpecials, kNoPair, "A<M>", R"([[{},"Null"]])"},
        {KeyMapNeedsDictionary, kIsDictionary, "A<M>", R"([[{},"null"]])"},
        {JsonArrayExpected, kIsArray, "A<A<i>>", "[1]"},
        {TupleNeedsArray, kIsArray, "A<P{i}>", R"(["Null"])"},
        {TupleSizeMismatch, kIsRow, "A<P{i}>", R"([[]])"},
        // Sets
        {JsonArrayExpected, kIsArray, "S<i>", "{}"},
        {JsonArrayExpected, kIsArray, "S<i>", R"([{"a":1},["Null"]])"},
        {JsonArrayExpected, kIsArray, "S<i>", R"([[1],"Null"])"},
        {NestedSpecialsExpected, "!(arrayEnumerator == arrayEnd)", "S<i>", "[[1,2]]"},
        {UnexpectedSetContent, "(arrayEnumerator == arrayEnd)", "S<i>", R"([[1],["Null"],[2]])"},
        {CannotParseSpecialKind, kIsKind, "S<i>", R"([[1],[""]])"},
        // Key sets
        {KeySetNeedsContainer, kIsKeySet, "K<i,i>", "5"},
        {KeySetNeedsContainer, "(obj->IsDictionary())", "K<i,i>", "[[1],{}]"},
        {UnexpectedKeySetContent, kHasContent, "K<i,i>", "[]"},
        {UnexpectedKeySetContent, kHasContent, "K<s,i>", R"([{"a":1}])"},
        {NestedSpecialsExpected, "(arrayIter == arrayEnd)", "K<i,i>", "[{},{},{}]"},
        {CannotParseSpecialKind, kIsKind, "K<i,i>", R"([{},{"1":1}])"},
        {CannotParseInt32, "", "K<i,i>", R"({"5x":1})"},
        {CannotParseBool, "", "K<b,i>", R"({"1":1})"},
        {JsonParseFailure, "", "K<P{i},i>", R"({"x":1})"},
        {JsonParseFailure, "!(isEscaping)", "K<P{i},i>", R"({"[1]\\":1})"},
        {TupleNeedsArray, kIsArray, "K<P{i},i>", R"({"1":1})"},
        {ArrayContentExpected, "(v->IsArray())", "K<i,A<i>>", R"({"1":[{}]})"},
        // Rows
        {TupleNeedsArray, kIsArray, "P{i}", "{}"},
        {TupleSizeMismatch, kIsRow, "P{i,i}", "[1]"},
    };
    for (const RefusalCase& refused : cases) {
        const std::string json = Member(refused.type, refused.json);
        SCOPED_TRACE(json);
        EXPECT_TRUE(
            test::FailsAs({refused.error, "", true, refused.condition}, [&] { Read(json); }));
    }
    EXPECT_LUM_REPORT(JsonParseFailure, "", "", Read("{"));
    EXPECT_LUM_REPORT(KeyMapNeedsDictionary, "", "(o->IsDictionary())", Read("[]"));
    EXPECT_LUM_REPORT(KeyMapNeedsDictionary, "", "(o->IsDictionary())",
                      StoreValueParser::MakeDataStore(L"5"));
    EXPECT_LUM_ERROR(ColumnSizeMismatch, "", Read(Member("T", R"({"b:A<i>":[1],"c:A<i>":[1,2]})")));
    EXPECT_LUM_REPORT(
        NullArgument, "", "(type) != nullptr",
        StoreValueParser::MakeStoreValueFromJsonObject(nullptr, GetRootJsonObject(L"1")));
    EXPECT_LUM_REPORT(NullArgument, "", "(object) != nullptr",
                      StoreValueParser::MakeStoreValueFromJsonObject(IntType::Get32(), nullptr));
}

TEST_F(StoreValueParserTest, RefusedKeys) {
    const std::pair<LumError, const char*> cases[] = {{LumError::UnexpectedToken, "a:i x"},
                                                      {LumError::UnexpectedToken, "a/b:i"},
                                                      {LumError::InvalidStoreType, "a:int"}};
    for (const auto& [error, key] : cases) {
        SCOPED_TRACE(key);
        const std::string json = std::string("{\"") + key + "\":1}";
        EXPECT_TRUE(test::FailsAs({error, key, true, ""}, [&] { Read(json); }));
    }
    // Collections that no text has are refused with their types.
    EXPECT_THROW(Read(Member("A<T>", "[]")), LumRuntimeException);
    EXPECT_THROW(Read(Member("S<A<i>>", "[]")), LumRuntimeException);
    EXPECT_THROW(Read(Member("K<A<i>,i>", "{}")), LumRuntimeException);
    EXPECT_THROW(Read(Member("x<other>", R"("00")")), std::out_of_range);
}

// What is of the standard library and of the JSON parser comes through as it is.
TEST_F(StoreValueParserTest, ForeignExceptions) {
    try {
        Read(Member("P{i}", "[1,2]"));
        FAIL() << "nothing was thrown";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "invalid vector subscript");
    }
    const ReadCase cases[] = {{"i", "5000000000"}, {"b", "[]"},         {"c", "5"},
                              {"d", "null"},       {"A<s>", "[1]"},     {"A<i>", R"(["x"])"},
                              {"A<i>", "[[1,2]]"}, {"P{i}", R"(["x"])"}};
    for (const ReadCase& refused : cases) {
        const std::string json = Member(refused.type, refused.json);
        EXPECT_TRUE(test::FailsAsForeign([&] { Read(json); })) << json;
    }
}

// What comes through text as another form of itself.
TEST_F(StoreValueParserTest, Tables) {
    const SV map = Read(Member("T", R"({"b:A<i>":[2,1],"c:A<s>":["x",["y","Null"]]})"));
    const SV table = map->AsKeyMap().GetValue(L"a");
    EXPECT_EQ(table->AsTable().GetRowCount(), 2u);
    EXPECT_TRUE(table->AsTable().GetSortColumns().empty());
    EXPECT_EQ(test::TextOf(table->AsKeyMap().GetValue(L"c")), "s: x y!Null");
}

// Nesting is read to any depth that the JSON parser lets pass.
TEST_F(StoreValueParserTest, Nesting) {
    constexpr int kLevels = 180;
    const std::string json = Repeat("[", kLevels) + "1" + Repeat("]", kLevels);
    const std::string type = Repeat("A<", kLevels) + "i" + Repeat(">", kLevels);
    EXPECT_EQ(ReadAndWrite(Member(type, json)), Member(type, json));
    const std::string maps = Repeat("{\"a:M\":", kLevels) + "{}" + Repeat("}", kLevels);
    EXPECT_EQ(Read(maps)->GetCount(), 1u);
}

}  // namespace
}  // namespace lum::core
