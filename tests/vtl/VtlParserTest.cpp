#include "lum/core/serialize/VtlParser.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/serialize/OperatorTypeSerializeUtils.h"
#include "lum/core/serialize/VtlSerializer.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/vtl/Programs.h"

namespace lum::core {
namespace {

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

std::string ReprintList(const std::string& text, bool keepComments) {
    return TransformsToString(ParseList(text, keepComments), /*includeComments=*/true)
        .toStdString();
}

TEST(VtlParserTest, Statements) {
    const std::pair<const char*, const char*> cases[] = {
        {"->return ->", "-> return ->"},
        {"\ta\t ->  copy\r->\vb ", "a -> copy -> b"},
        {"a/b:i/'c d':A<s> 12 x : r -> zip -> e:b", "a/b:i/'c d':A<s> 12 x:r -> zip -> e:b"},
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
        {"-> map (+ a b) -> x", "-> map ('+' a b) -> x"},
        {"-> map (-a) -> x", "-> map ('-' a) -> x"},
        {"-> map (* a) -> x", "-> map ('*' a) -> x"},
        {"-> map (< a) -> x", "-> map ('<' a) -> x"},
        {"-> map (> a) -> x", "-> map ('>' a) -> x"},
        {"-> map ('/' a) -> x", "-> map ('/' a) -> x"},
        {"-> map (f a/b c:i/d 'e f' 12) -> x", "-> map (f a/b c:i/d 'e f' 12) -> x"},
        {"-> map (f:1:i:2:r a:b) -> x", "-> map (f :1:i :2:r a:b) -> x"},
        // Only a colon that touches the key begins its type.
        {"-> map (f a:b :c:s d) -> x", "-> map (f a:b :c:s d) -> x"},
        {"-> map (f a: b/c) -> x", "-> map (f a:b/c) -> x"},
        // Of several tokens before the type the literal is the first; the others come next.
        {"-> map (f :1 b 'c 4' 4:i d) -> x", "-> map (f :1:i b 'c 4' 4 d) -> x"},
        {"-> map (f : - 1 : i) -> x", "-> map (f :-1:i) -> x"},
        {"-> map (f :a b:s/c) -> x", "-> map (f :a:s b/c) -> x"},
        // Operators and their literals, with a function behind.
        {"a -> filter:true:b(f a)->x", "a -> filter :true (f a) -> x"},
        // Comments.
        {"// text", "// text"},
        {"  //a -> b", "//a -> b"},
        {"///", "///"},
        {"//a\n//b", "//a"},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(Reprint(text), expected);
        EXPECT_EQ(Reprint(expected), expected);
    }
}

// Of an operator that takes any type, and as an argument.
TEST(VtlParserTest, Literals) {
    const test::CollatorPoolGuard guard(std::make_shared<test::FoldingCollatorPool>());
    const std::pair<std::string, std::string> cases[] = {
        {":+3:i", ":3:i"},
        {"::i 3", ":3:i"},
        {":-:i 3", ":-3:i"},
        {":- 3 : i", ":-3:i"},
        {":99999999999:i", ":1215752191:i"},
        {":-2147483648:i", ":-2147483648:i"},
        {":4294967295:i", ":-1:i"},
        {":-9223372036854775807:l", ":-9223372036854775807:l"},
        {":1e400:f", ":+inf:f"},
        {":2:f<9,2>", ":2:f<9,2>"},
        {":-0:r", ":-0:r"},
        {":-inf:r", ":-inf:r"},
        {":-1.5e-3:r<3,2>", ":-0.0015:r<3,2>"},
        {":'word':s", ":word:s"},
        {":'Null':s", ":'Null':s"},
        {":word:s<fold>", ":word:s<fold>"},
        {":'fF0000':c", ":'00ff0000':c"},
        {":ManyValues:s", ":ManyValues:s"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(Reprint("-> constant " + text + " -> x"), "-> constant " + expected + " -> x");
        EXPECT_EQ(Reprint("-> map (f " + text + ") -> x"), "-> map (f " + expected + ") -> x");
    }
    // Every type has special values, those of no literal among them.
    const SV special = ParseLine("-> constant :Error:A<i> -> x").GetValue();
    EXPECT_EQ(special->GetType(), ArrayType::Get(IntType::Get32()));
    EXPECT_EQ(special->GetSpecialKind(), SpecialKind::Error);
    for (const std::string statement :
         {"-> block :a -> x", "-> call :'a b' -> x", "-> distinct :true -> x",
          "-> filter :Null -> x", "-> index :-1 -> x", "-> multiSort :false -> x"}) {
        const TransformSpec transform = ParseLine(statement);
        EXPECT_EQ(transform.GetValue()->GetStoreType(),
                  OperatorFixedArgumentType(transform.GetOperatorType()));
        EXPECT_EQ(TransformToString(transform).toStdString(), statement);
    }
}

struct FailureCase {
    const char* text;
    LumError error;
    const char* details = "";
    const char* condition = "";
};

// A part that is missing, or another one; at the end, what is no token at all, which ends a literal
// and the line with it.
const char* const kLinesWithAnUnexpectedToken =
    "|a|a->b|a -> copy|a, b -> copy -> c|a/ -> copy -> c|a//b -> copy -> c|true -> copy -> b|"
    "a 'b -> copy -> c|a\n  -> copy -> b|a -> map (f x) y -> b|a -> copy -> b/|"
    "a -> copy -> b:1|-> map () -> x|-> map (/ a) -> x|-> map (12) -> x|-> map (f a|"
    "-> map (f a -> x|-> map (f a, b) -> x|-> map (f :1.5e+ :r)|-> constant :1:i 2 -> x|"
    "-> constant :1 2:i -> x|-> constant ::s b/c -> z|-> map :: (f) -> x|-> constant :1:A<i -> x|"
    "-> constant :ff:c -> x|-> constant :'a|-> constant :99999999999999999999:l -> x|"
    "-> constant :-9223372036854775808:l -> x|-> map (f :'a\nb':s) -> x";

TEST(VtlParserTest, RefusedLines) {
    std::istringstream lines(kLinesWithAnUnexpectedToken);
    for (std::string line; std::getline(lines, line, '|');) {
        EXPECT_LUM_REPORT(UnexpectedToken, line, "", ParseLine(line)) << line;
    }
    const char* const noType = "(type) != nullptr";
    const char* const notEmpty = "!(path.IsEmpty())";
    using enum LumError;
    const FailureCase cases[] = {
        // The operator, which has no details.
        {"a ->", UnexpectedToken},
        {"a -> 'copy' -> b", UnexpectedToken},
        {"a -> -> b", UnexpectedToken},
        {"-> map (f :1) -> x", KeyTypeNeeded, "", noType},
        {"-> map (f :) -> x", KeyTypeNeeded, "", noType},
        {"-> map (f '') -> x", ValueSpecHoldsValue, "", notEmpty},
        {"-> map (f a/'') -> x", ValueSpecHoldsValue, "", notEmpty},
        {"a -> copy :1 -> b", UnexpectedOperatorArgument},
        {"a -> copy :1:i -> b", UnexpectedOperatorArgument},
        {"a -> filter :true:i -> b", OperatorTypeSpecMismatch, "filter"},
        {"a -> index :1:l -> b", OperatorTypeSpecMismatch, "index"},
        {"-> constant :1 -> x", OperatorTypeSpecMissing},
        {"-> constant : -> x", OperatorTypeSpecMissing},
        {"-> constant :1:ii -> x", InvalidStoreType, "-> constant :1:ii -> x"},
        {"a -> copy :1:z -> b", UnknownTypeName, "a -> copy :1:z -> b"},
        {"a:z -> copy -> b", UnknownTypeName, "a:z -> copy -> b"},
        // Literals that are none of their type.
        {"-> constant ::i -> x", CannotParseInt32},
        {"-> constant :1:b -> x", CannotParseBool},
        {"-> constant :+true:b -> x", CannotParseBool},
        {"-> constant :1.0:i -> x", CannotParseInt32},
        {"-> constant :--1:i -> x", CannotParseInt32},
        {"-> constant :-Null:i -> x", CannotParseInt32},
        {"-> constant :a:l -> x", CannotParseInt64},
        {"-> constant :'1':f -> x", CannotParseReal32},
        {"-> constant :a:r -> x", CannotParseReal64},
        {"-> constant :12:s -> x", CannotParseString},
        {"-> constant :true:s -> x", CannotParseString},
        {"-> constant :a:d -> x", CannotParseDateTime},
        {"-> constant :'2024-03-01T09:05:00.250':t -> x", CannotParseDateTime},
        {"-> constant :'':c -> x", EmptyHexString},
        {"-> constant :'123456789':c -> x", LongHexString},
        {"-> constant :'fg':c -> x", InvalidHexCharacter},
        {"-> constant :1:A<i> -> x", CannotMakeValueForKey},
        {"-> constant :1:T -> x", CannotMakeValueForKey},
        {"-> map (f :1:P{ i }) -> x", CannotMakeValueForKey},
    };
    for (const FailureCase& row : cases) {
        EXPECT_TRUE(test::FailsAs({row.error, row.details, true, row.condition}, [&] {
            ParseLine(row.text);
        })) << row.text;
    }
    for (const std::string name : {"nosuchop", "Copy", "copy2"}) {
        EXPECT_LUM_PLAIN_ERROR(UnknownTypeName, name, ParseLine("a -> " + name + " -> b"));
    }
}

TEST(VtlParserTest, Lists) {
    // Back by more than one level, and further.
    const char* const nested =
        "-> case ->\n  -> when ->\n    a -> copy -> b\n    c -> copy -> d\n  -> else ->\n"
        "    -> groupBy ->\n      e -> copy -> f\ng -> copy -> h\n";
    const struct {
        const char* text;
        const char* withComments;  // Null where it fails.
        const char* withoutComments;
    } cases[] = {
        {"", "", ""},
        {"\n \n\t\f\v \r\n''\n", "", ""},
        {"// a\n//b", "// a\n//b\n", ""},
        {"//", "\n", ""},
        {"// it's\na -> copy -> b", "// it's\na -> copy -> b\n", "a -> copy -> b\n"},
        {"a -> copy -> b\r\n// c\r\n", "a -> copy -> b\n// c\r\n", "a -> copy -> b\n"},
        {"a -> noOp -> b\nc -> copy -> d", "\nc -> copy -> d\n", "c -> copy -> d\n"},
        {nested, nested, nested},
        // Two blanks a level; an odd one more does not count, nor does a tab.
        {"-> case ->\n   -> when ->\n \t  a -> copy -> b\n",
         "-> case ->\n  -> when ->\na -> copy -> b\n",
         "-> case ->\n  -> when ->\na -> copy -> b\n"},
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
    for (const auto& [text, withComments, withoutComments] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(ReprintList(text, /*keepComments=*/false), withoutComments);
        if (withComments != nullptr) {
            EXPECT_EQ(ReprintList(text, /*keepComments=*/true), withComments);
        } else {
            EXPECT_THROW(ReprintList(text, /*keepComments=*/true), LumRuntimeException);
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
        EXPECT_TRUE(test::FailsAs({row.error, row.details, true, row.condition}, [&] {
            ParseList(row.text, /*keepComments=*/true);
        })) << row.text;
    }
}

std::string Repeat(const std::string& text, std::size_t count) {
    std::string repeated;
    for (; count > 0; --count) {
        repeated += text;
    }
    return repeated;
}

TEST(VtlParserTest, DepthOfNesting) {
    std::string deepest;
    for (std::size_t level = 0; level <= 1000; ++level) {
        deepest += std::string(2 * level, ' ') + "-> when ->\n";
    }
    EXPECT_EQ(ReprintList(deepest, true), deepest);
    const std::string tooDeep = deepest + std::string(2002, ' ') + "-> when ->\n";
    EXPECT_LUM_REPORT(InvalidNesting, "", "", ParseList(tooDeep, true));
    const std::string line = "a:" + Repeat("A<", 300) + " -> copy -> b";
    EXPECT_LUM_REPORT(UnexpectedToken, line, "", ParseList(line, true));
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
