#include "lum/core/serialize/VtlParser.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/serialize/FormatPrimitive.h"
#include "lum/core/serialize/VtlSerializer.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/vtl/Programs.h"

namespace lum::core {
namespace {

using test::Key;
using test::Keys;

TransformSpec ParseLine(const std::string& text) {
    return ParseVtlLine(TStringCore::fromUtf8(text));
}

std::vector<TransformSpec> ParseList(const std::string& text, bool keepComments) {
    return ParseVtlList(TStringCore::fromUtf8(text), keepComments);
}

// A statement as the writer of Vtl writes it, which shows every part but a fixed type.
std::string Reprint(const std::string& text) {
    return TransformToString(ParseLine(text)).toStdString();
}

// Statements --------------------------------------------------------------------------------------

TEST(VtlParserTest, PartsOfAStatement) {
    const TransformSpec transform = ParseLine("a/b c -> map (f x :1:i) -> d");
    EXPECT_EQ(transform.GetOperatorType(), OperatorType::Map);
    EXPECT_EQ(transform.GetInputs(), Keys({"a/b", "c"}));
    EXPECT_EQ(transform.GetOutputs(), Keys({"d"}));
    EXPECT_EQ(transform.GetValue(), nullptr);
    EXPECT_TRUE(transform.GetChildTransforms().empty() && transform.GetComment().isEmpty());
    const FunctionSpec& function = *transform.GetFunctionSpec();
    EXPECT_EQ(function.GetName().GetValue(), L"f");
    ASSERT_EQ(function.GetArgs().size(), 2u);
    EXPECT_EQ(function.GetArgs()[0].GetKeyPath(), Key("x"));
    EXPECT_EQ(FormatPrimitive(*function.GetArgs()[1].GetValue()), L"1");

    const TransformSpec constant = ParseLine("-> constant :1:i -> x");
    EXPECT_TRUE(constant.GetInputs().empty());
    EXPECT_EQ(constant.GetFunctionSpec(), nullptr);
    EXPECT_EQ(FormatPrimitive(*constant.GetValue()), L"1");
}

TEST(VtlParserTest, Statements) {
    const std::pair<const char*, const char*> cases[] = {
        {"->return ->", "-> return ->"},
        {"\ta\t ->  copy\r->\vb ", "a -> copy -> b"},
        {"a/b:i/'c d':A<s> 12 x : r -> zip -> e:b", "a/b:i/'c d':A<s> 12 x:r -> zip -> e:b"},
        {"a / b -> copy -> c", "a/b -> copy -> c"},
        {"007 -> copy -> 'Null'", "7 -> copy -> 'Null'"},
        // A word takes in every minus.
        {"a- -> copy -> b-c", "a- -> copy -> b-c"},
        // What stands behind the outputs is not looked at, whatever it is.
        {"a -> copy -> b, c", "a -> copy -> b"},
        {"a -> copy -> b // c", "a -> copy -> b"},
        {"a -> copy -> b -> c", "a -> copy -> b"},
        {"a -> copy -> b ; \f 'c", "a -> copy -> b"},
        {"a -> copy -> Null", "a -> copy ->"},
        // A line feed is white space as long as the blanks behind it are as many as before.
        {"a\n-> copy\n-> b", "a -> copy -> b"},
        {"a -> copy -> b\n  c", "a -> copy -> b"},
        // Functions.
        {"-> map (f) -> x", "-> map (f) -> x"},
        {"-> map (+ a b) -> x", "-> map ('+' a b) -> x"},
        {"-> map (-a) -> x", "-> map ('-' a) -> x"},
        {"-> map (* a) -> x", "-> map ('*' a) -> x"},
        {"-> map (< a) -> x", "-> map ('<' a) -> x"},
        {"-> map (> a) -> x", "-> map ('>' a) -> x"},
        {"-> map ('/' a) -> x", "-> map ('/' a) -> x"},
        {"-> map ('') -> x", "-> map ('') -> x"},
        {"-> map (f a/b c:i/d 'e f' 12) -> x", "-> map (f a/b c:i/d 'e f' 12) -> x"},
        {"-> map (f:1:i:2:r a:b) -> x", "-> map (f :1:i :2:r a:b) -> x"},
        // Only a colon that touches the key begins its type.
        {"-> map (f a :b:s c) -> x", "-> map (f a :b:s c) -> x"},
        {"-> map (f a:b :c:s) -> x", "-> map (f a:b :c:s) -> x"},
        {"-> map (f a: b/c) -> x", "-> map (f a:b/c) -> x"},
        // Of several tokens before the type the literal is the first; the others come next.
        {"-> map (f :1 b 'c 4' 4:i d) -> x", "-> map (f :1:i b 'c 4' 4 d) -> x"},
        {"-> map (f : - 1 : i) -> x", "-> map (f :-1:i) -> x"},
        {"-> map (f :a b:s/c) -> x", "-> map (f :a:s b/c) -> x"},
        // Operators and their literals, with a function behind.
        {"a -> scan :0:i (f a) -> x", "a -> scan :0:i (f a) -> x"},
        {"a -> filter :true (f a) -> x", "a -> filter :true (f a) -> x"},
        {"a -> filter:true:b(f a)->x", "a -> filter :true (f a) -> x"},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(Reprint(text), expected);
        EXPECT_EQ(Reprint(expected), expected);
    }
}

TEST(VtlParserTest, CommentLines) {
    const std::pair<const char*, const char*> cases[] = {
        {"// text", " text"}, {"//", ""}, {"  //a -> b", "a -> b"}, {"///", "/"}, {"//a\n//b", "a"},
    };
    for (const auto& [text, comment] : cases) {
        const TransformSpec transform = ParseLine(text);
        EXPECT_EQ(transform.GetOperatorType(), OperatorType::NoOp);
        EXPECT_EQ(transform.GetComment().toStdString(), comment) << text;
        EXPECT_TRUE(transform.GetInputs().empty() && transform.GetOutputs().empty());
    }
}

// Literals ----------------------------------------------------------------------------------------

struct LiteralCase {
    const char* text;
    const Type* type;
    const char* value;
};

TEST(VtlParserTest, Literals) {
    const test::CollatorPoolGuard guard(std::make_shared<test::FoldingCollatorPool>());
    const Type* const folding = StringType::Get(Collation(L"fold"));
    const LiteralCase cases[] = {
        {":true:b", BoolType::Get(), "true"},
        {":+3:i", IntType::Get32(), "3"},
        {"::i 3", IntType::Get32(), "3"},
        {":-:i 3", IntType::Get32(), "-3"},
        {":- 3 : i", IntType::Get32(), "-3"},
        {":99999999999:i", IntType::Get32(), "1215752191"},
        {":-2147483648:i", IntType::Get32(), "-2147483648"},
        {":4294967295:i", IntType::Get32(), "-1"},
        {":-9223372036854775807:l", IntType::Get64(), "-9223372036854775807"},
        {":1.5:f", RealType::Get32(), "1.5"},
        {":1e400:f", RealType::Get32(), "+inf"},
        {":2:f<9,2>", RealType::Get32(9, 2), "2"},
        {":-0:r", RealType::Get64(), "-0"},
        {":-inf:r", RealType::Get64(), "-inf"},
        {":-1.5e-3:r<3,2>", RealType::Get64(3, 2), "-0.0015"},
        {":word:s", StringType::Get(), "word"},
        {":'it\\'s \\n\\\\':s", StringType::Get(), "it's \n\\"},
        {":'Null':s", StringType::Get(), "Null"},
        {":word:s<fold>", folding, "word"},
        {":'2024-03-01':d", DateType::Get(), "2024-03-01"},
        {":'2024-03-01T09:05:00.2500':t", DateTimeType::Get(), "2024-03-01T09:05:00.2500"},
        {":'fF0000':c", ColorType::Get(), "00ff0000"},
        // Every type has special values, those of no literal among them.
        {":Null:i", IntType::Get32(), "Null"},
        {":Missing:d", DateType::Get(), "Missing"},
        {":ManyValues:s", StringType::Get(), "ManyValues"},
        {":Error:A<i>", ArrayType::Get(IntType::Get32()), "Error"},
    };
    for (const LiteralCase& row : cases) {
        SCOPED_TRACE(row.text);
        const std::string text = row.text;
        const SV ofOperator = ParseLine("-> constant " + text + " -> x").GetValue();
        const TransformSpec map = ParseLine("-> map (f " + text + ") -> x");
        for (const SV& value : {ofOperator, map.GetFunctionSpec()->GetArgs()[0].GetValue()}) {
            EXPECT_EQ(value->GetType(), row.type);
            if (IsPrimitiveStoreType(row.type->GetStoreType())) {
                EXPECT_EQ(FormatPrimitive(*value).toStdString(), row.value);
            } else {
                EXPECT_TRUE(value->IsSpecial());
            }
        }
    }
}

TEST(VtlParserTest, LiteralsOfOperatorsThatKnowTheirType) {
    const LiteralCase cases[] = {
        {"block :a", StringType::Get(), "a"},
        {"call :'a b'", StringType::Get(), "a b"},
        {"distinct :true", BoolType::Get(), "true"},
        {"filter :Null", BoolType::Get(), "Null"},
        {"index :-1", IntType::Get32(), "-1"},
        {"multiSort :false:b", BoolType::Get(), "false"},
    };
    for (const LiteralCase& row : cases) {
        const SV value = ParseLine(std::string("-> ") + row.text + " -> x").GetValue();
        EXPECT_EQ(value->GetType(), row.type) << row.text;
        EXPECT_EQ(FormatPrimitive(*value).toStdString(), row.value) << row.text;
    }
}

// Failures ----------------------------------------------------------------------------------------

struct FailureCase {
    const char* text;
    LumError error;
    const char* details = "";
    const char* condition = "";
};

// Stands for the text of the row itself.
const char* const kLine = nullptr;

TEST(VtlParserTest, RefusedLines) {
    const FailureCase cases[] = {
        // A part that is missing, or another one.
        {"", LumError::UnexpectedToken, kLine},
        {"a", LumError::UnexpectedToken, kLine},
        {"a->b", LumError::UnexpectedToken, kLine},
        {"a -> copy", LumError::UnexpectedToken, kLine},
        {"a, b -> copy -> c", LumError::UnexpectedToken, kLine},
        {"a/ -> copy -> c", LumError::UnexpectedToken, kLine},
        {"a//b -> copy -> c", LumError::UnexpectedToken, kLine},
        {"true -> copy -> b", LumError::UnexpectedToken, kLine},
        {"a 'b -> copy -> c", LumError::UnexpectedToken, kLine},
        {"a\n  -> copy -> b", LumError::UnexpectedToken, kLine},
        {"a -> map (f x) y -> b", LumError::UnexpectedToken, kLine},
        {"a -> copy -> b/", LumError::UnexpectedToken, kLine},
        {"a -> copy -> b:1", LumError::UnexpectedToken, kLine},
        // The operator, which has no details.
        {"a ->", LumError::UnexpectedToken},
        {"a -> 'copy' -> b", LumError::UnexpectedToken},
        {"a -> -> b", LumError::UnexpectedToken},
        // Functions.
        {"-> map () -> x", LumError::UnexpectedToken, kLine},
        {"-> map (/ a) -> x", LumError::UnexpectedToken, kLine},
        {"-> map (12) -> x", LumError::UnexpectedToken, kLine},
        {"-> map (f a", LumError::UnexpectedToken, kLine},
        {"-> map (f a -> x", LumError::UnexpectedToken, kLine},
        {"-> map (f a, b) -> x", LumError::UnexpectedToken, kLine},
        {"-> map (f a ;", LumError::UnexpectedToken, kLine},
        {"-> map (f :1.5e+ :r)", LumError::UnexpectedToken, kLine},
        {"-> map (f :1) -> x", LumError::KeyTypeNeeded, "", "(type) != nullptr"},
        {"-> map (f :) -> x", LumError::KeyTypeNeeded, "", "(type) != nullptr"},
        {"-> map (f '') -> x", LumError::ValueSpecHoldsValue, "", "!(path.IsEmpty())"},
        {"-> map (f a/'') -> x", LumError::ValueSpecHoldsValue, "", "!(path.IsEmpty())"},
        // Literals of operators.
        {"a -> copy :1 -> b", LumError::UnexpectedOperatorArgument},
        {"a -> copy :1:i -> b", LumError::UnexpectedOperatorArgument},
        {"a -> filter :true:i -> b", LumError::OperatorTypeSpecMismatch, "filter"},
        {"a -> index :1:l -> b", LumError::OperatorTypeSpecMismatch, "index"},
        {"-> constant :1 -> x", LumError::OperatorTypeSpecMissing},
        {"-> constant : -> x", LumError::OperatorTypeSpecMissing},
        {"-> constant :1:i 2 -> x", LumError::UnexpectedToken, kLine},
        {"-> constant :1 2:i -> x", LumError::UnexpectedToken, kLine},
        {"-> constant ::i -> x", LumError::CannotParseInt32},
        {"-> constant ::s b/c -> z", LumError::UnexpectedToken, kLine},
        // Types.
        {"-> map :: (f) -> x", LumError::UnexpectedToken, kLine},
        {"-> constant :1:ii -> x", LumError::InvalidStoreType, kLine},
        {"-> constant :1:z -> x", LumError::UnknownTypeName, kLine},
        {"-> constant :1:A<i -> x", LumError::UnexpectedToken, kLine},
        {"a -> copy :1:z -> b", LumError::UnknownTypeName, kLine},
        {"a:z -> copy -> b", LumError::UnknownTypeName, kLine},
        // Literals that are none of their type.
        {"-> constant :1:b -> x", LumError::CannotParseBool},
        {"-> constant :+true:b -> x", LumError::CannotParseBool},
        {"-> constant :1.0:i -> x", LumError::CannotParseInt32},
        {"-> constant :--1:i -> x", LumError::CannotParseInt32},
        {"-> constant :-Null:i -> x", LumError::CannotParseInt32},
        {"-> constant :a:l -> x", LumError::CannotParseInt64},
        {"-> constant :'1':f -> x", LumError::CannotParseReal32},
        {"-> constant :a:r -> x", LumError::CannotParseReal64},
        {"-> constant :12:s -> x", LumError::CannotParseString},
        {"-> constant :true:s -> x", LumError::CannotParseString},
        {"-> constant :a:d -> x", LumError::CannotParseDateTime},
        {"-> constant :'2024-03-01T09:05:00.250':t -> x", LumError::CannotParseDateTime},
        {"-> constant :ff:c -> x", LumError::UnexpectedToken, kLine},
        {"-> constant :'':c -> x", LumError::EmptyHexString},
        {"-> constant :'123456789':c -> x", LumError::LongHexString},
        {"-> constant :'fg':c -> x", LumError::InvalidHexCharacter},
        {"-> constant :1:A<i> -> x", LumError::CannotMakeValueForKey},
        {"-> constant :1:T -> x", LumError::CannotMakeValueForKey},
        {"-> map (f :1:P{ i }) -> x", LumError::CannotMakeValueForKey},
        // What is no token at all ends a literal, and the line with it.
        {"-> constant :'a", LumError::UnexpectedToken, kLine},
        {"-> constant :99999999999999999999:l -> x", LumError::UnexpectedToken, kLine},
        {"-> constant :-9223372036854775808:l -> x", LumError::UnexpectedToken, kLine},
        {"-> map (f :'a\nb':s) -> x", LumError::UnexpectedToken, kLine},
    };
    for (const FailureCase& row : cases) {
        SCOPED_TRACE(row.text);
        EXPECT_TRUE(test::FailsAs(
            {row.error, row.details == kLine ? row.text : row.details, true, row.condition},
            [&] { ParseLine(row.text); }));
    }
    for (const std::string name : {"nosuchop", "Copy", "copy2"}) {
        EXPECT_LUM_PLAIN_ERROR(UnknownTypeName, name, ParseLine("a -> " + name + " -> b"));
    }
}

// Lists -------------------------------------------------------------------------------------------

struct ListCase {
    const char* text;
    const char* withComments;
    const char* withoutComments;
};

TEST(VtlParserTest, Lists) {
    const ListCase cases[] = {
        {"", "", ""},
        {"\n \n\t\f\v \r\n''\n", "", ""},
        {"// a\n//b", "// a\n//b\n", ""},
        {"// it's\na -> copy -> b", "// it's\na -> copy -> b\n", "a -> copy -> b\n"},
        {"a -> copy -> b\r\n// c\r\n", "a -> copy -> b\n// c\r\n", "a -> copy -> b\n"},
        {"a -> noOp -> b\nc -> copy -> d", "\nc -> copy -> d\n", "c -> copy -> d\n"},
        // Two blanks a level; an odd one more does not count, nor does a tab.
        {"-> case ->\n   -> when ->\n \t  a -> copy -> b\n",
         "-> case ->\n  -> when ->\na -> copy -> b\n",
         "-> case ->\n  -> when ->\na -> copy -> b\n"},
        // Back by more than one level, and further.
        {"-> case ->\n  -> when ->\n    a -> copy -> b\n    c -> copy -> d\n  -> else ->\n"
         "    -> groupBy ->\n      e -> copy -> f\ng -> copy -> h\n",
         "-> case ->\n  -> when ->\n    a -> copy -> b\n    c -> copy -> d\n  -> else ->\n"
         "    -> groupBy ->\n      e -> copy -> f\ng -> copy -> h\n",
         "-> case ->\n  -> when ->\n    a -> copy -> b\n    c -> copy -> d\n  -> else ->\n"
         "    -> groupBy ->\n      e -> copy -> f\ng -> copy -> h\n"},
        {"-> block :b ->\n  -> applyByPartition ->\n    // c\n",
         "-> block :b ->\n  -> applyByPartition ->\n    // c\n",
         "-> block :b ->\n  -> applyByPartition ->\n"},
        // A comment that is kept has its level, one that is dropped has none.
        {"-> when ->\n// c\n  a -> copy -> b", nullptr, "-> when ->\n  a -> copy -> b\n"},
        {"-> map (f) ->\n  // c\na -> copy -> b", nullptr, "-> map (f) ->\na -> copy -> b\n"},
        {"      // c\na -> copy -> b", nullptr, "a -> copy -> b\n"},
        // An apostrophe in an indented comment takes the next line into the comment, which ends
        // before it.
        {" // it's\na -> copy -> b'\nc -> copy -> d", "// it's\nc -> copy -> d\n",
         "c -> copy -> d\n"},
        // Line feeds within quotes.
        {"a -> copy -> b 'c\n  d'\ne -> copy -> f", "a -> copy -> b\ne -> copy -> f\n",
         "a -> copy -> b\ne -> copy -> f\n"},
    };
    for (const ListCase& row : cases) {
        SCOPED_TRACE(row.text);
        for (const bool keepComments : {true, false}) {
            const char* const expected = keepComments ? row.withComments : row.withoutComments;
            if (expected == nullptr) {
                EXPECT_THROW(ParseList(row.text, keepComments), LumRuntimeException);
            } else {
                EXPECT_EQ(TransformsToString(ParseList(row.text, keepComments), true).toStdString(),
                          expected);
            }
        }
    }
}

TEST(VtlParserTest, RefusedLists) {
    const char* const kNoChildren = "(CanOperatorHaveChildTransforms(m_spec.GetOperatorType()))";
    const char* const kJump = "(parser.GetCurrentDepth() + 1 == currentLevel)";
    const FailureCase cases[] = {
        {"  a -> copy -> b", LumError::InvalidNesting},
        {"   a -> copy -> b", LumError::InvalidNesting},
        {"    a -> copy -> b", LumError::Unspecified, "", kJump},
        {"-> when ->\n    a -> copy -> b", LumError::Unspecified, "", kJump},
        {"-> map (f) ->\n    a -> copy -> b", LumError::Unspecified, "", kJump},
        {"a -> copy -> b\n  c -> copy -> d", LumError::UnexpectedChildTransform, "", kNoChildren},
        {"a -> call :b -> c\n  // d", LumError::UnexpectedChildTransform, "", kNoChildren},
        {"-> when ->\n// c\n  a -> copy -> b", LumError::UnexpectedChildTransform, "", kNoChildren},
        {"// c\n  a -> copy -> b", LumError::UnexpectedChildTransform, "", kNoChildren},
        {"  // c", LumError::InvalidNesting},
        // A line is read before its place is looked at.
        {"      a -> copy", LumError::UnexpectedToken, "      a -> copy"},
        // The details are the one line, without its quotes.
        {"a -> copy -> b\n'abc'\n", LumError::UnexpectedToken, "abc"},
        {"a -> copy -> b\n'a b'\n", LumError::UnexpectedToken, "'a b'"},
        {"a -> copy -> b\nc 'd\ne' f\n", LumError::UnexpectedToken, "c 'd\ne' f"},
    };
    for (const FailureCase& row : cases) {
        SCOPED_TRACE(row.text);
        EXPECT_TRUE(test::FailsAs({row.error, row.details, true, row.condition},
                                  [&] { ParseList(row.text, /*keepComments=*/true); }));
    }
}

// Size and depth ----------------------------------------------------------------------------------

std::string Nested(std::size_t depth) {
    std::string text;
    for (std::size_t level = 0; level <= depth; ++level) {
        text += std::string(2 * level, ' ') + "-> when ->\n";
    }
    return text;
}

TEST(VtlParserTest, DepthOfNesting) {
    const std::string deepest = Nested(1000);
    EXPECT_EQ(TransformsToString(ParseList(deepest, true), true).toStdString(), deepest);
    EXPECT_LUM_REPORT(InvalidNesting, "", "", ParseList(Nested(1001), true));
    std::string types = "a:";
    for (int i = 0; i < 300; ++i) {
        types += "A<";
    }
    const std::string line = types + " -> copy -> b";
    EXPECT_LUM_REPORT(UnexpectedToken, line, "", ParseList(line, true));
}

std::string Repeat(const std::string& text, std::size_t count) {
    std::string repeated;
    for (; count > 0; --count) {
        repeated += text;
    }
    return repeated;
}

// Texts that take minutes where anything in the parser is not linear.
TEST(VtlParserTest, LongTexts) {
    constexpr std::size_t kCount = 200'000;
    const auto firstLine = [](const std::string& text) {
        const std::vector<TransformSpec> program = ParseList(text, true);
        return program.empty() ? TransformSpec(L"none") : program.front();
    };
    EXPECT_EQ(ParseList(Repeat("a -> copy -> b\n", kCount), true).size(), kCount);
    EXPECT_EQ(firstLine(Repeat("a ", kCount) + "-> zip ->").GetInputs().size(), kCount);
    EXPECT_EQ(firstLine(Repeat("a/", 999) + "a -> copy ->").GetInputs()[0].GetCount(), 1000u);
    EXPECT_THROW(firstLine(Repeat("a/", kCount) + "a -> copy ->"), LumRuntimeException);
    const auto argumentCount = [&](const std::string& arguments) {
        return firstLine("-> map (f" + arguments + ") ->").GetFunctionSpec()->GetArgs().size();
    };
    EXPECT_EQ(argumentCount(Repeat(" a", kCount)), kCount);
    EXPECT_EQ(argumentCount(Repeat(" :1:i", kCount)), kCount);
    EXPECT_EQ(argumentCount(" :" + Repeat(" a", kCount) + ":s"), kCount);
    EXPECT_EQ(argumentCount(Repeat(" :" + Repeat(" a", 1000) + ":s", kCount / 1000)), kCount);
    EXPECT_THROW(ParseList("a 'b" + Repeat("\n//", kCount), true), LumRuntimeException);
}

}  // namespace
}  // namespace lum::core
