#include "lum/core/types/CollectionTypes.h"

#include <gtest/gtest.h>

#include "tests/support/AnyType.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

const Type* const kReal = RealType::Get32(2, 2);
const Type* const kBaseReal = RealType::Get32();

TEST(CollectionTypesTest, IdentityBaseAndText) {
    struct Case {
        const CollectionType* type;
        const Type* again;
        const Type* base;
        const char* text;
    };
    const Case cases[] = {
        {ArrayType::Get(kReal), CollectionType::Get(StoreType::Array, kReal),
         ArrayType::Get(kBaseReal), "A<f<2,2>>"},
        {SetType::Get(kReal), CollectionType::Get(StoreType::Set, kReal), SetType::Get(kBaseReal),
         "S<f<2,2>>"},
        {KeySetType::Get(kReal, IntType::Get32()), KeySetType::Get(kReal, IntType::Get32()),
         KeySetType::Get(kBaseReal, IntType::Get32()), "K<f<2,2>,i>"},
        {KeySetType::Get(IntType::Get32(), kReal), KeySetType::Get(IntType::Get32(), kReal),
         KeySetType::Get(IntType::Get32(), kBaseReal), "K<i,f<2,2>>"},
        {ArrayType::Get(ArrayType::Get(kReal)), ArrayType::Get(ArrayType::Get(kReal)),
         ArrayType::Get(ArrayType::Get(kBaseReal)), "A<A<f<2,2>>>"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.type, c.again) << c.text;
        EXPECT_EQ(c.type->GetBaseType(), c.base) << c.text;
        EXPECT_NE(c.type, c.base);
        EXPECT_EQ(c.base->GetBaseType(), c.base) << c.text;
        EXPECT_EQ(c.type->ToString().toStdString(), c.text);
        EXPECT_EQ(c.type->WithElementType(c.type->GetElementType()), c.type) << c.text;
    }
    EXPECT_NE(static_cast<const Type*>(ArrayType::Get(kReal)), SetType::Get(kReal));
    EXPECT_NE(KeySetType::Get(kReal, kBaseReal), KeySetType::Get(kBaseReal, kReal));
    EXPECT_EQ(KeySetType::Get(kReal, kBaseReal)->GetKeyType(), kReal);
    EXPECT_EQ(KeySetType::Get(kReal, kBaseReal)->WithElementType(kReal),
              KeySetType::Get(kReal, kReal));
    EXPECT_EQ(ArrayType::Get(kReal)->WithElementType(kBaseReal), ArrayType::Get(kBaseReal));
}

// Every store type as an element or key. A type that was refused is refused again: nothing of it
// was left behind.
TEST(CollectionTypesTest, ElementsAndKeys) {
    const Type* const key = IntType::Get32();
    for (int i = 0; i < 2 * test::kStoreTypeCount; ++i) {
        const auto storeType = static_cast<StoreType>(i / 2);
        const Type* const type = test::AnyTypeOf(storeType);
        SCOPED_TRACE(StoreTypeToString(storeType));
        if (IsStoreTypeSupportedInArray(storeType)) {
            EXPECT_EQ(ArrayType::Get(type)->GetElementType(), type);
        } else {
            EXPECT_LUM_REPORT(IllegalElementType, "",
                              "(IsStoreTypeSupportedInArray(elementType->GetStoreType()))",
                              ArrayType::Get(type));
        }
        if (IsStoreTypeSupportedInSet(storeType)) {
            EXPECT_EQ(SetType::Get(type)->GetElementType(), type);
        } else {
            EXPECT_LUM_REPORT(IllegalElementType, "",
                              "(IsStoreTypeSupportedInSet(elementType->GetStoreType()))",
                              SetType::Get(type));
        }
        if (IsStoreTypeSupportedInKeySet(storeType)) {
            EXPECT_EQ(KeySetType::Get(key, type)->GetElementType(), type);
        } else {
            EXPECT_LUM_REPORT(IllegalElementType, "",
                              "(IsStoreTypeSupportedInKeySet(elementType->GetStoreType()))",
                              KeySetType::Get(key, type));
        }
        if (IsStoreTypeSupportedInKeySetAsKey(storeType)) {
            EXPECT_EQ(KeySetType::Get(type, ExternalType::Get(7))->GetKeyType(), type);
        } else {
            EXPECT_LUM_REPORT(IllegalKeyType, "",
                              "(IsStoreTypeSupportedInKeySetAsKey(keyType->GetStoreType()))",
                              KeySetType::Get(type, nullptr));  // The key is looked at first.
        }
        if (storeType != StoreType::Array && storeType != StoreType::Set) {
            EXPECT_LUM_REPORT(TypeMismatchExpected, "", "", CollectionType::Get(storeType, key));
        }
    }
}

TEST(CollectionTypesTest, MissingTypes) {
    const Type* const none = nullptr;
    const Type* const key = IntType::Get32();
    EXPECT_LUM_REPORT(IllegalElementType, "", "(elementType) != nullptr", ArrayType::Get(none));
    EXPECT_LUM_REPORT(IllegalElementType, "", "(elementType) != nullptr", SetType::Get(none));
    EXPECT_LUM_REPORT(IllegalElementType, "", "(elementType) != nullptr",
                      CollectionType::Get(StoreType::Array, none));
    EXPECT_LUM_REPORT(IllegalElementType, "", "(elementType) != nullptr",
                      ArrayType::Get(key)->WithElementType(none));
    EXPECT_LUM_REPORT(IllegalElementType, "", "(elementType) != nullptr",
                      KeySetType::Get(key, none));
    EXPECT_LUM_REPORT(IllegalKeyType, "", "(keyType) != nullptr", KeySetType::Get(none, none));
}

}  // namespace
}  // namespace lum::core
