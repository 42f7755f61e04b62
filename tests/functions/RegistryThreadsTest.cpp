#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <vector>

#include "lum/core/functions/FunctionRegistry.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/utility/LumException.h"
#include "tests/support/RunTogether.h"

namespace lum::core {
namespace {

TEST(RegistryThreadsTest, FilledRegistryIsReadInParallel) {
    const Type* const types[] = {IntType::Get32(), IntType::Get64(), RealType::Get64()};
    constexpr FunctionKey::ArgContainer kVector = FunctionKey::ArgContainer::Vector;
    const auto registry = FunctionRegistry::Make();
    std::vector<FunctionKey> queries;
    for (const wchar_t* const name : {L"f", L"g", L"h"}) {
        for (const Type* const type : types) {
            registry->AddFunction(FunctionKey(name, {type}, kVector),
                                  FunctionInfo(type, false, false));
            queries.emplace_back(name, TypeRefVec<VariableTypeRef>{type}, kVector);
        }
        registry->AddFunction(FunctionKey(name, {VariableTypeRef::AnyType}, kVector),
                              FunctionInfo(ArrayType::Get(types[0]), false, false));
    }
    constexpr std::size_t kThreads = 4;
    constexpr std::size_t kRounds = 200;
    std::atomic<std::size_t> found{0};
    std::atomic<std::size_t> refused{0};
    test::RunTogether(kThreads, [&](std::size_t) {
        for (std::size_t round = 0; round < kRounds; ++round) {
            for (const FunctionKey& query : queries) {
                const TypeRef expected = query.GetInputTypes()[0];
                found += registry->GetFunction(query).GetOutputType() == expected;
            }
            try {
                registry->GetFunction(FunctionKey(L"f", types[0]));
            } catch (const LumRuntimeException&) {
                ++refused;
            }
        }
    });
    EXPECT_EQ(found, kThreads * kRounds * queries.size());
    EXPECT_EQ(refused, kThreads * kRounds);
}

}  // namespace
}  // namespace lum::core
