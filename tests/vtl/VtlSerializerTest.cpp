#include "lum/core/serialize/VtlSerializer.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lum/core/serialize/KeyPathSerializerCache.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/vtl/Programs.h"

namespace lum::core {
namespace {

using factory::MakeInt32;
using factory::MakeSpecial;
using factory::MakeString;
using test::Key;
using test::Keys;
using test::List;

std::string TextOf(const TransformSpec& transform) {
    return TransformToString(transform).toStdString();
}

// A statement of the operator with nothing but a literal.
TransformSpec WithValue(OperatorType type, const SV& value) {
    return TransformSpec(type, KeyPath(), KeyPath(), nullptr, value);
}

TEST(VtlSerializerTest, Literals) {
    const LumDateTime date(2024, 3, 1, 0, 0, 0, 0);
    const LumDateTime time(2024, 3, 1, 9, 5, 0, 0);
    const std::pair<SV, std::string> cases[] = {
        {factory::MakeBool(true), ":true:b"},
        {MakeInt32(-5), ":-5:i"},
        {factory::MakeInt64(9223372036854775807), ":9223372036854775807:l"},
        {factory::MakeReal32(0.1f), ":0.1:f"},
        {factory::MakeReal64(-0.0), ":-0:r"},
        {factory::MakeReal64(0.1), ":0.10000000000000001:r"},
        {factory::MakeReal64(2.5, 3, 2), ":2.5:r<3,2>"},
        {factory::MakeReal64(std::numeric_limits<double>::infinity()), ":+inf:r"},
        {factory::MakeDate(date), ":'2024-03-01':d"},
        {factory::MakeDateTime(time), ":'2024-03-01T09:05:00':t"},
        {factory::MakeColor(1, 2, 3, 255), ":'ff010203':c"},
        {MakeString(L"word-1"), ":word-1:s"},
        {MakeString(L""), ":'':s"},
        {MakeString(L"two words"), ":'two words':s"},
        {MakeString(L" a"), ":' a':s"},
        {MakeString(L"12"), ":'12':s"},
        {MakeString(L"Null"), ":'Null':s"},
        {MakeString(L"true"), ":'true':s"},
        {MakeString(L"a'b\\c\nd\te"), ":'a\\'b\\\\c\\nd\te':s"},
        // A zero ends the text.
        {MakeString(TStringCore(std::u16string_view(u"a\0b", 3))), ":'a':s"},
        // Special values are words, whatever their type; the type stays.
        {MakeSpecial(IntType::Get32(), SpecialKind::Null), ":Null:i"},
        {MakeSpecial(DateType::Get(), SpecialKind::Missing), ":Missing:d"},
    };
    for (const auto& [value, text] : cases) {
        EXPECT_EQ(FunctionToString(*FunctionSpec::Make(L"f", value)).toStdString(), "f " + text);
        EXPECT_EQ(TextOf(WithValue(OperatorType::Constant, value)), "-> constant " + text + " ->");
        // Only five operators show the type of their literal.
        EXPECT_EQ(TextOf(WithValue(OperatorType::Filter, value)),
                  "-> filter " + text.substr(0, text.rfind(':')) + " ->");
    }
}

TEST(VtlSerializerTest, RefusedLiterals) {
    const SV array = factory::MakeArray<unsigned int>(IntType::Get32(), std::vector<unsigned int>{},
                                                      SortSpecOrder::UNKNOWN);
    const SV special = MakeSpecial(ArrayType::Get(IntType::Get32()), SpecialKind::Null);
    const SV external = MakeSpecial(ExternalType::Get(1), SpecialKind::Null);
    for (const SV& value : {array, special, external}) {
        const bool isExternal = value == external;
        const LumError error =
            isExternal ? LumError::OperatorTypeExternal : LumError::OperatorTypeNotPrimitive;
        const auto condition = [&](const std::string& owner) {
            return isExternal ? "!(" + owner + ".GetValue()->GetStoreType() == StoreType::External)"
                              : "(IsPrimitiveStoreType(" + owner + ".GetValue()->GetStoreType()))";
        };

        TStringCore text = L"before ";
        TransformSpec transform(OperatorType::Constant, Key("a"), Key("b"), nullptr, value);
        EXPECT_TRUE(test::FailsAs({error, "", true, condition("spec")},
                                  [&] { TransformToString(text, transform); }));
        EXPECT_EQ(text, L"before a -> constant");

        transform.GetValue() = nullptr;
        transform.GetFunctionSpec() =
            FunctionSpec::Make(L"f", {ValueSpec(Key("k")), ValueSpec(value)});
        EXPECT_TRUE(test::FailsAs({error, "", true, condition("valuespec")},
                                  [&] { TransformsToString(List(transform), true); }));
        EXPECT_TRUE(test::FailsAs({error, "", true, condition("valuespec")},
                                  [&] { FunctionToString(*transform.GetFunctionSpec()); }));
    }
}

TEST(VtlSerializerTest, Statements) {
    const auto function = FunctionSpec::Make(
        L"f", {ValueSpec(Key("x/y:A<i>")), ValueSpec(MakeInt32(1)), ValueSpec(Key("'k 2'"))});
    EXPECT_EQ(TextOf(TransformSpec(OperatorType::Scan, Keys({"a/b:i", "'c d':A<s>", "12"}),
                                   Keys({"e:i", "f"}), function, {}, MakeInt32(7))),
              "a/b:i 'c d':A<s> 12 -> scan :7:i (f x/y:A<i> :1:i 'k 2') -> e:i f");
    // A comment line has nothing else.
    EXPECT_EQ(TextOf(TransformSpec(OperatorType::NoOp, Keys({"a"}), Keys({"b"}), function, {},
                                   MakeInt32(1))),
              "");
    const TStringCore withZero(std::u16string_view(u"a\0b", 3));
    EXPECT_EQ(FunctionToString(*FunctionSpec::Make(withZero)), L"'a'");
    EXPECT_LUM_ERROR(InvalidOperatorValue, "type",
                     TransformToString(TransformSpec(static_cast<OperatorType>(33), {}, {})));
}

const char* const kNestedText =
    "a -> case -> b\n"
    "  -> when -> c\n"
    "    d -> copy -> e\n"
    "    // inner\n"
    "  f -> copy -> g\n";

TEST(VtlSerializerTest, Lists) {
    const std::string nested = kNestedText;
    std::vector<TransformSpec> list = test::Program("// first\n" + nested);
    list.push_back(TransformSpec(OperatorType::NoOp, Keys({"h"}), Keys({"i"})));
    EXPECT_EQ(TransformsToString(list, /*includeComments=*/true).toStdString(),
              "// first\n" + nested + "\n");
    // Comments below a statement stay.
    EXPECT_EQ(TransformsToString(list, /*includeComments=*/false).toStdString(), nested);
    EXPECT_EQ(TransformsToPayloadString(list).toStdString(), nested);

    TStringCore text = L"x";
    TransformToString(text, list[1]);
    EXPECT_EQ(text.toStdString() + "\n", "x" + nested);
    EXPECT_EQ(TransformsToString({}, true), L"");
    EXPECT_EQ(TransformsToString(List(TransformSpec(L"c")), false), L"");
}

TEST(VtlSerializerTest, CacheChangesNothingInTheText) {
    const std::string text =
        kNestedText + std::string("a:i -> copy -> a:A<i>\na -> copy -> x:i/x\n-> call :a -> a\n");
    KeyPathSerializerCache cache;
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(TransformsToString(test::Program(text), true, &cache).toStdString(), text);
    }
    const KeyPathSerializerCache::Key key{L"a", IntType::Get32(), true, true};
    EXPECT_NE(cache.TryGet(key), nullptr);
}

}  // namespace
}  // namespace lum::core
