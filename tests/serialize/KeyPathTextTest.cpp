#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <string_view>
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
#include "tests/support/SmallStack.h"

namespace lum::core {
namespace {

using Kind = VtlTokenKind;
using test::CollatorPoolGuard;
using test::FailsAs;

// Registers the external types "ext" and "no word".
class ExternalTypesGuard {
public:
    ExternalTypesGuard() {
        Register(1, L"ext");
        Register(2, L"no word");
    }
    ~ExternalTypesGuard() { ClearExternalTypes(); }
    ExternalTypesGuard(const ExternalTypesGuard&) = delete;
    ExternalTypesGuard& operator=(const ExternalTypesGuard&) = delete;

private:
    static void Register(unsigned short typeId, const TStringCore& name) {
        RegisterExternalType(
            typeId, name, [](const ValueExternal&) { return std::vector<unsigned char>(); },
            [](const ArrayView<const unsigned char>&) { return nullptr; });
    }
};

class KeyPathTextTest : public testing::Test {
private:
    CollatorPoolGuard m_pool{std::make_shared<test::AnyLocalePool>()};
    ExternalTypesGuard m_externalTypes;
};

std::string TextOf(const KeyPath& path, bool includeTypes,
                   KeyPathSerializerCache* cache = nullptr) {
    TStringCore text = L"/";  // What stands there already is no part of the path.
    AppendKeyPath(text, path, includeTypes, cache);
    return text.mid(1).toStdString();
}

std::string TextOf(const KeySegment& segment, bool fullForm) {
    TStringCore text;
    AppendKeySegment(text, segment, /*includeType=*/true, fullForm, nullptr);
    return text.toStdString();
}

bool IsSame(const KeyPath& a, const KeyPath& b) {
    return std::equal(a.GetSegments().begin(), a.GetSegments().end(), b.GetSegments().begin(),
                      b.GetSegments().end(), [](const KeySegment& left, const KeySegment& right) {
                          return left.TypeAwareEquals(right);
                      });
}

// Names -------------------------------------------------------------------------------------------

TEST_F(KeyPathTextTest, Names) {
    using namespace std::string_literals;
    using namespace std::string_view_literals;
    const std::pair<std::u16string_view, std::string> cases[] = {
        {u"a", "a"},
        {u"a-b.c?_^~=#9", "a-b.c?_^~=#9"},
        {u"12", "12"},
        {u"9223372036854775807", "9223372036854775807"},
        {u"99999999999999999999", "'99999999999999999999'"},
        {u"12a", "'12a'"},
        {u"1.5", "'1.5'"},
        {u"-1", "'-1'"},
        {u"#3", "'#3'"},
        {u"a b", "'a b'"},
        {u" a", "' a'"},
        {u"a ", "'a '"},
        {u"a/b", "'a/b'"},
        {u"a:i", "'a:i'"},
        {u"//a", "'//a'"},
        {u"'a'", "'\\'a\\''"},
        {u"\\", "'\\\\'"},
        {u"a\nb\n", "'a\\nb\\n'"},
        {u"true", "'true'"},
        {u"Null", "'Null'"},
        {u"nan", "'nan'"},
        {u"Nullable", "Nullable"},
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
    struct Case {
        std::vector<RInternString> names;
        const char* text;
    };
    const Case cases[] = {
        {{}, ""},
        {{L"a", L"b"}, "a/b"},
        {{L"a", L"b c", L"3"}, "a/'b c'/3"},
        // Empty names leave nothing; the separator depends on the text so far.
        {{L""}, ""},
        {{L"", L"a"}, "a"},
        {{L"", L"", L"a"}, "a"},
        {{L"a", L""}, "a/"},
        {{L"a", L"", L"b"}, "a//b"},
    };
    KeyPathSerializerCache cache;
    for (const Case& test : cases) {
        std::vector<KeySegment> segments;
        for (const RInternString& name : test.names) {
            segments.emplace_back(name, IntType::Get32());
        }
        const KeyPath path(std::move(segments));
        EXPECT_EQ(path.ToString().toStdString(), test.text);
        EXPECT_EQ(TextOf(path, /*includeTypes=*/false), test.text);
        EXPECT_EQ(TextOf(path, /*includeTypes=*/false, &cache), test.text);
        EXPECT_EQ(TextOf(path, /*includeTypes=*/false, &cache), test.text);
    }
}

TEST_F(KeyPathTextTest, ReadsPaths) {
    const std::pair<const wchar_t*, const char*> cases[] = {
        {L"a/b", "a/b"},
        {L" \ta / b\r", "a/b"},
        {L"'a'/'1'/'b c'", "a/1/'b c'"},
        {L"007", "7"},
        {L"''", ""},
        {L"a/''/b", "a//b"},
        {L"a\n/\nb", "a/b"},  // Line feeds without a change of indentation are blanks.
        {L"a:i/b : s", "a:i/b:s"},
        {L"'':i", ""},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(TextOf(KeyPath::ParseString(text), /*includeTypes=*/true), expected) << text;
    }
    EXPECT_EQ(KeyPath::ParseString(L"a/''/b").GetCount(), 3u);
    // The type of an empty name is there, but cannot be written.
    EXPECT_EQ(KeyPath::ParseString(L"'':i").GetLeafSegment().GetType(), IntType::Get32());
    EXPECT_EQ(KeyPath::ParseString(L"a:i/b:s").ToString(), L"a/b");
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

TEST_F(KeyPathTextTest, TypesInOtherForms) {
    const std::pair<const wchar_t*, const char*> cases[] = {
        {L"P{}", "P"},
        {L"M { }", "M"},
        {L"T{}", "T"},
        {L" K < s , i > ", "K<s,i>"},
        {L"P{i,b}", "P{ i, b }"},
        {L"M{'b':i,a:s,007:b}", "M{ 7:b, a:s, b:i }"},
        {L"f<261,002>", "f<5,2>"},  // Narrowed to eight bits.
        {L"r<255,255>", "r"},
        {L"r<255,2>", "r<-1,2>"},  // Which does not read back,
        {L"r<5,255>", "r<5,-1>"},  // nor does this.
        {L"s<ROOT>", "s"},
        {L"x<'ext'>", "x<ext>"},
        {L"x<'no word'>", "x<no word>"},  // Which does not read back.
    };
    for (const auto& [text, expected] : cases) {
        const KeyPath path = KeyPath::ParseString(TStringCore(L"a:") + text);
        EXPECT_EQ(TextOf(path, /*includeTypes=*/true), std::string("a:") + expected) << text;
    }
}

// The short form leaves out members at the top alone.
TEST_F(KeyPathTextTest, ShortForm) {
    const Type* const map = KeyMapType::Get({{L"a", IntType::Get32()}});
    EXPECT_EQ(TextOf(KeySegment(L"a", map), /*fullForm=*/false), "a:M");
    EXPECT_EQ(TextOf(KeySegment(L"a", ArrayType::Get(map)), /*fullForm=*/false), "a:A<M{ a:i }>");
    EXPECT_EQ(TextOf(KeySegment(L"a", nullptr), /*fullForm=*/false), "a");
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
            EXPECT_TRUE(FailsAs({error, text.toStdString(), true},
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
    try {
        KeyPath::ParseString(L"a:x<nobody>");
        FAIL() << "an unknown external type was read";
    } catch (const std::out_of_range& failure) {
        EXPECT_STREQ(failure.what(), "invalid unordered_map<K, T> key");
    }
}

// Calls itself an array, but is none.
class FalseArrayType final : public Type {
public:
    FalseArrayType() : Type(StoreType::Array) {}
    const Type* GetBaseType() const override { return this; }
};

TEST_F(KeyPathTextTest, TypeOfAnotherClass) {
    const FalseArrayType type;
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "", "(type) != nullptr",
                            KeySegment(L"a", &type).ToString());
}

// Over a running scanner --------------------------------------------------------------------------

TEST_F(KeyPathTextTest, ReadsListsOfPaths) {
    VtlScanner scanner{TStringCore(L"a/b 'c d':A<i> 12 e :s -> f")};
    std::string texts;
    for (const KeyPath& path : KeyPathReader().ReadAll(scanner)) {
        texts += TextOf(path, /*includeTypes=*/true) + ' ';
    }
    EXPECT_EQ(texts, "a/b 'c d':A<i> 12 e:s ");
    EXPECT_TRUE(scanner.Accept(Kind::Arrow));
    EXPECT_EQ(KeyPathReader().ReadAll(scanner).size(), 1u);
    EXPECT_TRUE(KeyPathReader().ReadAll(scanner).empty());

    VtlScanner failing{TStringCore(L"a b/ ->")};
    EXPECT_LUM_REPORT(UnexpectedToken, "a b/ ->", "", KeyPathReader().ReadAll(failing));
}

TEST_F(KeyPathTextTest, ColonsBehindNames) {
    struct Case {
        const wchar_t* text;
        TypeColon typeColon;
        const char* path;
        Kind next;
    };
    const Case cases[] = {
        {L"x :1:i", TypeColon::TouchesName, "x", Kind::Colon},
        {L"x:i :1", TypeColon::TouchesName, "x:i", Kind::Colon},
        {L"x: i :1", TypeColon::TouchesName, "x:i", Kind::Colon},
        {L"'x' :i", TypeColon::TouchesName, "x", Kind::Colon},
        {L"'x':i/y :b", TypeColon::TouchesName, "x:i/y", Kind::Colon},
        {L"x/y:i )", TypeColon::TouchesName, "x/y:i", Kind::RightParen},
        {L"x :i :1", TypeColon::AnywhereBehindName, "x:i", Kind::Colon},
    };
    for (const Case& test : cases) {
        VtlScanner scanner{TStringCore(test.text)};
        EXPECT_EQ(TextOf(KeyPathReader().Read(scanner, test.typeColon), /*includeTypes=*/true),
                  test.path)
            << TStringCore(test.text);
        EXPECT_TRUE(scanner.PeekIs(test.next)) << TStringCore(test.text);
    }
}

TEST_F(KeyPathTextTest, TypeReaderTakesAllOrNothing) {
    const std::pair<const wchar_t*, std::size_t> cases[] = {
        // The tokens that a type takes; 0 where there is none.
        {L"i , b", 1},
        {L"f < 1", 0},
        {L"f<1,2>>", 6},
        {L"K<s,M{ a:i, 'b':A<x", 0},
        {L"K<s,M{ a:i, 'b':A<i> }>/c", 18},
        {L"P{ i, 1 }", 0},
        {L"", 0},
    };
    for (const auto& [text, taken] : cases) {
        VtlScanner expected{TStringCore(text)};
        VtlScanner scanner{TStringCore(text)};
        LumError error = LumError::Unspecified;
        EXPECT_EQ(TryReadType(scanner, error) != nullptr, taken > 0) << TStringCore(text);
        EXPECT_EQ(error, taken > 0 ? LumError::Unspecified : LumError::UnexpectedToken);
        for (std::size_t i = 0; i < taken; ++i) {
            expected.Next();
        }
        do {
            EXPECT_EQ(scanner.Next().GetKind(), expected.Next().GetKind()) << TStringCore(text);
            EXPECT_EQ(scanner.GetCurrent().GetStart(), expected.GetCurrent().GetStart());
        } while (!expected.GetCurrent().Is(Kind::End));
    }
}

// Nesting -----------------------------------------------------------------------------------------

TStringCore Nested(const TStringCore& open, const TStringCore& close, unsigned int levels) {
    TStringCore text = L"a:";
    for (unsigned int i = 1; i < levels; ++i) {
        text += open;
    }
    text += u'i';
    for (unsigned int i = 1; i < levels; ++i) {
        text += close;
    }
    return text;
}

TEST_F(KeyPathTextTest, NestingIsLimited) {
    const std::pair<const wchar_t*, const wchar_t*> forms[] = {
        {L"A<", L">"}, {L"S<", L">"},   {L"K<", L",i>"}, {L"K<i,", L">"},
        {L"P{", L"}"}, {L"M{b:", L"}"}, {L"T{b:", L"}"}, {L"A<M{'b':s,c:", L"}>"},
    };
    for (const auto& [open, close] : forms) {
        // Sets, key sets, tuples and tables cannot be nested in themselves, which their types say
        // when the innermost level has been read.
        const unsigned int perForm = open == std::wstring_view(L"A<M{'b':s,c:") ? 2 : 1;
        const TStringCore deepest = Nested(open, close, (kMaxNestingLevels - 1) / perForm + 1);
        std::string failure;
        test::OnSmallStack([&] {
            try {
                KeyPath::ParseString(deepest);
            } catch (const LumException& exception) {
                failure = exception.GetDetails().toStdString();
            }
        });
        EXPECT_EQ(failure.find("unexpected token"), std::string::npos) << failure;

        const TStringCore tooDeep = Nested(open, close, kMaxNestingLevels + 1);
        EXPECT_LUM_REPORT(UnexpectedToken, tooDeep.toStdString(), "",
                          KeyPath::ParseString(tooDeep));
    }
    // Beside each other there may be more.
    TStringCore wide = L"a:P{ i";
    for (unsigned int i = 0; i < 2 * kMaxNestingLevels; ++i) {
        wide += L", i";
    }
    wide += L" }";
    EXPECT_EQ(KeyPath::ParseString(wide).GetLeafSegment().ToString(), wide);
    const KeyPath path = KeyPath::ParseString(Nested(L"A<", L">", kMaxNestingLevels));
    EXPECT_EQ(path.GetLeafSegment().ToString(), Nested(L"A<", L">", kMaxNestingLevels));
}

TEST_F(KeyPathTextTest, SegmentsAreLimited) {
    TStringCore longest = L"a";
    for (unsigned int i = 1; i < kMaxKeyPathSegments; ++i) {
        longest += L"/a";
    }
    const auto store = factory::MakeDataStore(std::unordered_map<RInternString, SV>());
    store->AddValue(KeyPath::ParseString(longest), MakeStoreValue(IntType::Get32(), 1));
    // What walks the tree level by level has the stack for it.
    test::OnSmallStack([&] { store->Clone(); });
    const TStringCore tooLong = longest + TStringCore(L"/a");
    EXPECT_LUM_REPORT(UnexpectedToken, tooLong.toStdString(), "", KeyPath::ParseString(tooLong));
}

// Cache -------------------------------------------------------------------------------------------

TEST_F(KeyPathTextTest, CacheKnowsFourFields) {
    const Type* const map = KeyMapType::Get({{L"x", BoolType::Get()}});
    const RInternString name(L"a");
    KeyPathSerializerCache cache;
    cache.Add({name, map, true, true}, L"stored");
    EXPECT_EQ(cache.Add({name, map, true, true}, L"ignored"), L"stored");

    struct Case {
        KeySegment segment;
        bool includeType;
        bool fullForm;
        const wchar_t* expected;
    };
    const Case cases[] = {
        {{name, map}, true, true, L"stored"}, {{name, map}, true, false, L"a:M"},
        {{name, map}, false, true, L"a"},     {{name, BoolType::Get()}, true, true, L"a:b"},
        {{name, nullptr}, true, true, L"a"},  {{L"b", map}, true, true, L"b:M{ x:b }"},
    };
    for (const Case& test : cases) {
        const KeyPathSerializerCache::Key key{test.segment.GetSegment(), test.segment.GetType(),
                                              test.includeType, test.fullForm};
        TStringCore text;
        AppendKeySegment(text, test.segment, test.includeType, test.fullForm, &cache);
        EXPECT_EQ(text, test.expected);
        ASSERT_NE(cache.TryGet(key), nullptr) << test.expected;
        EXPECT_EQ(*cache.TryGet(key), test.expected);
    }
    // Paths ask with both flags alike.
    EXPECT_EQ(
        TextOf(KeyPath({name, name}).Add(KeySegment(name, map)), /*includeTypes=*/true, &cache),
        "a/a/stored");
}

// Any path of names that read back ----------------------------------------------------------------

class PathMaker {
public:
    KeyPath Make() {
        std::vector<KeySegment> segments;
        for (unsigned int left = 1 + Below(5); left > 0; --left) {
            segments.emplace_back(Name(), Below(3) == 0 ? nullptr : MakeType(0));
        }
        return KeyPath(std::move(segments));
    }

private:
    unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(m_random()) % limit; }

    TStringCore Name() {
        using namespace std::string_view_literals;
        constexpr std::u16string_view kUnits = u"ab1.'\\\n\t /:#-~\0\xD83D\xDE00\u00e9"sv;
        TStringCore name;
        for (unsigned int left = 1 + Below(14); left > 0; --left) {
            name += kUnits[Below(static_cast<unsigned int>(kUnits.size()))];
        }
        // A bare number is read as one, and loses its leading zeros; the units have none.
        return name;
    }
    const Type* MakeType(unsigned int level) {
        const Type* const simple = m_types[Below(static_cast<unsigned int>(m_types.size()))].first;
        switch (level < 4 ? Below(4) : 3) {
            case 0:
                return ArrayType::Get(KeyMapType::Get({{Name(), MakeType(level + 1)}}));
            case 1:
                return KeySetType::Get(TupleType::Get({IntType::Get32(), RealType::Get64(7, 3)}),
                                       ArrayType::Get(IntType::Get64()));
            case 2:
                return KeyMapType::Get({{L"a", MakeType(level + 1)}, {L"b c", simple}});
            default:
                return simple;
        }
    }

    std::mt19937 m_random{1};
    const std::vector<std::pair<const Type*, const char*>> m_types = TypesAndTexts();
};

TEST_F(KeyPathTextTest, PathsReadBack) {
    PathMaker maker;
    KeyPathSerializerCache cache;
    for (int i = 0; i < 2000; ++i) {
        const KeyPath path = maker.Make();
        TStringCore text;
        AppendKeyPath(text, path, /*includeTypes=*/true, nullptr);
        ASSERT_TRUE(IsSame(KeyPath::ParseString(text), path)) << text;
        ASSERT_EQ(KeyPath::ParseString(path.ToString()), path) << text;
        ASSERT_EQ(TextOf(path, /*includeTypes=*/true, &cache), text.toStdString());
        ASSERT_EQ(TextOf(path, /*includeTypes=*/true, &cache), text.toStdString());
        ASSERT_EQ(TextOf(path, /*includeTypes=*/false, &cache), path.ToString().toStdString());
    }
}

}  // namespace
}  // namespace lum::core
