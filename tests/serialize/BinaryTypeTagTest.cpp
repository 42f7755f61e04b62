#include "core/main/serialize/BinaryTypeTag.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"
#include "tests/serialize/GoldenPayloads.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/PayloadBytes.h"

namespace lum::core {
namespace {

// The bytes of tags, with each string as its length and its bytes.
class TagBytes final : public IBinaryProtocolTypeWriter, public IBinaryProtocolTypeReader {
public:
    TagBytes() = default;
    explicit TagBytes(std::vector<unsigned char> bytes) : m_bytes(std::move(bytes)) {}

    const std::vector<unsigned char>& GetBytes() const { return m_bytes; }
    bool IsAtEnd() const { return m_position == m_bytes.size(); }

    void AppendRaw(const TStringCore& text) override {
        const std::string bytes = text.toStdString();
        m_bytes.push_back(static_cast<unsigned char>(bytes.size()));
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    }
    void AppendRaw(unsigned char value) override { m_bytes.push_back(value); }
    void AppendRaw(signed char value) override {
        m_bytes.push_back(static_cast<unsigned char>(value));
    }

    signed char RawReadInt8() override { return static_cast<signed char>(RawReadUInt8()); }
    unsigned char RawReadUInt8() override {
        if (IsAtEnd()) {
            throw LumRuntimeException(LumError::BufferReadOutOfBounds);
        }
        return m_bytes[m_position++];
    }
    const TStringCore& RawReadString() override {
        TStringCore text;
        for (unsigned int left = RawReadUInt8(); left > 0; --left) {
            text += RawReadUInt8();
        }
        m_strings.push_back(text);
        return m_strings.back();
    }

private:
    std::vector<unsigned char> m_bytes;
    std::size_t m_position = 0;
    std::vector<TStringCore> m_strings;
};

class BinaryTypeTagTest : public testing::Test {
protected:
    BinaryTypeTagTest() { test::RegisterGoldenKind(); }
    ~BinaryTypeTagTest() override { ClearExternalTypes(); }

