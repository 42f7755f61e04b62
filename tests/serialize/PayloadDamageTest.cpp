// Every small damage to payloads of every kind of container and value: it is refused with a code,
// or what is read can be read to its last element, and written and read again as the same.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "lum/core/store/ValueFactory.h"
#include "lum/core/utility/LumLog.h"
#include "tests/serialize/GoldenPayloads.h"
#include "tests/serialize/GoldenValues.h"
#include "tests/serialize/SerializeTest.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/ExactText.h"
#include "tests/support/PayloadWalk.h"
#include "tests/support/StoreTouch.h"

namespace lum::core {
namespace {

using test::Repeat;
using Bytes = std::vector<unsigned char>;

// No count makes room that the bytes do not bear out, whether the read fails or not.
std::shared_ptr<IDataStore> ReadWithinMemory(const Bytes& bytes, std::size_t shift = 0) {
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

// By its events, which are written and read again.
void ReadEvents(const Bytes& bytes, std::size_t shift) {
    BinaryProtocolReader reader(test::MakePayload(bytes, shift));
    BinaryProtocolCreator copy((bytes[4] & 2) != 0, (bytes[4] & 1) != 0);
    test::PayloadWalk walk(reader, copy);
    const std::string trace = walk.Walk();
    const Bytes written = copy.FinalizePayload();
    if (!walk.MayHaveLostString(written)) {
        BinaryProtocolReader again(test::MakePayload(written));
        BinaryProtocolCreator copyOfCopy;
        EXPECT_EQ(test::PayloadWalk(again, copyOfCopy).Walk(), trace) << test::ToHex(bytes);
    }
}

// As a store, all of which is looked at.
void ReadValues(const Bytes& bytes, std::size_t shift) {
    const std::shared_ptr<IDataStore> store = ReadWithinMemory(bytes, shift);
    const SV root = store->GetValue(KeyPath());
    test::StoreTouch().Touch(root);
    EXPECT_EQ(test::ExactText(test::ReadStore(test::WriteStore(*store))->GetValue(KeyPath())),
              test::ExactText(root))
        << test::ToHex(bytes);
}

class PayloadDamageTest : public test::SerializeTest {
protected:
    PayloadDamageTest() {
        m_former = SetLumLogger(std::make_shared<LumLogger>(
            LumLogger::WideSink(), [](LumLogLevel, const TStringCore&) {},
            [](LumLogLevel) { return false; }));
    }
    ~PayloadDamageTest() override { SetLumLogger(std::move(m_former)); }

    template <typename F>
    static void ForEachPayload(const F& check) {
        for (const test::GoldenPayload& golden : test::GetGoldenPayloads()) {
            SCOPED_TRACE(golden.name);
            check(golden.GetBytes());
        }
        test::ForEachGoldenPayload(
            [&](const SV&, unsigned int, const Bytes& bytes) { check(bytes); });
    }

    // Another address each time, so that both columns in place and copies of them are read.
    void Try(const Bytes& bytes) {
        ++m_count;
        for (const auto read : {&ReadEvents, &ReadValues}) {
            try {
                read(bytes, m_count % 2 * 3);
                ++m_readCount;
            } catch (const LumException&) {
                // Damage is refused with a code,
            } catch (const std::out_of_range&) {
                // or with that of a kind that nobody registered.
            }
        }
    }

    std::size_t m_count = 0;
    std::size_t m_readCount = 0;  // Both ways.

private:
    std::shared_ptr<LumLogger> m_former;
};

TEST_F(PayloadDamageTest, Truncations) {
    ForEachPayload([&](const Bytes& bytes) {
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            Try({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)});
        }
        EXPECT_EQ(m_readCount, 0u);
    });
}

TEST_F(PayloadDamageTest, FlippedBits) {
    ForEachPayload([&](Bytes bytes) {
        for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
            const auto mask = static_cast<unsigned char>(1u << bit % 8);
            bytes[bit / 8] ^= mask;
            Try(bytes);
            bytes[bit / 8] ^= mask;
        }
    });
    EXPECT_GT(m_readCount, m_count / 5);
    EXPECT_LT(m_readCount, m_count * 9 / 5);
}

