#include <gtest/gtest.h>

#include "lum/core/store/SpecialKindText.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueFactory.h"
#include "tests/support/AnyType.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using factory::MakeInt32;
using factory::MakeReal32;
using factory::MakeSpecial;

const Type* const kInt = IntType::Get32();

SpecialKind Kind(unsigned int number) {
    return static_cast<SpecialKind>(number);
}

TEST(SpecialKindTest, NamesInOrder) {
    const char* const names[] = {"Normal",   "Null",   "All",   "Wildcard",   "Skipped",
                                 "NoAccess", "Ragged", "Error", "ManyValues", "Missing"};
    ASSERT_EQ(std::size(names), kSpecialKindCount);
    for (unsigned int i = 0; i < kSpecialKindCount; ++i) {
        EXPECT_EQ(SpecialKindToString(Kind(i)).toStdString(), names[i]);
        EXPECT_EQ(SpecialKindFromString(SpecialKindToString(Kind(i))), Kind(i));
    }
    EXPECT_LUM_ERROR(IllegalSpecialKind, "", SpecialKindToString(Kind(10)));
    EXPECT_LUM_ERROR(IllegalSpecialKind, "", SpecialKindToString(Kind(255)));
    for (const wchar_t* name : {L"", L"null", L"Null ", L"Nul"}) {
        EXPECT_LUM_ERROR(CannotParseSpecialKind, "", SpecialKindFromString(name));
    }
}

TEST(SpecialValueTest, HasATypeAndAKind) {
    const SV value = MakeSpecial(kInt, SpecialKind::Missing);
    EXPECT_EQ(value->GetSpecialKind(), SpecialKind::Missing);
    EXPECT_TRUE(value->IsSpecial());
    EXPECT_EQ(value->GetType(), kInt);
    EXPECT_EQ(value->GetCount(), 1u);
    const std::unique_ptr<StoreValue> clone = value->Clone();
    EXPECT_TRUE(clone->GetSpecialKind() == SpecialKind::Missing && clone->GetType() == kInt);
    EXPECT_EQ(MakeSpecial(nullptr, SpecialKind::Null)->GetType(), nullptr);
    EXPECT_LUM_REPORT(NormalBoxedSpecial, "", "(m_specialKind) != (SpecialKind::Normal)",
                      MakeSpecial(kInt, SpecialKind::Normal));
}

TEST(SpecialValueTest, CastsToAnyTypeAndKeepsItsHash) {
    const SV null = MakeSpecial(kInt, SpecialKind::Null);
    EXPECT_EQ(null->GetHashValue(), 0xaf63bc4c8601b62cu);
    EXPECT_EQ(MakeSpecial(kInt, SpecialKind::Missing)->GetHashValue(), 0xaf63c44c8601c3c4u);
    for (int i = 0; i < test::kStoreTypeCount; ++i) {
        const Type* const type = test::AnyTypeOf(static_cast<StoreType>(i));
        const std::unique_ptr<StoreValue> result = null->Cast(type);
        EXPECT_EQ(result->GetType(), type);
        EXPECT_EQ(result->GetSpecialKind(), SpecialKind::Null);
        EXPECT_EQ(result->GetHashValue(), null->GetHashValue());
    }
}

// Within one base type: normal values first, then the kinds by number.
TEST(SpecialValueTest, Orders) {
    for (unsigned int i = 0; i < kSpecialKindCount; ++i) {
        for (unsigned int k = 0; k < kSpecialKindCount; ++k) {
            if (i == 0 && k == 0) {
                continue;
            }
            // Types of one base type compare.
            const SV a = i == 0 ? MakeReal32(1.5f) : MakeSpecial(RealType::Get32(3, 2), Kind(i));
            const SV b = k == 0 ? MakeReal32(9, 4, 4) : MakeSpecial(RealType::Get32(), Kind(k));
            const int expected = i < k ? -1 : i > k ? 1 : 0;
            EXPECT_EQ(a->Compare(*b), expected) << i << ' ' << k;
            EXPECT_EQ(a->IsEqual(*b), expected == 0);
            EXPECT_EQ(a->FuzzyIsEqual(*b), expected == 0);
            EXPECT_EQ(a->FuzzyIsLessThan(*b), expected < 0);
            EXPECT_EQ(a->FuzzyIsGreaterThan(*b), expected > 0);
        }
    }
}

TEST(SpecialValueTest, DoesNotCompareWithOtherTypes) {
    const SV null = MakeSpecial(kInt, SpecialKind::Null);
    const SV others[] = {factory::MakeInt64(1), MakeSpecial(IntType::Get64(), SpecialKind::Null),
                         factory::MakeBool(true)};
    const char* const condition = "(GetType()->GetBaseType() == other.GetType()->GetBaseType())";
    for (const SV& other : others) {
        EXPECT_LUM_REPORT(TypeMismatch, "", condition, null->Compare(*other));
        EXPECT_LUM_REPORT(TypeMismatch, "", condition, other->Compare(*null));
        const test::LogCapture capture;
        EXPECT_FALSE(null->IsEqual(*other) || other->IsEqual(*null));
        EXPECT_TRUE(capture.GetLines().empty());
    }
}

}  // namespace
}  // namespace lum::core
