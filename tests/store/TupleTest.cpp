#include "lum/core/utility/LumTuple.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "core/main/types/PackedStructOffsets.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using test::RowOf;
using test::TextOf;

const TupleType* TupleTypeOf(const std::string& text) {
    return &test::TypeOf(text)->As<TupleType>();
}

constexpr unsigned short kExternalId = 4711;

class TupleTest : public testing::Test {
    test::CollatorPoolGuard m_pool;
};

TEST_F(TupleTest, LaysMembersOut) {
    const TupleType* const type = TupleTypeOf("P{b,l,s}");
    const lumsize_t expected[] = {0, 8, 32};
    for (lumsize_t i = 0; i < 3; ++i) {
        EXPECT_EQ(type->GetOffsets()->GetValueOffset(i), expected[i]);
        EXPECT_EQ(type->GetOffsets()->GetSpecialOffset(i), 64 + i);
    }
    EXPECT_EQ(LumTuple(type).GetDataSize(), 67u);
    EXPECT_EQ(LumTuple().GetDataSize(), 0u);
    EXPECT_EQ(LumTuple().Compare(LumTuple()), 0);
    EXPECT_EQ(TupleType::Get({})->ToString(), L"P");
    EXPECT_EQ(TupleTypeOf("P{i,b}")->ToString(), L"P{i, b}");
}

TEST_F(TupleTest, TypesHoldPrimitivesAlone) {
    const char condition[] = "(IsPrimitiveStoreType(member->GetStoreType()))";
    EXPECT_LUM_REPORT(TuplePrimitivesOnly, "", condition, TupleType::Get({TupleTypeOf("P{i}")}));
    EXPECT_LUM_REPORT(TuplePrimitivesOnly, "", condition,
                      TupleType::Get({IntType::Get32(), ArrayType::Get(IntType::Get32())}));
    EXPECT_EQ(TupleType::Get({RealType::Get64(10, 2)})->GetBaseType(),
              TupleType::Get({RealType::Get64()}));
}

TEST_F(TupleTest, FreshRowsHoldDefaults) {
    const LumTuple row(TupleTypeOf("P{b,i,l,f,r,s,d,t,c}"));
    EXPECT_EQ(TextOf(row), "(false 0 0 0 0 '' 1900-01-01 1900-01-01 " +
                               LumColor().ToString().toStdString() + ")");
    EXPECT_FALSE(row.IsNthSpecial(5));
    EXPECT_EQ(LumTuple(TupleType::Get({ExternalType::Get(kExternalId)})).GetNthExternal(0),
              nullptr);
}

TEST_F(TupleTest, CheckedAccess) {
    LumTuple row = RowOf("P{s,i}: x 5");
    const char kIndex[] = "(index < members.size())";
    const char kSpecialIndex[] = "(index < m_type->GetMembers().size())";
    constexpr lumsize_t kMax = std::numeric_limits<lumsize_t>::max();
    EXPECT_LUM_REPORT(OutOfBounds, "", kIndex, row.GetNthInt32(2));
    EXPECT_LUM_REPORT(OutOfBounds, "", kIndex, row.SetNthInt32(2, 1));
    EXPECT_LUM_REPORT(OutOfBounds, "", kIndex, row.GetNthType(2));
    EXPECT_LUM_REPORT(OutOfBounds, "", kIndex, row.GetNthValue<int>(kMax));
    EXPECT_LUM_REPORT(OutOfBounds, "", kSpecialIndex, row.GetNthSpecial(2));
    EXPECT_LUM_REPORT(OutOfBounds, "", kSpecialIndex, row.SetNthSpecial(2, SpecialKind::All));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", "(GetNthType(index)->Is(StoreType::Int32))",
                      row.GetNthInt32(0));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", "(GetNthType(index)->Is(StoreType::String))",
                      row.SetNthString(1, RIndirectString()));
    EXPECT_LUM_ERROR(TypeMismatchExpected, "", row.GetNthValue<float>(1));
    EXPECT_LUM_ERROR(TypeMismatchExpected, "", row.GetNthValue<SV>(1));
    EXPECT_LUM_ERROR(TypeMismatchExpected, "", row.GetNthValue<LumTuple>(1));
    EXPECT_THROW(row.SetNthValueUnsafe(1, LumTuple()), LumLogicException);
    EXPECT_EQ(TextOf(row), "(x 5)");
    EXPECT_EQ(row.GetNthValue<unsigned>(1), 5u);

    // Values and kinds are written apart.
    row.SetNthSpecial(1, SpecialKind::Error);
    row.SetNthInt32(1, 6);
    EXPECT_EQ(TextOf(row), "(x 6!Error)");
}

// Columns may come from outside with any byte for a Bool.
TEST_F(TupleTest, AnyByteButZeroIsTrue) {
    LumTuple row(TupleTypeOf("P{b}"));
    row.SetNthValueUnsafe<unsigned char>(0, 2);
    EXPECT_TRUE(row.GetNthBool(0));
    EXPECT_TRUE(row.GetNthValue<bool>(0));
    EXPECT_EQ(row, RowOf("P{b}: true"));
    EXPECT_EQ(row.GetHashValue(), RowOf("P{b}: true").GetHashValue());
}

