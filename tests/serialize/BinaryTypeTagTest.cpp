#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"
#include "tests/serialize/GoldenPayloads.h"
#include "tests/serialize/SerializeTest.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using test::Repeat;

class BinaryTypeTagTest : public test::SerializeTest {};

// Tags are words of GoldenBytes.
std::vector<unsigned char> PayloadOf(const std::string& tag) {
    return test::GoldenBytes(/*flags=*/2, "#1 'k' " + tag);
}

std::pair<const Type*, bool> ReadTag(const std::string& tag) {
    BinaryProtocolReader reader(test::MakePayload(PayloadOf(tag)));
    reader.BeginDictionaryType();
    reader.ReadStringKey();
    const std::pair<const Type*, bool> read = reader.ReadKeyType();
    EXPECT_EQ(reader.GetRemainingBytes(), 0u);
    return read;
}

// What golden values do not show, each as the type of a value and of a special one.
TEST_F(BinaryTypeTagTest, Bytes) {
    const Type* const text = StringType::Get();
    const Type* const folded = StringType::Get(Collation(RInternString(L"fold")));
    const Type* const pair = TupleType::Get({IntType::Get32(), folded});
    const std::pair<const Type*, std::string> cases[] = {
        {IntType::Get32(), "02"},
        {RealType::Get64(-1, 3), "85ff03"},
        {folded, "86 'fold'"},
        {pair, "8a02 86 'fold' 00"},
        {ExternalType::Get(TStringCore(L"kind")), "8b 'kind'"},
        {ArrayType::Get(RealType::Get64(-1, 3)), "0c85ff03"},
        {ArrayType::Get(ArrayType::Get(pair)), "0c0c8a02 86 'fold' 00"},
        {KeySetType::Get(pair, ArrayType::Get(text)), "0e8a02 86 'fold' 00 0c06"},
        {KeyMapType::Get({{RInternString(L"a"), text}}), "0f"},
        {TableType::Get({{RInternString(L"a"), ArrayType::Get(text)}}), "10"},
    };
    for (const auto& [type, digits] : cases) {
        SCOPED_TRACE(type->ToString());
        for (const bool isSpecial : {false, true}) {
            std::string tag = digits;
            if (isSpecial) {  // The bit 0x40.
                tag[0] = std::map<char, char>{{'0', '4'}, {'1', '5'}, {'8', 'c'}}.at(tag[0]);
            }
            BinaryProtocolCreator creator;
            creator.BeginDictionaryType(1);
            creator.AppendKey(TStringCore(L"k"));
            creator.AppendKeyType(type, isSpecial);
            creator.AppendData(true);
            creator.EndDictionaryType();
            EXPECT_EQ(test::ToHex(creator.FinalizePayload()), test::ToHex(PayloadOf(tag + " 01")));

            // Members of key maps and tables do not travel.
            const Type* const read = type->Is(StoreType::KeyMap)  ? KeyMapType::Get({})
                                     : type->Is(StoreType::Table) ? TableType::Get({})
                                                                  : type;
            EXPECT_EQ(ReadTag(tag), std::pair(read, isSpecial));
        }
    }
}

// Forms that are not written, and read all the same.
TEST_F(BinaryTypeTagTest, OtherForms) {
    const std::pair<std::string, const Type*> cases[] = {
        {"84ffff", RealType::Get32()},
        {"86 'ROOT'", StringType::Get()},
        {"8a00", TupleType::Get({})},
        {"8f", KeyMapType::Get({})},
        {"90", TableType::Get({})},
        // Whether a member of a tuple is special is not looked at.
        {"8a420100", TupleType::Get({IntType::Get32(), BoolType::Get()})},
    };
    for (const auto& [tag, type] : cases) {
        SCOPED_TRACE(tag);
        EXPECT_EQ(ReadTag(tag), std::pair(type, false));
    }
}

