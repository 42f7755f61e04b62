#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <unordered_set>

#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/TypeUtil.h"
#include "tests/store/ScalarSamples.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/KeySets.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using namespace factory;
using test::kScalarLetters;
using test::MakeSample;

class StoreValueCompareTest : public testing::Test {
    test::CollatorPoolGuard m_pool;
};

LumError ErrorOfAccessor(StoreType storeType) {
    for (const test::Accessor& accessor : test::kAccessors) {
        if (accessor.answering == storeType) {
            return accessor.error;
        }
    }
    return LumError::NoError;
}

// Compare asks the other side for the content of this side's kind, and nothing is promoted.
TEST_F(StoreValueCompareTest, EveryPairOfKinds) {
    for (const char left : kScalarLetters) {
        for (const char right : kScalarLetters) {
            SCOPED_TRACE((std::string{left, right}));
            const SV low = MakeSample(left, 0);
            const SV five = MakeSample(right, 5);
            if (low->GetStoreType() == five->GetStoreType()) {
                EXPECT_EQ(low->Compare(*five), -1);
                EXPECT_EQ(five->Compare(*low), 1);
                EXPECT_EQ(MakeSample(left)->Compare(*five), 0);
                EXPECT_TRUE(MakeSample(left)->IsEqual(*five));
                EXPECT_FALSE(low->IsEqual(*five));
                EXPECT_TRUE(low->IsLessThan(*five) && five->IsGreaterThan(*low));
                EXPECT_FALSE(low->IsGreaterThan(*five) || five->IsLessThan(*five));
            } else {
                EXPECT_TRUE(test::FailsAs(
                    {ErrorOfAccessor(low->GetStoreType()),
                     StoreTypeToString(five->GetStoreType()).toStdString(), false, "", false, true},
                    [&] { static_cast<void>(low->Compare(*five)); }));
                const test::LogCapture capture;
                EXPECT_FALSE(low->IsEqual(*five));
                EXPECT_TRUE(capture.GetLines().empty());
            }
        }
    }
}

TEST_F(StoreValueCompareTest, Order) {
    const SV ascending[][2] = {
        {MakeBool(false), MakeBool(true)},
        {MakeInt32(std::numeric_limits<int>::min()), MakeInt32(std::numeric_limits<int>::max())},
        {MakeInt64(std::numeric_limits<int64>::min()), MakeInt64(-1)},
        {MakeReal64(-std::numeric_limits<double>::infinity()), MakeReal64(-1e308)},
        {MakeReal32(1.0f), MakeReal32(std::nextafter(1.0f, 2.0f))},
        {MakeString(L"B"), MakeString(L"a")},
        {MakeString(L""), MakeString(L"a")},
        {MakeDate(LumDateTime::FromValue(1)), MakeDate(LumDateTime::FromValue(2))},
        {MakeColor(0, 0, 0, 255), MakeColor(0, 0, 0, 0)},  // By signed number.
    };
    for (const auto& [low, high] : ascending) {
        EXPECT_EQ(low->Compare(*high), -1) << low->GetType()->ToString();
        EXPECT_EQ(high->Compare(*low), 1) << low->GetType()->ToString();
    }
    EXPECT_EQ(MakeReal64(-0.0)->Compare(*MakeReal64(0.0)), 0);
    const SV nan = MakeReal64(std::nan(""));
    for (const double other : {0.0, 1e300, std::nan("1")}) {
        EXPECT_EQ(nan->Compare(*MakeReal64(other)), 0);
        EXPECT_TRUE(MakeReal64(other)->IsEqual(*nan));
    }
}

TEST_F(StoreValueCompareTest, Fuzzy) {
    const auto plusUlps = [](auto value, int count) {
        for (; count > 0; --count) {
            value = std::nextafter(value, decltype(value){1e30f});
        }
        return value;
    };
    const auto special = [](char letter, SpecialKind kind) {
        return MakeSpecial(test::TypeOfLetter(letter), kind);
    };
    const SV nullInt = special('i', SpecialKind::Null);
    const struct {
        SV left;
        SV right;
        // Whether left is equal to, less than, greater than right: T, F, or a code.
        const char* equal;
        const char* less;
        const char* greater;
    } cases[] = {
        {MakeInt32(1), MakeReal64(1.5), "F", "T", "F"},
        {MakeReal64(1.5), MakeInt32(1), "F", "F", "T"},
        {MakeInt32(-1), MakeInt64(4294967295), "F", "T", "F"},
        {MakeInt64(16777217), MakeReal32(16777216), "T", "F", "F"},  // Real32 is what they share.
        {MakeInt32(1), MakeSample('F', 1), "T", "F", "F"},
        {MakeSample('R', 2), MakeInt64(1), "F", "F", "T"},
        {MakeBool(true), MakeInt32(1), "F", "195", "195"},
        {MakeColor(1), MakeInt32(1), "F", "195", "195"},
        {MakeString(L"a"), MakeString(L"b"), "F", "T", "F"},
        {MakeSample('d', 1), MakeSample('t', 1), "T", "F", "F"},
        {MakeSample('t', 2), MakeSample('d', 1), "F", "F", "T"},
        {MakeReal64(1), MakeReal64(plusUlps(1.0, 16)), "T", "F", "F"},
        {MakeReal64(1), MakeReal64(plusUlps(1.0, 17), 3, 2), "F", "T", "F"},
        {MakeReal32(1), MakeReal32(plusUlps(1.0f, 16)), "T", "F", "F"},
        {MakeReal32(plusUlps(1.0f, 17)), MakeReal32(1), "F", "F", "T"},
        {MakeReal32(0.1f), MakeReal64(0.1), "F", "F", "T"},
        {MakeReal64(std::nan("")), MakeReal64(1), "F", "F", "F"},
        // The side whose type is not the promoted one is cast, and it alone: a Real64 of its own
        // precision casts to itself, and meets the Real32 as it is.
        {MakeSample('F', 1), MakeReal64(1), "T", "F", "F"},
        {MakeSample('R', 1), MakeReal32(1), "68", "68", "F"},
        {MakeReal32(1), MakeSample('R', 1), "T", "F", "68"},
        {MakeSample('R', 1), MakeSample('F', 1), "68", "68", "F"},
        // Special values of types that differ.
        {nullInt, special('l', SpecialKind::Null), "T", "F", "F"},
        {special('l', SpecialKind::All), nullInt, "F", "F", "T"},
        {nullInt, special('s', SpecialKind::Null), "F", "195", "195"},
        {nullInt, MakeBool(true), "F", "195", "195"},
        {nullInt, MakeInt64(1), "F", "F", "66"},
    };
    const auto outcome = [](const auto& test) -> std::string {
        try {
            return test() ? "T" : "F";
        } catch (const LumRuntimeException& e) {
            return std::to_string(static_cast<int>(e.GetError()));
        }
    };
    for (const auto& c : cases) {
        SCOPED_TRACE((c.left->GetType()->ToString() + L" " + c.right->GetType()->ToString()));
        EXPECT_EQ(outcome([&] { return c.left->FuzzyIsEqual(*c.right); }), c.equal);
        EXPECT_EQ(outcome([&] { return c.left->FuzzyIsLessThan(*c.right); }), c.less);
        EXPECT_EQ(outcome([&] { return c.left->FuzzyIsGreaterThan(*c.right); }), c.greater);
    }
    EXPECT_LUM_REPORT(UnsupportedType, "", "", MakeBool(true)->FuzzyIsLessThan(*MakeInt32(1)));
}