TEST_F(PayloadDamageTest, HostileWords) {
    ForEachPayload([&](const Bytes& bytes) {
        const unsigned int length = LumSizeCastSafe(bytes.size());
        for (std::size_t place = 0; place + 4 <= bytes.size(); place += 4) {
            for (const unsigned int word :
                 {0u, 1u, 1u << 29, (1u << 29) + 1, 1u << 30, (1u << 30) + 1, ~0u >> 1, 1u << 31,
                  ~0u, length - 1, length, length + 1}) {
                Bytes damaged = bytes;
                std::memcpy(damaged.data() + place, &word, sizeof(word));
                Try(damaged);
            }
        }
    });
}

Bytes MakeBytes(const std::string& data) {
    return test::GoldenBytes(/*flags=*/2, data, {"v", "bytes"});
}

// What takes the fewest bytes in a payload for the most in memory: many small collections.
TEST_F(PayloadDamageTest, MemoryOfManySmallValues) {
    const std::pair<const char*, std::vector<const char*>> cases[] = {
        // The tag of the elements, and one of them in some forms.
        {"0c01", {"01 00", "09 00 00", "04 00 01", "03 00 00 00", "13 00000000"}},
        {"0c06", {"01 00", "04 00 01"}},
        {"0c0a", {"01 00"}},
        {"0c8a0100", {"01 00"}},
        {"0c0c01", {"01 01 01 00"}},
        {"0d01", {"05 00", "0d 00 00", "0d 01 01 01 01"}},
        {"0d02", {"05 00"}},
        {"0d03", {"05 00"}},
        {"0d06", {"05 00"}},
        {"0d8a0100", {"05 00", "05 01 06 01 01"}},
        {"0f", {"00", "01 01 41 01", "01 01 0e0101 01 00", "01 01 0e0101 02 00 00"}},
        {"0f", {"01 01 10 00 01 00 01 00"}},
        {"0a", {"06 00"}},
        {"8a06060600", {"0e 03 010101 00"}},
        {"06", {"01"}},
        {"8b02", {"02 00"}},
    };
    constexpr int kCount = 20'000;
    for (const auto& [tag, elements] : cases) {
        for (const std::string element : elements) {
            SCOPED_TRACE(tag + (": " + element));
            const Bytes bytes =
                MakeBytes("#1 'v' 0c" + std::string(tag) + " 01 #20000 " + Repeat(element, kCount));
            const auto store = ReadWithinMemory(bytes);
            EXPECT_EQ(store->GetValue(KeyPath::ParseString(L"v"))->GetCount(), kCount);
        }
    }
    std::unordered_map<RInternString, SV> members;
    for (int i = 0; i < kCount; ++i) {
        members.emplace(RInternString(TStringCore::number(i)), factory::MakeBool(true));
    }
    const Bytes bytes = test::WriteStore(*factory::MakeDataStore(std::move(members)));
    EXPECT_EQ(ReadWithinMemory(bytes)->GetValue(KeyPath())->GetCount(), kCount);
}

// Types are remembered for good, and each byte of these tags makes one.
TEST_F(PayloadDamageTest, MemoryOfTypes) {
    std::string data = "#300 ";  // Entries under one name.
    for (int i = 0; i < 300; ++i) {
        const std::string scale = test::ToHex(Bytes{static_cast<unsigned char>(i % 128)});
        data += "'v' 4c " + Repeat("0c", 200) + (i < 128 ? "84" : "85") + " 21 " + scale + " 01 ";
    }
    EXPECT_EQ(ReadWithinMemory(MakeBytes(data))->GetValue(KeyPath())->GetCount(), 1u);
}

// Each of many containers within each other claims all that there is.
TEST_F(PayloadDamageTest, MemoryOfNestedCounts) {
    for (const char* const level :
         {"ffff7f 01 0f", "01 01 0c 0f 01 ffff7f", "ffff7f 01 0c 0f 01 ffff7f",
          "01 01 0e 02 0f 01 ffff7f 000000"}) {
        for (const unsigned int levels : {1u, 2u, 100u, 1000u}) {
            SCOPED_TRACE(level);
            EXPECT_THROW(ReadWithinMemory(MakeBytes(Repeat(level, levels) + Repeat("00", 1000))),
                         LumException);
        }
    }
}

}  // namespace
}  // namespace lum::core
