#include "lum/core/serialize/StoreValueParser.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/serialize/IJsonObject.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

class Blob final : public ValueExternal {
public:
    explicit Blob(std::vector<unsigned char> bytes)
        : ValueExternal(L"blob"), m_bytes(std::move(bytes)) {}

    const std::vector<unsigned char>& GetBytes() const { return m_bytes; }
    uint64 GetHashValue() const override { return m_bytes.size(); }
    bool IsEqual(const StoreValue& other) const override {
        return dynamic_cast<const Blob&>(other).m_bytes == m_bytes;
    }
    std::unique_ptr<StoreValue> Clone() const override { return std::make_unique<Blob>(*this); }

private:
    std::vector<unsigned char> m_bytes;
};

class StoreValueParserTest : public testing::Test {
public:
    StoreValueParserTest() {
        RegisterExternalType(
            7, L"blob",
            [](const ValueExternal& value) { return dynamic_cast<const Blob&>(value).GetBytes(); },
            [](const ArrayView<const unsigned char>& bytes) {
                return bytes.IsEmpty() ? nullptr
                                       : std::make_shared<Blob>(std::vector<unsigned char>(
                                             bytes.begin(), bytes.end()));
            });
    }
    ~StoreValueParserTest() override { ClearExternalTypes(); }

private:
    test::CollatorPoolGuard m_pool;
};

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
    const char* written;  // Null where it is the same text.
};

