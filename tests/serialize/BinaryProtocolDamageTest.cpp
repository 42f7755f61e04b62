// Every small damage to small payloads: it is refused as it should be, or what is read can be
// written and reads the same again.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/serialize/BinaryProtocolCreator.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/utility/LumException.h"
#include "tests/serialize/GoldenPayloads.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/PayloadBytes.h"
#include "tests/support/PayloadWalk.h"

namespace lum::core {
namespace {

class BinaryProtocolDamageTest : public testing::Test {
protected:
    BinaryProtocolDamageTest() {
        test::RegisterGoldenKind();
        m_former = SetLumLogger(std::make_shared<LumLogger>(
            LumLogger::WideSink(), [](LumLogLevel, const TStringCore&) {},
            [](LumLogLevel) { return false; }));
    }
    ~BinaryProtocolDamageTest() override {
        SetLumLogger(std::move(m_former));
        ClearExternalTypes();
    }

    // Another address each time, so that both the view and the copy of the data are read.
    void Try(const std::vector<unsigned char>& bytes) {
        ++m_count;
        try {
            BinaryProtocolReader reader(test::MakePayload(bytes, m_count % 2 * 3));
            BinaryProtocolCreator copy((bytes[4] & 2) != 0, (bytes[4] & 1) != 0);
            test::PayloadWalk walk(reader, copy);
            const std::string trace = walk.Walk();
            ++m_readCount;
            const std::vector<unsigned char> written = copy.FinalizePayload();
            if (walk.MayHaveLostString(written)) {
                return;
            }
            BinaryProtocolReader again(test::MakePayload(written));
            BinaryProtocolCreator copyOfCopy;
            ASSERT_EQ(test::PayloadWalk(again, copyOfCopy).Walk(), trace) << test::ToHex(bytes);
        } catch (const LumException&) {
            // Damage is refused with a code,
        } catch (const std::out_of_range&) {
            // or with that of a kind that nobody registered.
        }
    }

    std::size_t m_count = 0;
    std::size_t m_readCount = 0;

private:
    test::CollatorPoolGuard m_pool{std::make_shared<test::FoldingCollatorPool>()};
    std::shared_ptr<LumLogger> m_former;
};

TEST_F(BinaryProtocolDamageTest, Truncations) {
    for (const test::GoldenPayload& golden : test::GetGoldenPayloads()) {
        const std::vector<unsigned char> bytes = golden.GetBytes();
        for (std::size_t length = bytes.size() - 1; length >= 5; --length) {
            m_readCount = 0;
            Try({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)});
            ASSERT_EQ(m_readCount, 0u) << golden.name << " of length " << length;
        }
    }
}

TEST_F(BinaryProtocolDamageTest, FlippedBits) {
    for (const test::GoldenPayload& golden : test::GetGoldenPayloads()) {
        std::vector<unsigned char> bytes = golden.GetBytes();
        for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
            const auto mask = static_cast<unsigned char>(1u << bit % 8);
            bytes[bit / 8] ^= mask;
            Try(bytes);
            bytes[bit / 8] ^= mask;
        }
    }
    EXPECT_GT(m_readCount, 1'000u);
    EXPECT_GT(m_count - m_readCount, 5'000u);
}

TEST_F(BinaryProtocolDamageTest, HostileWords) {
    for (const test::GoldenPayload& golden : test::GetGoldenPayloads()) {
        const std::vector<unsigned char> bytes = golden.GetBytes();
        const unsigned int length = LumSizeCastSafe(bytes.size());
        for (std::size_t place = 0; place + 4 <= bytes.size(); place += 4) {
            for (const unsigned int word :
                 {0u, 1u, 1u << 29, (1u << 29) + 1, 1u << 30, (1u << 30) + 1, ~0u >> 1, 1u << 31,
                  ~0u, length - 1, length, length + 1}) {
                std::vector<unsigned char> damaged = bytes;
                std::memcpy(damaged.data() + place, &word, sizeof(word));
                Try(damaged);
            }
        }
    }
}

}  // namespace
}  // namespace lum::core
