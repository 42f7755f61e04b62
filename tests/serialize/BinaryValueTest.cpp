// Values as payloads: their bytes, what of them stays in place, and what is refused.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/serialize/BinaryProtocolCreator.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/serialize/StoreValueBinarySerializer.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/IDataStore.h"
#include "tests/serialize/GoldenValues.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ExactText.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/PayloadBytes.h"
#include "tests/support/RandomStores.h"

namespace lum::core {
namespace {

class BinaryValueTest : public testing::Test {
protected:
    BinaryValueTest() { test::RegisterBytesKind(); }
    ~BinaryValueTest() override { ClearExternalTypes(); }

private:
    test::CollatorPoolGuard m_pool{std::make_shared<test::FoldingCollatorPool>()};
};

TEST_F(BinaryValueTest, WritesGoldenBytes) {
    test::ForEachGoldenPayload(
        [](const SV& value, unsigned int flags, const std::vector<unsigned char>& bytes) {
            BinaryProtocolCreator creator((flags & 2) != 0, (flags & 1) != 0);
            SerializeDataStore(creator, *factory::MakeDataStore(test::MakeStoreOf(value)));
            EXPECT_EQ(test::ToHex(creator.FinalizePayload()), test::ToHex(bytes));
        });
}

TEST_F(BinaryValueTest, ReadsGoldenBytes) {
    test::ForEachGoldenPayload(
        [](const SV& value, unsigned int, const std::vector<unsigned char>& bytes) {
            for (const std::size_t shift : {0u, 1u, 4u}) {
                BinaryProtocolReader reader(test::MakePayload(bytes, shift));
                const auto store = StoreValueParser::MakeDataStore(reader);
                EXPECT_EQ(test::ExactText(store->GetValue(KeyPath())),
                          test::ExactText(test::MakeStoreOf(value)));
                EXPECT_EQ(reader.GetRemainingBytes(), 0u);
            }
        });
}

}  // namespace
}  // namespace lum::core
