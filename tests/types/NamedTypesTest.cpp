#include <gtest/gtest.h>

#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/utility/Fnv.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using Member = NamedHeterogeneousType::Member;

Member Of(const wchar_t* name, const Type* type) {
    return {name, type};
}

const Type* const kInt = IntType::Get32();
const Type* const kBool = BoolType::Get();
const Type* const kInts = ArrayType::Get(kInt);
const Type* const kBools = ArrayType::Get(kBool);
const Type* const kReal = RealType::Get64(5, 5);

TEST(NamedTypesTest, OrderOfMembersDoesNotMatter) {
    // Interned in this order, so that the ids do not give the order of the texts.
    const RInternString names[] = {L"named z", L"named a", L"named B"};
    const KeyMapType* const type =
        KeyMapType::Get({{names[0], kInt}, {names[1], kBool}, {names[2], kInt}});
    EXPECT_EQ(KeyMapType::Get({{names[2], kInt}, {names[1], kBool}, {names[0], kInt}}), type);
    EXPECT_EQ(type->ToString(), L"M{named B:i, named a:b, named z:i}");
    EXPECT_EQ(type->GetCount(), 3u);
    EXPECT_EQ(type->GetMembers()[2].GetName(), names[0]);
    EXPECT_EQ(type->TryGetMemberType(names[1]), kBool);
    EXPECT_EQ(type->TryGetMemberType(L"named b"), nullptr);

    EXPECT_NE(KeyMapType::Get({{names[0], kInt}, {names[1], kInt}, {names[2], kInt}}), type);
    EXPECT_NE(KeyMapType::Get({{names[0], kInt}, {names[1], kBool}}), type);
    const TableType* const table = TableType::Get({Of(L"y", kInts), Of(L"x", kBools)});
    EXPECT_EQ(table, TableType::Get({Of(L"x", kBools), Of(L"y", kInts)}));
    EXPECT_EQ(table->ToString(), L"T{x:A<b>, y:A<i>}");
    EXPECT_EQ(KeyMapType::Get({})->ToString(), L"M");
    EXPECT_EQ(TableType::Get({})->ToString(), L"T");
}

TEST(NamedTypesTest, BaseTypeHasTheBasesOfTheMembers) {
    const KeyMapType* const plain = KeyMapType::Get({Of(L"a", kInt), Of(L"b", RealType::Get64())});
    const KeyMapType* const exact = KeyMapType::Get({Of(L"a", kInt), Of(L"b", kReal)});
    EXPECT_EQ(plain->GetBaseType(), plain);
    EXPECT_EQ(exact->GetBaseType(), plain);
    // Nested, and asked for before its base exists.
    const KeyMapType* const nested = KeyMapType::Get({Of(L"inner", exact)});
    EXPECT_EQ(nested->GetBaseType(), KeyMapType::Get({Of(L"inner", plain)}));
    EXPECT_EQ(TableType::Get({Of(L"c", ArrayType::Get(kReal))})->GetBaseType(),
              TableType::Get({Of(L"c", ArrayType::Get(RealType::Get64()))}));
}

TEST(NamedTypesTest, WithMoreMembers) {
    const KeyMapType* const type = KeyMapType::Get({Of(L"b", kInt)});
    EXPECT_EQ(type->With({Of(L"c", kBool), Of(L"a", kInt)}),
              KeyMapType::Get({Of(L"a", kInt), Of(L"b", kInt), Of(L"c", kBool)}));
    EXPECT_EQ(type->With({}), type);
    EXPECT_LUM_REPORT(DuplicateMember, "b", "", type->With({Of(L"b", kInt)}));
    const TableType* const table = TableType::Get({Of(L"b", kInts)});
    EXPECT_EQ(table->With({Of(L"a", kBools)}), TableType::Get({Of(L"a", kBools), Of(L"b", kInts)}));
    EXPECT_LUM_REPORT(DuplicateMember, "b", "", table->With({Of(L"b", kBools)}));
}

TEST(NamedTypesTest, DuplicatesAreLoggedThenReported) {
    for (int i = 0; i < 2; ++i) {  // The second time as the first: nothing was left behind.
        const test::LogCapture capture;
        EXPECT_THROW(KeyMapType::Get({Of(L"x", kInt), Of(L"d", kInt), Of(L"e", kInt),
                                      Of(L"e", kInt), Of(L"d", kBool)}),
                     LumRuntimeException);
        ASSERT_EQ(capture.GetLines().size(), 2u);
        EXPECT_EQ(capture.GetLines()[0].text, "Member d is duplicated");
        EXPECT_EQ(capture.GetLines()[0].level, LumLogLevel::Notice);
        EXPECT_EQ(capture.GetLines()[1].level, LumLogLevel::Failure);
    }
    EXPECT_LUM_REPORT(DuplicateMember, "", "", KeyMapType::Get({Of(L"", kInt), Of(L"", kInt)}));
}

TEST(NamedTypesTest, ColumnsAreArrays) {
    const char* const condition = "(member.GetType()->Is(StoreType::Array))";
    for (int i = 0; i < 2; ++i) {
        EXPECT_LUM_REPORT(TableColumnNotArray, "", condition,
                          TableType::Get({Of(L"a", kInts), Of(L"b", kInt)}));
        EXPECT_LUM_REPORT(TableColumnNotArray, "", condition,
                          TableType::Get({Of(L"a", SetType::Get(kInt))}));
    }
    EXPECT_LUM_REPORT(DuplicateMember, "a", "", TableType::Get({Of(L"a", kInt), Of(L"a", kInts)}));
}

TEST(NamedTypesTest, Members) {
    EXPECT_LUM_REPORT(IllegalElementType, "", "(type) != nullptr", Of(L"a", nullptr));
    const Member member = Of(L"%2", kInts);
    EXPECT_EQ(member.ToString(), L"(%2, A<i>)");
    EXPECT_EQ(member.GetHashValue(),
              HashCombine(RInternString(L"%2").GetStringId(), kInts->GetHashValue()));
    EXPECT_TRUE(member == Of(L"%2", kInts));
    EXPECT_FALSE(member == Of(L"%2", kInt) || member == Of(L"%1", kInts));
}

}  // namespace
}  // namespace lum::core
