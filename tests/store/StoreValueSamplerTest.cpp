#include "lum/core/store/StoreValueSampler.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/IStoreDictionary.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/KeySets.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/SmallStack.h"

namespace lum::core {
namespace {

using test::ColumnOf;
using test::TextOf;

std::string SampleText(const SV& value, unsigned count) {
    return TextOf(SampleStoreValue(*value, count));
}

TEST(StoreValueSamplerTest, ArraysAreCut) {
    test::ForEachForm(ColumnOf("i: 7 7!Null 8"), [](const SV& column) {
        EXPECT_EQ(SampleText(column, 2), "i: 7 7!Null");
        EXPECT_EQ(SampleText(column, 9), "i: 7 7!Null 8");
        // A range of no elements is all of them where there are indices over stored values.
        const bool isIndexed =
            column->AsArray().HasIndices() && !column->AsTypedArray<unsigned>().IsComposite();
        EXPECT_EQ(SampleStoreValue(*column, 0)->GetCount(), isIndexed ? 3u : 0u);
    });
    // The storage is shared.
    const SV column = ColumnOf("l: 1 2 3");
    EXPECT_EQ(
        SampleStoreValue(*column, 2)->AsTypedArray<unsigned long long>().GetValues().GetData(),
        column->AsTypedArray<unsigned long long>().GetValues().GetData());
}

TEST(StoreValueSamplerTest, TablesAreCutAndStateNoOrder) {
    const SV table = factory::MakeTable(
        {{L"a", ColumnOf("i: 1 2 3")}, {L"b", ColumnOf("s: x y z")}}, {{L"a", SortSpecOrder::ASC}});
    const SV sample = SampleStoreValue(*table, 2);
    EXPECT_EQ(TextOf(sample->AsTable().GetColumn(L"a")), "i: 1 2");
    EXPECT_EQ(TextOf(sample->AsTable().GetColumn(L"b")), "s: x y");
    EXPECT_TRUE(sample->AsTable().GetSortColumns().empty());
    EXPECT_EQ(SampleStoreValue(*table, 4)->AsTable().GetRowCount(), 3u);
    EXPECT_EQ(SampleStoreValue(*table, 0)->AsTable().GetRowCount(), 0u);

    const SV indexed = ColumnOf("i: 1 2")->AsArray().WithIndices(std::vector<unsigned>{0, 1},
                                                                 SortSpecOrder::UNKNOWN);
    EXPECT_LUM_ERROR(
        ColumnSizeMismatch, "",
        SampleStoreValue(*factory::MakeTable({{L"a", indexed}, {L"b", ColumnOf("i: 1 2")}}, {}),
                         0));
}

TEST(StoreValueSamplerTest, KeyMapsAreWalked) {
    const test::CollatorPoolGuard guard;
    const SV inner =
        factory::MakeKeyMap({{L"column", ColumnOf("i: 1 2 3")}, {L"", ColumnOf("s: x y")}});
    const SV special = factory::MakeSpecial(inner->GetType(), SpecialKind::Missing);
    const SV keyMap = factory::MakeKeyMap({{L"inner", inner},
                                           {L"none", factory::MakeKeyMap(nullptr)},
                                           {L"number", factory::MakeInt32(5)},
                                           {L"set", test::SetOf("i: 1 2 3")},
                                           {L"special", special}});
    EXPECT_EQ(SampleText(keyMap, 1),
              "{inner = { = s: x, column = i: 1}, none = {}, number = 5, set = S i: 1 2 3, "
              "special = !Missing}");
    // Nothing in the sample is the original's, which can change on.
    inner->AsMutableCollection().SetValue(L"column", ColumnOf("i: 9"));
    const SV sample = SampleStoreValue(*keyMap, 1);
    sample->AsMutableCollection().SetValue(L"number", factory::MakeInt32(6));
    EXPECT_EQ(TextOf(keyMap->AsCollection().GetValue(L"number")), "5");
}

TEST(StoreValueSamplerTest, DepthCostsNoStack) {
    SV keyMap = factory::MakeKeyMap({{L"leaf", ColumnOf("i: 1 2")}});
    for (int depth = 0; depth < 100000; ++depth) {
        keyMap = factory::MakeKeyMap({{L"k", std::move(keyMap)}});
    }
    test::OnSmallStack([&] {
        SV node = SampleStoreValue(*keyMap, 1);
        while (node->AsCollection().HasKey(L"k")) {
            node = node->AsCollection().GetValue(L"k");
        }
        EXPECT_EQ(TextOf(node), "{leaf = i: 1}");
    });
}

TEST(StoreValueSamplerTest, KeySetsOfArraysKeepEveryKey) {
    const test::CollatorPoolGuard guard;
    const Type* const arrays = ArrayType::Get(IntType::Get32());
    const std::pair<const char*, const char*> cases[] = {
        {"b: true false -", ": !Null=i: 7 false=i: 7 true=i: 7"},
        {"i: 5 6 !All", ": !All=i: 7 5=i: 7 6=i: 7"},
        {"r: 0.5", ": 0.5=i: 7"},
        {"s: x y", ": x=i: 7 y=i: 7"},
        {"P{i,s}: (1 x)", ": (1 x)=i: 7"},
    };
    for (const auto& [keys, expected] : cases) {
        SCOPED_TRACE(keys);
        const SV column = ColumnOf(keys);
        const SV keySet = test::KeySetOf(
            column,
            factory::MakeArray<SV>(arrays, std::vector<SV>(column->GetCount(), ColumnOf("i: 7 8")),
                                   SortSpecOrder::UNKNOWN));
        const SV sample = SampleStoreValue(*keySet, 1);
        EXPECT_EQ(sample->GetType(), keySet->GetType());
        EXPECT_EQ(TextOf(sample), keySet->GetType()->ToString().toStdString() + expected);
    }

    const SV odd = test::StoredKeySet<unsigned, SV>(
        IntType::Get32(), arrays,
        {{1, nullptr}, {2, factory::MakeSpecial(arrays, SpecialKind::Null)}});
    const SV sample = SampleStoreValue(*odd, 1);
    const auto& elements = sample->AsDictionary<unsigned, SV>();
    EXPECT_EQ(elements.GetValue(1), nullptr);
    EXPECT_EQ(TextOf(elements.GetValue(2)), "!Null");

    const SV boxed = test::MakeKeySetOf(IntType::Get32(), arrays, {}, test::HandleSides::Keys);
    EXPECT_LUM_ERROR(NotKeyedCollection, "", SampleStoreValue(*boxed, 1));
}

TEST(StoreValueSamplerTest, WhatHasNoRowsIsCloned) {
    const test::CollatorPoolGuard guard;
    for (const SV& value :
         {factory::MakeInt32(5), test::SetOf("i: 1 2 3"), test::KeySetOf("i: 1 2", "s: x y"),
          factory::MakeTuple(test::RowOf("P{i}: 5")),
          factory::MakeSpecial(ArrayType::Get(IntType::Get32()), SpecialKind::Null),
          factory::MakeSpecial(KeyMapType::Get({}), SpecialKind::Null)}) {
        const SV sample = SampleStoreValue(*value, 1);
        EXPECT_NE(sample, value);
        EXPECT_EQ(sample->GetType(), value->GetType());
        EXPECT_EQ(sample->GetCount(), value->GetCount());
        EXPECT_EQ(sample->GetSpecialKind(), value->GetSpecialKind());
    }
}

}  // namespace
}  // namespace lum::core
