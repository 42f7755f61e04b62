// Key sets that are read for the first time on many threads at once.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "lum/core/store/KeySetFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/RunTogether.h"

namespace lum::core {
namespace {

TEST(KeySetThreadsTest, UntouchedRowsAsElements) {
    constexpr std::size_t kThreadCount = 4;
    const test::CollatorPoolGuard pool;
    const auto* const type = &test::TypeOf("P{i,s}")->As<TupleType>();
    // None of these rows was touched before the key set took them over.
    auto values = std::make_unique<MapContainer<unsigned, LumTuple>>();
    for (unsigned key = 0; key < 20; ++key) {
        values->emplace(key, LumTuple(type));
    }
    auto specials = std::make_unique<MapContainer<SpecialKind, LumTuple>>();
    specials->emplace(SpecialKind::Null, LumTuple(type));
    const SV keySet = factory::MakeKeySet<unsigned, LumTuple>(
        IntType::Get32(), type, std::move(values), std::move(specials));
    std::vector<std::string> texts(kThreadCount);
    test::RunTogether(kThreadCount,
                      [&](std::size_t thread) { texts[thread] = test::TextOf(keySet); });
    EXPECT_EQ(texts, std::vector<std::string>(kThreadCount, texts[0]));
}

}  // namespace
}  // namespace lum::core
