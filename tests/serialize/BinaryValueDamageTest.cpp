// Every small damage to payloads of every kind of value: it is refused with a code, or what is read
// can be read to its last element, and written and read again as the same.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "lum/core/serialize/BinaryProtocolCreator.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/serialize/StoreValueBinarySerializer.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/ValueFactory.h"
#include "tests/serialize/GoldenPayloads.h"
#include "tests/serialize/GoldenValues.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ExactText.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/PayloadBytes.h"
#include "tests/support/RandomStores.h"
#include "tests/support/StoreTouch.h"

namespace lum::core {
namespace {

class BinaryValueDamageTest : public testing::Test {
protected:
    BinaryValueDamageTest() {
        test::RegisterBytesKind();
        m_former = SetLumLogger(std::make_shared<LumLogger>(
            LumLogger::WideSink(), [](LumLogLevel, const TStringCore&) {},
            [](LumLogLevel) { return false; }));
    }
    ~BinaryValueDamageTest() override {
        SetLumLogger(std::move(m_former));
        ClearExternalTypes();
    }

    // Another address each time, so that both columns in place and copies of them are read.
    void Try(const std::vector<unsigned char>& bytes) {
        ++m_count;
        try {
            const std::shared_ptr<IDataStore> store = Read(bytes, m_count % 2 * 3);
            ++m_readCount;
            const SV root = store->GetValue(KeyPath());
            test::StoreTouch().Touch(root);
            CheckRewrite(*store, test::ExactText(root));
        } catch (const LumException&) {
        } catch (const std::out_of_range&) {  // A kind of value that nobody registered.
        }
    }

    std::size_t m_count = 0;
    std::size_t m_readCount = 0;

    // No count makes room that the bytes do not bear out, whether the read fails or not.
    static std::shared_ptr<IDataStore> Read(const std::vector<unsigned char>& bytes,
                                            std::size_t shift) {
        struct PeakCheck {
            ~PeakCheck() { EXPECT_LE(peak.GetBytes(), (64u << 10) + 256 * size); }
            std::size_t size;
            test::PeakMemory peak;
        };
        const auto payload = test::MakePayload(bytes, shift);
        const PeakCheck check{bytes.size(), {}};
        BinaryProtocolReader reader(payload);
        return StoreValueParser::MakeDataStore(reader);
    }

private:
    static void CheckRewrite(const IDataStore& store, const std::string& text) {
        BinaryProtocolCreator creator;
        SerializeDataStore(creator, store);
        BinaryProtocolReader reader(test::MakePayload(creator.FinalizePayload()));
        ASSERT_EQ(test::ExactText(StoreValueParser::MakeDataStore(reader)->GetValue(KeyPath())),
                  text);
    }

    test::CollatorPoolGuard m_pool{std::make_shared<test::FoldingCollatorPool>()};
    std::shared_ptr<LumLogger> m_former;
};

TEST_F(BinaryValueDamageTest, Truncations) {
    test::ForEachGoldenPayload(
        [&](const SV&, unsigned int, const std::vector<unsigned char>& bytes) {
            m_readCount = 0;
            for (std::size_t length = 0; length < bytes.size(); ++length) {
                Try({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)});
            }
            EXPECT_EQ(m_readCount, 0u);
        });
}

TEST_F(BinaryValueDamageTest, FlippedBits) {
    test::ForEachGoldenPayload([&](const SV&, unsigned int, std::vector<unsigned char> bytes) {
        for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
            const auto mask = static_cast<unsigned char>(1u << bit % 8);
            bytes[bit / 8] ^= mask;
            Try(bytes);
            bytes[bit / 8] ^= mask;
        }
    });
    EXPECT_GT(m_readCount, m_count / 10);
    EXPECT_LT(m_readCount, m_count * 9 / 10);
}

TEST_F(BinaryValueDamageTest, HostileWords) {
    test::ForEachGoldenPayload([&](const SV&, unsigned int,
                                   const std::vector<unsigned char>& bytes) {
        const unsigned int length = LumSizeCastSafe(bytes.size());
        for (std::size_t place = 0; place + 4 <= bytes.size(); place += 4) {
            for (const unsigned int word : {0u, 1u, 1u << 29, (1u << 29) + 1, 1u << 30, ~0u >> 1,
                                            1u << 31, ~0u, length - 1, length, length + 1}) {
                std::vector<unsigned char> damaged = bytes;
                std::memcpy(damaged.data() + place, &word, sizeof(word));
                Try(damaged);
            }
        }
    });
}

