#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/serialize/GoldenPayloads.h"
#include "tests/serialize/SerializeTest.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/PayloadWalk.h"

namespace lum::core {
namespace {

using test::FromHex;
using test::MakePayload;
using test::ToHex;

TEST(BinaryListTypeTest, Bytes) {
    for (unsigned int byte = 0; byte < 256; ++byte) {
        const BinaryListType type(static_cast<unsigned char>(byte));
        EXPECT_EQ(static_cast<signed char>(type), static_cast<signed char>(byte));
        EXPECT_EQ(static_cast<unsigned int>(type.GetContainerType()), byte % 8);
        EXPECT_EQ(type.HasSpecials(), byte / 8 % 2 == 1);
        EXPECT_EQ(type.HasIndices(), byte / 16 % 2 == 1);
        EXPECT_EQ(static_cast<unsigned int>(type.GetSortOrder()), byte / 32 % 4);
        EXPECT_EQ(type == BinaryListType::ArrayWithSpecials, byte == 9);
    }
}

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

// Some to the last byte, so that the layout of the others is not taken on trust.
TEST_F(BinaryProtocolTest, WholePayloads) {
    std::map<std::string, std::string> digits;
    for (const test::GoldenPayload& golden : test::GetGoldenPayloads()) {
        digits[golden.name] = ToHex(golden.GetBytes());
    }
    EXPECT_EQ(digits["EmptyBase128"],
              "01000000 02000000 012f0000 00000000 00000000 00000000 00000000 20000000 00");
    EXPECT_EQ(digits["EmptyPlain"],
              "01000000 00000000 01000000 2f000000 00000000 00000000 00000000 00000000 28000000 "
              "00000000 00000000");
    EXPECT_EQ(digits["OneIntWithSums"],
              "01000000 01000000 01000000 2f000000 28000000 08000000 30000000 01000000 38000000 "
              "00000000 01000000 00000000 61000000 00000000 01000000 01000000 02000000 05000000 "
              "0df0");
    EXPECT_EQ(digits["SortedArrayBase128WithSums"],
              "01000000 03000000 012f0000 20000000 08000000 28000000 01000000 30000000 01000000 "
              "00000000 61000000 00000000 01010c02 29020000 01000000 07000000 02000100 0df00df0");
    EXPECT_EQ(digits["ArraysBase128"],
              "01000000 02000000 012f0000 20000000 14000000 38000000 03000000 40000000 01000000 "
              "00000000 01000000 02000000 03000000 00000000 656c7000 00000000 03010c03 0100020c "
              "05010100 00000000 00000000 0000f03f 030c0c06 01010102 0304");
}

// A dictionary with these texts as values under the key "k".
std::vector<unsigned char> WriteTexts(BinaryProtocolCreator& creator,
                                      const std::vector<RIndirectString>& texts) {
    creator.BeginDictionaryType(1);
    creator.AppendKey(TStringCore(L"k"));
    creator.AppendKeyType(ArrayType::Get(StringType::Get()), false);
    creator.BeginListType(BinaryListType::ArrayNoSpecials);
    creator.BeginListData(LumSizeCastSafe(texts.size()));
    creator.AppendStrings(texts);
    creator.EndListData();
    creator.EndListType();
    creator.EndDictionaryType();
    return creator.FinalizePayload();
}

// Gives the texts as handles into the table of the reader.
std::vector<const TStringCore*> ReadTexts(BinaryProtocolReader& reader) {
    EXPECT_EQ(reader.BeginDictionaryType(), 1u);
    EXPECT_EQ(reader.ReadStringKey(), TStringCore(L"k"));
    reader.ReadKeyType();
    reader.BeginListType();
    std::vector<const TStringCore*> texts;
    for (lumsize_t left = reader.BeginListData(); left > 0; --left) {
        texts.push_back(&reader.ReadString());
    }
    reader.EndListData();
    reader.EndListType();
    reader.EndDictionaryType();
    return texts;
}

TEST_F(BinaryProtocolTest, StreamOfPayloads) {
    BinaryProtocolCreator creator;
    const std::vector<unsigned char> first = WriteTexts(creator, {L"a", L"b", L"a"});
    const std::vector<unsigned char> known = WriteTexts(creator, {L"b"});
    const std::vector<unsigned char> third = WriteTexts(creator, {L"c", L"a", L""});
    // Nothing new: no table, and data behind the header at once.
    EXPECT_EQ(ToHex(known),
              "01000000 02000000 012f0000 00000000 00000000 00000000 00000000 20000000 "
              "01010c06 010103");
    // New: "c" as 4 and the empty string as 5.
    EXPECT_EQ(ToHex(third),
              "01000000 02000000 012f0000 20000000 0c000000 30000000 01000000 38000000 "
              "04000000 00000000 01000000 00000000 63000000 00000000 01010c06 01030402 05");

    BinaryProtocolReader reader(MakePayload(first));
    const std::vector<const TStringCore*> handedOut = ReadTexts(reader);
    EXPECT_EQ(handedOut[0], handedOut[2]);
    EXPECT_EQ(reader.NextPayload(MakePayload(known)), TStringCore(L"/"));
    EXPECT_EQ(ReadTexts(reader).front(), handedOut[1]);
    reader.NextPayload(MakePayload(third));
    const std::vector<const TStringCore*> texts = ReadTexts(reader);
    EXPECT_EQ(*texts[0], TStringCore(L"c"));
    EXPECT_EQ(texts[1], handedOut[0]);
    EXPECT_TRUE(texts[2]->isEmpty());
    EXPECT_EQ(*handedOut[1], TStringCore(L"b"));

    const std::string isStart = "(LumSizeCastSafe(m_strings.size()) == payloadStartIndex)";
    BinaryProtocolReader other(MakePayload(first));
    ReadTexts(other);
    EXPECT_LUM_REPORT(Unspecified, "", isStart, other.NextPayload(MakePayload(first)));
    EXPECT_LUM_REPORT(Unspecified, "", isStart, BinaryProtocolReader(MakePayload(third)));
    BinaryProtocolReader withoutStrings(MakePayload(known));
    withoutStrings.BeginDictionaryType();
    EXPECT_LUM_REPORT(InvalidStringIndex, "", "(index > 0 && index < m_strings.size())",
                      withoutStrings.ReadStringKey());
}

// A new empty string alone is lost, and takes the stream along.
TEST_F(BinaryProtocolTest, LosesALonelyEmptyString) {
    BinaryProtocolCreator creator;
    const std::vector<unsigned char> first = WriteTexts(creator, {});
    const std::vector<unsigned char> lost = WriteTexts(creator, {L""});
    const std::vector<unsigned char> next = WriteTexts(creator, {L"x"});
    EXPECT_EQ(ToHex(lost),
              "01000000 02000000 012f0000 00000000 00000000 00000000 00000000 20000000 "
              "01010c06 010102");
    BinaryProtocolReader reader(MakePayload(first));
    ReadTexts(reader);
    reader.NextPayload(MakePayload(lost));
    EXPECT_LUM_ERROR(InvalidStringIndex, "", ReadTexts(reader));
    BinaryProtocolReader other(MakePayload(first));
    ReadTexts(other);
    EXPECT_LUM_ERROR(Unspecified, "", other.NextPayload(MakePayload(next)));
}

TEST_F(BinaryProtocolTest, ReleasesThePayloadBefore) {
    BinaryProtocolCreator creator;
    const auto first = MakePayload(WriteTexts(creator, {}));
    const auto second = MakePayload(WriteTexts(creator, {}));
    BinaryProtocolReader reader(first);
    ReadTexts(reader);
    EXPECT_EQ(first.use_count(), 2);
    reader.NextPayload(second);
    EXPECT_EQ(first.use_count(), 1);
    EXPECT_EQ(reader.GetSharedBufferReference(), second);
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

// Counts that the payload does not bear out are refused before anything is reserved for them.
TEST_F(BinaryProtocolTest, CountsThatWrap) {
    using Read = void (*)(BinaryProtocolReader&, lumsize_t);
    const Read reads[] = {
        [](BinaryProtocolReader& reader, lumsize_t n) { reader.ReadStorage8BitArray(n); },
        [](BinaryProtocolReader& reader, lumsize_t n) { reader.ReadStorage32BitArray(n); },
        [](BinaryProtocolReader& reader, lumsize_t n) { reader.ReadStorage64BitArray(n); },
        [](BinaryProtocolReader& reader, lumsize_t n) { reader.ReadSpecialArray(n); },
        [](BinaryProtocolReader& reader, lumsize_t n) { reader.ReadStrings(n); },
    };
    for (const unsigned int count :
         {9u, ~0u, (1u << 30) + 1, (1u << 29) + 1, 1u << 30, ~0u >> 1, 1u << 31}) {
        for (const Read& read : reads) {
            // Eight bytes of items, but the number of no string.
            const bool isOfStrings = &read == std::end(reads) - 1;
            BinaryProtocolReader reader(MakePayload(test::GoldenBytes(
                /*flags=*/0,
                "01 #" + std::to_string(count) + (isOfStrings ? "" : " 0000000000000000"))));
            reader.BeginListType();
            const lumsize_t claimed = reader.BeginListData();
            EXPECT_LUM_ERROR(BufferReadOutOfBounds, "", read(reader, claimed));
        }
    }
}

}  // namespace
}  // namespace lum::core
