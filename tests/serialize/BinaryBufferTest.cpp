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

TEST(BinaryBufferTest, Alignment) {
    for (unsigned char wordSize = 1; wordSize <= 8; ++wordSize) {
        BinaryBufferCreator buffer(0);
        buffer.AppendBytes("abc", 3, wordSize);
        buffer.Align(wordSize);
        const buffersize_t aligned = (3u + wordSize - 1) / wordSize * wordSize;
        EXPECT_EQ(buffer.GetLength(), aligned);
        buffer.AppendBytes("d", 1, wordSize);
        EXPECT_EQ(buffer.GetBuffer().end()[-1], 'd');
        EXPECT_EQ(buffer.GetLength(), aligned + 1);
    }
    for (const unsigned char wordSize : std::vector<unsigned char>{0, 9, 255}) {
        BinaryBufferCreator buffer;
        EXPECT_LUM_REPORT(InvalidWordSize, "", "(wordSize > 0 && wordSize <= 8)",
                          buffer.Align(wordSize));
        EXPECT_LUM_ERROR(InvalidWordSize, "", buffer.AppendBytes("a", 1, wordSize));
        buffer.AppendBytes("a", 0, wordSize);  // Nothing is nothing.
        EXPECT_EQ(buffer.GetLength(), 0u);
    }
    for (const unsigned int wordSize : {0u, 3u, 5u, 6u, 7u, 9u, 16u, ~0u}) {
        EXPECT_LUM_REPORT(
            InvalidWordSize, "",
            "((wordSize == 1) || (wordSize == 2) || (wordSize == 4) || (wordSize == 8))",
            BinaryBufferReader(nullptr, 0).Align(wordSize));
    }
}

// Words of one width at all places of buffers of all lengths.
template <typename Word>
void ExpectReadsStayInside() {
    for (unsigned int length = 0; length < 20; ++length) {
        const std::vector<unsigned char> bytes(length, 0x11);
        for (unsigned int position = 0; position <= length; ++position) {
            BinaryBufferReader reader = ReaderOver(bytes);
            reader.ReadPointer<char>(position);
            const std::size_t start = (position + sizeof(Word) - 1) / sizeof(Word) * sizeof(Word);
            if (start + sizeof(Word) <= length) {
                EXPECT_EQ(reader.Read<Word>(), static_cast<Word>(0x1111111111111111));
                EXPECT_EQ(reader.GetRemaining(), length - start - sizeof(Word));
                continue;
            }
            EXPECT_LUM_REPORT(BufferReadOutOfBounds, "",
                              start > length ? "(m_pos <= m_bufferEnd)"
                                             : "((size_t)(m_bufferEnd - m_pos) >= size)",
                              reader.Read<Word>());
        }
    }
}

TEST(BinaryBufferTest, ReadsStayInside) {
    ExpectReadsStayInside<unsigned char>();
    ExpectReadsStayInside<unsigned short>();
    ExpectReadsStayInside<unsigned int>();
    ExpectReadsStayInside<uint64>();
    const std::vector<unsigned char> bytes(64, 0);
    for (const uint64 count :
         {uint64{61}, uint64{0xFFFFFFFF}, uint64{0x40000001} * 4, ~uint64{0}}) {
        BinaryBufferReader reader = ReaderOver(bytes);
        reader.Read<unsigned int>();
        EXPECT_LUM_ERROR(BufferReadOutOfBounds, "", reader.ReadPointer<unsigned int>(count));
        EXPECT_EQ(reader.ReadPointer<char>(60), reinterpret_cast<const char*>(bytes.data()) + 4);
    }
}

TEST(BinaryBufferTest, BuffersJoinedAndOverwritten) {
    BinaryBufferCreator buffer;
    buffer.AppendBytes("abcdef", 6, 1);
    buffer.SetValueAt(1, 0x34333231);
    buffer.SetValueAt(2, 0);
    BinaryBufferCreator all;
    all.AppendBuffer(BinaryBufferCreator());
    all.AppendString(L"\x00e9-");
    all.AppendBuffer(buffer);  // Not aligned.
    EXPECT_EQ(ToHex(all.GetBuffer()), "c3a92d61 31000000 00");
}