// The written text tells a special value ("Null") from a string of that text ("'Null'"), so that it
// says what was read.
TEST_F(StoreValueParserTest, Values) {
    const ReadCase cases[] = {
        {"b", "true", nullptr},
        {"b", "3", "true"},
        {"i", "-7", nullptr},
        {"i", "null", "0"},
        {"i", "1.9", "1"},
        {"i", R"("Null")", nullptr},
        {"i", R"(" Missing ")", R"("Missing")"},
        {"l", "-9223372036854775808", nullptr},
        {"f", "0.1", nullptr},
        {"r", "-0", nullptr},
        {"r", R"("+inf")", nullptr},
        {"r<10,2>", "0.5", nullptr},
        {"d", R"("2024-03-01")", nullptr},
        {"d", R"("'2024-03-01'")", R"("2024-03-01")"},
        {"t", R"("2024-03-01T09:05:00.2500")", nullptr},
        {"c", R"("FF0000")", R"("00ff0000")"},
        {"x<blob>", R"("000Aff")", R"("000aff")"},
        // Text or special
        {"s", R"("")", nullptr},
        {"s", R"("Null")", nullptr},
        {"s", R"("'Null'")", nullptr},
        {"s", R"("Nullable")", nullptr},
        {"s", R"("Normal")", nullptr},
        {"s", R"("true")", nullptr},
        {"s", R"(" true")", nullptr},
        {"s", R"("12")", nullptr},
        {"s", R"("a b")", nullptr},
        {"s", R"(" abc\r")", R"("abc")"},
        {"s", R"("'abc'")", R"("abc")"},
        {"s", R"("'abc")", R"("'\\'abc'")"},
        {"s", R"("''")", R"("")"},
        {"s", R"("'a\\nb\\\\c\\'d'")", R"("a\nb\\c'd")"},
        {"s", R"("'a' ")", R"("a")"},
        {"s", R"("'a' 'b'")", R"("'\\'a\\' \\'b\\''")"},
        {"s", R"("Null Null")", nullptr},
        {"s", R"("ä")", nullptr},
        // Arrays
        {"A<i>", "[]", nullptr},
        {"A<i>", R"([1,[5,"Null"],3])", nullptr},
        {"A<i>", R"([1,[5,"Normal"]])", "[1,5]"},
        {"A<r>", R"([["nan","Null"],"-inf",-0,1])", nullptr},
        {"A<s>", R"(["Null",["","Null"]," a ","'x'"])", nullptr},
        {"A<d>", R"(["2024-03-01",["2024-03-02","All"]])", nullptr},
        {"A<c>", R"([["ff000000","Error"]])", nullptr},
        {"A<x<blob>>", R"(["0a",["0b","Null"]])", nullptr},
        {"A<A<i>>", R"([[1],[],[2,[3,"Null"]]])", nullptr},
        {"A<A<s>>", R"([["a","Null"],[["","Null"],"b"]])", nullptr},
        {"A<S<i>>", R"([[1,2],[[1,2],["Null"]]])", nullptr},
        {"A<M>", R"([{"b:i":1},{}])", nullptr},
        {"A<P{ i, s }>", R"([[1,"a"],["Null","'Null'"]])", nullptr},
        // Sets
        {"S<i>", "[]", nullptr},
        {"S<i>", "[3,1,3]", "[1,3]"},
        {"S<i>", R"([[2,1],["Null","All","Null"]])", R"([[1,2],["Null","All"]])"},
        {"S<i>", R"([[],["Null"]])", nullptr},
        {"S<i>", "[[1],[]]", "[1]"},
        {"S<s>", R"(["Null","a"])", nullptr},
        {"S<P{ i }>", "[[2],[1]]", "[[1],[2]]"},
        {"S<x<blob>>", R"(["0a"])", nullptr},
        // Key sets
        {"K<i,s>", "{}", nullptr},
        {"K<i,s>", R"({"2":"Null","01":"b","1":"c"})", R"({"1":"b","2":"Null"})"},
        {"K<s,i>", R"([{"Null":1},{"All":2,"Null":3}])", R"([{"Null":1},{"Null":3,"All":2}])"},
        {"K<s,i>", "[{\"b\":1},{}]", R"({"b":1})"},
        {"K<b,r>", R"({"false":"nan","true":1})", nullptr},
        {"K<d,b>", R"({"2024-03-01":true})", nullptr},
        {"K<c,d>", R"({"ff000000":"2024-03-01"})", nullptr},
        {"K<r,A<i>>", R"({"-inf":[1],"0.5":[2,[3,"Null"]]})", nullptr},
        {"K<P{ i, s },P{ i }>", R"({"[1,\"a b\"]":[1]})", nullptr},
        {"K<P{ s },i>", R"({"[\"a\\nb\"]":1})", nullptr},
        // Unescaped once with the document and once as a key: what was "a\b" ends without its b.
        {"K<P{ s },i>", R"({"[\"a\\\\\\\\b\"]":1})", R"({"[\"a\\\\b\"]":1})"},
        // Rows
        {"P", "[]", nullptr},
        {"P{ i, s, s, s }", R"(["Null","Null","'Null'","a"])", nullptr},
        {"P{ b, l, f, r, d, t, c, x<blob> }",
         R"([true,-5,0.5,"nan","2024-03-01","2024-03-01T00:00:01","ff000000","0a"])", nullptr},
        // Dictionaries
        {"M{ b:i }", R"({"b:i":1})", nullptr},
        {"M", R"("Missing")", nullptr},
        {"T{ b:A<i>, c:A<s> }", R"({"b:A<i>":[1],"c:A<s>":["x"]})", nullptr},
        {"T", "{}", nullptr},
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
    EXPECT_EQ(store->GetValue(KeyPath::ParseString(L"a/b"))->AsInt32(), 5);
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
    const RefusalCase cases[] = {
        {LumError::JsonStringExpected, "(o->IsString())", "s", "5"},
        {LumError::JsonStringExpected, "(o->IsString())", "P{s}", "[5]"},
        {LumError::CannotParseReal64, "", "r", R"("x")"},
        {LumError::CannotParseReal32, "", "f", R"("x")"},
        {LumError::CannotParseDateTime, "", "d", R"("2024-03")"},
        {LumError::EmptyHexString, "", "c", R"("")"},
        {LumError::LongHexString, "", "c", R"("123456789")"},
        {LumError::InvalidHexCharacter, "", "A<c>", R"(["g"])"},
        {LumError::OddHexString, "(s.length() % 2 == 0)", "x<blob>", R"("0a0")"},
        {LumError::InvalidHexCharacter, "(isOk)", "x<blob>", R"("0g")"},
        {LumError::NullArgument, "(value) != nullptr", "x<blob>", R"("")"},
        // Dictionaries
        {LumError::KeyMapNeedsDictionary, "(o->IsDictionary())", "M", "[]"},
        {LumError::KeyMapNeedsDictionary, "(o->IsDictionary())", "T", "5"},
        {LumError::KeyPathLacksType, "(type) != nullptr", "M", R"({"b":1})"},
        {LumError::KeyPathLacksType, "(type) != nullptr", "T", R"({"b":[1]})"},
        {LumError::TableValueNotArray, "(StoreType::Array == type->GetStoreType())", "T",
         R"({"b:i":1})"},
        {LumError::JsonArrayExpected, kIsArray, "T", R"({"b:A<i>":"Missing"})"},
        // Arrays
        {LumError::JsonArrayExpected, kIsArray, "A<i>", "{}"},
        {LumError::JsonArrayExpected, kIsArray, "A<s>", R"("a")"},
        {LumError::ArrayContentExpected, "(v->IsArray())", "A<i>", "[1,{}]"},
        {LumError::SpecialPairEmpty, kPairEnd, "A<i>", "[1,[]]"},
        {LumError::SpecialPairShort, kPairEnd, "A<i>", "[1,[2]]"},
        {LumError::SpecialPairLong, "(subArray == subArrayEnd)", "A<i>", R"([1,[2,"Null",3]])"},
        {LumError::CannotParseSpecialKind, "(found != s_kinds.end())", "A<i>", R"([[2,"null"]])"},
        {LumError::CollectionArraySpecials, "!(IsPairOfCollection(object))", "A<A<i>>",
         R"([[[1],"Null"]])"},
        {LumError::CollectionArraySpecials, "!(IsPairOfCollection(object))", "A<M>",
         R"([[{},"Null"]])"},
        {LumError::KeyMapNeedsDictionary, "(o->IsDictionary())", "A<M>", R"([[{},"null"]])"},
        {LumError::JsonArrayExpected, kIsArray, "A<A<i>>", "[1]"},
        {LumError::TupleNeedsArray, kIsArray, "A<P{i}>", R"(["Null"])"},
        {LumError::TupleSizeMismatch, "(i == LumSizeCastSafe(types.size()))", "A<P{i}>", R"([[]])"},
        // Sets
        {LumError::JsonArrayExpected, kIsArray, "S<i>", "{}"},
        {LumError::JsonArrayExpected, kIsArray, "S<i>", R"([{"a":1},["Null"]])"},
        {LumError::JsonArrayExpected, kIsArray, "S<i>", R"([[1],"Null"])"},
        {LumError::NestedSpecialsExpected, "!(arrayEnumerator == arrayEnd)", "S<i>", "[[1,2]]"},
        {LumError::UnexpectedSetContent, "(arrayEnumerator == arrayEnd)", "S<i>",
         R"([[1],["Null"],[2]])"},
        {LumError::CannotParseSpecialKind, "(found != s_kinds.end())", "S<i>", R"([[1],[""]])"},
        // Key sets
        {LumError::KeySetNeedsContainer, "(obj->IsDictionary() || obj->IsArray())", "K<i,i>", "5"},
        {LumError::KeySetNeedsContainer, "(obj->IsDictionary())", "K<i,i>", "[[1],{}]"},
        {LumError::UnexpectedKeySetContent, "(arrayIter != arrayEnd)", "K<i,i>", "[]"},
        {LumError::UnexpectedKeySetContent, "(arrayIter != arrayEnd)", "K<s,i>", R"([{"a":1}])"},
        {LumError::NestedSpecialsExpected, "(arrayIter == arrayEnd)", "K<i,i>", "[{},{},{}]"},
        {LumError::CannotParseSpecialKind, "(found != s_kinds.end())", "K<i,i>", R"([{},{"1":1}])"},
        {LumError::CannotParseInt32, "", "K<i,i>", R"({"5x":1})"},
        {LumError::CannotParseBool, "", "K<b,i>", R"({"1":1})"},
        {LumError::JsonParseFailure, "", "K<P{i},i>", R"({"x":1})"},
        {LumError::JsonParseFailure, "!(isEscaping)", "K<P{i},i>", R"({"[1]\\":1})"},
        {LumError::TupleNeedsArray, kIsArray, "K<P{i},i>", R"({"1":1})"},
        {LumError::ArrayContentExpected, "(v->IsArray())", "K<i,A<i>>", R"({"1":[{}]})"},
        // Rows
        {LumError::TupleNeedsArray, kIsArray, "P{i}", "{}"},
        {LumError::TupleSizeMismatch, "(i == LumSizeCastSafe(types.size()))", "P{i,i}", "[1]"},
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
    const std::pair<LumError, const char*> cases[] = {
        {LumError::UnexpectedToken, ""},      {LumError::UnexpectedToken, "a:i x"},
        {LumError::UnexpectedToken, "a/b:i"}, {LumError::UnexpectedToken, ":i"},
        {LumError::UnexpectedToken, "a:A<i"}, {LumError::InvalidStoreType, "a:int"},
        {LumError::UnknownTypeName, "a:z"},   {LumError::UnexpectedToken, "a b:i"},
    };
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
    const ReadCase cases[] = {
        {"i", R"("x")", nullptr},     {"i", "5000000000", nullptr},  {"b", "[]", nullptr},
        {"c", "5", nullptr},          {"d", "null", nullptr},        {"A<s>", "[1]", nullptr},
        {"A<i>", "[[1,2]]", nullptr}, {"P{i}", R"(["x"])", nullptr}, {"A<i>", R"(["x"])", nullptr},
    };
    for (const ReadCase& refused : cases) {
        const std::string json = Member(refused.type, refused.json);
        SCOPED_TRACE(json);
        try {
            Read(json);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const LumException& error) {
            ADD_FAILURE() << error.what();
        } catch (const std::exception&) {
        }
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
    std::string json = "1";
    std::string type = "i";
    for (int i = 0; i < kLevels; ++i) {
        json = "[" + json + "]";
        type = "A<" + type + ">";
    }
    EXPECT_EQ(ReadAndWrite(Member(type, json)), Member(type, json));
    std::string maps = "{}";
    for (int i = 0; i < kLevels; ++i) {
        maps = Member("M", maps);
    }
    EXPECT_EQ(Read(maps)->GetCount(), 1u);
}

}  // namespace
}  // namespace lum::core
