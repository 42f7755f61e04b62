#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "core/main/serialize/BinaryBufferCreator.h"
#include "core/main/serialize/BinaryBufferReader.h"
#include "core/main/serialize/StringTableCreator.h"
#include "core/main/serialize/StringTableReader.h"
#include "lum/core/serialize/BinaryValueExtractor.h"
#include "lum/core/serialize/BinaryValuePacker.h"
#include "lum/core/serialize/StringBytes.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/PayloadBytes.h"
#include "tests/support/Random.h"

namespace lum::core {
namespace {

using test::FromHex;
using test::ToHex;

BinaryBufferReader ReaderOver(const std::vector<unsigned char>& bytes) {
    return {bytes.data(), LumSizeCastSafe(bytes.size())};
}

TEST(BinaryBufferTest, WordsStandAtMultiplesOfTheirSize) {
    BinaryBufferCreator buffer;
    buffer.Append(static_cast<unsigned char>(0xA1));
    buffer.Append(static_cast<unsigned short>(0xB2C3));
    buffer.Append(static_cast<signed char>(-1));
    buffer.Append(-2);
    buffer.Append(static_cast<signed char>(7));
    buffer.AppendBytes("", 0, 8);
    buffer.Append(1.5f);
    buffer.Append(0x01020304u);
    buffer.Append(-2.0);
    buffer.AppendBase128(300);
    buffer.Append(int64{-3});
    buffer.Append(uint64{1} << 40);
    const std::string expected =
        "a100c3b2 ff000000 feffffff 07000000 0000c03f 04030201 00000000 000000c0 ac020000 00000000 "
        "fdffffff ffffffff 00000000 00010000";
    EXPECT_EQ(ToHex(buffer.GetBuffer()), expected);

    const std::vector<unsigned char> bytes = FromHex(expected);
    BinaryBufferReader reader = ReaderOver(bytes);
    EXPECT_EQ(reader.Read<unsigned char>(), 0xA1);
    EXPECT_EQ(reader.Read<unsigned short>(), 0xB2C3);
    EXPECT_EQ(reader.Read<signed char>(), -1);
    EXPECT_EQ(reader.Read<int>(), -2);
    EXPECT_EQ(reader.Read<signed char>(), 7);
    EXPECT_EQ(reader.ReadPointer<uint64>(0), nullptr);
    EXPECT_EQ(reader.Read<float>(), 1.5f);
    EXPECT_EQ(reader.Read<unsigned int>(), 0x01020304u);
    EXPECT_EQ(reader.Read<double>(), -2.0);
    EXPECT_EQ(reader.ReadBase128(), 300u);
    EXPECT_EQ(reader.Read<int64>(), -3);
    EXPECT_FALSE(reader.IsAtEnd());
    EXPECT_EQ(reader.GetRemaining(), 8u);
    EXPECT_EQ(reader.Read<uint64>(), uint64{1} << 40);
    EXPECT_TRUE(reader.IsAtEnd());
    EXPECT_EQ(reader.GetLength(), 56u);
}

TEST(BinaryBufferTest, Alignment) {
    for (unsigned char wordSize = 1; wordSize <= 8; ++wordSize) {
        BinaryBufferCreator buffer(0);
        buffer.AppendBytes("abc", 3, wordSize);
        buffer.Align(wordSize);
        EXPECT_EQ(buffer.GetLength(), (3u + wordSize - 1) / wordSize * wordSize);
        buffer.AppendBytes("d", 1, wordSize);
        EXPECT_EQ(buffer.GetBuffer().end()[-1], 'd');
        EXPECT_EQ((buffer.GetLength() - 1) % wordSize, 0u);
    }
    for (const unsigned char wordSize : std::vector<unsigned char>{0, 9, 255}) {
        BinaryBufferCreator buffer;
        EXPECT_LUM_REPORT(InvalidWordSize, "", "(wordSize > 0 && wordSize <= 8)",
                          buffer.Align(wordSize));
        EXPECT_LUM_ERROR(InvalidWordSize, "", buffer.AppendBytes("a", 1, wordSize));
        buffer.AppendBytes("a", 0, wordSize);  // Nothing is nothing.
        EXPECT_EQ(buffer.GetLength(), 0u);
    }
    const std::vector<unsigned char> bytes(8, 0x5A);
    for (const unsigned int wordSize : {0u, 3u, 5u, 6u, 7u, 9u, 16u, ~0u}) {
        BinaryBufferReader reader = ReaderOver(bytes);
        EXPECT_LUM_REPORT(
            InvalidWordSize, "",
            "((wordSize == 1) || (wordSize == 2) || (wordSize == 4) || (wordSize == 8))",
            reader.Align(wordSize));
    }
}

// What a reader that stands at `position` of `length` bytes does with a word.
struct BoundsCase {
    unsigned int length;
    unsigned int position;
    unsigned int wordSize;
    std::string condition;  // Of the refusal; empty where the word is read.
};

TEST(BinaryBufferTest, ReadsStayInside) {
    const std::string isBehind = "(m_pos <= m_bufferEnd)";
    const std::string isShort = "((size_t)(m_bufferEnd - m_pos) >= size)";
    const BoundsCase cases[] = {
        {8, 1, 4, ""},       {8, 4, 4, ""},       {8, 5, 4, isShort},  {6, 1, 4, isShort},
        {6, 3, 4, isShort},  {6, 5, 4, isBehind}, {0, 0, 1, isShort},  {1, 1, 1, isShort},
        {2, 0, 2, ""},       {2, 1, 2, isShort},  {3, 3, 2, isBehind}, {8, 0, 8, ""},
        {15, 1, 8, isShort}, {9, 9, 8, isBehind}, {16, 8, 8, ""},
    };
    for (const BoundsCase& bounds : cases) {
        SCOPED_TRACE(std::to_string(bounds.wordSize) + " of " + std::to_string(bounds.length) +
                     " from " + std::to_string(bounds.position));
        const std::vector<unsigned char> bytes(bounds.length, 0x11);
        BinaryBufferReader reader = ReaderOver(bytes);
        reader.ReadPointer<char>(bounds.position);
        const auto read = [&] {
            switch (bounds.wordSize) {
                case 1:
                    EXPECT_EQ(reader.Read<unsigned char>(), 0x11);
                    break;
                case 2:
                    EXPECT_EQ(reader.Read<unsigned short>(), 0x1111);
                    break;
                case 4:
                    EXPECT_EQ(reader.Read<unsigned int>(), 0x11111111u);
                    break;
                default:
                    EXPECT_EQ(reader.Read<uint64>(), 0x1111111111111111u);
            }
        };
        if (bounds.condition.empty()) {
            read();
        } else {
            EXPECT_TRUE(
                test::FailsAs({LumError::BufferReadOutOfBounds, "", true, bounds.condition}, read));
        }
    }
    const std::vector<unsigned char> bytes(64, 0);
    for (const uint64 count :
         {uint64{61}, uint64{0xFFFFFFFF}, uint64{0x40000001} * 4, ~uint64{0}}) {
        BinaryBufferReader reader = ReaderOver(bytes);
        reader.Read<unsigned int>();
        EXPECT_LUM_ERROR(BufferReadOutOfBounds, "", reader.ReadPointer<unsigned int>(count));
        EXPECT_EQ(reader.ReadPointer<char>(60), reinterpret_cast<const char*>(bytes.data()) + 4);
    }
}

TEST(BinaryBufferTest, OverwritesWhatIsThere) {
    BinaryBufferCreator buffer(3);
    buffer.AppendBytes("abcdef", 6, 1);
    buffer.SetValueAt(1, 0x34333231);
    EXPECT_EQ(ToHex(buffer.GetBuffer()), "61313233 3466");
    buffer.SetValueAt(2, 0);
    for (const unsigned int position : {3u, 6u, 0xFFFFFFFCu, 0xFFFFFFFFu}) {
        EXPECT_LUM_REPORT(BufferWriteOutOfBounds, "",
                          "(pos + sizeof(buffersize_t) <= m_buffer.size())",
                          buffer.SetValueAt(position, 1));
    }
    BinaryBufferCreator all;
    all.AppendString(L"");
    all.AppendBuffer(BinaryBufferCreator());
    all.AppendString(L"\x00e9-");
    all.AppendBuffer(buffer);
    EXPECT_EQ(ToHex(all.GetBuffer()), "c3a92d61 31000000 00");
}

TEST(BinaryBufferTest, Base128Bytes) {
    const std::pair<unsigned int, std::string> cases[] = {
        {0, "00"},
        {1, "01"},
        {127, "7f"},
        {128, "8001"},
        {300, "ac02"},
        {0x3FFF, "ff7f"},
        {0x4000, "808001"},
        {0x1FFFFF, "ffff7f"},
        {0x200000, "80808001"},
        {0xFFFFFFF, "ffffff7f"},
        {0x10000000, "80808080 01"},
        {0xFFFFFFFF, "ffffffff 0f"},
    };
    for (const auto& [value, digits] : cases) {
        BinaryBufferCreator buffer;
        buffer.AppendBase128(value);
        EXPECT_EQ(ToHex(buffer.GetBuffer()), digits);
        // At the end, and with other bytes behind it.
        for (const std::string behind : {"", "ffffffffffffff", "00000000000000"}) {
            const std::vector<unsigned char> bytes = FromHex(digits + behind);
            BinaryBufferReader reader = ReaderOver(bytes);
            EXPECT_EQ(reader.ReadBase128(), value);
            EXPECT_EQ(reader.GetRemaining(), behind.size() / 2);
        }
    }
    // Longer forms than needed are read.
    const std::vector<unsigned char> padded = FromHex("8080808000 ff00");
    BinaryBufferReader reader = ReaderOver(padded);
    EXPECT_EQ(reader.ReadBase128(), 0u);
    EXPECT_EQ(reader.ReadBase128(), 127u);

    const std::string isTooLong = "(shift <= 21 || (shift <= 28 && b <= 15))";
    for (const std::string behind : {"", "00000000"}) {
        for (const std::string digits : {"ffffffff10", "8080808080", "80808080ff", "8080808010"}) {
            const std::vector<unsigned char> bytes = FromHex(digits + behind);
            EXPECT_LUM_REPORT(OutOfRange, "", isTooLong, ReaderOver(bytes).ReadBase128());
        }
    }
    for (const std::string digits : {"", "80", "ffff", "80808080"}) {
        const std::vector<unsigned char> bytes = FromHex(digits);
        EXPECT_LUM_ERROR(BufferReadOutOfBounds, "", ReaderOver(bytes).ReadBase128());
    }
}

TEST(BinaryBufferTest, Base128RoundTrip) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    BinaryBufferCreator buffer(1);
    std::vector<unsigned int> values;
    for (int i = 0; i < 20'000; ++i) {
        values.push_back(static_cast<unsigned int>(random.Bits() >> (32 + random.Below(32))));
        buffer.AppendBase128(values.back());
    }
    BinaryBufferReader reader(buffer.GetBuffer().data(), buffer.GetLength());
    for (const unsigned int value : values) {
        ASSERT_EQ(reader.ReadBase128(), value);
    }
    EXPECT_TRUE(reader.IsAtEnd());
}

TEST(BinaryBufferTest, ValuesOfHosts) {
    BinaryValuePacker packer;
    packer.Append(1.0f);
    packer.Append(-0.5f);
    packer.SetReal32AtByteIndex(0, 2.0f);
    for (const lumsize_t index : {5u, 8u, 0xFFFFFFFFu}) {
        EXPECT_LUM_REPORT(BufferWriteOutOfBounds, "",
                          "(pos + sizeof(buffersize_t) <= m_buffer.size())",
                          packer.SetReal32AtByteIndex(index, 0));
    }
    std::vector<unsigned char> bytes = packer.GetBytes();
    EXPECT_EQ(ToHex(bytes), "00000040 000000bf");
    bytes.push_back(1);
    BinaryValueExtractor extractor{ArrayView<const unsigned char>(bytes)};
    EXPECT_EQ(extractor.ReadReal32(), 2.0f);
    EXPECT_EQ(extractor.ReadReal32(), -0.5f);
    EXPECT_FALSE(extractor.IsEndOfBuffer());
    EXPECT_LUM_ERROR(BufferReadOutOfBounds, "", extractor.ReadReal32());
    EXPECT_TRUE(BinaryValueExtractor(ArrayView<const unsigned char>()).IsEndOfBuffer());
    EXPECT_EQ(BinaryValuePacker(7).GetBytes().size(), 0u);
}

TEST(BinaryBufferTest, TextAsBytes) {
    const TStringCore text(std::u16string{u'a', 0, 0xE9, 0xD83D, 0xDE00, 0xD83D});
    const std::vector<unsigned char> bytes = EncodeStringAsBytes(text);
    EXPECT_EQ(ToHex(bytes), "6100c3a9 f09f9880 efbfbd");
    EXPECT_EQ(DecodeBytesAsString(bytes),
              TStringCore(std::u16string{u'a', 0, 0xE9, 0xD83D, 0xDE00, 0xFFFD}));
    EXPECT_TRUE(EncodeStringAsBytes(L"").empty());
    EXPECT_TRUE(DecodeBytesAsString({}).isEmpty());
}

// String tables ---------------------------------------------------------------------------------

std::vector<unsigned char> BytesOf(const BinaryBufferCreator& buffer) {
    return {buffer.GetBuffer().begin(), buffer.GetBuffer().end()};
}

TEST(StringTableTest, NumbersStringsOverPayloads) {
    StringTableCreator table;
    EXPECT_EQ(ToHex(table.GetIndicesBuffer()->GetBuffer()), "01000000");
    EXPECT_EQ(table.Add(L"ab"), 1u);
    EXPECT_EQ(table.Add(L"\x00e9"), 2u);
    EXPECT_EQ(table.Add(L"ab"), 1u);
    EXPECT_EQ(table.Add(L""), 3u);
    EXPECT_EQ(table.Add(L"c"), 4u);
    EXPECT_EQ(ToHex(table.GetStringsBuffer()->GetBuffer()), "6162c3a9 63");
    EXPECT_EQ(ToHex(table.GetIndicesBuffer()->GetBuffer()),
              "01000000 00000000 02000000 04000000 04000000");
    const auto former = table.GetStringsBuffer();
    table.ResetBuffers();
    EXPECT_EQ(former->GetLength(), 5u);
    EXPECT_EQ(table.Add(L"c"), 4u);
    EXPECT_EQ(table.Add(L"d"), 5u);
    EXPECT_EQ(ToHex(table.GetStringsBuffer()->GetBuffer()), "64");
    EXPECT_EQ(ToHex(table.GetIndicesBuffer()->GetBuffer()), "05000000 00000000");
}

TEST(StringTableTest, RoundTripOverPayloads) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    StringTableCreator creator;
    StringTableReader reader;
    std::vector<const TStringCore*> handedOut;  // Good although the table grows.
    std::vector<TStringCore> written;
    for (int payload = 0; payload < 12; ++payload) {
        for (int i = 0; i < 400; ++i) {
            TStringCore text;
            for (std::size_t left = random.Below(24); left > 0; --left) {
                const char16_t units[] = {u'a', u'b', 0, 0x7F, 0x80, 0x7FF, 0x800, 0xFFFF};
                text += random.OneOf(units);
            }
            const unsigned int index = creator.Add(text);
            if (index > written.size()) {
                ASSERT_EQ(index, written.size() + 1);
                written.push_back(text);
            }
            ASSERT_EQ(written[index - 1], text);
        }
        const std::vector<unsigned char> indexBytes = BytesOf(*creator.GetIndicesBuffer());
        const std::vector<unsigned char> stringBytes = BytesOf(*creator.GetStringsBuffer());
        BinaryBufferReader indices = ReaderOver(indexBytes);
        BinaryBufferReader strings = ReaderOver(stringBytes);
        reader.AppendPayloadStrings(indices, strings);
        creator.ResetBuffers();
        for (unsigned int index = 1; index <= written.size(); ++index) {
            const TStringCore& text = reader.GetString(index);
            ASSERT_EQ(text, written[index - 1]);
            if (index > handedOut.size()) {
                handedOut.push_back(&text);
            }
            ASSERT_EQ(handedOut[index - 1], &text);
        }
    }
}

