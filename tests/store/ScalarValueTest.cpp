#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/TypeUtil.h"
#include "tests/store/ScalarSamples.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/AnyType.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using namespace factory;
using test::kScalarLetters;
using test::MakeSample;
using test::TypeOfLetter;

constexpr int kLowestInt = std::numeric_limits<int>::min();
constexpr int64 kLowestLong = std::numeric_limits<int64>::min();

class ScalarValueTest : public testing::Test {
    test::CollatorPoolGuard m_pool;
};

TEST_F(ScalarValueTest, OnlyTheOwnAccessorAnswers) {
    for (const char letter : kScalarLetters) {
        const SV value = MakeSample(letter);
        const SV null = MakeSpecial(TypeOfLetter(letter), SpecialKind::NoAccess);
        const std::string name = StoreTypeToString(value->GetStoreType()).toStdString();
        for (const test::Accessor& accessor : test::kAccessors) {
            const std::string message = ErrorToString(accessor.error).toStdString() + letter;
            if (accessor.answering == value->GetStoreType()) {
                EXPECT_NO_THROW(accessor.read(*value)) << message;
            } else {
                EXPECT_TRUE(test::FailsAs({accessor.error, name, false, "", false, true}, [&] {
                    accessor.read(*value);
                })) << message;
            }
            EXPECT_TRUE(test::FailsAs(
                {accessor.error, name + " (special kind: NoAccess)", false, "", false, true},
                [&] { accessor.read(*null); }))
                << message;
        }
        EXPECT_LUM_PLAIN_ERROR(CollectionNotMutable, "", value->AsMutableCollection());
    }
}

TEST_F(ScalarValueTest, IsNoTypedCollection) {
    const SV value = MakeInt32(1);
#define LUM_EXPECT_NO_COLLECTION(T)                                                              \
    EXPECT_LUM_REPORT(NotTypedArray, "", "(p) != nullptr", value->AsTypedArray<T>());            \
    EXPECT_LUM_REPORT(NotTypedSet, "", "(p) != nullptr", value->AsTypedSet<T>());                \
    EXPECT_LUM_REPORT(NotKeyedCollection, "", "(p) != nullptr", (value->AsDictionary<T, SV>())); \
    EXPECT_LUM_REPORT(NotKeyedCollection, "", "(p) != nullptr", (value->AsDictionary<SV, T>()));
    LUM_FOR_EACH_STORAGE_TYPE(LUM_EXPECT_NO_COLLECTION)
#undef LUM_EXPECT_NO_COLLECTION
}

TEST_F(ScalarValueTest, MakersMakeNewObjectsInOneAllocation) {
    for (const char letter : kScalarLetters) {
        MakeSample(letter);  // Whatever is made once, is.
        const test::AllocationCounter counter;
        const SV value = MakeSample(letter);
        EXPECT_EQ(counter.GetCount(), 1u) << letter;
        EXPECT_EQ(value->GetType(), TypeOfLetter(letter)) << letter;
        EXPECT_FALSE(value->IsSpecial());
        EXPECT_EQ(value->GetCount(), 1u);

        EXPECT_NE(MakeSample(letter), value) << letter;
        const std::unique_ptr<StoreValue> clone = value->Clone();
        EXPECT_NE(clone.get(), value.get());
        EXPECT_EQ(clone->GetType(), value->GetType()) << letter;
        EXPECT_TRUE(clone->IsEqual(*value) && clone->GetHashValue() == value->GetHashValue());
    }
}

TEST_F(ScalarValueTest, KeepsItsContent) {
    EXPECT_TRUE(MakeBoolUniquePtr(true)->AsBool());  // The other unique makers make all casts.
    EXPECT_EQ(MakeInt64(kLowestLong)->AsInt64(), kLowestLong);
    EXPECT_TRUE(std::signbit(MakeReal64(-0.0)->AsReal64()));
    EXPECT_EQ(MakeColor(1, 2, 3, 4)->AsColor().AsInt32(), 0x04010203);
    EXPECT_EQ(MakeColor(-1)->AsColor().AsInt32(), -1);
    EXPECT_EQ(MakeColor(LumColor::FromInt32(9))->AsColor().AsInt32(), 9);
    EXPECT_LUM_ERROR(InvalidGreen, "Must be between 0 and 255", MakeColor(1, 256, 3, 4));

    const test::CollatorPoolGuard pool(std::make_shared<test::FoldingCollatorPool>());
    const Collation fold(RInternString(L"fold"));
    const wchar_t kText[] = L"a text that is longer than its handle";
    const TStringCore text(kText);
    for (const Collation& collation : {Collation(), fold}) {
        for (const SV& value : {MakeString(text, collation), MakeString(kText, collation),
                                MakeString(RIndirectString(text), collation)}) {
            EXPECT_EQ(value->AsString(), text);
            EXPECT_EQ(value->GetType(), StringType::Get(collation));
        }
    }
    EXPECT_EQ(MakeString(kText)->GetType(), StringType::Get());
    const SV shared = MakeString(RIndirectString(text));
    EXPECT_EQ(shared->Clone()->AsString()->data(), text.data());  // Not copied.
}

