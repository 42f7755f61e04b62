#include "PayloadDump.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "PayloadBuffers.h"
#include "StoreAccess.h"
#include "StoreOutput.h"
#include "lum/core/serialize/BinaryProtocolCreator.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumException.h"
#include "tests/serialize/GoldenPayloads.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/PayloadBytes.h"
#include "tests/support/PayloadWalk.h"

namespace lumhost::test {
namespace {

using namespace lum::core;
using Bytes = std::vector<unsigned char>;
using lum::test::GetGoldenPayloads;

class PayloadDumpTest : public testing::Test {
protected:
    PayloadDumpTest() { lum::test::RegisterGoldenKind(); }
    ~PayloadDumpTest() override { ClearExternalTypes(); }

    static PayloadDump Dump(const Bytes& bytes) {
        return DumpPayload(std::make_shared<VectorBuffer>(bytes));
    }

private:
    lum::test::CollatorPoolGuard m_pool{std::make_shared<lum::test::FoldingCollatorPool>()};
};

// A line of a dump: a position of four digits, the bytes, ".." where some are left out, the
// meaning.
struct DumpLine {
    std::string position;
    std::string digits;
    bool isCut = false;
};

std::optional<DumpLine> TryReadLine(const std::string& line) {
    constexpr std::size_t kBytes = 6;
    constexpr std::size_t kMeaning = kBytes + 25;
    if (line.size() <= kMeaning || line.find_first_not_of("0123456789abcdef") != 4) {
        return std::nullopt;
    }
    std::string digits = line.substr(kBytes, kMeaning - kBytes);
    const std::size_t dots = digits.find("..");
    const bool isCut = dots != std::string::npos;
    digits.resize(isCut ? dots : digits.size());
    return DumpLine{line.substr(0, 4), digits, isCut};
}

// The dumps of the page on the form, each with the bytes that it shows.
struct ShownDump {
    std::string text;
    Bytes bytes;
};

TEST_F(PayloadDumpTest, ThePageShowsDumps) {
    std::ifstream page(LUMHOST_WIRE_FORMAT_PAGE);
    std::vector<ShownDump> dumps;
    for (std::string line; std::getline(page, line);) {
        const auto parts = TryReadLine(line);
        if (!parts) {
            continue;
        }
        if (parts->position == "0000") {
            dumps.emplace_back();
        }
        ShownDump& dump = dumps.back();
        dump.text += (dump.text.empty() ? "" : "\n") + line;
        const Bytes more = lum::test::FromHex(parts->digits);
        dump.bytes.insert(dump.bytes.end(), more.begin(), more.end());
    }
    EXPECT_FALSE(dumps.empty());
    for (const ShownDump& dump : dumps) {
        EXPECT_EQ(Dump(dump.bytes).text, dump.text);
    }
}

// Line by line every byte of payloads of all kinds of values.
TEST_F(PayloadDumpTest, ShowsEveryByte) {
    for (const lum::test::GoldenPayload& golden : GetGoldenPayloads()) {
        const Bytes bytes = golden.GetBytes();
        const PayloadDump dump = Dump(bytes);
        SCOPED_TRACE(golden.name + ("\n" + dump.text));
        EXPECT_FALSE(dump.fault);
        std::size_t next = 0;
        std::istringstream lines(dump.text);
        for (std::string line; std::getline(lines, line);) {
            const auto parts = TryReadLine(line);
            ASSERT_TRUE(parts) << line;
            EXPECT_FALSE(parts->isCut) << line;
            EXPECT_EQ(std::stoul(parts->position, nullptr, 16), next);
            for (const unsigned char byte : lum::test::FromHex(parts->digits)) {
                EXPECT_EQ(byte, bytes.at(next++)) << line;
            }
        }
        EXPECT_EQ(next, bytes.size());
    }
}

TEST_F(PayloadDumpTest, CutsLongRunsOfItems) {
    const SV texts = lum::test::ColumnOf("s: a a a a a a a a a a b");
    const SV numbers = lum::test::ColumnOf("i: 1 2 3 4 5 6 7 8 9");
    const Bytes payload = MakePayload(*MakeStore({{RInternString(L"k"), texts}}));
    EXPECT_TRUE(Dump(payload).text.ends_with("02 02 03                         3 more"))
        << Dump(payload).text;
    const Bytes block = MakePayload(*MakeStore({{RInternString(L"k"), numbers}}));
    EXPECT_TRUE(Dump(block).text.ends_with("0058  09 00 00 00                      1 more"))
        << Dump(block).text;
    // The number of a text that is not shown.
    Bytes damaged = payload;
    damaged.back() = 9;
    const std::string text = Dump(damaged).text;
    EXPECT_NE(text.find(" items that are not shown\n"), std::string::npos) << text;
    EXPECT_EQ(Dump(damaged).fault->position, damaged.size() - 1);
}

bool IsReadable(const Bytes& bytes) {
    try {
        BinaryProtocolReader reader(lum::test::MakePayload(bytes));
        BinaryProtocolCreator copy;
        lum::test::PayloadWalk(reader, copy).Walk();
        return true;
    } catch (const LumException&) {
    } catch (const std::out_of_range&) {
    }
    return false;
}

// The dump stops where, and only where, a reader of the events would.
TEST_F(PayloadDumpTest, TellsDamage) {
    const auto expectAgreement = [](const Bytes& bytes) {
        const PayloadDump dump = Dump(bytes);
        ASSERT_EQ(!dump.fault, IsReadable(bytes)) << lum::test::ToHex(bytes) << '\n' << dump.text;
        if (dump.fault) {
            ASSERT_TRUE(dump.text.ends_with("damaged: " + dump.fault->reason));
            ASSERT_LE(dump.fault->position, bytes.size());
        }
    };
    for (const lum::test::GoldenPayload& golden : GetGoldenPayloads()) {
        Bytes bytes = golden.GetBytes();
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            expectAgreement({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)});
        }
        for (std::size_t place = 0; place < bytes.size(); ++place) {
            for (const unsigned char byte : Bytes{0x00, 0x01, 0x0C, 0x7F, 0x80, 0xFF}) {
                const unsigned char former = std::exchange(bytes[place], byte);
                expectAgreement(bytes);
                bytes[place] = former;
            }
        }
    }
}

