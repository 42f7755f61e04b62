#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>
#include <unordered_map>
#include <vector>

#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "tests/serialize/JsonForms.h"
#include "tests/serialize/SerializeTest.h"
#include "tests/support/ColumnText.h"
#include "tests/support/KeySets.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using namespace factory;
using test::BoxedEntries;
using test::ColumnOf;
using test::Compact;
using test::HandleSides;
using test::KeySetOf;
using test::TypeOf;

class KeySetJsonTest : public test::SerializeTest {};

// Cells in the order in which they are written as keys, and their texts as elements.
struct Cells {
    const char* type;
    const char* cells;
    std::vector<std::string> texts;
};
const Cells kCells[] = {
    {"b", "false true", {"false", "true"}},
    {"i", "-10 -9 2 10", {"-10", "-9", "2", "10"}},
    {"l", "-5000000000 5", {"-5000000000", "5"}},
    {"f", "-inf -0 0 0.1 nan", {R"("-inf")", "-0", "0", "0.1", R"("nan")"}},
    {"r",
     "-1e+300 -0 0 0.1 +inf nan",
     {"-1.0000000000000001e+300", "-0", "0", "0.10000000000000001", R"("+inf")", R"("nan")"}},
    // By code unit; nothing guards what looks like a special value.
    {"s", "'' B Null a 'q\"\\'", {R"("")", R"("B")", R"("Null")", R"("a")", R"("q\"\\")"}},
    {"d", "1999-12-31 2024-03-01", {R"("1999-12-31")", R"("2024-03-01")"}},
    {"t",
     "2024-03-01 2024-03-01T09:05:00.2500",
     {R"("2024-03-01")", R"("2024-03-01T09:05:00.2500")"}},
    // By the signed number, in which opaque colours are negative.
    {"c", "ffff0000 00000001", {R"("ffff0000")", R"("00000001")"}},
    {"P{i,s}",
     "(2!Null '''') (1 Null) (1 a)",
     {R"(["Null","'\\''"])", R"([1,"'Null'"])", R"([1,"a"])"}},
};

// The text as a key: a row is text within text, all else the same without quotes of its own.
std::string KeyText(const std::string& text) {
    static const std::regex s_escaped(R"(["\\])");
    return text[0] == '['   ? '"' + std::regex_replace(text, s_escaped, R"(\$&)") + '"'
           : text[0] == '"' ? text
                            : '"' + text + '"';
}

std::vector<SV> Boxed(const Cells& cells) {
    const SV column = ColumnOf(std::string(cells.type) + ": " + cells.cells);
    std::vector<SV> boxed;
    for (lumsize_t i = 0; i < column->GetCount(); ++i) {
        boxed.push_back(column->AsArray().GetElement(i));
    }
    return boxed;
}

TEST_F(KeySetJsonTest, AllPairsAreSortedByTheirKeys) {
    for (const Cells& keys : kCells) {
        for (const Cells& elements : kCells) {
            SCOPED_TRACE(std::string(keys.type) + " to " + elements.type);
            const std::vector<SV> keyCells = Boxed(keys);
            const std::vector<SV> elementCells = Boxed(elements);
            ASSERT_EQ(keyCells.size(), keys.texts.size());
            BoxedEntries entries;
            std::string text = "{";
            for (std::size_t i = 0; i < keyCells.size(); ++i) {
                const std::size_t element = i % elementCells.size();
                entries.normal.emplace_back(keyCells[i], elementCells[element]);
                text +=
                    (i == 0 ? "" : ",") + KeyText(keys.texts[i]) + ':' + elements.texts[element];
            }
            text += "}";
            const auto write = [&] {
                return Compact(
                    test::MakeKeySetOf(TypeOf(keys.type), TypeOf(elements.type), entries));
            };
            EXPECT_EQ(write(), text);
            std::reverse(entries.normal.begin(), entries.normal.end());
            EXPECT_EQ(write(), text);

            entries.special = {{SpecialKind::Missing, elementCells[0]},
                               {SpecialKind::Null, elementCells[1]}};
            EXPECT_EQ(write(), "[" + text + ",{\"Null\":" + elements.texts[1] +
                                   ",\"Missing\":" + elements.texts[0] + "}]");
        }
    }
}

TEST_F(KeySetJsonTest, BothForms) {
    BoxedEntries columns;
    columns.normal = {{MakeInt32(2), ColumnOf("i: 1 -")}, {MakeInt32(1), ColumnOf("i:")}};
    columns.special = {{SpecialKind::All, ColumnOf("i: 7")}};
    const test::JsonCase cases[] = {
        {KeySetOf("s: b a", "i: 1 2"), R"({"a":2,"b":1})", "{\n    \"a\": 2,\n    \"b\": 1\n}"},
        {KeySetOf("i: -", "r: nan"), R"([{},{"Null":"nan"}])",
         "[{\n\n},{\n    \"Null\": \"nan\"\n} ]"},
        {KeySetOf("P{i,s}: (1 a)", "P{i,s}: (2 'Null')"), R"({"[1,\"a\"]":[2,"'Null'"]})",
         "{\n    \"[1,\\\"a\\\"]\": [ 2, \"'Null'\" ]\n}"},
        {test::MakeKeySetOf(TypeOf("i"), ArrayType::Get(TypeOf("i")), columns),
         R"([{"1":[],"2":[1,[0,"Null"]]},{"All":[7]}])",
         "[{\n    \"1\": [ ],\n    \"2\": [ 1,[ 0, \"Null\" ] ]\n},{\n"
         "    \"All\": [ 7 ]\n} ]"},
    };
    test::ExpectJson(cases);
}

TEST_F(KeySetJsonTest, ByOptions) {
    const auto store = MakeDataStore(std::unordered_map<RInternString, SV>{
        {L"colors", KeySetOf("c: 00000010 ffff0000 -", "c: 00000001 80000000 00000002")},
        {L"rows", KeySetOf("P{c}: (0000000f)", "P{c}: (00000010)")},
        {L"special", MakeSpecial(KeySetType::Get(TypeOf("i"), TypeOf("i")), SpecialKind::Null)}});
    EXPECT_EQ(
        SerializeDataStoreCompact(*store).toStdString(),
        R"({"colors:K<c,c>":[{"ffff0000":"80000000","00000010":"00000001"},{"Null":"00000002"}],)"
        R"("rows:K<P{ c },P{ c }>":{"[\"0000000f\"]":["00000010"]},"special:K<i,i>":"Null"})");
    EXPECT_EQ(SerializeDataStore(*store, JsonOptions::SlimWebFormat()).toStdString(),
              R"({"colors":[{"-65536":-2147483648,"16":1},{"Null":2}],)"
              R"("rows":{"[15]":[16]},"special":"Null"})");
}

TEST_F(KeySetJsonTest, Failures) {
    const auto write = [](const Type* elementType, const SV& element, HandleSides handles) {
        BoxedEntries entries;
        entries.normal = {{MakeInt32(1), element}};
        return Compact(test::MakeKeySetOf(TypeOf("i"), elementType, entries, handles));
    };
    EXPECT_LUM_REPORT(NullSerializedValue, "", "(value) != nullptr",
                      write(ArrayType::Get(TypeOf("i")), nullptr, HandleSides::None));
    for (const HandleSides handles : {HandleSides::Keys, HandleSides::Elements}) {
        EXPECT_LUM_ERROR(NotKeyedCollection, "", write(TypeOf("i"), MakeInt32(1), handles));
    }
    EXPECT_LUM_ERROR(InvalidDateTime, "",
                     write(TypeOf("d"), MakeDate(LumDateTime::FromValue(0)), HandleSides::None));
    BoxedEntries entries;
    entries.special = {{static_cast<SpecialKind>(10), MakeInt32(1)}};
    EXPECT_LUM_ERROR(IllegalSpecialKind, "",
                     Compact(test::MakeKeySetOf(TypeOf("i"), TypeOf("i"), entries)));
}

}  // namespace
}  // namespace lum::core
