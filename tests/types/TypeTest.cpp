#include "lum/core/types/Type.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TypeUtil.h"
#include "tests/support/AnyType.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

TEST(TypeTest, DefaultTypesOfPrimitives) {
    const char* const texts[] = {"b", "i", "l", "f<-1,-1>", "r<-1,-1>", "s<ROOT>", "d", "t", "c"};
    for (std::size_t i = 0; i < std::size(texts); ++i) {
        const Type* const type = MakePrimitiveType(static_cast<StoreType>(i));
        EXPECT_EQ(type->ToString().toStdString(), texts[i]);
        EXPECT_TRUE(type->Is(static_cast<StoreType>(i)) && type->GetBaseType() == type) << i;
        EXPECT_EQ(type->GetHashValue(), reinterpret_cast<std::uintptr_t>(type));
    }
    for (unsigned i = std::size(texts); i < 256; ++i) {
        EXPECT_LUM_REPORT(InvalidStoreType, "", "", MakePrimitiveType(static_cast<StoreType>(i)));
    }
    EXPECT_EQ(RealType::Get32(-1, -1), RealType::Get32());
    EXPECT_EQ(RealType::Get64(-1, -1), RealType::Get64());
    EXPECT_EQ(StringType::Get(Collation()), StringType::Get());
}

TEST(TypeTest, RealParameters) {
    const RealType* const type = RealType::Get32(1, 2);
    EXPECT_EQ(type, RealType::Get32(1, 2));
    EXPECT_TRUE(type->GetPrecision() == 1 && type->GetScale() == 2);
    EXPECT_EQ(type->GetBaseType(), RealType::Get32());
    EXPECT_EQ(type->ToString(), L"f<1,2>");
    EXPECT_NE(static_cast<const Type*>(type), RealType::Get64(1, 2));
    EXPECT_EQ(RealType::Get64(1, 2)->GetBaseType(), RealType::Get64());
    EXPECT_EQ(RealType::Get64(-128, 127)->ToString(), L"r<-128,127>");
}

TEST(TypeTest, PrecisionsWithTheSameLowBitsShareASlot) {
    const RealType* const first = RealType::Get32(3, -7);
    for (const int precision : {19, 35, 115, -13, -125}) {
        EXPECT_EQ(RealType::Get32(static_cast<signed char>(precision), -7), first) << precision;
    }
    EXPECT_EQ(first->GetPrecision(), 3);
    // The first one asked for has the slot.
    EXPECT_EQ(RealType::Get32(20, -7)->ToString(), L"f<20,-7>");
    EXPECT_EQ(RealType::Get32(4, -7)->ToString(), L"f<20,-7>");
    // The default has its slot from the start, and 15 has the low bits of -1.
    for (const int precision : {15, 31, -17}) {
        EXPECT_EQ(RealType::Get32(static_cast<signed char>(precision), -1), RealType::Get32());
        EXPECT_EQ(RealType::Get64(static_cast<signed char>(precision), -1), RealType::Get64());
    }
    EXPECT_NE(RealType::Get32(15, -2), RealType::Get32());
}

TEST(TypeTest, StringTypesGoByCollation) {
    const Collation fold(RInternString(L"fold"));
    {
        const test::CollatorPoolGuard noPool(nullptr);
        EXPECT_EQ(StringType::Get(Collation(RInternString(L"ROOT"))), StringType::Get());
        EXPECT_LUM_REPORT(NoCollatorPool, "", "(g_collatorPool) != nullptr", StringType::Get(fold));
    }
    const test::CollatorPoolGuard pool(std::make_shared<test::FoldingCollatorPool>());
    const StringType* const type = StringType::Get(fold);
    EXPECT_EQ(StringType::Get(fold), type);
    EXPECT_NE(type, StringType::Get(Collation(RInternString(L"FOLD"))));
    EXPECT_EQ(type->GetBaseType(), StringType::Get());
    EXPECT_EQ(type->ToString(), L"s<fold>");
}

