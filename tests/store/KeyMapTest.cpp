#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <utility>

#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/StringType.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using test::TextOf;
using Members = std::unordered_map<RInternString, SV>;

SV MakeMap(Members members) {
    return factory::MakeKeyMap(std::move(members));
}

TEST(KeyMapTest, FactoriesTakeMembersOver) {
    EXPECT_EQ(TextOf(factory::MakeKeyMap(std::unique_ptr<Members>())), "{}");
    const SV one = factory::MakeInt32(1);
    const SV map = factory::MakeKeyMap(std::make_unique<Members>(Members{{L"a", one}}));
    EXPECT_EQ(map->AsKeyMap().GetValue(L"a"), one);
    Members refused{{L"a", one}, {L"b", nullptr}};
    EXPECT_LUM_REPORT(NullArgument, "", "(value) != nullptr",
                      factory::MakeKeyMap(std::move(refused)));
    EXPECT_EQ(refused.at(L"a"), one);
}

TEST(KeyMapTest, Reads) {
    const SV map = MakeMap({{L"a", factory::MakeInt32(1)}, {L"", factory::MakeBool(true)}});
    const IStoreCollection& collection = map->AsCollection();
    const IStoreKeyMap& keyMap = map->AsKeyMap();
    EXPECT_EQ(TextOf(map), "{ = true, a = 1}");
    EXPECT_EQ(map->GetCount(), 2u);
    EXPECT_EQ(collection.GetValue(L"a"), keyMap.GetValue(L"a"));
    EXPECT_EQ(collection.TryGetValue(L"a"), keyMap.GetValue(L"a"));
    EXPECT_TRUE(collection.HasKey(L"a") && keyMap.HasKey(L"a") && keyMap.HasKey(L""));

    // The two interfaces fail in their own ways.
    EXPECT_LUM_REPORT(KeyNotFound, "A", "", collection.GetValue(L"A"));
    EXPECT_NO_SUCH_KEY(keyMap.GetValue(L"A"));
    EXPECT_EQ(collection.TryGetValue(L"A"), nullptr);
    EXPECT_FALSE(collection.HasKey(L"A") || keyMap.HasKey(L"A"));

    EXPECT_EQ(keyMap.GetKeyType(), StringType::Get());
    EXPECT_FALSE(keyMap.HasSpecialKeys() || keyMap.HasSpecialKey(SpecialKind::Null));
    EXPECT_LUM_REPORT(SpecialKeysNotSupported, "", "",
                      keyMap.GetValueForSpecialKey(SpecialKind::Null));
    EXPECT_LUM_REPORT(SpecialKeysNotSupported, "", "", keyMap.GetSpecialKeyCount());
    EXPECT_LUM_REPORT(SpecialKeysNotSupported, "", "", keyMap.GetSpecialEntries());

    auto cursor = keyMap.GetEntries();
    ++cursor;
    EXPECT_TRUE((++cursor).IsAtEnd());
}

TEST(KeyMapTest, WritesKeepTheTypesOfMembers) {
    using Map = IStoreMutableCollection;
    using Write = void (Map::*)(RInternString, const SV&);
    const SV five = factory::MakeInt32(5);
    const SV wide = factory::MakeInt64(5);
    const SV precise = factory::MakeReal64(1, 10, 2);
    const char kKey[] = "!(key.GetValue().isEmpty())";
    const char kType[] = "(value->GetType() == itr->second->GetType())";
    const char kNull[] = "(value) != nullptr";
    const struct {
        Write write;
        const wchar_t* key;
        SV value;
        LumError error = LumError::Unspecified;  // Where the write succeeds.
        const char* condition = "";
    } cases[] = {
        {&Map::AddValue, L"b", five},
        {&Map::UpdateValue, L"i", five},
        {&Map::SetValue, L"i", five},
        {&Map::SetValue, L"b", wide},
        {&Map::AddValue, L"i", five, LumError::ImmutableValue, "(result.second)"},
        {&Map::UpdateValue, L"b", five, LumError::ValueNotYetComputed, "(itr != m_dict->cend())"},
        {&Map::UpdateValue, L"i", wide, LumError::TypeMismatchExpected, kType},
        {&Map::UpdateValue, L"r", precise, LumError::TypeMismatchExpected, kType},
        {&Map::SetValue, L"r", precise, LumError::TypeMismatchExpected, kType},
        // The key is looked at first.
        {&Map::AddValue, L"", nullptr, LumError::EmptyKeyPath, kKey},
        {&Map::UpdateValue, L"", five, LumError::EmptyKeyPath, kKey},
        {&Map::SetValue, L"", five, LumError::EmptyKeyPath, kKey},
        {&Map::AddValue, L"b", nullptr, LumError::NullArgument, kNull},
        {&Map::UpdateValue, L"b", nullptr, LumError::NullArgument, kNull},
        {&Map::SetValue, L"i", nullptr, LumError::NullArgument, kNull},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(&c - cases));
        const SV map = MakeMap({{L"i", factory::MakeInt32(1)}, {L"r", factory::MakeReal64(1)}});
        const std::string former = TextOf(map);
        const auto write = [&] { (map->AsMutableCollection().*c.write)(c.key, c.value); };
        if (c.error == LumError::Unspecified) {
            write();
            EXPECT_EQ(map->AsKeyMap().GetValue(c.key), c.value);
            EXPECT_EQ(map->AsCollection().GetValue(c.key), c.value);
        } else {
            EXPECT_TRUE(test::FailsAs({c.error, "", true, c.condition}, write));
            EXPECT_EQ(TextOf(map), former);
        }
    }
}

