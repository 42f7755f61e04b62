#include "lum/core/store/ValueUtil.h"

#include <gtest/gtest.h>

#include <bit>
#include <functional>
#include <string>

#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/AnyType.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using test::TextOf;

template <typename C>
auto Native(const C& value) {
    return [value](const Type* type) { return MakeStoreValue<C>(type, value); };
}

template <typename T>
auto Stored(const T& stored) {
    return [stored](const Type* type) { return MakeStoreValueFromStorageType<T>(type, stored); };
}

TEST(ValueUtilTest, MakersAskForTheirStoreType) {
    const LumTuple row = test::RowOf("P{i}: 5");
    const char kBool[] = "(type->GetStoreType() == StoreType::Bool)";
    const char kString[] = "(type->GetStoreType() == StoreType::String)";
    const char kTuple[] = "(type->GetStoreType() == StoreType::Tuple)";
    const struct {
        const char* fits;
        LumError error;
        const char* condition;
        std::function<SV(const Type*)> make;
    } cases[] = {
        {"b", LumError::ExpectedBool, kBool, Native(true)},
        {"i", LumError::ExpectedInt32, "(type->GetStoreType() == StoreType::Int32)", Native(1)},
        {"l", LumError::ExpectedInt64, "(type->GetStoreType() == StoreType::Int64)", Native(1LL)},
        {"f", LumError::ExpectedReal32, "(type->GetStoreType() == StoreType::Real32)",
         Native(1.0f)},
        {"r", LumError::ExpectedReal64, "(type->GetStoreType() == StoreType::Real64)", Native(1.0)},
        {"s", LumError::ExpectedString, kString, Native(RIndirectString(L"x"))},
        {"c", LumError::ExpectedColor, "(type->GetStoreType() == StoreType::Color)",
         Native(LumColor())},
        {"dt", LumError::TypeMismatchExpected, "", Native(LumDateTime())},
        {"P", LumError::TypeMismatchExpected, kTuple, Native(row)},
        {"b", LumError::ExpectedBool, kBool, Stored<unsigned char>(1)},
        {"ifc", LumError::TypeMismatchExpected, "", Stored(1u)},
        {"lrdt", LumError::TypeMismatchExpected, "", Stored(1ull)},
        {"s", LumError::ExpectedString, kString, Stored(RIndirectString(L"x"))},
        {"P", LumError::TypeMismatchExpected, kTuple, Stored(row)},
    };
    // Each fails for every type but those that it fits.
    const std::string codes = "bilfrsdtcPxASKMT";
    for (const auto& c : cases) {
        for (std::size_t i = 0; i < codes.size(); ++i) {
            SCOPED_TRACE(std::string(c.fits) + " from " + codes[i]);
            const Type* const type = test::AnyTypeOf(static_cast<StoreType>(i));
            if (std::string(c.fits).find(codes[i]) != std::string::npos) {
                EXPECT_EQ(c.make(type)->GetType(), type);
            } else {
                EXPECT_TRUE(test::FailsAs({c.error, "", true, c.condition}, [&] { c.make(type); }));
            }
        }
    }

    const SV any = factory::MakeInt32(1);
    EXPECT_EQ(MakeStoreValue<SV>(BoolType::Get(), any), any);
    EXPECT_EQ(MakeStoreValueFromStorageType<SV>(BoolType::Get(), any), any);
}

TEST(ValueUtilTest, MakersKeepTheParametersOfTypes) {
    const test::CollatorPoolGuard pool(std::make_shared<test::FoldingCollatorPool>());
    const Type* const real32 = RealType::Get32(5, 1);
    const Type* const real64 = RealType::Get64(10, 2);
    const Type* const folded = StringType::Get(Collation(RInternString(L"fold")));
    EXPECT_EQ(MakeStoreValue<float>(real32, 1)->GetType(), real32);
    EXPECT_EQ(MakeStoreValue<double>(real64, 1)->GetType(), real64);
    EXPECT_EQ(MakeStoreValue<RIndirectString>(folded, L"x")->GetType(), folded);
    EXPECT_EQ(MakeStoreValueFromStorageType<unsigned>(real32, 1)->GetType(), real32);
    EXPECT_EQ(MakeStoreValueFromStorageType<unsigned long long>(real64, 1)->GetType(), real64);
}

/// The values of all storages, with the bits that they are stored by.
template <typename T, typename C>
void CheckRoundTrip(const char* code, T stored, C native) {
    SCOPED_TRACE(code);
    const Type* const type = test::TypeOf(code);
    const SV value = MakeStoreValueFromStorageType<T>(type, stored);
    EXPECT_EQ(FetchStoreValue<T>(value), stored);
    EXPECT_EQ(FetchStoreValue<C>(value), native);
    EXPECT_EQ(FetchStoreValue<T>(MakeStoreValue<C>(type, native)), stored);
}