TEST(TypeTest, ViewsAsAClassOfTheTree) {
    const Type* const type = RealType::Get32();
    EXPECT_EQ(type->TryAs<RealType>(), RealType::Get32());
    EXPECT_EQ(type->TryAs<IntType>(), nullptr);
    EXPECT_EQ(&type->As<RealType>(), RealType::Get32());
    EXPECT_LUM_REPORT(InvalidTypeClassCast, "", "", type->As<CollectionType>());
}

struct StrangeType final : Type {
    StrangeType() : Type(static_cast<StoreType>(16)) {}
    const Type* GetBaseType() const override { return this; }
};

TEST(TypeTest, NamesAndCodesOfStoreTypes) {
    const char* const names[] = {"Bool", "Int32",    "Int64",  "Real32", "Real64",   "String",
                                 "Date", "DateTime", "Color",  "Tuple",  "External", "Array",
                                 "Set",  "KeySet",   "KeyMap", "Table"};
    const std::string codes = "bilfrsdtcPxASKMT";
    for (int i = 0; i < test::kStoreTypeCount; ++i) {
        const auto storeType = static_cast<StoreType>(i);
        EXPECT_EQ(StoreTypeToString(storeType).toStdString(), names[i]);
        if (storeType != StoreType::External) {  // Its text needs a registered name.
            EXPECT_EQ(test::AnyTypeOf(storeType)->ToString().toStdString().substr(0, 1),
                      codes.substr(static_cast<std::size_t>(i), 1));
        }
    }
    for (const int number : {16, 255}) {
        EXPECT_LUM_PLAIN_ERROR(InvalidStoreType, "",
                               StoreTypeToString(static_cast<StoreType>(number)));
    }
    EXPECT_LUM_REPORT(InvalidStoreTypeValue, "", "(typeIndex < sizeof(s_types)/sizeof(*s_types))",
                      StrangeType().ToString());
}

/// The store types that `predicate` holds for, among all 256 numbers, by their codes.
template <typename Predicate>
std::string Members(const Predicate& predicate) {
    std::string members;
    for (int i = 0; i < 256; ++i) {
        if (predicate(static_cast<StoreType>(i))) {
            members += i < test::kStoreTypeCount ? "bilfrsdtcPxASKMT"[i] : '?';
        }
    }
    return members;
}

TEST(TypeTest, GroupsOfStoreTypes) {
    EXPECT_EQ(Members(IsPrimitiveStoreType), "bilfrsdtcx");
    EXPECT_EQ(Members([](StoreType t) { return IsCollectionStoreType(t); }), "PASKMT");
    EXPECT_EQ(Members(IsHeterogeneousCollectionType), "PMT");
    EXPECT_EQ(Members([](StoreType t) { return IsUniformCollectionStoreType(t); }), "ASK");
    EXPECT_EQ(Members(IsStoreTypeSupportedInArray), "bilfrsdtcPxASM");
    EXPECT_EQ(Members(IsStoreTypeSupportedInKeySet), "bilfrsdtcPxASM");
    EXPECT_EQ(Members(IsStoreTypeSupportedInKeySetAsKey), "bilfrsdtcP");
    EXPECT_EQ(Members(IsStoreTypeSupportedInSet), "bilfrsdtcPx");
    EXPECT_EQ(Members(IsSupportedNestedType), "bilfrsdtcPxM");
    const auto elementsOf = [](StoreType collection) {
        return Members(
            [=](StoreType t) { return IsStoreTypeSupportedInUniformCollection(collection, t); });
    };
    EXPECT_EQ(elementsOf(StoreType::Array), "bilfrsdtcPxASM");
    EXPECT_EQ(elementsOf(StoreType::KeySet), "bilfrsdtcPxASM");
    EXPECT_EQ(elementsOf(StoreType::Set), "bilfrsdtcPx");
    EXPECT_EQ(elementsOf(StoreType::KeyMap) + elementsOf(StoreType::Int32), "");
}

}  // namespace
}  // namespace lum::core