TEST(BinaryBufferTest, Base128Bytes) {
    const std::pair<unsigned int, std::string> cases[] = {
        {0, "00"},
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
}

TEST(BinaryBufferTest, TextAsBytes) {
    const TStringCore text(std::u16string{u'a', 0, 0xE9, 0xD83D, 0xDE00, 0xD83D});
    const std::vector<unsigned char> bytes = EncodeStringAsBytes(text);
    EXPECT_EQ(ToHex(bytes), "6100c3a9 f09f9880 efbfbd");
    EXPECT_EQ(DecodeBytesAsString(bytes),
              TStringCore(std::u16string{u'a', 0, 0xE9, 0xD83D, 0xDE00, 0xFFFD}));
}

// String tables ---------------------------------------------------------------------------------

void Append(StringTableReader& table, const std::vector<unsigned char>& indexBytes,
            const std::vector<unsigned char>& stringBytes) {
    BinaryBufferReader indices = ReaderOver(indexBytes);
    BinaryBufferReader strings = ReaderOver(stringBytes);
    table.AppendPayloadStrings(indices, strings);
}

TEST(StringTableTest, RoundTripOverPayloads) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    StringTableCreator creator;
    StringTableReader reader;
    std::vector<std::pair<TStringCore, const TStringCore*>> known;  // And where the reader has it.
    for (int payload = 0; payload < 12; ++payload) {
        for (int i = 0; i < 400; ++i) {
            TStringCore text;
            for (std::size_t left = random.Below(24); left > 0; --left) {
                const char16_t units[] = {u'a', u'b', 0, 0x7F, 0x80, 0x7FF, 0x800, 0xFFFF};
                text += random.OneOf(units);
            }
            const unsigned int index = creator.Add(text);
            if (index > known.size()) {
                known.emplace_back(text, nullptr);
            }
            ASSERT_EQ(known.at(index - 1).first, text);
        }
        const auto& indices = creator.GetIndicesBuffer()->GetBuffer();
        const auto& strings = creator.GetStringsBuffer()->GetBuffer();
        Append(reader, {indices.begin(), indices.end()}, {strings.begin(), strings.end()});
        creator.ResetBuffers();
        unsigned int index = 0;
        for (auto& [text, place] : known) {
            const TStringCore& read = reader.GetString(++index);
            ASSERT_EQ(read, text);
            ASSERT_TRUE(place == nullptr || place == &read);  // Good although the table grows.
            place = &read;
        }
    }
}

struct TableCase {
    std::string indices;
    LumError error;  // Or NoError, and then the strings that come of it.
    std::vector<std::string> texts = {};
    std::string strings = "6162";
};

TEST(StringTableTest, TakesWhatPayloadsSay) {
    using enum LumError;
    const TableCase cases[] = {
        {"01000000", NoError},
        {"01000000 00000000 01000000", NoError, {"a", "b"}},
        {"01000000 00000000", NoError, {""}, ""},
        // Only the differences of offsets count.
        {"01000000 01000000 02000000", NoError, {"a", ""}},
        {"01000000 00000000", NoError, {"\uFFFDa"}, "ff61"},
        {"01000000 00000000 09000000",
         NoError,
         {"aaaaaaaa\uFFFD", "bbb"},
         "6161616161616161ff626262"},
        {"01000000 02000000 01000000", BufferReadOutOfBounds},
        {"01000000 00000000 03000000", BufferReadOutOfBounds},
        {"01000000 03000000", BufferReadOutOfBounds},
        {"01000000 00000000 01", BufferReadOutOfBounds},
        {"010000", BufferReadOutOfBounds},
        {"", BufferReadOutOfBounds},
        {"00000000 00000000", Unspecified},
        {"02000000 00000000", Unspecified},
    };
    for (const TableCase& payload : cases) {
        SCOPED_TRACE(payload.indices);
        StringTableReader table;
        const auto append = [&] {
            Append(table, FromHex(payload.indices), FromHex(payload.strings));
        };
        if (payload.error != NoError) {
            const bool isStart = payload.error == Unspecified;
            EXPECT_TRUE(test::FailsAs(
                {payload.error, "", isStart,
                 isStart ? "(LumSizeCastSafe(m_strings.size()) == payloadStartIndex)" : ""},
                append));
            continue;
        }
        append();
        const unsigned int count = LumSizeCastSafe(payload.texts.size());
        for (unsigned int i = 0; i < count; ++i) {
            EXPECT_EQ(table.GetString(i + 1).toStdString(), payload.texts[i]);
        }
        for (const unsigned int index : {0u, count + 1, ~0u}) {
            EXPECT_LUM_REPORT(InvalidStringIndex, "", "(index > 0 && index < m_strings.size())",
                              table.GetString(index));
        }
    }
}

}  // namespace
}  // namespace lum::core
