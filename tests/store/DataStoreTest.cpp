#include "lum/core/store/IDataStore.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <unordered_map>

#include "core/main/store/ValueKeyMap.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using test::TextOf;
using Members = std::unordered_map<RInternString, SV>;

std::unique_ptr<IDataStore> MakeEmpty() {
    return factory::MakeDataStore(std::unique_ptr<Members>());
}

std::string TextOf(const IDataStore& store) {
    return TextOf(store.GetValue(KeyPath()));
}

/// One member of each kind that a path can meet.
std::unique_ptr<IDataStore> MakeSample() {
    const Type* const keyMap = KeyMapType::Get({});
    return factory::MakeDataStore(Members{
        {L"number", factory::MakeInt32(1)},
        {L"map", factory::MakeKeyMap(Members{{L"x", factory::MakeInt32(2)}})},
        {L"array", test::ColumnOf("i: 10 11!Null")},
        {L"set", test::SetOf("i: 5")},
        {L"row", factory::MakeTuple(test::RowOf("P{i,b}: 7 -"))},
        {L"maps",
         factory::MakeArray<SV>(
             keyMap, {factory::MakeKeyMap(Members{{L"y", factory::MakeInt32(3)}}), nullptr},
             SortSpecOrder::UNKNOWN)},
        {L"null", factory::MakeSpecial(keyMap, SpecialKind::Null)},
    });
}

TEST(DataStoreTest, ReadsWalkAllCollections) {
    const auto store = MakeSample();
    const struct {
        KeyPath path;
        const char* expected;                    // "null" where TryGetValue finds nothing.
        LumError error = LumError::Unspecified;  // Of GetValue then.
        const char* details = "";
    } cases[] = {
        {{L"number"}, "1"},
        {{L"map", L"x"}, "2"},
        {{L"array", L"0"}, "10"},
        {{L"array", L"1"}, "11"},  // The placeholder.
        {{L"set", L"5"}, "true"},
        {{L"row", L"1"}, "!Null"},
        {{L"maps", L"0", L"y"}, "3"},
        {{L"map", L"z"}, "null", LumError::KeyNotFound, "z"},
        {{L"number", L"x"}, "null", LumError::NotStringAccessible, "number/x"},
        {{L"array", L"0", L"x"}, "null", LumError::NotStringAccessible, "array/0/x"},
        {{L"array", L"x"}, "null", LumError::CannotParseInt32},
        {{L"maps", L"1", L"y"}, "null", LumError::NotStringAccessible, "maps/1/y"},
        {{L"null", L"x"}, "null", LumError::ExpectedCollection, "KeyMap (special kind: Null)"},
        {{L"null"}, "!Null"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path.ToString().toStdString());
        EXPECT_EQ(TextOf(store->TryGetValue(c.path)), c.expected);
        if (c.error == LumError::Unspecified) {
            EXPECT_EQ(TextOf(store->GetValue(c.path)), c.expected);
        } else {
            EXPECT_TRUE(test::FailsAs({c.error, c.details}, [&] { store->GetValue(c.path); }));
        }
    }
    EXPECT_EQ(store->GetValue(KeyPath())->GetCount(), 7u);
    EXPECT_EQ(store->TryGetValue(KeyPath()), store->GetValue(KeyPath()));
}

TEST(DataStoreTest, WritesMakeTheKeyMapsOnTheirWay) {
    const auto store = MakeEmpty();
    const SV one = factory::MakeInt32(1);
    store->AddValue({L"a", L"b"}, one);
    EXPECT_EQ(store->GetValue({L"a", L"b"}), one);
    store->SetValue({L"a", L"c", L"d"}, factory::MakeBool(true));
    store->SetValue({L"a", L"b"}, factory::MakeInt32(2));
    store->UpdateValue({L"a", L"b"}, factory::MakeInt32(3));
    store->AddValue({L"e"}, one);
    EXPECT_EQ(TextOf(*store), "{a = {b = 3, c = {d = true}}, e = 1}");
}

// A parent whose last name is empty counts as empty.
TEST(DataStoreTest, AParentThatEndsInAnEmptyNameIsTheRoot) {
    const auto store = MakeEmpty();
    store->AddValue({L"a", L"", L"b"}, factory::MakeInt32(1));
    EXPECT_EQ(TextOf(*store), "{b = 1}");
    EXPECT_LUM_ERROR(ValueAlreadySet, "a//b",
                     store->AddValue({L"a", L"", L"b"}, factory::MakeInt32(1)));
    EXPECT_LUM_ERROR(KeyNotFound, "a", store->GetValue({L"a", L"", L"b"}));
    // Before the last name it is a name like any other, and no key may be empty.
    EXPECT_LUM_ERROR(EmptyKeyPath, "",
                     store->AddValue({L"a", L"", L"c", L"d"}, factory::MakeInt32(1)));
}

