#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <vector>

#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"
#include "lum/core/utility/LumException.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/RunTogether.h"

namespace lum::core {
namespace {

constexpr std::size_t kThreads = 4;

/// Types of every kind over a real type that nobody has asked for, bases of the nested ones among
/// them, in one fixed order.
std::vector<const Type*> MakeTypes(signed char precision, signed char scale) {
    const Type* const real = RealType::Get64(precision, scale);
    const Type* const array = ArrayType::Get(real);
    const Type* const keyMap = KeyMapType::Get({{L"b", array}, {L"a", real}});
    const Type* const table = TableType::Get({{L"c", ArrayType::Get(array)}});
    const Type* const tuple = TupleType::Get({real, IntType::Get32(), real});
    return {real,
            array,
            SetType::Get(real),
            KeySetType::Get(real, array),
            keyMap,
            keyMap->GetBaseType(),
            table,
            table->GetBaseType(),
            tuple,
            tuple->GetBaseType(),
            ArrayType::Get(tuple),
            ExternalType::Get(static_cast<unsigned short>(1000 + 16 * scale + precision)),
            StringType::Get(Collation(RInternString(L"l" + TStringCore::number(int{scale}))))};
}

TEST(TypeRaceTest, RacingThreadsGetOnePointer) {
    const test::CollatorPoolGuard pool(std::make_shared<test::FoldingCollatorPool>());
    for (int scale = 1; scale <= 40; ++scale) {
        std::array<std::vector<const Type*>, kThreads> types;
        test::RunTogether(kThreads, [&](std::size_t thread) {
            for (int precision = 0; precision < 14; ++precision) {
                for (const Type* type : MakeTypes(static_cast<signed char>(precision),
                                                  static_cast<signed char>(scale))) {
                    types[thread].push_back(type);
                }
            }
        });
        for (const auto& others : types) {
            ASSERT_EQ(others, types[0]);
        }
        for (const Type* type : types[0]) {
            ASSERT_EQ(type->GetBaseType()->GetBaseType(), type->GetBaseType());
        }
    }
}

TEST(TypeRaceTest, RefusedTypesStayRefused) {
    std::atomic<std::size_t> refusals{0};
    constexpr std::size_t kRounds = 200;
    const Type* const table = TableType::Get({});
    test::RunTogether(kThreads, [&](std::size_t) {
        for (std::size_t i = 0; i < kRounds; ++i) {
            try {
                ArrayType::Get(table);
            } catch (const LumRuntimeException&) {
                ++refusals;
            }
            try {
                TableType::Get({{L"not a column", IntType::Get32()}});
            } catch (const LumRuntimeException&) {
                ++refusals;
            }
        }
    });
    EXPECT_EQ(refusals, 2 * kRounds * kThreads);
}

}  // namespace
}  // namespace lum::core