TEST_F(ScalarValueTest, Hashes) {
    const std::pair<SV, uint64> cases[] = {
        {MakeBool(false), 0},
        {MakeBool(true), 1},
        {MakeInt32(5), 0x2d401a55eec16520},
        {MakeInt32(-1), 0x994f76653e2a3951},
        {MakeInt64(5), 0xde21504f16dc720},
        {MakeInt64(kLowestLong), 0xa8c7783228196045},
        {MakeReal32(1.5f, 3, 2), 0x4a98c77f9ba36558},
        {MakeReal32(0.0f), 0x4d25767f9dce13f5},
        {MakeReal32(-0.0f), 0x4d25767f9dce13f5},
        {MakeReal64(1.5), 0xaa95e93229a27c80},
        {MakeReal64(-0.0), 0xa8c7f832281a39c5},
        {MakeReal64(0.0), 0xa8c7f832281a39c5},
        {MakeString(L"ROOT"), 0x2f6fd662},
        {MakeDate(LumDateTime::FromValue(5)), LumDateTime::FromValue(5).GetHashValue()},
        {MakeDateTime(LumDateTime::FromValue(5)), LumDateTime::FromValue(5).GetHashValue()},
        {MakeColor(5), 0x2d401a55eec16520},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(value->GetHashValue(), expected) << value->GetType()->ToString();
        EXPECT_EQ(std::hash<SV>()(value), expected);
    }
    EXPECT_EQ(std::hash<SV>()(SV()), 0u);
}

TEST_F(ScalarValueTest, CastsToEveryType) {
    // A row for each type to cast from, a column for each to cast to, in the order of the letters;
    // what stands where they meet is the type of the result.
    const std::string results[] = {
        // ilfFrRsdtc
        "b..........",  // b
        ".ilffrr....",  // i
        ".ilffrr....",  // l
        ".ilffrr....",  // f
        ".ilFFRR....",  // F
        ".ilffrr....",  // r
        ".ilffRR....",  // R
        ".......s...",  // s
        "........dt.",  // d
        "........dt.",  // t
        "...........",  // c
    };
    for (std::size_t from = 0; from < kScalarLetters.size(); ++from) {
        const SV value = MakeSample(kScalarLetters[from]);
        for (std::size_t to = 0; to < kScalarLetters.size(); ++to) {
            const std::string pair = {kScalarLetters[from], kScalarLetters[to]};
            const Type* const target = TypeOfLetter(kScalarLetters[to]);
            if (results[from][to] == '.') {
                EXPECT_LUM_REPORT(IllegalCast, "", "", value->Cast(target));
            } else {
                const std::unique_ptr<StoreValue> result = value->Cast(target);
                EXPECT_EQ(result->GetType(), TypeOfLetter(results[from][to])) << pair;
                EXPECT_TRUE(result->IsEqual(*MakeSample(results[from][to]))) << pair;
                EXPECT_NE(result.get(), value.get()) << pair;
            }
        }
        for (int i = static_cast<int>(StoreType::Tuple); i < test::kStoreTypeCount; ++i) {
            EXPECT_LUM_REPORT(IllegalCast, "", "",
                              value->Cast(test::AnyTypeOf(static_cast<StoreType>(i))));
        }
    }
}

TEST_F(ScalarValueTest, CastsAtTheLimits) {
    const float belowTwoTo31 = std::nextafter(0x1p31f, 0.0f);
    const double belowTwoTo63 = std::nextafter(0x1p63, 0.0);
    const std::pair<SV, SV> cases[] = {
        {MakeInt32(kLowestInt), MakeInt64(kLowestInt)},
        {MakeInt32(16777217), MakeReal32(16777216)},
        {MakeInt64(0xFFFFFFFF), MakeInt32(-1)},
        {MakeInt64((1LL << 53) + 1), MakeReal64(0x1p53)},
        {MakeInt64(std::numeric_limits<int64>::max()), MakeReal32(0x1p63f)},
        {MakeReal32(-1.9f), MakeInt32(-1)},
        {MakeReal32(belowTwoTo31), MakeInt32(2147483520)},
        {MakeReal32(0x1p31f), MakeInt32(kLowestInt)},
        {MakeReal32(0x1p63f), MakeInt64(kLowestLong)},
        {MakeReal64(2147483647.9), MakeInt32(2147483647)},
        {MakeReal64(3e10), MakeInt32(kLowestInt)},
        {MakeReal64(belowTwoTo63), MakeInt64(9223372036854774784)},
        {MakeReal64(0x1p63), MakeInt64(kLowestLong)},
        {MakeReal64(-1e300), MakeInt64(kLowestLong)},
        {MakeReal64(-std::numeric_limits<double>::infinity()), MakeInt32(kLowestInt)},
        {MakeReal64(std::nan("")), MakeInt32(kLowestInt)},
        {MakeReal64(std::nan("")), MakeInt64(kLowestLong)},
        {MakeReal64(0.1), MakeReal32(0.1f)},
        {MakeReal64(1e300), MakeReal32(std::numeric_limits<float>::infinity())},
        {MakeReal32(0.1f), MakeReal64(double{0.1f})},
    };
    for (const auto& [value, expected] : cases) {
        const std::unique_ptr<StoreValue> result = value->Cast(expected->GetType());
        EXPECT_EQ(result->GetType(), expected->GetType());
        EXPECT_EQ(result->GetHashValue(), expected->GetHashValue())
            << test::TextOf(*value) << " became " << test::TextOf(*result);
    }
    // A date keeps its time of day, both ways.
    const LumDateTime moment(2024, 2, 29, 23, 59, 58, 1234);
    EXPECT_EQ(MakeDateTime(moment)->Cast(DateType::Get())->AsDate(), moment);
    EXPECT_EQ(MakeDate(moment)->Cast(DateTimeType::Get())->AsDateTime(), moment);
}

}  // namespace
}  // namespace lum::core