TEST(StringTableTest, RefusesIndices) {
    const std::string condition = "(index > 0 && index < m_strings.size())";
    StringTableReader table;
    EXPECT_LUM_REPORT(InvalidStringIndex, "", condition, table.GetString(0));
    EXPECT_LUM_REPORT(InvalidStringIndex, "", condition, table.GetString(1));
    const std::vector<unsigned char> indexBytes = FromHex("01000000 00000000");
    BinaryBufferReader indices = ReaderOver(indexBytes);
    BinaryBufferReader strings(nullptr, 0);
    table.AppendPayloadStrings(indices, strings);
    EXPECT_TRUE(table.GetString(1).isEmpty());
    EXPECT_LUM_ERROR(InvalidStringIndex, "", table.GetString(2));
    EXPECT_LUM_ERROR(InvalidStringIndex, "", table.GetString(0xFFFFFFFF));
}

struct TableCase {
    std::string indices;
    std::string strings;
    LumError error;  // Or NoError, and then the strings that come of it.
    std::vector<std::string> texts = {};
};

TEST(StringTableTest, TakesWhatPayloadsSay) {
    const TableCase cases[] = {
        {"01000000", "6162", LumError::NoError, {}},
        {"01000000 00000000 01000000", "6162", LumError::NoError, {"a", "b"}},
        // Only the differences of offsets count.
        {"01000000 01000000 02000000", "6162", LumError::NoError, {"a", ""}},
        {"01000000 00000000",
         "ff61",
         LumError::NoError,
         {"\xEF\xBF\xBD"
          "a"}},
        {"01000000 02000000 01000000", "6162", LumError::BufferReadOutOfBounds},
        {"01000000 00000000 03000000", "6162", LumError::BufferReadOutOfBounds},
        {"01000000 03000000", "6162", LumError::BufferReadOutOfBounds},
        {"01000000 00000000 01", "6162", LumError::BufferReadOutOfBounds},
        {"010000", "6162", LumError::BufferReadOutOfBounds},
        {"", "", LumError::BufferReadOutOfBounds},
        {"00000000 00000000", "61", LumError::Unspecified},
        {"02000000 00000000", "61", LumError::Unspecified},
    };
    for (const TableCase& payload : cases) {
        SCOPED_TRACE(payload.indices);
        const std::vector<unsigned char> indexBytes = FromHex(payload.indices);
        const std::vector<unsigned char> stringBytes = FromHex(payload.strings);
        StringTableReader table;
        const auto append = [&] {
            BinaryBufferReader indices = ReaderOver(indexBytes);
            BinaryBufferReader strings = ReaderOver(stringBytes);
            table.AppendPayloadStrings(indices, strings);
        };
        if (payload.error == LumError::NoError) {
            append();
            for (unsigned int i = 0; i < payload.texts.size(); ++i) {
                EXPECT_EQ(table.GetString(i + 1).toStdString(), payload.texts[i]);
            }
            EXPECT_LUM_ERROR(InvalidStringIndex, "",
                             table.GetString(LumSizeCastSafe(payload.texts.size() + 1)));
        } else {
            const bool isStart = payload.error == LumError::Unspecified;
            EXPECT_TRUE(test::FailsAs(
                {payload.error, "", isStart,
                 isStart ? "(LumSizeCastSafe(m_strings.size()) == payloadStartIndex)" : ""},
                append));
        }
    }
}

}  // namespace
}  // namespace lum::core
