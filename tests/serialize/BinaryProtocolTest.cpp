#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "tests/serialize/GoldenPayloads.h"
#include "tests/serialize/SerializeTest.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/PayloadWalk.h"

namespace lum::core {
namespace {

using test::FromHex;
using test::MakePayload;
using test::ToHex;

class BinaryProtocolTest : public test::SerializeTest {};

// Read and written again event by event, whatever the address.
TEST_F(BinaryProtocolTest, GoldenBytes) {
    for (const test::GoldenPayload& golden : test::GetGoldenPayloads()) {
        for (const std::size_t shift : {0u, 1u, 2u, 4u, 7u, 8u}) {
            SCOPED_TRACE(golden.name + " at " + std::to_string(shift));
            BinaryProtocolReader reader(MakePayload(golden.GetBytes(), shift));
            BinaryProtocolCreator copy((golden.flags & 2) != 0, (golden.flags & 1) != 0);
            test::PayloadWalk(reader, copy).Walk();
            EXPECT_EQ(reader.GetRemainingBytes(), 0u);
            EXPECT_EQ(ToHex(copy.FinalizePayload()), ToHex(golden.GetBytes()));
        }
    }
}

// Some to the last byte, so that the layout of the others is not taken on trust; WireFormatPageTest
// has some with counts in base-128.
TEST_F(BinaryProtocolTest, WholePayloads) {
    std::map<std::string, std::string> digits;
    for (const test::GoldenPayload& golden : test::GetGoldenPayloads()) {
        digits[golden.name] = ToHex(golden.GetBytes());
    }
    EXPECT_EQ(digits["EmptyPlain"],
              "01000000 00000000 01000000 2f000000 00000000 00000000 00000000 00000000 28000000 "
              "00000000 00000000");
    EXPECT_EQ(digits["OneIntWithSums"],
              "01000000 01000000 01000000 2f000000 28000000 08000000 30000000 01000000 38000000 "
              "00000000 01000000 00000000 61000000 00000000 01000000 01000000 02000000 05000000 "
              "0df0");
}

// A store with the column "k" of these texts, as the next payload.
std::vector<unsigned char> WriteTexts(BinaryProtocolCreator& creator, const std::string& texts) {
    SerializeDataStore(creator, *factory::MakeDataStore(std::unordered_map<RInternString, SV>{
                                    {L"k", test::ColumnOf("s: " + texts)}}));
    return creator.FinalizePayload();
}

std::string ReadTexts(BinaryProtocolReader& reader) {
    return test::TextOf(StoreValueParser::MakeDataStore(reader)->GetValue(KeyPath()));
}

TEST_F(BinaryProtocolTest, StreamOfPayloads) {
    BinaryProtocolCreator creator;
    const std::vector<unsigned char> first = WriteTexts(creator, "a b a");
    const std::vector<unsigned char> known = WriteTexts(creator, "b");
    const std::vector<unsigned char> third = WriteTexts(creator, "c a ''");
    // Nothing new: no table, and data behind the header at once.
    EXPECT_EQ(ToHex(known),
              "01000000 02000000 012f0000 00000000 00000000 00000000 00000000 20000000 "
              "01010c06 010103");
    // New: "c" as 4 and the empty string as 5.
    EXPECT_EQ(ToHex(third),
              "01000000 02000000 012f0000 20000000 0c000000 30000000 01000000 38000000 "
              "04000000 00000000 01000000 00000000 63000000 00000000 01010c06 01030402 05");

    auto payload = MakePayload(first);
    const std::weak_ptr<test::PayloadBytes> life = payload;
    BinaryProtocolReader reader(std::exchange(payload, nullptr));
    EXPECT_EQ(ReadTexts(reader), "{k = s: a b a}");
    EXPECT_FALSE(life.expired());
    const auto second = MakePayload(known);
    EXPECT_EQ(reader.NextPayload(second), TStringCore(L"/"));
    EXPECT_TRUE(life.expired());
    EXPECT_EQ(reader.GetSharedBufferReference(), second);
    EXPECT_EQ(ReadTexts(reader), "{k = s: b}");
    reader.NextPayload(MakePayload(third));
    EXPECT_EQ(ReadTexts(reader), "{k = s: c a ''}");

    const std::string isStart = "(LumSizeCastSafe(m_strings.size()) == payloadStartIndex)";
    EXPECT_LUM_REPORT(Unspecified, "", isStart, reader.NextPayload(MakePayload(first)));
    EXPECT_LUM_REPORT(Unspecified, "", isStart, BinaryProtocolReader(MakePayload(third)));
    BinaryProtocolReader withoutStrings(second);
    EXPECT_LUM_REPORT(InvalidStringIndex, "", "(index > 0 && index < m_strings.size())",
                      ReadTexts(withoutStrings));
}

// A new empty string alone is lost, and takes the stream along.
TEST_F(BinaryProtocolTest, LosesALonelyEmptyString) {
    BinaryProtocolCreator creator;
    const std::vector<unsigned char> first = WriteTexts(creator, "a");
    const std::vector<unsigned char> lost = WriteTexts(creator, "''");
    const std::vector<unsigned char> next = WriteTexts(creator, "x");
    for (const auto& [payload, error] :
         {std::pair(lost, LumError::InvalidStringIndex), std::pair(next, LumError::Unspecified)}) {
        BinaryProtocolReader reader(MakePayload(first));
        ReadTexts(reader);
        EXPECT_TRUE(test::FailsAs({error, ""}, [&, payload = payload] {
            reader.NextPayload(MakePayload(payload));
            ReadTexts(reader);
        }));
    }
}

TEST_F(BinaryProtocolTest, RefusesToFinalize) {
    BinaryProtocolCreator creator;
    EXPECT_LUM_REPORT(EmptyPayload, "", "(m_dataBuffer->GetLength() > 0)",
                      creator.FinalizePayload());
    creator.BeginDictionaryType(0);
    EXPECT_LUM_REPORT(ProtocolStateMismatch, "", "!(m_state->HasStates())",
                      creator.FinalizePayload());
    creator.EndDictionaryType();
    EXPECT_EQ(ToHex(creator.FinalizePayload()).substr(72), "00");
    EXPECT_LUM_ERROR(EmptyPayload, "", creator.FinalizePayload());
    EXPECT_LUM_REPORT(NullArgument, "", "(type) != nullptr", creator.AppendKeyType(nullptr, false));
}

TEST_F(BinaryProtocolTest, PayloadsReuseMemory) {
    std::vector<unsigned char> payload(1, 7);
    for (const lumsize_t count : {10u, 1000u, 500u, 1u, 1000u}) {
        const std::vector<unsigned char> former = payload;
        const unsigned char* const place = payload.data();
        BinaryProtocolCreator creator;
        EXPECT_LUM_ERROR(EmptyPayload, "", creator.FinalizePayload(payload));
        EXPECT_EQ(payload, former);
        const auto store = factory::MakeDataStore(std::unordered_map<RInternString, SV>{
            {L"k", factory::MakeArray(IntType::Get32(), std::vector<unsigned int>(count, 7u),
                                      SortSpecOrder::UNKNOWN)}});
        SerializeDataStore(creator, *store);
        const bool isEnough = payload.capacity() >= sizeof(int) * count + 100;
        creator.FinalizePayload(payload);
        EXPECT_EQ(ToHex(payload), ToHex(test::WriteStore(*store)));
        EXPECT_TRUE(!isEnough || payload.data() == place);
    }
}

struct HeaderCase {
    std::string header;  // A whole payload.
    LumError error;
    std::string condition;
};

TEST_F(BinaryProtocolTest, RefusesHeaders) {
    const std::string start = "01000000 02000000 012f0000";
    const std::string isShort = "((size_t)(m_bufferEnd - m_pos) >= size)";
    const std::string isVersion = "(m_version == BinaryProtocol::Version)";
    const std::string hasData = "(dataTablePos < length)";
    const std::string hasIndices = "(length - strIndicesPos >= strIndicesLen)";
    using enum LumError;
    const HeaderCase cases[] = {
        {"", BufferReadOutOfBounds, isShort},
        {"01", BufferReadOutOfBounds, isShort},
        {"0100", BufferReadOutOfBounds, "(m_pos <= m_bufferEnd)"},
        {"02000000 02000000 012f0000", ProtocolVersionMismatch, isVersion},
        {"00000000 02000000 012f0000", ProtocolVersionMismatch, isVersion},
        {"01000000 02000000 ffffffff 7f000000", OutOfRange,
         "(shift <= 21 || (shift <= 28 && b <= 15))"},
        {"01000000 02000000 05303132", BufferReadOutOfBounds, isShort},
        {"01000000 00000000 ffffffff 2f000000", BufferReadOutOfBounds, isShort},
        {start, BufferReadOutOfBounds, isShort},
        // The positions and lengths of offsets and text, and the position of the data.
        {start + "00000000 00000000 00000000 00000000 200000", BufferReadOutOfBounds, isShort},
        {start + "00000000 00000000 00000000 00000000 20000000", ProtocolStateMismatch, hasData},
        {start + "00000000 00000000 00000000 00000000 ffffffff 00", ProtocolStateMismatch, hasData},
        {start + "21000000 04000000 20000000 00000000 20000000 00", ProtocolStateMismatch,
         "(strIndicesPos < length)"},
        {start + "20000000 02000000 20000000 00000000 20000000 00", ProtocolStateMismatch,
         hasIndices},
        {start + "20000000 ffffffff 20000000 00000000 20000000 00", ProtocolStateMismatch,
         hasIndices},
        {start + "20000000 01000000 21000000 00000000 20000000 00", ProtocolStateMismatch,
         "(strTablePos < length)"},
        {start + "20000000 01000000 20000000 02000000 20000000 00", ProtocolStateMismatch,
         "(length - strTablePos >= strTableLen)"},
        {start + "20000000 01000000 20000000 01000000 20000000 00", BufferReadOutOfBounds, isShort},
        {start + "20000000 04000000 20000000 01000000 20000000 00000000", Unspecified,
         "(LumSizeCastSafe(m_strings.size()) == payloadStartIndex)"},
    };
    for (const HeaderCase& refused : cases) {
        for (const std::size_t shift : {0u, 1u}) {
            SCOPED_TRACE(refused.header);
            EXPECT_TRUE(test::FailsAs({refused.error, "", true, refused.condition}, [&] {
                BinaryProtocolReader(MakePayload(FromHex(refused.header), shift));
            }));
        }
    }
    EXPECT_LUM_REPORT(NullArgument, "", "(buffer) != nullptr", BinaryProtocolReader(nullptr));
}

// What a header says of itself is taken as it stands.
TEST_F(BinaryProtocolTest, AcceptsHeaders) {
    const std::pair<std::string, std::wstring> cases[] = {
        {"01000000 02000000 00000000 00000000 00000000 00000000 00000000 20000000 00", L""},
        {"01000000 02000000 02ff61ee 00000000 00000000 00000000 00000000 20000000 00", L"\uFFFDa"},
        // Bits that say nothing, and padding that is not zero.
        {"0100ffff feffffff 012fffff 00000000 00000000 00000000 00000000 20000000 00", L"/"},
        // One position alone is no table, whatever it says.
        {"01000000 02000000 012f0000 00000000 09000000 ffffffff ffffffff 20000000 00", L"/"},
        {"01000000 02000000 012f0000 ffffffff ffffffff 00000000 ffffffff 20000000 00", L"/"},
        // Data anywhere: here its one byte is that of a position's.
        {"01000000 02000000 012f0000 00000000 00000000 00000000 00000000 13000000 00", L"/"},
    };
    class Opened final : public BinaryProtocolReader {};
    for (const auto& [header, path] : cases) {
        Opened reader;
        EXPECT_EQ(reader.GetSharedBufferReference(), nullptr);
        EXPECT_EQ(reader.NextPayload(MakePayload(FromHex(header))), TStringCore(path.c_str()));
        EXPECT_EQ(reader.BeginDictionaryType(), 0u) << header;
    }
}

TEST_F(BinaryProtocolTest, PayloadsOfOneStreamAgree) {
    const auto header = [](const std::string& version, const std::string& flags,
                           const std::string& data = "00") {
        return MakePayload(FromHex(version + "0000" + flags + "000000" +
                                   "00000000 00000000 00000000 00000000 00000000 20000000" + data));
    };
    BinaryProtocolReader reader(header("0100", "02"));
    reader.BeginDictionaryType();
    EXPECT_LUM_REPORT(ProtocolStateMismatch, "", "!(m_state->HasStates())",
                      reader.NextPayload(header("0100", "02")));
    reader.EndDictionaryType();
    EXPECT_LUM_REPORT(ProtocolVersionMismatch, "", "(m_version == version)",
                      reader.NextPayload(header("0200", "02")));
    // The flags are each payload's own.
    reader.NextPayload(header("0100", "03", "00 00 0df0"));
    reader.BeginDictionaryType();
    reader.EndDictionaryType();
    EXPECT_EQ(reader.GetRemainingBytes(), 0u);
    reader.NextPayload(header("0100", "03", "00 00 0cf0"));
    reader.BeginDictionaryType();
    EXPECT_LUM_REPORT(Unspecified, "", "(checksum == BinaryProtocol::SentinelValue)",
                      reader.EndDictionaryType());
}

}  // namespace
}  // namespace lum::core
