// Random stores through payloads and back: nothing but the indices of plain arrays is lost.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/serialize/BinaryProtocolCreator.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/serialize/StoreValueBinarySerializer.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/ValueFactory.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ExactText.h"
#include "tests/support/PayloadBytes.h"
#include "tests/support/RandomStores.h"

namespace lum::core {
namespace {

SV RootOf(const IDataStore& store) {
    return store.GetValue(KeyPath());
}

class BinaryValueRoundTripTest : public testing::Test {
protected:
    BinaryValueRoundTripTest() { test::RegisterBytesKind(); }
    ~BinaryValueRoundTripTest() override { ClearExternalTypes(); }

    test::Random m_random;

private:
    test::CollatorPoolGuard m_pool;
};

TEST_F(BinaryValueRoundTripTest, StreamsOfRandomStores) {
    SCOPED_TRACE(m_random.Trace());
    std::string allTexts;
    for (int stream = 0; stream < 100; ++stream) {
        const auto flags = m_random.Below(4);
        BinaryProtocolCreator creator((flags & 2) != 0, (flags & 1) != 0);
        std::unique_ptr<BinaryProtocolReader> reader;
        for (int payload = 0; payload < 10; ++payload) {
            const auto store = factory::MakeDataStore(test::MakeRandomStore(m_random, 2));
            // A string of its own, since a payload whose only new string is empty cannot be read.
            store->SetValue(KeyPath::ParseString(L"payload"),
                            factory::MakeString(TStringCore::number(payload) + L"."));
            SerializeDataStore(creator, *store);
            auto bytes = test::MakePayload(creator.FinalizePayload(), m_random.Below(9));
            if (reader == nullptr) {
                reader = std::make_unique<BinaryProtocolReader>(bytes);
            } else {
                reader->NextPayload(bytes);
            }
            bytes.reset();
            const auto read = StoreValueParser::MakeDataStore(*reader);
            ASSERT_EQ(reader->GetRemainingBytes(), 0u);
            if (payload == 9) {
                reader.reset();
            }
            const std::string text = test::ExactText(RootOf(*store));
            ASSERT_EQ(test::ExactText(RootOf(*read)), text);
            ASSERT_EQ(SerializeDataStoreCompact(*read), SerializeDataStoreCompact(*store));
            allTexts += text;
        }
    }
    // What is compared is worth it.
    for (const char* const part : {"constant", "composite", "with kinds", "bytes", "!9", "x0("}) {
        EXPECT_NE(allTexts.find(part), std::string::npos) << part;
    }
}

// Text knows no forms, but both ways keep what it does know.
TEST_F(BinaryValueRoundTripTest, ThroughJsonAndBack) {
    SCOPED_TRACE(m_random.Trace());
    const auto throughPayload = [](const IDataStore& store) {
        BinaryProtocolCreator creator;
        SerializeDataStore(creator, store);
        BinaryProtocolReader reader(test::MakePayload(creator.FinalizePayload()));
        return StoreValueParser::MakeDataStore(reader);
    };
    for (int i = 0; i < 500; ++i) {
        const auto store = factory::MakeDataStore(test::MakeRandomStore(m_random, 2));
        store->SetValue(KeyPath::ParseString(L"text"), factory::MakeString(L"."));
        const TStringCore json = SerializeDataStoreCompact(*throughPayload(*store));
        const auto parsed = StoreValueParser::MakeDataStore(json);
        ASSERT_EQ(SerializeDataStoreCompact(*throughPayload(*parsed)), json);
    }
}

}  // namespace
}  // namespace lum::core