TEST(ValueUtilTest, FetchingGivesBackWhatWasMade) {
    const auto date = LumDateTime(2024, 3, 1, 0, 0, 0, 0);
    CheckRoundTrip<unsigned char>("b", 1, true);
    CheckRoundTrip<unsigned>("i", 0xFFFFFFFF, -1);
    CheckRoundTrip<unsigned>("f", std::bit_cast<unsigned>(-0.0f), -0.0f);
    CheckRoundTrip<unsigned>("c", 0xFF000001, LumColor::FromInt32(-16777215));
    CheckRoundTrip<unsigned long long>("l", 1ull << 63, std::numeric_limits<long long>::min());
    CheckRoundTrip<unsigned long long>("r", std::bit_cast<unsigned long long>(1e300), 1e300);
    CheckRoundTrip<unsigned long long>("d", date.GetValue(), date);
    CheckRoundTrip<unsigned long long>("t", date.GetValue(), date);
    CheckRoundTrip<RIndirectString>("s", L"x", RIndirectString(L"x"));
    CheckRoundTrip<LumTuple>("P{i}", test::RowOf("P{i}: 5!All"), test::RowOf("P{i}: 5!All"));

    const SV text = factory::MakeString(L"x");
    EXPECT_EQ(FetchStoreValue<TStringCore>(text), L"x");
    EXPECT_EQ(&FetchStoreValue<const RIndirectString&>(text), &text->AsString());
    EXPECT_EQ(&FetchStoreValue<const SV&>(text), &text);
    EXPECT_EQ(FetchStoreValue<SV>(text), text);
    const SV row = factory::MakeTuple(test::RowOf("P{i}: 5"));
    EXPECT_EQ(&FetchStoreValue<const LumTuple&>(row), &row->AsTuple());
}

TEST(ValueUtilTest, FetchingFailsAsTheAccessorDoes) {
    const SV text = factory::MakeString(L"x");
    EXPECT_LUM_ERROR(ExpectedBool, "String", FetchStoreValue<bool>(text));
    EXPECT_LUM_ERROR(ExpectedBool, "String", FetchStoreValue<unsigned char>(text));
    EXPECT_LUM_ERROR(ExpectedInt32, "String", FetchStoreValue<int>(text));
    EXPECT_LUM_ERROR(ExpectedDateTime, "String", FetchStoreValue<LumDateTime>(text));
    EXPECT_LUM_ERROR(ExpectedString, "Bool", FetchStoreValue<TStringCore>(factory::MakeBool(true)));
    EXPECT_LUM_ERROR(ExpectedTuple, "String", FetchStoreValue<LumTuple>(text));
    // Bits are fetched from what is stored by that many.
    EXPECT_LUM_REPORT(IllegalOperation, "", "", FetchStoreValue<unsigned>(text));
    EXPECT_LUM_REPORT(IllegalOperation, "", "", FetchStoreValue<unsigned>(factory::MakeInt64(1)));
    EXPECT_LUM_REPORT(IllegalOperation, "", "",
                      FetchStoreValue<unsigned long long>(factory::MakeInt32(1)));
    EXPECT_LUM_ERROR(ExpectedReal64, "Real64 (special kind: Null)",
                     FetchStoreValue<unsigned long long>(
                         factory::MakeSpecial(RealType::Get64(), SpecialKind::Null)));
}

TEST(ValueUtilTest, FieldsOfRows) {
    const LumTuple row = test::RowOf(
        "P{b,i,l,f,r,s,d,t,c,i}: true -1 5 1.5 -0 x 2024-03-01 2024-03-01T09:05:00 ff000001 7!All");
    std::string fields;
    for (lumsize_t i = 0; i < row.GetCount(); ++i) {
        EXPECT_EQ(FetchStoreValueFromTuple(row, i)->GetType(), row.GetNthType(i));
        fields += TextOf(FetchStoreValueFromTuple(row, i)) + " ";
    }
    EXPECT_EQ(fields, "true -1 5 1.5 -0 x 2024-03-01 2024-03-01T09:05:00 ff000001 !All ");
    EXPECT_LUM_ERROR(OutOfBounds, "", FetchStoreValueFromTuple(row, 10));

    LumTuple external(TupleType::Get({ExternalType::Get(7)}));
    EXPECT_EQ(FetchStoreValueFromTuple(external, 0), nullptr);
    const SV value = factory::MakeInt32(1);
    external.SetNthExternal(0, value);
    EXPECT_EQ(FetchStoreValueFromTuple(external, 0), value);
}

}  // namespace
}  // namespace lum::core
