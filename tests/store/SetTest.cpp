#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/SetAdapter.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using test::ColumnOf;
using test::SetOf;
using test::TextOf;
using Kinds = std::unordered_set<SpecialKind>;

class SetTest : public testing::Test {
    const test::CollatorPoolGuard m_pool{std::make_shared<test::FoldingCollatorPool>()};
};

std::unique_ptr<SetContainer<RIndirectString>> Strings(const Collation& hashed,
                                                       const Collation& compared) {
    return std::make_unique<SetContainer<RIndirectString>>(0, CollatorHash(hashed),
                                                           CollatorEqualTo(compared));
}

template <typename T>
SV MakeSet(const Type* type, std::initializer_list<T> values, Kinds kinds = {}) {
    return factory::MakeSet<T>(type, std::make_unique<SetContainer<T>>(values),
                               std::make_unique<Kinds>(std::move(kinds)));
}

TEST_F(SetTest, ConstructionChecks) {
    const Collation root;
    const Collation fold(RInternString(L"fold"));
    const Type* const string = StringType::Get();
    EXPECT_LUM_REPORT(NullSet, "", "(m_values) != nullptr",
                      factory::MakeSet<unsigned>(IntType::Get32(), nullptr, nullptr));
    EXPECT_LUM_REPORT(CollationMismatch, "", "(c == set.hash_function().GetCollation())",
                      factory::MakeSet<RIndirectString>(string, Strings(fold, root), nullptr));
    EXPECT_LUM_REPORT(CollationMismatch, "", "(c == set.key_eq().GetCollation())",
                      factory::MakeSet<RIndirectString>(string, Strings(root, fold), nullptr));
    const char kMatching[] =
        "(StorageTypeTraits<StorageT>::IsMatchingType(m_type->GetElementType()))";
    EXPECT_LUM_REPORT(
        TypeMismatchExpected, "", kMatching,
        factory::MakeSet<RIndirectString>(IntType::Get32(), Strings(root, root), nullptr));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kMatching,
                      MakeSet<unsigned>(IntType::Get64(), {1}));
    EXPECT_LUM_REPORT(NestedCollectionSpecials, "",
                      "!(IsCollectionStoreType(m_type->GetElementType()->GetStoreType()))",
                      MakeSet<LumTuple>(test::TypeOf("P{i}"), {}, {SpecialKind::Null}));
    EXPECT_EQ(TextOf(factory::MakeSet<RIndirectString>(StringType::Get(fold), Strings(fold, fold),
                                                       nullptr)),
              "S s:");
    // Handles may stand for any element.
    EXPECT_EQ(TextOf(MakeSet<SV>(IntType::Get32(), {factory::MakeInt32(5)})), "S i: 5");
}

TEST_F(SetTest, CountsValuesAndKinds) {
    const SV value = SetOf("i: 1 2 3 -");
    const ITypedSet<unsigned>& set = value->AsTypedSet<unsigned>();
    EXPECT_EQ(value->GetCount(), 4u);
    EXPECT_EQ(set.GetSpecialCount(), 1u);
    EXPECT_TRUE(set.HasSpecialValues());
    EXPECT_TRUE(set.HasSpecial(SpecialKind::Null));
    EXPECT_FALSE(set.HasSpecial(SpecialKind::All));
    EXPECT_TRUE(set.Contains(2));
    EXPECT_FALSE(set.Contains(0));
    EXPECT_EQ(value->GetType(), SetType::Get(IntType::Get32()));
}

TEST_F(SetTest, CopiesShareTheirValues) {
    SV value = SetOf("s: a b - !All");
    const RIndirectString* const first = &*value->AsTypedSet<RIndirectString>().GetValuesCursor();
    const SV without = value->AsSet().WithoutSpecials();
    const SV clone = value->Clone();
    value.reset();
    EXPECT_EQ(TextOf(without), "S s: a b");
    EXPECT_EQ(TextOf(clone), "S s: !All !Null a b");
    for (const SV& copy : {without, clone}) {
        EXPECT_EQ(&*copy->AsTypedSet<RIndirectString>().GetValuesCursor(), first);
    }
}

TEST_F(SetTest, ArraysHaveSpecialsLast) {
    const SV array = SetOf("i: 7 - 8 !All")->AsSet().ToArray(/*includeSpecials=*/true);
    const ITypedArray<unsigned>& typed = array->AsTypedArray<unsigned>();
    ASSERT_EQ(array->GetCount(), 4u);
    EXPECT_EQ(TextOf(typed.ToSet(/*includeSpecials=*/true)), "S i: !All !Null 0 7 8");
    for (lumsize_t i = 0; i < 4; ++i) {
        EXPECT_EQ(typed.IsSpecial(i), i >= 2);
        EXPECT_EQ(typed.GetValue(i) == 0, i >= 2);
    }
    EXPECT_EQ(typed.GetSortOrder(), SortSpecOrder::UNKNOWN);
    EXPECT_EQ(TextOf(SetOf("i: 7 -")->AsSet().ToArray(/*includeSpecials=*/false)), "i: 7");
    for (const char* const same : {"i: 7", "s: -", "P{i}: (1)"}) {
        EXPECT_EQ(TextOf(SetOf(same)->AsSet().ToArray(/*includeSpecials=*/true)), same);
    }
}