TEST_F(TupleTest, CopiesAreIndependentAndReferencesAreNot) {
    LumTuple source = RowOf("P{s,i}: 'longer than the handle' 1");
    const LumTuple copy(source);
    LumTuple assigned;
    assigned = source;
    const LumTuple cloned(source.CloneOfData());
    const LumTuple reference(source.GetTupleData());
    EXPECT_TRUE(reference.GetTupleData().IsReference());
    EXPECT_FALSE(source.CloneOfData().IsReference());
    EXPECT_FALSE(LumTuple(reference).GetTupleData().IsReference());  // Copies always own.

    source.SetNthInt32(1, 2);
    source.SetNthString(0, L"other");
    EXPECT_EQ(TextOf(copy), "('longer than the handle' 1)");
    EXPECT_TRUE(assigned == copy && cloned == copy);
    EXPECT_EQ(TextOf(reference), "(other 2)");

    LumTuple moved(std::move(source));
    EXPECT_EQ(TextOf(moved), "(other 2)");
    EXPECT_EQ(TextOf(source), "('' 0)");  // NOLINT(bugprone-use-after-move): an owner once more.
    LumTupleData sharing = assigned.ReferenceToData();
    sharing = moved.GetTupleData();
    EXPECT_TRUE(sharing.IsReference());
    moved.SetNthInt32(1, 3);
    EXPECT_EQ(sharing.GetNthInt32(1), 3);
}

TEST_F(TupleTest, ReferencesKeepTheBlockAndItsMembersAlive) {
    const SV value = factory::MakeInt32(1);
    LumTupleData reference;
    {
        LumTuple source(TupleType::Get({ExternalType::Get(kExternalId), StringType::Get()}));
        source.SetNthExternal(0, value);
        source.SetNthString(1, L"longer than the handle");
        reference = source.ReferenceToData();
        const LumTuple copy(source);
        EXPECT_EQ(value.use_count(), 3);
    }
    EXPECT_EQ(value.use_count(), 2);
    EXPECT_EQ(reference.GetNthString(1), L"longer than the handle");
    reference = LumTupleData();
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(TupleTest, ReferencesWithoutABlockFail) {
    const LumTuple source(TupleTypeOf("P{i}"));
    const LumTuple reference(source.GetTupleData());
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "", "(m_ownsData)", reference.GetNthInt32(0));
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "", "(m_ownsData)", reference.GetNthSpecialUnsafe(0));
}

TEST_F(TupleTest, OneAllocationARow) {
    LumTuple row(TupleTypeOf("P{b,i,s,s,l,s}"));
    const auto countOf = [](const auto& function) {
        const test::AllocationCounter counter;
        function();
        return counter.GetCount();
    };
    EXPECT_EQ(countOf([&] { row.SetNthString(2, L"short"); }), 1u);
    EXPECT_EQ(countOf([&] { row.SetNthString(3, L"short"); }), 0u);
    EXPECT_EQ(countOf([&] { LumTuple copy(row); }), 1u);
    EXPECT_EQ(countOf([&] { LumTuple(row.GetTupleData()).GetNthBool(0); }), 0u);
    EXPECT_EQ(countOf([&] { LumTuple moved(std::move(row)); }), 0u);
}

TEST_F(TupleTest, Orders) {
    const struct {
        const char* left;
        const char* right;
        int expected;
    } cases[] = {
        {"P{i}: -1", "P{i}: 1", -1},
        {"P{l}: -4294967295", "P{l}: 1", -1},
        {"P{i,i}: 1 9", "P{i,i}: 2 0", -1},
        {"P{b}: false", "P{b}: true", -1},
        {"P{s}: B", "P{s}: a", -1},
        {"P{d}: 2024-03-01", "P{d}: 2024-02-29", 1},
        {"P{t}: 2024-02-26", "P{t}: 2024-02-29T12:00:00", -1},
        {"P{f}: -1.5", "P{f}: 1", -1},
        {"P{r}: -1e300", "P{r}: 1", -1},
        {"P{c}: ff000000", "P{c}: 00000000", -1},  // Colours order as signed numbers.
        {"P{r}: -0", "P{r}: 0", 0},
        {"P{f}: nan", "P{f}: 5", 0},
        // Special members stand before normal ones, the larger kind first.
        {"P{i}: -", "P{i}: 5", -1},
        {"P{i}: !Missing", "P{i}: !Null", -1},
        {"P{i}: 9!Null", "P{i}: 5!All", 1},
        // Below equal kinds the placeholders count.
        {"P{i}: 5!Null", "P{i}: 6!Null", -1},
        {"P{i,i}: - 1", "P{i,i}: - 2", -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.left) + " against " + c.right);
        const LumTuple left = RowOf(c.left);
        const LumTuple right = RowOf(c.right);
        EXPECT_EQ(left.Compare(right), c.expected);
        EXPECT_EQ(right.Compare(left), -c.expected);
        EXPECT_EQ(left == right, c.expected == 0);
        EXPECT_TRUE((left < right) == (c.expected < 0) && (left > right) == (c.expected > 0));
    }
    EXPECT_LUM_REPORT(TypeMismatch, "", "(m_type == other.m_type)",
                      RowOf("P{i}: 1").Compare(RowOf("P{l}: 1")));
}

