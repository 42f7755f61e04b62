#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using test::TextOf;

constexpr SortSpecOrder kOrder = SortSpecOrder::ASC;

using Kinds = std::vector<SpecialKind>;
using Indices = std::vector<unsigned>;

template <typename T>
SV MakeWithKinds(const Type* elementType, std::vector<T> values, std::size_t kindCount) {
    return factory::MakeArray<T>(elementType, std::make_unique<std::vector<T>>(std::move(values)),
                                 nullptr, std::make_unique<Kinds>(kindCount, SpecialKind::Null),
                                 kOrder);
}

/// A reference to a row that has no block, which nobody can read.
std::vector<LumTuple> MakeBlocklessRows() {
    const LumTuple fresh(&test::TypeOf("P{i}")->As<TupleType>());
    std::vector<LumTuple> rows;
    rows.emplace_back(fresh.GetTupleData());
    return rows;
}

// In the order in which they are made.
TEST(ArrayConstructionTest, Checks) {
    const Type* const int32 = IntType::Get32();
    const Type* const rows = test::TypeOf("P{i}");
    const Type* const keyMap = KeyMapType::Get({});
    const char kNull[] = "!(m_values.IsNull())";
    const char kMatching[] =
        "(StorageTypeTraits<StorageT>::IsMatchingType(m_type->GetElementType()))";
    const char kNested[] = "!(IsCollectionStoreType(m_type->GetElementType()->GetStoreType()))";
    const char kSize[] = "(m_specials.GetSize() == m_values.GetSize())";
    const std::shared_ptr<const RawData> noData;
    EXPECT_LUM_ERROR(IllegalElementType, "", factory::MakeArray<unsigned>(nullptr, {1}, kOrder));
    EXPECT_LUM_REPORT(NullArray, "", kNull,
                      factory::MakeArray<unsigned>(int32, nullptr, nullptr, nullptr, kOrder));
    EXPECT_LUM_REPORT(NullArray, "", kNull,
                      factory::MakeArray<unsigned>(BoolType::Get(), noData, noData, kOrder));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kMatching, MakeWithKinds<unsigned>(rows, {1}, 2));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kMatching,
                      factory::MakeArray<LumTuple>(int32, MakeBlocklessRows(), kOrder));
    EXPECT_LUM_REPORT(NestedCollectionSpecials, "", kNested,
                      MakeWithKinds<SV>(keyMap, {nullptr}, 1));
    EXPECT_LUM_REPORT(NestedCollectionSpecials, "", kNested, MakeWithKinds<LumTuple>(rows, {}, 2));
    EXPECT_LUM_REPORT(SpecialsSizeMismatch, "", kSize,
                      MakeWithKinds<unsigned>(int32, {1, 2, 3}, 2));
    EXPECT_LUM_REPORT(SpecialsSizeMismatch, "", kSize, MakeWithKinds<unsigned>(int32, {}, 1));
    const std::shared_ptr<const RawData> narrow = VectorRawData<unsigned char>::Make({1, 2, 3, 4});
    EXPECT_LUM_REPORT(IllegalCast, "", "(sizeof(T) == m_typeSize)",
                      factory::MakeArray<unsigned>(int32, narrow, noData, kOrder));
    // Handles hold elements of any type.
    EXPECT_NO_THROW(factory::MakeArray<SV>(int32, {factory::MakeInt32(1)}, kOrder));
    EXPECT_NO_THROW(factory::MakeArray<SV>(keyMap, {nullptr}, kOrder));
}

// The forms of ArrayFormsTest are made by the other factories.
TEST(ArrayConstructionTest, FactoriesAgree) {
    const Type* const type = IntType::Get32();
    const std::vector<unsigned> values{5, 6, 7};
    const Kinds kinds{SpecialKind::Normal, SpecialKind::All, SpecialKind::Normal};
    const std::pair<SV, const char*> cases[] = {
        {factory::MakeArray(type, std::vector(values), kOrder), "i: 5 6 7"},
        {factory::MakeArray(type, std::vector(values), Indices{2, 2, 0}, kOrder), "i: 7 7 5"},
        {factory::MakeArray(type, std::vector(values), Indices{2, 1, 0, 1}, Kinds(kinds), kOrder),
         "i: 7 6!All 5 6!All"},
        {factory::MakeArray(type, std::vector(values), Indices(), Kinds(kinds), kOrder), "i!:"},
        {factory::MakeArray(type, std::make_unique<std::vector<unsigned>>(values),
                            std::make_unique<Indices>(), nullptr, kOrder),
         "i:"},
    };
    for (const auto& [array, expected] : cases) {
        EXPECT_EQ(TextOf(array), expected);
        EXPECT_EQ(array->AsArray().GetSortOrder(), kOrder);
        EXPECT_EQ(&array->AsUniformCollection(),
                  static_cast<const IUniformCollection*>(&array->AsArray()));
    }
}

TEST(ArrayConstructionTest, NothingIsCopied) {
    std::vector<RIndirectString> strings{L"longer than the handle", L"b"};
    const RIndirectString* const address = strings.data();
    const SV moved = factory::MakeArray(test::TypeOf("s"), std::move(strings), kOrder);
    EXPECT_EQ(moved->AsTypedArray<RIndirectString>().GetValues().GetData(), address);

    std::shared_ptr<const RawData> data = VectorRawData<unsigned long long>::Make({1, 2});
    const void* const storage = data->GetByteView().GetData();
    const std::weak_ptr<const RawData> observer = data;
    SV shared =
        factory::MakeArray<unsigned long long>(IntType::Get64(), std::move(data), nullptr, kOrder);
    EXPECT_EQ(shared->AsTypedArray<unsigned long long>().GetValues().GetData(), storage);
    EXPECT_FALSE(observer.expired());
    shared.reset();
    EXPECT_TRUE(observer.expired());
}

// Otherwise two threads that read a row for the first time would both make its block.
TEST(ArrayConstructionTest, RowsHaveTheirBlocksBeforeAnyoneReadsThem) {
    const auto type = &test::TypeOf("P{i,s}")->As<TupleType>();
    std::vector<LumTuple> fresh(2, LumTuple(type));
    const SV array = factory::MakeArray(type, std::move(fresh), kOrder);
    // A reference has a block only if the row had one when the reference was made.
    const LumTuple reference(array->AsTypedArray<LumTuple>().GetValueUnchecked(1).GetTupleData());
    EXPECT_EQ(TextOf(reference), "(0 '')");
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "", "(m_ownsData)",
                            factory::MakeArray<LumTuple>(type, MakeBlocklessRows(), kOrder));
    const LumTuple inValue(factory::MakeTuple(LumTuple(type))->AsTuple().GetTupleData());
    EXPECT_EQ(TextOf(inValue), "(0 '')");
}

}  // namespace
}  // namespace lum::core