TEST_F(SetTest, KeysAreTheTextOfAMember) {
    const struct {
        const char* set;
        const wchar_t* key;
        const char* answer;
    } cases[] = {
        {"b: true", L"true", "true"},
        {"i: 5 7", L"5", "true"},
        {"c: ff0000ff", L"ff0000ff", "true"},
        {"r: 0", L"-0", "false"},  // Numbers are told apart by their bits.
        {"d: 2024-03-01", L"2024-03-01", "true"},
        {"s: x ''", L"", "true"},
        {"s: '''q'''", L"'q'", "true"},  // A text is taken as it stands.
        {"s: x", L"X", "false"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.set) + " asked for " + TStringCore(c.key).toStdString());
        const SV set = SetOf(c.set);
        EXPECT_EQ(TextOf(set->AsCollection().TryGetValue(c.key)), c.answer);
        EXPECT_EQ(TextOf(set->AsCollection().GetValue(c.key)), c.answer);
    }
    const SV rows = SetOf("P{i}: (5)");
    EXPECT_LUM_ERROR(NotImplemented, "", rows->AsCollection().GetValue(L"5"));
    EXPECT_EQ(rows->AsCollection().TryGetValue(L"5"), nullptr);
    const SV handles = MakeSet<SV>(IntType::Get32(), {factory::MakeInt32(5)});
    EXPECT_LUM_ERROR(ValueSetStringLookup, "", handles->AsCollection().GetValue(L"5"));
    EXPECT_EQ(handles->AsCollection().TryGetValue(L"5"), nullptr);
    EXPECT_TRUE(handles->AsCollection().HasKey(L"5"));
}

TEST_F(SetTest, StringsAreMembersUnderTheirCollation) {
    const Type* const type = StringType::Get(Collation(RInternString(L"fold")));
    const SV array =
        factory::MakeArray<RIndirectString>(type, {L"a", L"A", L"b"}, SortSpecOrder::UNKNOWN);
    const SV set = array->AsArray().ToSet(/*includeSpecials=*/false);
    EXPECT_EQ(set->GetCount(), 2u);
    EXPECT_TRUE(set->AsTypedSet<RIndirectString>().Contains(L"B"));
    EXPECT_EQ(TextOf(set->AsCollection().GetValue(L"A")), "true");
    EXPECT_EQ(set->AsSet().GetElementType(), type);

    const test::CollatorPoolGuard noPool(nullptr);
    EXPECT_LUM_ERROR(NoCollatorPool, "", array->AsArray().ToSet(/*includeSpecials=*/false));
}

// Otherwise as the model of ArrayFormsTest says.
TEST_F(SetTest, SetsOfArraysHoldWhatIndicesReach) {
    const SV reached = ColumnOf("i: 1 2!Null 3")
                           ->AsArray()
                           .WithIndices(std::vector<unsigned>{0, 0}, SortSpecOrder::ASC);
    EXPECT_EQ(TextOf(reached->AsArray().ToSet(/*includeSpecials=*/true)), "S i: 1");
    const SV values = factory::MakeArray<SV>(
        IntType::Get32(), {factory::MakeInt32(5), factory::MakeInt32(5), nullptr},
        SortSpecOrder::UNKNOWN);
    EXPECT_EQ(TextOf(values->AsArray().ToSet(/*includeSpecials=*/false)), "S i: 5 null");
}

TEST_F(SetTest, WalksValuesThenKinds) {
    for (const char* const text : {"i: 1 2 - !All", "i: - !All", "s: a -", "i:"}) {
        SCOPED_TRACE(text);
        const SV set = SetOf(text);
        const auto& iterable = set->AsSet().GetStoreValueIterable();
        const lumsize_t valueCount = set->GetCount() - set->AsSet().GetSpecialCount();
        lumsize_t position = 0;
        for (auto it = iterable.begin()->Clone(); *it != iterable.end(); it->Advance()) {
            EXPECT_EQ(it->Dereference()->IsSpecial(), position++ >= valueCount);
            EXPECT_EQ(it->Dereference()->GetType(), set->AsSet().GetElementType());
        }
        EXPECT_EQ(position, set->GetCount());
    }
    // A container from outside may hold what is no special kind.
    const SV odd = MakeSet<unsigned>(IntType::Get32(), {}, {SpecialKind::Normal});
    EXPECT_LUM_ERROR(NormalBoxedSpecial, "",
                     odd->AsSet().GetStoreValueIterable().begin()->Dereference());
}

TEST_F(SetTest, CursorsVisitValuesAlone) {
    std::vector<int> found;
    for (const int value : SetAdapter<int>(SetOf("i: -7 -"))) {
        found.push_back(value);
    }
    EXPECT_EQ(found, std::vector<int>{-7});
    // Any byte but 0 is true.
    EXPECT_TRUE(*SetAdapter<bool>(MakeSet<unsigned char>(BoolType::Get(), {2})).begin());

    const SV set = SetOf("i: 1");
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", "(TypeTraits<T>::IsMatchingType(elementType))",
                      SetAdapter<float>(set));
    EXPECT_LUM_ERROR(NotTypedSet, "", SetAdapter<double>(set));
    SetCursor<unsigned> cursor = set->AsTypedSet<unsigned>().GetValuesCursor();
    EXPECT_LUM_REPORT(TypeMismatchExpected, "",
                      "(TypeTraits<NewCastType>::IsMatchingType(m_type->GetElementType()))",
                      cursor.CastTo<LumColor>());
    ++cursor;
    EXPECT_TRUE(cursor.IsAtEnd());
    EXPECT_LUM_REPORT(IteratorOutOfBounds, "", "(m_pos != m_values->end())", *cursor);
    EXPECT_LUM_REPORT(IteratorOutOfBounds, "", "(m_pos != m_values->end())", ++cursor);
}

}  // namespace
}  // namespace lum::core