TEST_F(TupleTest, MissingExternalsComeFirst) {
    const TupleType* const type = TupleType::Get({ExternalType::Get(kExternalId)});
    const LumTuple missing(type);
    LumTuple present(type);
    present.SetNthExternal(0, factory::MakeInt32(1));
    EXPECT_EQ(missing.Compare(present), -1);
    EXPECT_EQ(present.Compare(missing), 1);
    EXPECT_EQ(missing.Compare(LumTuple(type)), 0);
    EXPECT_EQ(missing.GetHashValue(), LumTuple(type).GetHashValue());
}

TEST_F(TupleTest, HashesKindsAndRawBits) {
    // FNV-1a of the byte 0 for the kind, and of the four bytes of 5.
    EXPECT_EQ(RowOf("P{i}: 5").GetHashValue(),
              0xaf63bd4c8601b7dfull + 0x9e3779b9 + 0x2d401a55eec16520ull);
    EXPECT_EQ(std::hash<LumTuple>()(RowOf("P{i}: 5")), RowOf("P{i}: 5").GetHashValue());
    const std::pair<const char*, const char*> different[] = {{"P{r}: -0", "P{r}: 0"},
                                                             {"P{i}: -", "P{i}: 0"},
                                                             {"P{i}: 1!Null", "P{i}: 2!Null"},
                                                             {"P{i,i}: 1 2", "P{i,i}: 2 1"}};
    for (const auto& [left, right] : different) {
        EXPECT_NE(RowOf(left).GetHashValue(), RowOf(right).GetHashValue()) << left;
    }
}

TEST_F(TupleTest, StringsCompareByTheirOwnTypesCollation) {
    const test::CollatorPoolGuard pool(std::make_shared<test::FoldingCollatorPool>());
    const TupleType* const type =
        TupleType::Get({StringType::Get(Collation(RInternString(L"fold")))});
    LumTuple lower(type);
    LumTuple upper(type);
    lower.SetNthString(0, L"abc");
    upper.SetNthString(0, L"ABC");
    EXPECT_EQ(lower, upper);
    EXPECT_EQ(lower.GetHashValue(), upper.GetHashValue());
    upper.SetNthString(0, L"ABD");
    EXPECT_EQ(lower.Compare(upper), -1);
}

class ValueTupleTest : public TupleTest {};

TEST_F(ValueTupleTest, IsACollectionOfItsMembers) {
    const SV value = factory::MakeTuple(RowOf("P{i,s,b,d}: 5 x true!All 2024-03-01"));
    EXPECT_EQ(value->GetCount(), 4u);
    EXPECT_EQ(value->GetHashValue(), value->AsTuple().GetHashValue());
    const IStoreCollection& members = value->AsCollection();
    const std::pair<const wchar_t*, const char*> keys[] = {
        {L"0", "5"}, {L"1", "x"}, {L"2", "!All"}, {L"3", "2024-03-01"}};
    for (const auto& [key, expected] : keys) {
        EXPECT_EQ(TextOf(members.TryGetValue(key)), expected);
        EXPECT_EQ(TextOf(members.GetValue(key)), expected);
        EXPECT_TRUE(members.HasKey(key));
    }
    for (const wchar_t* const key : {L"4", L"x", L"", L"-1"}) {
        EXPECT_EQ(members.TryGetValue(key), nullptr);
        EXPECT_FALSE(members.HasKey(key));
        EXPECT_LUM_ERROR(KeyNotFound, TStringCore(key).toStdString(), members.GetValue(key));
    }
    EXPECT_LUM_ERROR(IllegalCast, "", value->Cast(value->GetType()));
}

TEST_F(ValueTupleTest, ComparesWithRowsOfItsOwnTypeAlone) {
    const SV value = factory::MakeTuple(RowOf("P{i}: 5"));
    EXPECT_TRUE(value->IsEqual(*value->Clone()));
    EXPECT_FALSE(value->IsEqual(*factory::MakeTuple(RowOf("P{l}: 5"))));
    EXPECT_FALSE(value->IsEqual(*factory::MakeSpecial(value->GetType(), SpecialKind::Null)));
    EXPECT_EQ(value->Compare(*factory::MakeTuple(RowOf("P{i}: 6"))), -1);
    EXPECT_LUM_REPORT(ExpectedTuple, "", "", value->Compare(*factory::MakeInt32(5)));

    // Two types of one base type.
    const SV precise = factory::MakeTuple(LumTuple(TupleType::Get({RealType::Get64(10, 2)})));
    const SV plain = factory::MakeTuple(LumTuple(TupleType::Get({RealType::Get64()})));
    EXPECT_LUM_ERROR(TypeMismatch, "", precise->IsEqual(*plain));
}

}  // namespace
}  // namespace lum::core