TEST_F(PayloadDumpTest, TellsPlaceAndReason) {
    const std::string header = "01000000 02000000 012f0000 00000000 00000000 00000000 00000000 ";
    struct {
        std::string digits;
        HexLines::Position position;
        const char* reason;
    } const cases[] = {
        {"", 0, "the file ends within the header"},
        {"0100", 2, "the file ends within the header"},
        {"0200" + header.substr(4) + "20000000 00", 0,
         "binary protocol version mismatch (error 219)"},
        {header + "21000000 00", 0x1C,
         "operation not supported in current binary protocol state (error 204)"},
        {header + "20000000 01 01", 0x21, "invalid string table index (error 203)"},
    };
    for (const auto& testCase : cases) {
        const PayloadDump dump = Dump(lum::test::FromHex(testCase.digits));
        ASSERT_TRUE(dump.fault) << dump.text;
        EXPECT_EQ(dump.fault->position, testCase.position) << dump.text;
        EXPECT_EQ(dump.fault->reason, testCase.reason);
    }
}

// Three bytes a level.
TEST_F(PayloadDumpTest, StopsWhereValuesNestTooDeep) {
    Bytes bytes = MakePayload(*MakeStore({{RInternString(L"k"), lum::test::ColumnOf("i:")}}));
    bytes.resize(0x30);
    for (int level = 0; level < 100'000; ++level) {
        bytes.insert(bytes.end(), {1, 1, 15});
    }
    EXPECT_EQ(Dump(bytes).fault->reason, "values nest deeper than 256 levels");
}

}  // namespace
}  // namespace lumhost::test