// The members move when there is no more room for them.
TEST(KeyMapTest, ManyMembersKeepTheirOrder) {
    constexpr int kCount = 1009;
    const auto nameOf = [](int i) { return RInternString(TStringCore::number(i * 601 % kCount)); };
    MemberMap members;
    EXPECT_EQ(members.Find(nameOf(0)), nullptr);
    EXPECT_FALSE(members.Replace(nameOf(0), factory::MakeInt32(0)));
    for (int i = 0; i < kCount; ++i) {
        ASSERT_TRUE(members.Insert(nameOf(i), factory::MakeInt32(i)));
        ASSERT_FALSE(members.Insert(nameOf(i / 2), factory::MakeInt32(-1)));
        ASSERT_EQ(members.Find(nameOf(i + 1)),
                  i + 1 == kCount ? &members.begin()->second : nullptr);
        ASSERT_EQ(members.size(), static_cast<std::size_t>(i + 1));
    }
    ASSERT_TRUE(members.Replace(nameOf(7), factory::MakeInt32(-7)));
    EXPECT_LUM_REPORT(NullArgument, "", "(value) != nullptr", members.Insert(nameOf(7), nullptr));
    EXPECT_LUM_REPORT(NullArgument, "", "(value) != nullptr", members.Replace(nameOf(7), nullptr));
    // A value of the map itself, where it runs out of room.
    MemberMap few;
    for (int i = 0; i < 9; ++i) {
        few.Insert(nameOf(i), i == 0 ? factory::MakeInt32(0) : *few.Find(nameOf(i - 1)));
    }
    EXPECT_EQ(few.Find(nameOf(8))->get(), few.begin()->second.get());

    const SV map = factory::MakeKeyMap(std::move(members));
    EXPECT_TRUE(members.empty());
    int i = 0;
    for (const auto& [name, value] : map->AsKeyMap().GetEntries()) {
        ASSERT_EQ(name, nameOf(i));
        ASSERT_EQ(value->AsInt32(), i == 7 ? -7 : i);
        ASSERT_EQ(map->AsKeyMap().GetValue(name), value);
        ++i;
    }
    EXPECT_EQ(i, kCount);
}

TEST(KeyMapTest, TypesFollowTheMembers) {
    const SV inner = MakeMap({{L"b", test::ColumnOf("s: x")}});
    const SV map = MakeMap({{L"b", inner}, {L"a", factory::MakeInt32(1)}});
    EXPECT_EQ(map->GetType()->ToString(), L"M{a:i, b:M{b:A<s<ROOT>>}}");
    EXPECT_EQ(map->AsKeyMap().GetType(), map->GetType());

    // A member that is a key map changes its type with its own members.
    IStoreMutableCollection& members = map->AsMutableCollection();
    const SV like = MakeMap({{L"b", test::ColumnOf("s:")}});
    members.UpdateValue(L"b", like);
    inner->AsMutableCollection().AddValue(L"c", factory::MakeBool(true));
    EXPECT_LUM_ERROR(TypeMismatchExpected, "", members.UpdateValue(L"b", inner));
    like->AsMutableCollection().AddValue(L"c", factory::MakeBool(false));
    members.UpdateValue(L"b", inner);
    EXPECT_EQ(map->GetType()->ToString(), L"M{a:i, b:M{b:A<s<ROOT>>, c:b}}");
}

TEST(KeyMapTest, ClonesMembersOneByOne) {
    const SV column = test::ColumnOf("i: 1 2");
    const SV map = MakeMap({{L"inner", MakeMap({{L"column", column}})}});
    const SV clone = map->Clone();
    const SV inner = clone->AsKeyMap().GetValue(L"inner");
    const SV copied = inner->AsKeyMap().GetValue(L"column");
    EXPECT_NE(copied, column);
    EXPECT_EQ(copied->AsTypedArray<unsigned>().GetValues().GetData(),
              column->AsTypedArray<unsigned>().GetValues().GetData());
    inner->AsMutableCollection().AddValue(L"new", column);
    EXPECT_EQ(TextOf(map), "{inner = {column = i: 1 2}}");
}

// One long key path makes such a chain; it must not be taken apart on the stack.
TEST(KeyMapTest, LongChainsAreDestroyed) {
    SV root = MakeMap({{L"leaf", factory::MakeInt32(1)}});
    SV kept;
    for (int level = 0; level < 200000; ++level) {
        root = MakeMap({{L"next", std::move(root)}, {L"leaf", factory::MakeInt32(2)}});
        if (level == 2) {
            kept = root;
        }
    }
    const std::weak_ptr<StoreValue> observer = root->AsKeyMap().GetValue(L"next");
    root.reset();
    EXPECT_TRUE(observer.expired());
    // What somebody else holds stays whole.
    EXPECT_EQ(TextOf(kept), "{leaf = 2, next = {leaf = 2, next = {leaf = 2, next = {leaf = 1}}}}");
}

}  // namespace
}  // namespace lum::core
