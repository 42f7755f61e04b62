#include "lum/core/types/TypeUtil.h"

#include <gtest/gtest.h>

#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/TypeRef.h"
#include "lum/core/utility/LumTuple.h"
#include "lum/core/utility/RIndirectString.h"
#include "tests/support/AnyType.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

TEST(TypeUtilTest, Sizes) {
    constexpr unsigned int kString = sizeof(RIndirectString);
    const unsigned int sizes[] = {1,          4,          8,          4,          8,
                                  kString,    8,          8,          4,          sizeof(LumTuple),
                                  sizeof(SV), sizeof(SV), sizeof(SV), sizeof(SV), sizeof(SV),
                                  sizeof(SV)};
    for (int i = 0; i < test::kStoreTypeCount; ++i) {
        const auto storeType = static_cast<StoreType>(i);
        const Type* const type = test::AnyTypeOf(storeType);
        EXPECT_EQ(GetTypeSize(type), sizes[i]) << i;
        if (IsPrimitiveStoreType(storeType)) {
            EXPECT_EQ(GetPrimitiveTypeSize(type), sizes[i]) << i;
        } else {
            EXPECT_LUM_PLAIN_ERROR(UnsupportedPrimitiveKey,
                                   StoreTypeToString(storeType).toStdString(),
                                   GetPrimitiveTypeSize(type));
        }
    }
}

TEST(TypeUtilTest, Promotion) {
    // Row and column of the first type and the second; what stands where they meet is the type that
    // they promote to. F and R have a precision and a scale.
    const std::string codes = "bilfFrRsdtcA";
    const Type* const types[] = {
        BoolType::Get(),       IntType::Get32(),      IntType::Get64(),
        RealType::Get32(),     RealType::Get32(3, 2), RealType::Get64(),
        RealType::Get64(3, 2), StringType::Get(),     DateType::Get(),
        DateTimeType::Get(),   ColorType::Get(),      ArrayType::Get(BoolType::Get())};
    const std::string expected[] = {
        // ilfFrRsdtcA
        "b...........",  // b
        ".ilfFrR.....",  // i
        ".llfFrR.....",  // l
        ".fff.rr.....",  // f
        ".FF.Frr.....",  // F
        ".rrrrr......",  // r
        ".RRrr.R.....",  // R
        ".......s....",  // s
        "........dt..",  // d
        "........tt..",  // t
        "..........c.",  // c
        "...........A",  // A
    };
    for (std::size_t i = 0; i < codes.size(); ++i) {
        for (std::size_t k = 0; k < codes.size(); ++k) {
            const std::string pair = {codes[i], codes[k]};
            const Type* const untouched = SetType::Get(IntType::Get32());
            const Type* promoted = untouched;
            const bool isPromotable = TryPromotedType(types[i], types[k], promoted);
            if (expected[i][k] == '.') {
                EXPECT_FALSE(isPromotable) << pair;
                EXPECT_EQ(promoted, untouched) << pair;
                EXPECT_LUM_REPORT(UnsupportedType, "", "", PromotedType(types[i], types[k]));
            } else {
                const Type* const wanted = types[codes.find(expected[i][k])];
                EXPECT_TRUE(isPromotable) << pair;
                EXPECT_EQ(promoted, wanted) << pair;
                EXPECT_EQ(PromotedType(types[i], types[k]), wanted) << pair;
            }
        }
    }
}

TEST(TypeRefTest, NullHasItsMeanings) {
    const TypeRef none;
    EXPECT_EQ(none.Get(), nullptr);
    EXPECT_EQ(none.GetHashValue(), 0u);
    EXPECT_EQ(none.GetBaseType(), none);
    EXPECT_FALSE(OptionalTypeRef().HasType());
    EXPECT_TRUE(VariableTypeRef().IsAnyType());

    const Type* const real = RealType::Get32(3, 2);
    const TypeRef type(real);
    EXPECT_TRUE(type == real && real == type && type != none && type != RealType::Get32());
    EXPECT_TRUE(OptionalTypeRef(real) == type && VariableTypeRef(real) == real);
    EXPECT_EQ(type.GetBaseType(), RealType::Get32());
    EXPECT_EQ(type.GetHashValue(), real->GetHashValue());
    EXPECT_TRUE(OptionalTypeRef(real).HasType());
    EXPECT_FALSE(VariableTypeRef(real).IsAnyType());
    EXPECT_EQ(type->GetStoreType(), StoreType::Real32);
}

}  // namespace
}  // namespace lum::core