TEST(DataStoreTest, FailingWrites) {
    using Store = IDataStore;
    using Write = void (Store::*)(const KeyPath&, SV);
    const Write add = &Store::AddValue;
    const Write update = &Store::UpdateValue;
    const Write set = &Store::SetValue;
    const std::vector<Write> all{add, update, set};
    const SV value = factory::MakeInt64(1);
    const struct {
        std::vector<Write> writes;
        KeyPath path;
        LumError error;
        const char* details = "";
    } cases[] = {
        {all, {}, LumError::EmptyKeyPath},
        {{add, set}, {L""}, LumError::EmptyKeyPath},
        {{add, set}, {L"map", L""}, LumError::EmptyKeyPath},
        {all, {L"number", L"x", L"y"}, LumError::NotStringAccessible, "number/x/y"},
        {all, {L"array", L"0"}, LumError::CollectionNotMutable},
        {all, {L"array", L"0", L"x"}, LumError::CollectionNotMutable},
        {all, {L"set", L"5"}, LumError::CollectionNotMutable},
        {all, {L"row", L"0"}, LumError::CollectionNotMutable},
        {all, {L"null", L"x"}, LumError::CollectionNotMutable},
        {{add}, {L"map", L"x"}, LumError::ValueAlreadySet, "map/x"},
        {{update}, {L"map", L"z"}, LumError::ValueNotYetComputed, "map/z"},
        {{update, set}, {L"map", L"x"}, LumError::TypeMismatchExpected},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path.ToString().toStdString());
        for (const Write write : c.writes) {
            const auto store = MakeSample();
            const std::string former = TextOf(*store);
            EXPECT_TRUE(
                test::FailsAs({c.error, c.details}, [&] { (store.get()->*write)(c.path, value); }));
            EXPECT_EQ(TextOf(*store), former);
        }
    }
}

TEST(DataStoreTest, KeyMapsOfAFailedWriteStay) {
    const auto store = MakeEmpty();
    EXPECT_LUM_ERROR(EmptyKeyPath, "",
                     store->AddValue({L"a", L"b", L"", L"d", L"e"}, factory::MakeInt32(1)));
    EXPECT_EQ(TextOf(*store), "{a = {b = {}}}");
    EXPECT_LUM_ERROR(ValueNotYetComputed, "c/d",
                     store->UpdateValue({L"c", L"d"}, factory::MakeInt32(1)));
    EXPECT_LUM_ERROR(NullArgument, "", store->SetValue({L"c", L"e"}, nullptr));
    EXPECT_EQ(TextOf(*store), "{a = {b = {}}, c = {}}");
}

TEST(DataStoreTest, TypesOfSegmentsAreNotLookedAt) {
    const auto store = MakeEmpty();
    store->AddValue(KeyPath(KeySegment(L"a", BoolType::Get())), factory::MakeInt32(1));
    EXPECT_EQ(TextOf(store->GetValue(KeyPath(KeySegment(L"a", IntType::Get64())))), "1");
}

TEST(DataStoreTest, RootsAreSharedReleasedAndCloned) {
    const SV root = factory::MakeKeyMap(Members{{L"a", test::ColumnOf("i: 1")}});
    const auto store = factory::MakeDataStore(root);
    EXPECT_EQ(store->GetValue(KeyPath()), root);
    EXPECT_EQ(store->GetRootKeyMap().get(), &root->AsKeyMap());

    const auto clone = store->Clone();
    clone->AddValue({L"b"}, factory::MakeInt32(2));
    EXPECT_EQ(TextOf(*store), "{a = i: 1}");
    EXPECT_EQ(TextOf(*clone), "{a = i: 1, b = 2}");
    EXPECT_NE(clone->GetValue({L"a"}), store->GetValue({L"a"}));

    EXPECT_EQ(SV(store->ReleaseRoot()), root);
    EXPECT_EQ(TextOf(*store), "{}");
    EXPECT_EQ(store->TryGetValue({L"a"}), nullptr);
    store->AddValue({L"c"}, factory::MakeInt32(3));
    EXPECT_EQ(TextOf(root), "{a = i: 1}");
}

TEST(DataStoreTest, RootsAreKeyMaps) {
    EXPECT_LUM_ERROR(ExpectedKeyMap, "Array", factory::MakeDataStore(test::ColumnOf("i: 1")));
    EXPECT_LUM_ERROR(
        ExpectedKeyMap, "KeyMap",
        factory::MakeDataStore(factory::MakeSpecial(KeyMapType::Get({}), SpecialKind::Null)));
    EXPECT_LUM_ERROR(ExpectedKeyMap, "", factory::MakeDataStore(SV()));
    EXPECT_EQ(TextOf(*factory::MakeDataStore(Members{{L"a", factory::MakeInt32(1)}})), "{a = 1}");
}

}  // namespace
}  // namespace lum::core
