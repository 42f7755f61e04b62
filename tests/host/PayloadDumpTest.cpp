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

// A line of a dump: a position of four digits, the bytes, the meaning.
struct DumpLine {
    std::string position;
    Bytes bytes;
};

std::optional<DumpLine> TryReadLine(const std::string& line) {
    constexpr std::size_t kBytes = 6;
    constexpr std::size_t kMeaning = kBytes + 25;
    if (line.size() <= kMeaning || line.find_first_not_of("0123456789abcdef") != 4) {
        return std::nullopt;
    }
    return DumpLine{line.substr(0, 4), lum::test::FromHex(line.substr(kBytes, kMeaning - kBytes))};
}

// The dumps of the page on the form, made again of the bytes that they show.
TEST_F(PayloadDumpTest, ThePageShowsDumps) {
    std::ifstream page(LUMHOST_WIRE_FORMAT_PAGE);
    std::vector<std::pair<std::string, Bytes>> dumps;
    for (std::string line; std::getline(page, line);) {
        const auto parts = TryReadLine(line);
        if (!parts) {
            continue;
        }
        if (parts->position == "0000") {
            dumps.emplace_back();
        }
        auto& [text, bytes] = dumps.back();
        text += (text.empty() ? "" : "\n") + line;
        bytes.insert(bytes.end(), parts->bytes.begin(), parts->bytes.end());
    }
    EXPECT_FALSE(dumps.empty());
    for (const auto& [text, bytes] : dumps) {
        EXPECT_EQ(Dump(bytes).text, text);
    }
}

// Line by line every byte of payloads of all kinds of values, none of which is long.
TEST_F(PayloadDumpTest, ShowsEveryByte) {
    for (const lum::test::GoldenPayload& golden : GetGoldenPayloads()) {
        const PayloadDump dump = Dump(golden.GetBytes());
        SCOPED_TRACE(golden.name + ("\n" + dump.text));
        EXPECT_FALSE(dump.fault);
        Bytes shown;
        std::istringstream lines(dump.text);
        for (std::string line; std::getline(lines, line);) {
            const auto parts = TryReadLine(line);
            ASSERT_TRUE(parts) << line;
            EXPECT_EQ(std::stoul(parts->position, nullptr, 16), shown.size());
            shown.insert(shown.end(), parts->bytes.begin(), parts->bytes.end());
        }
        EXPECT_EQ(shown, golden.GetBytes());
    }
}

Bytes PayloadOf(const SV& column) {
    return MakePayload(*MakeStore({{RInternString(L"k"), column}}));
}

TEST_F(PayloadDumpTest, CutsLongRunsOfItems) {
    Bytes texts = PayloadOf(lum::test::ColumnOf("s: a a a a a a a a a a b"));
    const Bytes numbers = PayloadOf(lum::test::ColumnOf("i: 1 2 3 4 5 6 7 8 9"));
    EXPECT_TRUE(Dump(texts).text.ends_with("02 02 03                         3 more"))
        << Dump(texts).text;
    EXPECT_TRUE(Dump(numbers).text.ends_with("0058  09 00 00 00                      1 more"))
        << Dump(numbers).text;
    texts.back() = 9;  // The number of a text that is not shown.
    const PayloadDump damaged = Dump(texts);
    EXPECT_NE(damaged.text.find(" items that are not shown\n"), std::string::npos) << damaged.text;
    EXPECT_EQ(damaged.fault->position, texts.size() - 1);
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
    Bytes bytes = PayloadOf(lum::test::ColumnOf("i:"));
    bytes.resize(0x30);
    for (int level = 0; level < 100'000; ++level) {
        bytes.insert(bytes.end(), {1, 1, 15});
    }
    EXPECT_EQ(Dump(bytes).fault->reason, "values nest deeper than 256 levels");
}

}  // namespace
}  // namespace lumhost::test