TEST_F(StoreValueCompareTest, TheLeftCollationDecides) {
    const test::CollatorPoolGuard pool(std::make_shared<test::FoldingCollatorPool>());
    const Collation fold(RInternString(L"fold"));
    const SV plain = MakeString(L"Name");
    const SV folded = MakeString(L"nAME", fold);
    EXPECT_TRUE(folded->IsEqual(*plain));
    EXPECT_FALSE(plain->IsEqual(*folded));
    EXPECT_TRUE(folded->FuzzyIsEqual(*plain));
    EXPECT_EQ(folded->GetHashValue(), MakeString(L"NAME", fold)->GetHashValue());
    EXPECT_EQ(folded->Compare(*MakeString(L"o")), -1);  // The sign alone of the collator's answer.
    EXPECT_EQ(MakeString(L"O", fold)->Compare(*plain), 1);
    EXPECT_EQ(folded->Cast(StringType::Get())->GetType(), StringType::Get(fold));
}

TEST_F(StoreValueCompareTest, StringsNeedAPoolOnceTheyAreCompared) {
    const test::CollatorPoolGuard noPool(nullptr);
    const SV text = MakeString(L"a");
    const char* const condition = "(g_collatorPool) != nullptr";
    EXPECT_LUM_REPORT(NoCollatorPool, "", condition, text->Compare(*text));
    EXPECT_LUM_REPORT(NoCollatorPool, "", condition, text->GetHashValue());
    EXPECT_EQ(text->Clone()->AsString(), L"a");
}

TEST_F(StoreValueCompareTest, AsKeysOfStandardContainers) {
    const std::equal_to<SV> equal;
    EXPECT_FALSE(equal(SV(), SV()) || equal(MakeInt32(1), SV()) || equal(SV(), MakeInt32(1)));
    EXPECT_TRUE(equal(MakeInt32(1), MakeInt32(1)));
    EXPECT_FALSE(equal(MakeInt32(1), MakeInt64(1)));

    // Values whose comparison fails are only asked for it when their hashes agree.
    std::unordered_set<SV> values;
    for (int i = 0; i < 200; ++i) {
        values.insert(MakeInt32(i % 50));
        values.insert(MakeInt64(i % 50));
        values.insert(MakeString(TStringCore::number(i % 50)));
        values.insert(MakeSpecial(IntType::Get32(), SpecialKind::Null));
    }
    EXPECT_EQ(values.size(), 151u);
    EXPECT_TRUE(values.contains(MakeInt64(49)));
    EXPECT_FALSE(values.contains(MakeReal64(49)));
}

TEST_F(StoreValueCompareTest, CollectionsDoNotCompare) {
    const SV column = test::ColumnOf("i: 1");
    for (const SV& value : {column, test::SetOf("i: 1"), test::KeySetOf("i: 1", "i: 1"),
                            MakeKeyMap({{L"a", column}}), MakeTable({{L"a", column}}, {})}) {
        EXPECT_EQ(value->GetHashValue(), 0u);
        EXPECT_LUM_ERROR(IllegalComparison, "", value->Compare(*value->Clone()));
        EXPECT_LUM_ERROR(IllegalComparison, "", value->IsEqual(*value->Clone()));
        if (value->GetStoreType() != StoreType::KeyMap) {
            EXPECT_LUM_ERROR(CollectionNotMutable, "", value->AsMutableCollection());
        }
    }
}

TEST(StoreTypeOfValueTest, Groups) {
    EXPECT_FALSE(IsCollectionStoreType(MakeInt32(1)));
    EXPECT_FALSE(IsUniformCollectionStoreType(MakeInt32(1)));
    const Type* const ints = ArrayType::Get(IntType::Get32());
    EXPECT_TRUE(IsCollectionStoreType(MakeSpecial(ints, SpecialKind::Null)));
    EXPECT_TRUE(IsUniformCollectionStoreType(MakeSpecial(ints, SpecialKind::Null)));
}

}  // namespace
}  // namespace lum::core
