#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "core/main/serialize/KeyPathParser.h"
#include "core/main/serialize/KeyPathSerializer.h"
#include "core/main/serialize/NestingLimit.h"
#include "core/main/serialize/QuotedText.h"
#include "core/main/serialize/VtlScanner.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"
#include "tests/support/AnyLocalePool.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/Random.h"
#include "tests/support/SmallStack.h"

namespace lum::core {
namespace {

using Kind = VtlTokenKind;
using test::CollatorPoolGuard;

// With the external types "ext" and "no word".
class KeyPathTextTest : public testing::Test {
protected:
    KeyPathTextTest() {
        unsigned short typeId = 0;
        for (const wchar_t* const name : {L"ext", L"no word"}) {
            RegisterExternalType(
                ++typeId, name, [](const ValueExternal&) { return std::vector<unsigned char>(); },
                [](const ArrayView<const unsigned char>&) { return nullptr; });
        }
    }
    ~KeyPathTextTest() override { ClearExternalTypes(); }

private:
    CollatorPoolGuard m_pool{std::make_shared<test::AnyLocalePool>()};
};

std::string TextOf(const KeyPath& path, bool includeTypes,
                   KeyPathSerializerCache* cache = nullptr) {
    TStringCore text = L"/";  // What stands there already is no part of the path.
    AppendKeyPath(text, path, includeTypes, cache);
    return text.mid(1).toStdString();
}

// Names -------------------------------------------------------------------------------------------

TEST_F(KeyPathTextTest, Names) {
    using namespace std::string_literals;
    using namespace std::string_view_literals;
    const std::pair<std::u16string_view, std::string> cases[] = {
        {u"a-b.c?_^~=#9", "a-b.c?_^~=#9"},
        {u"9223372036854775807", "9223372036854775807"},
        {u"99999999999999999999", "'99999999999999999999'"},
        {u"1.5", "'1.5'"},
        {u"#3", "'#3'"},
        {u" a", "' a'"},
        {u"a/b", "'a/b'"},
        {u"'a'", "'\\'a\\''"},
        {u"\\", "'\\\\'"},
        {u"a\nb\n", "'a\\nb\\n'"},
        {u"true", "'true'"},
        {u"Null", "'Null'"},
        {u"\u00e9\xD83D\xDE00", "'\u00e9\U0001F600'"},
        {u"a\0b"sv, "'a\0b'"s},
        {u"a-long-name-without-anything-odd", "a-long-name-without-anything-odd"},
    };
    for (const auto& [name, expected] : cases) {
        const KeyPath path{RInternString(TStringCore(name))};
        EXPECT_EQ(path.ToString().toStdString(), expected);
        EXPECT_EQ(KeyPath::ParseString(path.ToString()), path) << expected;
    }
    // The walk of a name is not that of a string value, which ends at the first zero.
    TStringCore quoted = L"x";
    AppendQuotedUntilZero(quoted, TStringCore(u"it's\0b"sv));
    AppendQuotedUntilZero(quoted, L"");
    EXPECT_EQ(quoted, L"x'it\\'s'''");
}

TEST_F(KeyPathTextTest, Paths) {
    const std::pair<std::vector<RInternString>, const char*> cases[] = {
        {{}, ""},
        {{L"a", L"b c", L"3"}, "a/'b c'/3"},
        // Empty names leave nothing; the separator depends on the text so far.
        {{L""}, ""},
        {{L"", L"a"}, "a"},
        {{L"", L"", L"a"}, "a"},
        {{L"a", L""}, "a/"},
        {{L"a", L"", L"b"}, "a//b"},
    };
    for (const auto& [names, text] : cases) {
        std::vector<KeySegment> segments;
        for (const RInternString& name : names) {
            segments.emplace_back(name, IntType::Get32());
        }
        EXPECT_EQ(KeyPath(std::move(segments)).ToString().toStdString(), text);
    }
}

// Types -------------------------------------------------------------------------------------------

std::vector<std::pair<const Type*, const char*>> TypesAndTexts() {
    const Type* const int32 = IntType::Get32();
    const Type* const text = StringType::Get();
    const Type* const ints = ArrayType::Get(int32);
    const Type* const map = KeyMapType::Get({{L"y z", ints}, {L"1", text}, {L"Null", int32}});
    return {
        {BoolType::Get(), "b"},
        {int32, "i"},
        {IntType::Get64(), "l"},
        {RealType::Get32(), "f"},
        {RealType::Get64(), "r"},
        {RealType::Get32(5, 2), "f<5,2>"},
        {RealType::Get64(9, 0), "r<9,0>"},
        {text, "s"},
        {StringType::Get(Collation(RInternString(L"en-US"))), "s<en-US>"},
        {DateType::Get(), "d"},
        {DateTimeType::Get(), "t"},
        {ColorType::Get(), "c"},
        {TupleType::Get({}), "P"},
        {TupleType::Get({int32, RealType::Get32(5, 2), text}), "P{ i, f<5,2>, s }"},
        {ExternalType::Get(1), "x<ext>"},
        {ints, "A<i>"},
        {ArrayType::Get(ints), "A<A<i>>"},
        {SetType::Get(text), "S<s>"},
        {KeySetType::Get(text, int32), "K<s,i>"},
        {KeySetType::Get(TupleType::Get({int32}), ints), "K<P{ i },A<i>>"},
        {KeyMapType::Get({}), "M"},
        {map, "M{ 1:s, 'Null':i, 'y z':A<i> }"},
        {ArrayType::Get(map), "A<M{ 1:s, 'Null':i, 'y z':A<i> }>"},
        {KeyMapType::Get({{L"a", map}}), "M{ a:M{ 1:s, 'Null':i, 'y z':A<i> } }"},
        {TableType::Get({}), "T"},
        {TableType::Get({{L"a", ints}, {L"b", ArrayType::Get(text)}}), "T{ a:A<i>, b:A<s> }"},
    };
}

TEST_F(KeyPathTextTest, TypesReadAndWrite) {
    for (const auto& [type, expected] : TypesAndTexts()) {
        const KeySegment segment(L"a b", type);
        const TStringCore text = segment.ToString();
        EXPECT_EQ(text.toStdString(), std::string("'a b':") + expected);
        EXPECT_TRUE(KeyPath::ParseString(text).GetLeafSegment().TypeAwareEquals(segment)) << text;
    }
}

TEST_F(KeyPathTextTest, OtherForms) {
    const std::pair<const wchar_t*, const char*> cases[] = {
        {L" \ta / b\r", "a/b"},
        {L"'a'/'1'/'b c'", "a/1/'b c'"},
        {L"007", "7"},
        {L"''", ""},
        {L"a\n/\nb", "a/b"},  // Line feeds without a change of indentation are blanks.
        {L"a:i/b : s", "a:i/b:s"},
        {L"a:P{}", "a:P"},
        {L"a:M { }", "a:M"},
        {L"a: K < s , i > ", "a:K<s,i>"},
        {L"a:P{i,b}", "a:P{ i, b }"},
        {L"a:M{'b':i,a:s,007:b}", "a:M{ 7:b, a:s, b:i }"},
        {L"a:f<261,002>", "a:f<5,2>"},  // Narrowed to eight bits.
        {L"a:r<255,255>", "a:r"},
        {L"a:r<255,2>", "a:r<-1,2>"},  // Which does not read back,
        {L"a:r<5,255>", "a:r<5,-1>"},  // nor does this.
        {L"a:s<ROOT>", "a:s"},
        {L"a:x<'ext'>", "a:x<ext>"},
        {L"a:x<'no word'>", "a:x<no word>"},  // Which does not read back.
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(TextOf(KeyPath::ParseString(text), /*includeTypes=*/true), expected) << text;
    }
    EXPECT_EQ(KeyPath::ParseString(L"a/''/b").GetCount(), 3u);
    // The type of an empty name is there, but cannot be written.
    const KeyPath nameless = KeyPath::ParseString(L"'':i");
    EXPECT_EQ(nameless.GetLeafSegment().GetType(), IntType::Get32());
    EXPECT_EQ(TextOf(nameless, /*includeTypes=*/true), "");
    EXPECT_EQ(KeyPath::ParseString(L"a:i/b:s").ToString(), L"a/b");
}

TEST_F(KeyPathTextTest, DefaultCollationNeedsNoPool) {
    const CollatorPoolGuard none{nullptr};
    EXPECT_EQ(KeyPath::ParseString(L"a:s").GetLeafSegment().ToString(), L"a:s");
    EXPECT_EQ(KeyPath::ParseString(L"a:s<ROOT>").GetLeafSegment().ToString(), L"a:s");
    EXPECT_LUM_REPORT(NoCollatorPool, "", "(g_collatorPool) != nullptr",
                      KeyPath::ParseString(L"a:s<fr>"));
}

// Failures ----------------------------------------------------------------------------------------

TEST_F(KeyPathTextTest, Failures) {
    // The texts of a code stand between bars.
    const std::pair<LumError, const wchar_t*> cases[] = {
        {LumError::UnexpectedToken,
         L"| |/|a/|/a|a b|a/b c|a//b|a //c|a\n /b|'a|a/\u00e9|true|Null|1.5|-1|inf|a/true|"
         L"99999999999999999999|a:|a:1|a:'i'|a:<i>|a:i:|a:i:i|a:i<i>|a:i>|a:Null"},
        {LumError::UnexpectedToken,
         L"a:A|a:A<|a:A<i|a:A<i,|a:A<>|a:S<1>|a:K|a:K<s>|a:K<s,|a:K<s,i|a:f<>|a:f<1>|a:f<1,>|"
         L"a:f<1,2|a:f<-1,2>|a:r<1.5,2>|a:s<>|a:s<'en'>|a:s<en|a:s<1>|a:x|a:x<>|a:x<1>|a:x<nobody"},
        {LumError::UnexpectedToken,
         L"a:P{|a:P{i|a:P{i,}|a:P{,}|a:P{i b}|a:M{|a:M{a|a:M{a:|a:M{a:i|a:M{a:i,}|a:M{true:i}|"
         L"a:M{a}|a:M{:i}|a:T}"},
        {LumError::InvalidStoreType, L"a:ii|a/b:A<int>|a:M{a:i, b:x-}|a:i-"},
        {LumError::UnknownTypeName, L"a:z|a:I|a:A<_>|a:P{i,=}|a:K<^,i>"},
    };
    for (const auto& [error, texts] : cases) {
        for (const TStringCore& text : TStringCore(texts).split(u'|')) {
            EXPECT_TRUE(test::FailsAs({error, text.toStdString(), true},
                                      [&] { static_cast<void>(KeyPath::ParseString(text)); }))
                << '"' << text << '"';
        }
    }
}

// What the types themselves refuse comes through as they say it.
TEST_F(KeyPathTextTest, FailuresOfTypes) {
    EXPECT_LUM_REPORT(IllegalElementType, "",
                      "(IsStoreTypeSupportedInArray(elementType->GetStoreType()))",
                      KeyPath::ParseString(L"a:A<T>"));
    EXPECT_LUM_ERROR(DuplicateMember, "b", KeyPath::ParseString(L"a:M{b:i, b:s}"));
    EXPECT_THROW(KeyPath::ParseString(L"a:x<nobody>"), std::out_of_range);
}

TEST_F(KeyPathTextTest, TypeOfAnotherClass) {
    // Calls itself an array, but is none.
    class FalseArrayType final : public Type {
    public:
        FalseArrayType() : Type(StoreType::Array) {}
        const Type* GetBaseType() const override { return this; }
    };
    const FalseArrayType type;
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "", "(type) != nullptr",
                            KeySegment(L"a", &type).ToString());
}

TEST_F(KeyPathTextTest, TypeReaderTakesAllOrNothing) {
    // Where the next token starts; 0 where there is no type, and nothing was taken.
    const std::pair<const wchar_t*, std::size_t> cases[] = {
        {L"i , b", 2},
        {L"f < 1", 0},
        {L"f<1,2>>", 6},
        {L"K<s,M{ a:i, 'b':A<x", 0},
        {L"K<s,M{ a:i, 'b':A<i> }>/c", 23},
        {L"", 0},
    };
    for (const auto& [text, next] : cases) {
        SCOPED_TRACE(TStringCore(text).toStdString());
        VtlScanner scanner{TStringCore(text)};
        VtlScanner expected{TStringCore(text).mid(next)};
        LumError error = LumError::Unspecified;
        EXPECT_EQ(TryReadType(scanner, error) != nullptr, next > 0);
        EXPECT_EQ(error, next > 0 ? LumError::Unspecified : LumError::UnexpectedToken);
        EXPECT_EQ(scanner.PeekNext().GetStart(), next);
        do {
            EXPECT_EQ(scanner.Next().GetKind(), expected.Next().GetKind());
        } while (!expected.GetCurrent().Is(Kind::End));
    }
}

// Nesting -----------------------------------------------------------------------------------------

TStringCore Repeat(const TStringCore& text, unsigned int count) {
    TStringCore repeated;
    for (unsigned int i = 0; i < count; ++i) {
        repeated += text;
    }
    return repeated;
}

TEST_F(KeyPathTextTest, NestingIsLimited) {
    const std::tuple<const wchar_t*, const wchar_t*, unsigned int> forms[] = {
        {L"A<", L">", 1}, {L"S<", L">", 1},   {L"K<", L",i>", 1}, {L"K<i,", L">", 1},
        {L"P{", L"}", 1}, {L"M{b:", L"}", 1}, {L"T{b:", L"}", 1}, {L"A<M{'b':s,c:", L"}>", 2},
    };
    for (const auto& [open, close, levels] : forms) {
        SCOPED_TRACE(TStringCore(open).toStdString());
        const auto nest = [open = open, close = close](unsigned int count) {
            return L"a:" + Repeat(open, count) + L"i" + Repeat(close, count);
        };
        // Arrays and key maps alone nest in themselves; the others' types say so once the innermost
        // level has been read.
        const TStringCore deepest = nest((kMaxNestingLevels - 1) / levels);
        test::OnSmallStack([&] {
            try {
                const TStringCore text = KeyPath::ParseString(deepest).GetLeafSegment().ToString();
                EXPECT_EQ(KeyPath::ParseString(text).GetLeafSegment().ToString(), text);
            } catch (const LumException& refusal) {
                EXPECT_NE(refusal.GetError(), LumError::UnexpectedToken);
            }
        });
        const TStringCore tooDeep = nest(kMaxNestingLevels);
        EXPECT_LUM_REPORT(UnexpectedToken, tooDeep.toStdString(), "",
                          KeyPath::ParseString(tooDeep));
    }
    // Beside each other there may be more.
    const TStringCore wide = L"a:P{ i" + Repeat(L", i", 2 * kMaxNestingLevels) + L" }";
    EXPECT_EQ(KeyPath::ParseString(wide).GetLeafSegment().ToString(), wide);
}

TEST_F(KeyPathTextTest, SegmentsAreLimited) {
    const TStringCore longest = L"a" + Repeat(L"/a", kMaxKeyPathSegments - 1);
    const auto store = factory::MakeDataStore(std::unordered_map<RInternString, SV>());
    store->AddValue(KeyPath::ParseString(longest), MakeStoreValue(IntType::Get32(), 1));
    // What walks the tree level by level has the stack for it.
    test::OnSmallStack([&] { store->Clone(); });
    const TStringCore tooLong = longest + L"/a";
    EXPECT_LUM_REPORT(UnexpectedToken, tooLong.toStdString(), "", KeyPath::ParseString(tooLong));
}

// Cache -------------------------------------------------------------------------------------------

TEST_F(KeyPathTextTest, CacheKnowsFourFields) {
    const Type* const map = KeyMapType::Get({{L"x", BoolType::Get()}});
    const RInternString name(L"a");
    KeyPathSerializerCache cache;
    cache.Add({name, map, true, true}, L"stored");
    EXPECT_EQ(cache.Add({name, map, true, true}, L"ignored"), L"stored");

    // The short form leaves out members at the top alone.
    const std::tuple<KeySegment, bool, bool, const wchar_t*> cases[] = {
        {{name, map}, true, true, L"stored"},
        {{name, map}, true, false, L"a:M"},
        {{name, map}, false, true, L"a"},
        {{name, ArrayType::Get(map)}, true, false, L"a:A<M{ x:b }>"},
        {{name, nullptr}, true, true, L"a"},
        {{L"b", map}, true, true, L"b:M{ x:b }"},
    };
    for (const auto& [segment, includeType, fullForm, expected] : cases) {
        TStringCore text;
        AppendKeySegment(text, segment, includeType, fullForm, &cache);
        EXPECT_EQ(text, expected);
        const TStringCore* const known =
            cache.TryGet({segment.GetSegment(), segment.GetType(), includeType, fullForm});
        ASSERT_NE(known, nullptr) << expected;
        EXPECT_EQ(*known, expected);
    }
    // Paths ask with both flags alike.
    const KeyPath path = KeyPath({name, name}).Add(KeySegment(name, map));
    EXPECT_EQ(TextOf(path, /*includeTypes=*/true, &cache), "a/a/stored");
}

// Any path of names that read back ----------------------------------------------------------------

// A bare number is read as one, and loses its leading zeros; the units have none.
TStringCore MakeName(test::Random& random) {
    using namespace std::string_view_literals;
    constexpr std::u16string_view kUnits = u"ab1.'\\\n\t /:#-~\0\xD83D\xDE00\u00e9"sv;
    TStringCore name;
    for (std::size_t left = 1 + random.Below(14); left > 0; --left) {
        name += kUnits[random.Below(kUnits.size())];
    }
    return name;
}

const Type* MakeType(test::Random& random, unsigned int level) {
    static const auto s_types = TypesAndTexts();
    const Type* const simple = s_types[random.Below(s_types.size())].first;
    switch (level < 4 ? random.Below(3) : 2) {
        case 0:
            return ArrayType::Get(
                KeyMapType::Get({{MakeName(random), MakeType(random, level + 1)}}));
        case 1:
            return KeyMapType::Get({{L"a", MakeType(random, level + 1)}, {L"b c", simple}});
        default:
            return simple;
    }
}

TEST_F(KeyPathTextTest, PathsReadBack) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    KeyPathSerializerCache cache;
    for (int i = 0; i < 2000; ++i) {
        std::vector<KeySegment> segments;
        for (std::size_t left = 1 + random.Below(5); left > 0; --left) {
            const Type* const type = random.Below(3) == 0 ? nullptr : MakeType(random, 0);
            segments.emplace_back(MakeName(random), type);
        }
        const KeyPath path(std::move(segments));
        TStringCore text;
        AppendKeyPath(text, path, /*includeTypes=*/true, nullptr);
        const KeyPath read = KeyPath::ParseString(text);
        ASSERT_TRUE(std::ranges::equal(path.GetSegments(), read.GetSegments(),
                                       &KeySegment::TypeAwareEquals))
            << text;
        ASSERT_EQ(KeyPath::ParseString(path.ToString()), path) << text;
        for (int round = 0; round < 2; ++round) {
            ASSERT_EQ(TextOf(path, /*includeTypes=*/true, &cache), text.toStdString());
            ASSERT_EQ(TextOf(path, /*includeTypes=*/false, &cache), path.ToString().toStdString());
        }
    }
}

}  // namespace
}  // namespace lum::core
