#include "lum/core/types/CollectionTypes.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/support/AnyType.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

const Type* const kReal = RealType::Get32(2, 2);
const Type* const kBaseReal = RealType::Get32();

TEST(CollectionTypesTest, IdentityBaseAndText) {
    const Type* const integer = IntType::Get32();
    const struct {
        const CollectionType* type;
        const Type* again;
        const Type* base;
        const char* text;
    } cases[] = {
        {ArrayType::Get(kReal), CollectionType::Get(StoreType::Array, kReal),
         ArrayType::Get(kBaseReal), "A<f<2,2>>"},
        {SetType::Get(kReal), CollectionType::Get(StoreType::Set, kReal), SetType::Get(kBaseReal),
         "S<f<2,2>>"},
        {KeySetType::Get(kReal, integer), KeySetType::Get(kReal, integer),
         KeySetType::Get(kBaseReal, integer), "K<f<2,2>,i>"},
        {KeySetType::Get(integer, kReal), KeySetType::Get(integer, kReal),
         KeySetType::Get(integer, kBaseReal), "K<i,f<2,2>>"},
        {ArrayType::Get(ArrayType::Get(kReal)), ArrayType::Get(ArrayType::Get(kReal)),
         ArrayType::Get(ArrayType::Get(kBaseReal)), "A<A<f<2,2>>>"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.type, c.again) << c.text;
        EXPECT_EQ(c.type->GetBaseType(), c.base) << c.text;
        EXPECT_NE(c.type, c.base);
        EXPECT_EQ(c.base->GetBaseType(), c.base) << c.text;
        EXPECT_EQ(c.type->ToString().toStdString(), c.text);
        EXPECT_EQ(c.type->WithElementType(c.type->GetElementType()), c.type) << c.text;
    }
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
    const struct {
        bool (*isSupported)(StoreType);
        std::function<const Type*(const Type*)> get;
        LumError error;
        const char* condition;
    } cases[] = {
        {IsStoreTypeSupportedInArray,
         [](const Type* type) { return ArrayType::Get(type)->GetElementType(); },
         LumError::IllegalElementType,
         "(IsStoreTypeSupportedInArray(elementType->GetStoreType()))"},
        {IsStoreTypeSupportedInSet,
         [](const Type* type) { return SetType::Get(type)->GetElementType(); },
         LumError::IllegalElementType, "(IsStoreTypeSupportedInSet(elementType->GetStoreType()))"},
        {IsStoreTypeSupportedInKeySet,
         [&](const Type* type) { return KeySetType::Get(key, type)->GetElementType(); },
         LumError::IllegalElementType,
         "(IsStoreTypeSupportedInKeySet(elementType->GetStoreType()))"},
        {IsStoreTypeSupportedInKeySetAsKey,
         [&](const Type* type) { return KeySetType::Get(type, key)->GetKeyType(); },
         LumError::IllegalKeyType, "(IsStoreTypeSupportedInKeySetAsKey(keyType->GetStoreType()))"},
    };
    for (int i = 0; i < 2 * test::kStoreTypeCount; ++i) {
        const auto storeType = static_cast<StoreType>(i / 2);
        const Type* const type = test::AnyTypeOf(storeType);
        SCOPED_TRACE(StoreTypeToString(storeType));
        for (const auto& c : cases) {
            if (c.isSupported(storeType)) {
                EXPECT_EQ(c.get(type), type);
            } else {
                EXPECT_TRUE(test::FailsAs({c.error, "", true, c.condition}, [&] { c.get(type); }));
            }
        }
        if (storeType != StoreType::Array && storeType != StoreType::Set) {
            EXPECT_LUM_REPORT(TypeMismatchExpected, "", "", CollectionType::Get(storeType, key));
        }
    }
    for (const auto& c : cases) {
        const bool isKey = c.error == LumError::IllegalKeyType;
        const char* const condition = isKey ? "(keyType) != nullptr" : "(elementType) != nullptr";
        EXPECT_TRUE(test::FailsAs({c.error, "", true, condition}, [&] { c.get(nullptr); }));
    }
    // The key is looked at first.
    EXPECT_LUM_ERROR(IllegalKeyType, "", KeySetType::Get(ArrayType::Get(key), nullptr));
    EXPECT_LUM_ERROR(IllegalKeyType, "", KeySetType::Get(nullptr, nullptr));
}

}  // namespace
}  // namespace lum::core
