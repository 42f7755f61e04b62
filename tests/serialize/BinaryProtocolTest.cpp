#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/serialize/BinaryProtocolCreator.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/serialize/GoldenPayloads.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/PayloadBytes.h"
#include "tests/support/PayloadWalk.h"
#include "tests/support/Random.h"

namespace lum::core {
namespace {

using test::FromHex;
using test::MakePayload;
using test::ToHex;

TEST(BinaryListTypeTest, Bytes) {
    const std::pair<BinaryListType, unsigned char> cases[] = {
        {BinaryListType(), 0},
        {BinaryListType::ArrayNoSpecials, 0x01},
        {BinaryListType::ArrayWithSpecials, 0x09},
        {BinaryListType::ByteBlob, 0x02},
        {BinaryListType::CompositeArrayNoIndices, 0x03},
        {BinaryListType::CompositeArrayWithIndices, 0x13},
        {BinaryListType::ConstantArrayNoSpecials, 0x04},
        {BinaryListType::ConstantArrayWithSpecials, 0x0C},
        {BinaryListType::SetNoSpecials, 0x05},
        {BinaryListType::SetWithSpecials, 0x0D},
        {BinaryListType::TupleNoSpecials, 0x06},
        {BinaryListType::TupleWithSpecials, 0x0E},
        {BinaryListType::Array(false, SortSpecOrder::ASC), 0x21},
        {BinaryListType::Array(true, SortSpecOrder::UNORD), 0x69},
        {BinaryListType::CompositeArray(true, SortSpecOrder::DESC), 0x53},
        {BinaryListType::ConstantArray(true), 0x0C},
        {BinaryListType::Set(true), 0x0D},
        {BinaryListType::Tuple(false), 0x06},
    };
    for (const auto& [type, byte] : cases) {
        EXPECT_EQ(type, BinaryListType(byte));
        EXPECT_EQ(static_cast<signed char>(type), static_cast<signed char>(byte));
    }
    for (unsigned int byte = 0; byte < 256; ++byte) {
        const BinaryListType type(static_cast<unsigned char>(byte));
        EXPECT_EQ(static_cast<unsigned int>(type.GetContainerType()), byte % 8);
        EXPECT_EQ(type.HasSpecials(), byte / 8 % 2 == 1);
        EXPECT_EQ(type.HasIndices(), byte / 16 % 2 == 1);
        EXPECT_EQ(static_cast<unsigned int>(type.GetSortOrder()), byte / 32 % 4);
        EXPECT_EQ(type == BinaryListType::ArrayWithSpecials, byte == 9);
    }
}

class BinaryProtocolTest : public testing::Test {
protected:
    BinaryProtocolTest() { test::RegisterGoldenKind(); }
    ~BinaryProtocolTest() override { ClearExternalTypes(); }

