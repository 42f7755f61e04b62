#include "lum/core/functions/FunctionKey.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "lum/core/functions/FunctionInfo.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/CollatorPoolGuard.h"

namespace lum::core {
namespace {

using ArgContainer = FunctionKey::ArgContainer;
using Types = TypeRefVec<VariableTypeRef>;

constexpr VariableTypeRef kAny = VariableTypeRef::AnyType;
constexpr ArgContainer kSeparate = ArgContainer::Separate;
constexpr ArgContainer kVector = ArgContainer::Vector;

TEST(FunctionKeyTest, CandidatesAndEqualKeys) {
    const test::CollatorPoolGuard pool;
    const Type* const i = IntType::Get32();
    const Type* const l = IntType::Get64();
    const Type* const otherText = StringType::Get(Collation(RInternString(L"FunctionKeyTest")));
    const struct {
        const char* name;
        FunctionKey a;
        FunctionKey b;
        bool areCandidates;
        bool areEqual;
    } cases[] = {
        {"SameTypes", {L"f", i}, {L"f", i}, true, true},
        {"OtherName", {L"f", i}, {L"F", i}, false, false},
        {"OtherContainer", {L"f", {i}, kSeparate}, {L"f", {i}, kVector}, false, false},
        {"OtherCount", {L"f", i}, {L"f", i, i, kSeparate}, false, false},
        {"OtherType", {L"f", i}, {L"f", l}, true, false},
        {"OtherOrder", {L"f", i, l, kVector}, {L"f", l, i, kVector}, true, false},
        {"OtherLastType", {L"f", i, l, kVector}, {L"f", i, i, kVector}, true, false},
        {"OtherCollation", {L"f", StringType::Get()}, {L"f", otherText}, true, true},
        {"OtherPrecision", {L"f", RealType::Get64()}, {L"f", RealType::Get64(9, 2)}, true, true},
        {"OtherElementType", {L"f", ArrayType::Get(i)}, {L"f", ArrayType::Get(l)}, true, false},
        {"AnyTypes", {L"f", kAny}, {L"f", kAny}, true, true},
        {"AnyAndType", {L"f", kAny}, {L"f", i}, true, false},
        {"NoInputs", {L"f", Types{}, kVector}, {L"f", Types{}, kVector}, true, true},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.a.IsPotentialOverloadCandidate(row.b), row.areCandidates);
        EXPECT_EQ(row.b.IsPotentialOverloadCandidate(row.a), row.areCandidates);
        EXPECT_EQ(row.a.AreKeysExactlyEqual(row.b), row.areEqual);
        EXPECT_EQ(row.b.AreKeysExactlyEqual(row.a), row.areEqual);
        EXPECT_EQ(row.a.GetPotentialOverloadHash() == row.b.GetPotentialOverloadHash(),
                  row.areCandidates);
    }
}

TEST(FunctionKeyTest, HashOfNameContainerAndCount) {
    const Type* const i = IntType::Get32();
    const struct {
        FunctionKey key;
        uint64 hash;
    } cases[] = {
        {{RInternString(5ull), Types{}, kSeparate}, 0xA16FB5890A8},
        {{RInternString(5ull), i, kAny, kSeparate}, 0xA16FB5890D6},
        {{RInternString(5ull), i, i, kVector}, 0xA16FB589117},
        {{RInternString((1ull << 40) + 3), {i}, kVector}, 0x102BE6FB58F00A},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(row.key.GetPotentialOverloadHash(), row.hash);
    }
}

TEST(FunctionKeyTest, Text) {
    const Type* const i = IntType::Get32();
    const Type* const map = KeyMapType::Get({{L"x", RealType::Get64(5, 2)}});
    const struct {
        FunctionKey key;
        const char* text;
    } cases[] = {
        {{L"abs", i}, "abs(i)"},
        {{L"+", i, kAny, kSeparate}, "+(i, AnyType)"},
        {{L"two words", {kAny, map, StringType::Get()}, kVector},
         "two words(vector {AnyType, M{x:r<5,2>}, s<ROOT>})"},
        {{L"", Types{}, kSeparate}, "()"},
        {{L"now", Types{}, kVector}, "now(vector {})"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(row.key.ToString().toStdString(), row.text);
    }
}

TEST(FunctionKeyTest, FromNonVariableInputs) {
    const std::vector<const Type*> types = {IntType::Get32(), ColorType::Get(), BoolType::Get()};
    const FunctionKey key = FunctionKey::FromNonVariableInputs(L"f", types, kVector);
    EXPECT_EQ(key.ToString().toStdString(), "f(vector {i, c, b})");
}

TEST(FunctionInfoTest, EqualityAndHash) {
    const Type* const i = IntType::Get32();
    const Type* const l = IntType::Get64();
    const struct {
        const char* name;
        FunctionInfo a;
        FunctionInfo b;
        bool areEqual;
    } cases[] = {
        {"StateDoesNotCount", {i, false, false}, {i, false, true}, true},
        {"OtherOutput", {i, false, false}, {l, false, false}, false},
        {"NoOutput", {i, false, false}, {OptionalTypeRef::NoType, false, false}, false},
        {"OtherKind", {i, false, false}, {i, true, false}, false},
        {"SameCreatorInputs", {{l, kAny}, i, true, false}, {{l, kAny}, i, true, true}, true},
        {"OtherCreatorInputs", {{l, kAny}, i, true, false}, {{kAny, l}, i, true, false}, false},
        {"FewerCreatorInputs", {{l, l}, i, true, false}, {{l}, i, true, false}, false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.a == row.b, row.areEqual);
        EXPECT_EQ(row.a != row.b, !row.areEqual);
        EXPECT_EQ(row.a.GetHashValue() == row.b.GetHashValue(), row.areEqual);
    }
    constexpr OptionalTypeRef kNone = OptionalTypeRef::NoType;
    EXPECT_EQ(FunctionInfo(kNone, false, true).GetHashValue(), 0xABABFFD1D1AB1D87);
    EXPECT_EQ(FunctionInfo({kAny}, kNone, true, false).GetHashValue(), 0xBE71CDE8AD6D72A9);
}

}  // namespace
}  // namespace lum::core
