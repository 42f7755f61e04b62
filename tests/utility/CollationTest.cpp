#include "lum/core/utility/Collation.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

const Collation kGerman{RInternString(L"de")};

TEST(CollationTest, WithoutAPool) {
    const test::CollatorPoolGuard noPool(nullptr);
    const char* const condition = "(g_collatorPool) != nullptr";
    EXPECT_LUM_REPORT(NoCollatorPool, "", condition, GetCollatorPool());
    EXPECT_LUM_REPORT(NoCollatorPool, "", condition, Collation().GetCollator());
    EXPECT_LUM_REPORT(NoCollatorPool, "", condition, Collation() == Collation());
    EXPECT_LUM_REPORT(NoCollatorPool, "", condition, CollatorHash());
    EXPECT_LUM_REPORT(NoCollatorPool, "", condition, CollatorEqualTo(kGerman));
    // Names and hashes ask no pool.
    EXPECT_EQ(Collation::DefaultCollation.GetLocale(), L"ROOT");
    EXPECT_EQ(Collation().GetLocale(), L"ROOT");
    EXPECT_TRUE(Collation(RInternString(L"ROOT")).IsDefault());
    EXPECT_FALSE(kGerman.IsDefault());
    EXPECT_EQ(std::hash<Collation>()(Collation()), 0x2f6fd662u);
}

TEST(CollationTest, TheDefaultPoolKnowsTheDefaultCollation) {
    const test::CollatorPoolGuard pool;
    EXPECT_LUM_REPORT(InvalidCollation, "", "(c == Collation::DefaultCollation)",
                      kGerman.GetCollator());
    EXPECT_TRUE(kGerman == Collation(RInternString(L"de")));
    EXPECT_TRUE(kGerman != Collation());

    const ICollator& collator = Collation(RInternString(L"ROOT")).GetCollator();
    EXPECT_TRUE(collator.GetCollation().IsDefault());
    EXPECT_EQ(collator.Compare(L"a", L"A"), 1);
    EXPECT_EQ(collator.Compare(L"a", L"b"), -1);
    EXPECT_EQ(collator.Compare(L"a", L"a"), 0);
    EXPECT_EQ(collator.Hash(L"ROOT"), 0x2f6fd662u);
}

TEST(CollationTest, SettingAPoolGivesBackTheFormer) {
    const test::CollatorPoolGuard noPool(nullptr);
    const auto first = std::make_shared<test::FoldingCollatorPool>();
    EXPECT_EQ(SetCollatorPool(std::shared_ptr<ICollatorPool>(first)), nullptr);
    EXPECT_EQ(&GetCollatorPool(), first.get());
    RegisterDefaultCollatorPool();
    ICollatorPool* const installed = &GetCollatorPool();
    EXPECT_NE(installed, first.get());
    RegisterDefaultCollatorPool();
    EXPECT_NE(&GetCollatorPool(), first.get());
    EXPECT_NE(SetCollatorPool(nullptr), nullptr);
    EXPECT_EQ(SetCollatorPool(nullptr), nullptr);
}

TEST(CollationTest, FunctionObjectsKeepTheirCollator) {
    const auto folding = std::make_shared<test::FoldingCollatorPool>();
    const test::CollatorPoolGuard pool(folding);
    const CollatorEqualTo plainEqual;
    const CollatorHash plainHash;
    const CollatorEqualTo foldedEqual(Collation(RInternString(L"fold")));
    const CollatorHash foldedHash(Collation(RInternString(L"fold")));
    // The default collator outlives the pool that handed it out; the other one is ours.
    const test::CollatorPoolGuard noPool(nullptr);
    EXPECT_FALSE(plainEqual(L"Name", L"nAME"));
    EXPECT_TRUE(plainEqual(L"name", L"name"));
    EXPECT_EQ(plainHash(L"ROOT"), 0x2f6fd662u);
    EXPECT_TRUE(plainHash.GetCollation().IsDefault() && plainEqual.GetCollation().IsDefault());
    EXPECT_TRUE(foldedEqual(L"Name", L"nAME"));
    EXPECT_EQ(foldedHash(L"Name"), foldedHash(L"nAME"));
    EXPECT_EQ(foldedHash.GetCollation().GetLocale(), L"fold");
    EXPECT_EQ(foldedEqual.GetCollation().GetLocale(), L"fold");
}

}  // namespace
}  // namespace lum::core