// A reader knows the last short tag by its bytes, and must not take another one for it.
TEST_F(BinaryTypeTagTest, InARow) {
    const std::string tags[] = {"02", "42", "03", "0c02", "4c02", "0c03", "0c0c02", "0c0c03",
                                "8409ff", "8409fe", "c409ff", "86 'fold'", "8b 'kind'", "8a0200",
                                "8a0300",
                                // Eight bytes are as many as it keeps.
                                Repeat("0c", 7) + "02", Repeat("0c", 7) + "03",
                                Repeat("0c", 8) + "02", Repeat("0c", 8) + "03"};
    for (const std::string& first : tags) {
        for (const std::string& second : tags) {
            const std::string members[] = {first, first, second, second, first};
            std::string data = "#5 ";
            for (const std::string& tag : members) {
                data += "'k' " + tag + " 00 ";
            }
            const std::string behind(16, '0');  // It looks eight bytes ahead.
            BinaryProtocolReader reader(
                test::MakePayload(test::GoldenBytes(/*flags=*/2, data + behind)));
            reader.BeginDictionaryType();
            for (const std::string& tag : members) {
                reader.ReadStringKey();
                EXPECT_EQ(reader.ReadKeyType(), ReadTag(tag)) << first << " and " << second;
                reader.ReadStorage8Bit();
            }
            EXPECT_EQ(reader.GetRemainingBytes(), behind.size() / 2);
        }
    }
}

struct RefusedTag {
    std::string tag;
    LumError error;
    std::string condition = {};
};

TEST_F(BinaryTypeTagTest, Refused) {
    using enum LumError;
    const std::string isExtra = "!(hasExtraInfo)";
    const std::string isExtraOfType = "!(binaryType.HasExtraTypeInfo())";
    const RefusedTag cases[] = {
        {"00", InvalidStoreType},
        {"11", InvalidStoreType},
        {"3f", InvalidStoreType},
        {"81", InvalidStoreType, isExtra},
        {"89", InvalidStoreType, isExtra},
        {"0b", InvalidExternalTypeId, "(hasExtraInfo)"},
        {"8c02", InvalidStoreType, isExtraOfType},
        {"8d02", InvalidStoreType, isExtraOfType},
        {"8e0202", InvalidStoreType, isExtraOfType},
        {"0c00", InvalidStoreType, "!(binaryType.IsNull())"},
        {"0e0200", InvalidStoreType, "!(binaryType.IsNull())"},
        {"0c42", SpecialKindNeedsPrimitive, "!(binaryType.IsSpecial())"},
        {"0e0242", SpecialKindNeedsPrimitive, "!(binaryType.IsSpecial())"},
        {"8a0c", BufferReadOutOfBounds},
        {"84", BufferReadOutOfBounds},
        // What the types themselves refuse.
        {"0c10", IllegalElementType},
        {"0d0c02", IllegalElementType},
        {"0e0f02", IllegalKeyType},
        {"8a0c0200", TuplePrimitivesOnly},
    };
    for (const RefusedTag& refused : cases) {
        SCOPED_TRACE(refused.tag);
        EXPECT_TRUE(
            test::FailsAs({refused.error, "", !refused.condition.empty(), refused.condition},
                          [&] { ReadTag(refused.tag); }));
    }
    EXPECT_THROW(ReadTag("8b 'foo'"), std::out_of_range);
}

TEST_F(BinaryTypeTagTest, NestsToALimit) {
    const Type* type = ReadTag(Repeat("0c", 255) + "02").first;
    for (int i = 0; i < 255; ++i) {
        type = type->As<ArrayType>().GetElementType();
    }
    EXPECT_EQ(type, IntType::Get32());
    for (const std::size_t levels : {256u, 1'000'000u}) {
        for (const char* const level : {"0c", "8a", "0e", "0e0a"}) {
            EXPECT_LUM_REPORT(InvalidBinaryData, "", "(m_level < kMaxNestingLevels)",
                              ReadTag(Repeat(level, levels) + "02"));
        }
    }
    // Types beside each other are no nesting.
    const Type* const wide = ReadTag("8a" + Repeat("02", 1000) + "00").first;
    EXPECT_EQ(wide->As<TupleType>().GetMembers().size(), 1000u);
}

}  // namespace
}  // namespace lum::core