std::vector<unsigned char> MakeBytes(const std::string& data) {
    return test::GoldenPayload{"", /*flags=*/2, {"v"}, data, nullptr}.GetBytes();
}

std::string Repeat(const std::string& text, int count) {
    std::string repeated;
    for (int i = 0; i < count; ++i) {
        repeated += text;
    }
    return repeated;
}

// What takes the fewest bytes in a payload for the most in memory: many small collections.
TEST_F(BinaryValueDamageTest, MemoryOfManySmallValues) {
    const std::pair<const char*, const char*> cases[] = {
        // The tag of the elements, and one of them.
        {"0c01", "01 00"},
        {"0c01", "09 00 00"},
        {"0c01", "04 00 01"},
        {"0c01", "03 00 00 00"},
        {"0c01", "13 00000000"},
        {"0c06", "01 00"},
        {"0c06", "04 00 01"},
        {"0c0a", "01 00"},
        {"0c8a0100", "01 00"},
        {"0c0c01", "01 01 01 00"},
        {"0d01", "05 00"},
        {"0d02", "05 00"},
        {"0d03", "05 00"},
        {"0d01", "0d 00 00"},
        {"0d01", "0d 01 01 01 01"},
        {"0d06", "05 00"},
        {"0d8a0100", "05 00"},
        {"0d8a0100", "05 01 06 01 01"},
        {"0f", "00"},
        {"0f", "01 01 41 01"},
        {"0f", "01 01 0e0101 01 00"},
        {"0f", "01 01 0e0101 02 00 00"},
        {"0f", "01 01 10 00 01 00 01 00"},
        {"0a", "06 00"},
        {"8a06060600", "0e 03 010101 00"},
        {"06", "01"},
        {"8b02", "02 00"},
    };
    for (const auto& [tag, element] : cases) {
        SCOPED_TRACE(tag + std::string(": ") + element);
        auto golden = test::GoldenPayload{
            "", 2, {"v", "bytes"}, "01 01 0c" + std::string(tag) + "01 a09c01", nullptr};
        golden.data += Repeat(element, 20'000);
        EXPECT_EQ(Read(golden.GetBytes(), 0)->GetValue(KeyPath::ParseString(L"v"))->GetCount(),
                  20'000u);
    }
    std::unordered_map<RInternString, SV> members;
    for (int i = 0; i < 20'000; ++i) {
        members.emplace(RInternString(TStringCore::number(i)), factory::MakeBool(true));
    }
    BinaryProtocolCreator creator;
    SerializeDataStore(creator, *factory::MakeDataStore(std::move(members)));
    EXPECT_EQ(Read(creator.FinalizePayload(), 0)->GetValue(KeyPath())->GetCount(), 20'000u);
}

// Types are remembered for good, and each byte of these tags makes one.
TEST_F(BinaryValueDamageTest, MemoryOfTypes) {
    std::string data = "ac02";  // 300 entries under one name.
    for (int i = 0; i < 300; ++i) {
        const std::string scale =
            test::ToHex(std::vector<unsigned char>{static_cast<unsigned char>(i % 128)});
        data += "01 4c" + Repeat("0c", 200) + (i < 128 ? "84" : "85") + "21" + scale + "01";
    }
    EXPECT_EQ(Read(MakeBytes(data), 0)->GetValue(KeyPath())->GetCount(), 1u);
}

// Each of many containers within each other claims all that there is.
TEST_F(BinaryValueDamageTest, MemoryOfNestedCounts) {
    for (const char* const level :
         {"ffff7f 01 0f", "01 01 0c 0f 01 ffff7f", "ffff7f 01 0c 0f 01 ffff7f",
          "01 01 0e 02 0f 01 ffff7f 000000"}) {
        for (const int levels : {1, 2, 100, 1000}) {
            SCOPED_TRACE(level);
            EXPECT_THROW(Read(MakeBytes(Repeat(level, levels) + Repeat("00", 1000)), 0),
                         LumException);
        }
    }
}

}  // namespace
}  // namespace lum::core