    test::CollatorPoolGuard m_pool{std::make_shared<test::FoldingCollatorPool>()};
};

TEST_F(BinaryTypeTagTest, Bytes) {
    const Type* const text = StringType::Get();
    const Type* const folded = StringType::Get(Collation(RInternString(L"fold")));
    const Type* const kind = ExternalType::Get(TStringCore(L"kind"));
    const Type* const pair = TupleType::Get({IntType::Get32(), folded});
    const std::pair<const Type*, std::string> cases[] = {
        {BoolType::Get(), "01"},
        {IntType::Get32(), "02"},
        {IntType::Get64(), "03"},
        {RealType::Get32(), "04"},
        {RealType::Get64(), "05"},
        {RealType::Get32(9, -1), "8409ff"},
        {RealType::Get64(-1, 3), "85ff03"},
        {text, "06"},
        {folded, "8604 666f6c64"},
        {DateType::Get(), "07"},
        {DateTimeType::Get(), "08"},
        {ColorType::Get(), "09"},
        {TupleType::Get({}), "0a"},
        {pair, "8a02 8604666f6c64 00"},
        {kind, "8b04 6b696e64"},
        {ArrayType::Get(RealType::Get64(-1, 3)), "0c85ff03"},
        {ArrayType::Get(ArrayType::Get(pair)), "0c0c8a02 8604666f6c64 00"},
        {SetType::Get(kind), "0d8b046b696e64"},
        {KeySetType::Get(text, IntType::Get64()), "0e0603"},
        {KeySetType::Get(pair, ArrayType::Get(text)), "0e8a028604666f6c64 00 0c06"},
        {KeyMapType::Get({{RInternString(L"a"), text}}), "0f"},
        {TableType::Get({{RInternString(L"a"), ArrayType::Get(text)}}), "10"},
    };
    for (const auto& [type, digits] : cases) {
        SCOPED_TRACE(type->ToString());
        for (const bool isSpecial : {false, true}) {
            std::vector<unsigned char> expected = test::FromHex(digits);
            expected[0] |= isSpecial ? 0x40 : 0;
            TagBytes bytes;
            WriteTypeTag(bytes, *type, isSpecial);
            EXPECT_EQ(test::ToHex(bytes.GetBytes()), test::ToHex(expected));

            // Members of key maps and tables do not travel.
            const Type* const read = type->Is(StoreType::KeyMap)  ? KeyMapType::Get({})
                                     : type->Is(StoreType::Table) ? TableType::Get({})
                                                                  : type;
            EXPECT_EQ(ReadTypeTag(bytes), std::pair(read, isSpecial));
            EXPECT_TRUE(bytes.IsAtEnd());
        }
    }
}

// Forms that are not written, and read all the same.
TEST_F(BinaryTypeTagTest, OtherForms) {
    const std::pair<std::string, const Type*> cases[] = {
        {"84ffff", RealType::Get32()},
        {"8604 524f4f54", StringType::Get()},
        {"8a00", TupleType::Get({})},
        {"8f", KeyMapType::Get({})},
        {"90", TableType::Get({})},
        // Whether a member of a tuple is special is not looked at.
        {"8a420100", TupleType::Get({IntType::Get32(), BoolType::Get()})},
    };
    for (const auto& [digits, type] : cases) {
        SCOPED_TRACE(digits);
        TagBytes bytes(test::FromHex(digits));
        EXPECT_EQ(ReadTypeTag(bytes), std::pair(type, false));
        EXPECT_TRUE(bytes.IsAtEnd());
    }
}

struct RefusedTag {
    std::string digits;
    LumError error;
    std::string condition = {};
};

TEST_F(BinaryTypeTagTest, Refused) {
    const std::string isExtra = "!(hasExtraInfo)";
    const std::string isExtraOfType = "!(binaryType.HasExtraTypeInfo())";
    const RefusedTag cases[] = {
        {"00", LumError::InvalidStoreType},
        {"40", LumError::InvalidStoreType},
        {"80", LumError::InvalidStoreType},
        {"11", LumError::InvalidStoreType},
        {"3f", LumError::InvalidStoreType},
        {"81", LumError::InvalidStoreType, isExtra},
        {"82", LumError::InvalidStoreType, isExtra},
        {"83", LumError::InvalidStoreType, isExtra},
        {"87", LumError::InvalidStoreType, isExtra},
        {"88", LumError::InvalidStoreType, isExtra},
        {"89", LumError::InvalidStoreType, isExtra},
        {"0b", LumError::InvalidExternalTypeId, "(hasExtraInfo)"},
        {"8c02", LumError::InvalidStoreType, isExtraOfType},
        {"8d02", LumError::InvalidStoreType, isExtraOfType},
        {"8e0202", LumError::InvalidStoreType, isExtraOfType},
        {"0c00", LumError::InvalidStoreType, "!(binaryType.IsNull())"},
        {"0e0200", LumError::InvalidStoreType, "!(binaryType.IsNull())"},
        {"0c42", LumError::SpecialKindNeedsPrimitive, "!(binaryType.IsSpecial())"},
        {"0e0242", LumError::SpecialKindNeedsPrimitive, "!(binaryType.IsSpecial())"},
        {"0c11", LumError::InvalidStoreType},
        {"8a0c", LumError::BufferReadOutOfBounds},
        {"84", LumError::BufferReadOutOfBounds},
        // What the types themselves refuse.
        {"0c10", LumError::IllegalElementType},
        {"0d0c02", LumError::IllegalElementType},
        {"0e0f02", LumError::IllegalKeyType},
        {"8a0c0200", LumError::TuplePrimitivesOnly},
    };
    for (const RefusedTag& refused : cases) {
        SCOPED_TRACE(refused.digits);
        TagBytes bytes(test::FromHex(refused.digits));
        EXPECT_TRUE(
            test::FailsAs({refused.error, "", !refused.condition.empty(), refused.condition},
                          [&] { static_cast<void>(ReadTypeTag(bytes)); }));
    }
    TagBytes unknown(test::FromHex("8b03666f6f"));
    EXPECT_THROW(ReadTypeTag(unknown), std::out_of_range);
}

TEST_F(BinaryTypeTagTest, NestsToALimit) {
    const auto nest = [](const std::string& level, std::size_t levels, const std::string& end) {
        std::string digits;
        for (std::size_t i = 0; i < levels; ++i) {
            digits += level;
        }
        return TagBytes(test::FromHex(digits + end));
    };
    TagBytes deepest = nest("0c", 255, "02");
    const Type* type = ReadTypeTag(deepest).first;
    for (int i = 0; i < 255; ++i) {
        type = type->As<ArrayType>().GetElementType();
    }
    EXPECT_EQ(type, IntType::Get32());
    const std::string isDeep = "(m_level < kMaxNestingLevels)";
    for (const std::size_t levels : {256u, 1'000'000u}) {
        for (const char* const level : {"0c", "8a", "0e", "0e0a"}) {
            TagBytes bytes = nest(level, levels, "02");
            EXPECT_LUM_REPORT(InvalidBinaryData, "", isDeep, ReadTypeTag(bytes));
        }
    }
    // Types beside each other are no nesting.
    std::string members;
    for (int i = 0; i < 1000; ++i) {
        members += "02";
    }
    TagBytes many = nest("8a", 1, members + "00");
    EXPECT_EQ(ReadTypeTag(many).first->As<TupleType>().GetMembers().size(), 1000u);
}

}  // namespace
}  // namespace lum::core