    test::CollatorPoolGuard m_pool{std::make_shared<test::FoldingCollatorPool>()};
};

TEST_F(BinaryProtocolTest, WritesGoldenBytes) {
    for (const test::GoldenPayload& golden : test::GetGoldenPayloads()) {
        SCOPED_TRACE(golden.name);
        BinaryProtocolCreator creator((golden.flags & 2) != 0, (golden.flags & 1) != 0);
        golden.write(creator);
        EXPECT_EQ(ToHex(creator.FinalizePayload()), ToHex(golden.GetBytes()));
    }
}

// Whatever the address, and whatever becomes of the handles to the buffer.
TEST_F(BinaryProtocolTest, ReadsGoldenBytes) {
    for (const test::GoldenPayload& golden : test::GetGoldenPayloads()) {
        for (const std::size_t shift : {0u, 1u, 2u, 4u, 7u, 8u}) {
            SCOPED_TRACE(golden.name + std::string(" at ") + std::to_string(shift));
            BinaryProtocolReader reader(MakePayload(golden.GetBytes(), shift));
            BinaryProtocolCreator copy((golden.flags & 2) != 0, (golden.flags & 1) != 0);
            test::PayloadWalk(reader, copy).Walk();
            EXPECT_EQ(reader.GetRemainingBytes(), 0u);
            EXPECT_EQ(ToHex(copy.FinalizePayload()), ToHex(golden.GetBytes()));
        }
    }
}

const test::GoldenPayload& FindGolden(const std::string& name) {
    for (const test::GoldenPayload& golden : test::GetGoldenPayloads()) {
        if (golden.name == name) {
            return golden;
        }
    }
    throw std::invalid_argument(name);
}

// Some to the last byte, so that the layout of the others is not taken on trust.
TEST_F(BinaryProtocolTest, WholePayloads) {
    const std::pair<std::string, std::string> cases[] = {
        {"EmptyBase128",
         "01000000 02000000 012f0000 00000000 00000000 00000000 00000000 20000000 00"},
        {"EmptyPlain",
         "01000000 00000000 01000000 2f000000 00000000 00000000 00000000 00000000 28000000 "
         "00000000 00000000"},
        {"OneIntBase128",
         "01000000 02000000 012f0000 20000000 08000000 28000000 01000000 30000000 01000000 "
         "00000000 61000000 00000000 01010200 05000000"},
        {"OneIntWithSums",
         "01000000 01000000 01000000 2f000000 28000000 08000000 30000000 01000000 38000000 "
         "00000000 01000000 00000000 61000000 00000000 01000000 01000000 02000000 05000000 0df0"},
    };
    for (const auto& [name, digits] : cases) {
        EXPECT_EQ(ToHex(FindGolden(name).GetBytes()), digits);
    }
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

TEST_F(BinaryProtocolTest, ColumnsAreViewsIntoThePayload) {
    BinaryProtocolCreator creator;
    creator.BeginListType(BinaryListType::ArrayNoSpecials);
    creator.BeginListData(3);
    creator.AppendArray(std::vector<uint64>{1, 2, 3});
    creator.EndListData();
    creator.EndListType();
    const std::vector<unsigned char> bytes = creator.FinalizePayload();
    for (const std::size_t shift : {0u, 3u, 4u}) {
        std::shared_ptr<test::PayloadBytes> payload = MakePayload(bytes, shift);
        const unsigned char* const start = payload->GetView().GetData();
        auto reader = std::make_unique<BinaryProtocolReader>(payload);
        reader->BeginListType();
        const ArrayView<const uint64> view = reader->ReadStorage64BitArray(reader->BeginListData());
        const auto* const address = reinterpret_cast<const unsigned char*>(view.GetData());
        EXPECT_EQ(address == start + bytes.size() - 24, shift == 0);
        const std::shared_ptr<ISharedDataBuffer> kept = reader->GetSharedBufferReference();
        reader.reset();
        payload.reset();
        EXPECT_EQ(std::vector<uint64>(view.begin(), view.end()), (std::vector<uint64>{1, 2, 3}));
    }
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

TEST_F(BinaryProtocolTest, EmptyBlocksMoveNothing) {
    BinaryProtocolCreator creator;
    creator.BeginListType(BinaryListType::TupleNoSpecials);
    creator.BeginListData(1);
    creator.AppendArray(ArrayView<const uint64>());
    creator.AppendArray(ArrayView<const SpecialKind>());
    creator.AppendData(true);
    creator.EndListData();
    creator.EndListType();
    const std::vector<unsigned char> bytes = creator.FinalizePayload();
    EXPECT_EQ(ToHex(bytes).substr(72), "060101");
    BinaryProtocolReader reader(MakePayload(bytes));
    reader.BeginListType();
    reader.BeginListData();
    EXPECT_TRUE(reader.ReadStorage64BitArray(0).IsEmpty());
    EXPECT_TRUE(reader.ReadSpecialArray(0).IsEmpty());
    EXPECT_TRUE(reader.ReadStrings(0).empty());
    EXPECT_TRUE(reader.ReadBool());
    reader.EndListData();
    reader.EndListType();
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
    const HeaderCase cases[] = {
        {"", LumError::BufferReadOutOfBounds, isShort},
        {"01", LumError::BufferReadOutOfBounds, isShort},
        {"0100", LumError::BufferReadOutOfBounds, "(m_pos <= m_bufferEnd)"},
        {"02000000 02000000 012f0000", LumError::ProtocolVersionMismatch,
         "(m_version == BinaryProtocol::Version)"},
        {"00000000 02000000 012f0000", LumError::ProtocolVersionMismatch,
         "(m_version == BinaryProtocol::Version)"},
        {"01000000 02000000 ffffffff 7f000000", LumError::OutOfRange,
         "(shift <= 21 || (shift <= 28 && b <= 15))"},
        {"01000000 02000000 05303132", LumError::BufferReadOutOfBounds, isShort},
        {"01000000 00000000 ffffffff 2f000000", LumError::BufferReadOutOfBounds, isShort},
        {start, LumError::BufferReadOutOfBounds, isShort},
        {start + "00000000 00000000 00000000 00000000 200000", LumError::BufferReadOutOfBounds,
         isShort},
        {start + "00000000 00000000 00000000 00000000 20000000", LumError::ProtocolStateMismatch,
         "(dataTablePos < length)"},
        {start + "00000000 00000000 00000000 00000000 ffffffff 00", LumError::ProtocolStateMismatch,
         "(dataTablePos < length)"},
        {start + "21000000 04000000 20000000 00000000 20000000 00", LumError::ProtocolStateMismatch,
         "(strIndicesPos < length)"},
        {start + "20000000 02000000 20000000 00000000 20000000 00", LumError::ProtocolStateMismatch,
         "(length - strIndicesPos >= strIndicesLen)"},
        {start + "20000000 ffffffff 20000000 00000000 20000000 00", LumError::ProtocolStateMismatch,
         "(length - strIndicesPos >= strIndicesLen)"},
        {start + "20000000 01000000 21000000 00000000 20000000 00", LumError::ProtocolStateMismatch,
         "(strTablePos < length)"},
        {start + "20000000 01000000 20000000 02000000 20000000 00", LumError::ProtocolStateMismatch,
         "(length - strTablePos >= strTableLen)"},
        {start + "20000000 01000000 20000000 01000000 20000000 00", LumError::BufferReadOutOfBounds,
         isShort},
        {start + "20000000 04000000 20000000 01000000 20000000 00000000", LumError::Unspecified,
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
        {"01000000 02000000 02ff61ee 00000000 00000000 00000000 00000000 20000000 00",
         L"\xFFFD"
         L"a"},
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
        SCOPED_TRACE(header);
        Opened reader;
        EXPECT_EQ(reader.GetSharedBufferReference(), nullptr);
        EXPECT_EQ(reader.NextPayload(MakePayload(FromHex(header))), TStringCore(path.c_str()));
        EXPECT_EQ(reader.BeginDictionaryType(), 0u);
        reader.EndDictionaryType();
    }
}

TEST_F(BinaryProtocolTest, PayloadsOfOneStreamAgree) {
    const auto header = [](const std::string& version, const std::string& flags,
                           const std::string& data) {
        return MakePayload(FromHex(version + "0000" + flags +
                                   "00000000 00000000 00000000 00000000 00000000 20000000" + data));
    };
    BinaryProtocolReader reader(header("0100", "02000000", "00"));
    EXPECT_LUM_REPORT(ProtocolStateMismatch, "", "!(m_state->HasStates())", [&] {
        reader.BeginDictionaryType();
        reader.NextPayload(header("0100", "02000000", "00"));
    }());
    reader.EndDictionaryType();
    EXPECT_LUM_REPORT(ProtocolVersionMismatch, "", "(m_version == version)",
                      reader.NextPayload(header("0200", "02000000", "00")));
    // The flags are each payload's own.
    reader.NextPayload(header("0100", "03000000", "00 00 0df0"));
    reader.BeginDictionaryType();
    reader.EndDictionaryType();
    EXPECT_EQ(reader.GetRemainingBytes(), 0u);
    reader.NextPayload(header("0100", "03000000", "00 00 0cf0"));
    reader.BeginDictionaryType();
    EXPECT_LUM_REPORT(Unspecified, "", "(checksum == BinaryProtocol::SentinelValue)",
                      reader.EndDictionaryType());
}

// Counts that the payload does not bear out are refused before anything is reserved for them.
TEST_F(BinaryProtocolTest, CountsThatWrap) {
    const auto open = [](const std::string& data) {
        return MakePayload(
            FromHex("01000000 00000000 00000000 00000000 00000000 00000000 00000000"
                    "20000000" +
                    data));
    };
    using Read = std::function<void(BinaryProtocolReader&, lumsize_t)>;
    const Read reads[] = {
        [](BinaryProtocolReader& reader, lumsize_t n) { reader.ReadStorage8BitArray(n); },
        [](BinaryProtocolReader& reader, lumsize_t n) { reader.ReadStorage32BitArray(n); },
        [](BinaryProtocolReader& reader, lumsize_t n) { reader.ReadStorage64BitArray(n); },
        [](BinaryProtocolReader& reader, lumsize_t n) { reader.ReadSpecialArray(n); },
    };
    for (const char* const count :
         {"09000000", "ffffffff", "01000040", "01000020", "00000040", "ffffff7f", "00000080"}) {
        for (const Read& read : reads) {
            BinaryProtocolReader reader(open("01000000" + std::string(count) + "0000000000000000"));
            reader.BeginListType();
            const lumsize_t claimed = reader.BeginListData();
            EXPECT_LUM_ERROR(BufferReadOutOfBounds, "", read(reader, claimed));
        }
        BinaryProtocolReader reader(open("01000000" + std::string(count)));
        reader.BeginListType();
        const lumsize_t claimed = reader.BeginListData();
        EXPECT_LUM_ERROR(BufferReadOutOfBounds, "", reader.ReadStrings(claimed));
    }
}

}  // namespace
}  // namespace lum::core
