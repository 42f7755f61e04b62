// What is no payload of values, and what values cannot become one.

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/TupleType.h"
#include "tests/serialize/GoldenPayloads.h"
#include "tests/serialize/GoldenValues.h"
#include "tests/serialize/SerializeTest.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/SmallStack.h"

namespace lum::core {
namespace {

class BinaryValueRefusalTest : public test::SerializeTest {};

// A store from a data section whose strings are "v" and "bytes"; counts are in base-128.
std::shared_ptr<IDataStore> ReadData(const std::string& data) {
    return test::ReadStore(test::GoldenBytes(/*flags=*/2, data, {"v", "bytes"}));
}

struct RefusedData {
    std::string value;  // Behind the key: the tag and what follows.
    LumError error;
    std::string condition;
    std::string details = {};
};

TEST_F(BinaryValueRefusalTest, Data) {
    const std::string isShort = "((size_t)(m_bufferEnd - m_pos) >= size)";
    const std::string isKind = "(static_cast<unsigned int>(kind) < kSpecialKindCount)";
    const std::string corruptSort = "corrupt table sort metadata";
    const std::string isArray = "(binListType.GetContainerType() == BinaryContainerType::Array)";
    const std::string isInRuns = "(indices.GetSize() == 0 || largest < elementCount)";
    const std::string isString = "(index > 0 && index < m_strings.size())";
    using enum LumError;
    const RefusedData cases[] = {
        // Kinds.
        {"42 0a", IllegalSpecialKind, isKind},
        {"42 00", NormalBoxedSpecial, "(m_specialKind) != (SpecialKind::Normal)"},
        {"0c 8a 02 00 0c 05 00", NormalBoxedSpecial, "(kind != SpecialKind::Normal || count == 0)"},
        {"0c 02 0c 05 ff", IllegalSpecialKind, isKind},
        {"0d 02 0d 00 01 0a", IllegalSpecialKind, isKind},
        {"0e 01 01 02 00 01 0a 00", IllegalSpecialKind, isKind},
        {"8a 01 00 0e 01 0a 00", IllegalSpecialKind, isKind},
        {"0c 01 03 01 01 01 0a", IllegalSpecialKind, isKind},
        // Lists of another kind than the type's.
        {"0c 01 05 00", InvalidListType, isArray},
        {"0c 0a 02 00", InvalidListType, isArray},
        {"0d 01 01 00", InvalidListType,
         "(binListType.GetContainerType() == BinaryContainerType::Set)"},
        {"8b 02 01 00", InvalidListType,
         "(p.BeginListType().GetContainerType() == BinaryContainerType::ByteBlob)"},
        {"8a 01 00 01 01", ExpectedTuple,
         "(listType.GetContainerType() == BinaryContainerType::Tuple)"},
        {"8a 01 01 00 06 01 01", Unspecified, "(valueCount == type->GetMembers().size())"},
        {"8a 01 01 00 0e 02 00 00 01 01 01", ListValueCountMismatch, "(m_count == 0)"},
        // Kinds of collections; only arrays and sets are told before they are read.
        {"0c 0c 01 09 01", NestedCollectionSpecials,
         "(type->GetElementType()->TryAs<CollectionType>()) == nullptr"},
        {"0c 0f 09 01 00 01 01", NestedCollectionSpecials,
         "!(IsCollectionStoreType(m_type->GetElementType()->GetStoreType()))"},
        {"0c 0c 01 04 01 01 00", TypeMismatchExpected, ""},
        // Segments that do not fit.
        {"0c 01 09 03 010101 02 0000", ListSegmentCountMismatch, "(count == m_lastDataCount)"},
        {"0c 01 29 03 010101 02 0000", SpecialsSizeMismatch,
         "(m_specials.GetSize() == m_values.GetSize())"},
        {"0c 01 03 02 0101 03 000000", ListValueCountMismatch, "(rangeCount == specialsCount)"},
        {"0c 01 03 02 0101 02 0000 01", ListValueCountMismatch, "(rangeCount == countsCount)"},
        // Runs: an index behind them, one without any, more elements than 32 bits.
        {"0c 01 13 01 01 01 00 01 0000 03000000 01 000000 03000000", InvalidBinaryData, isInRuns},
        {"0c 01 13 00 00 00 01 000000 00000000", InvalidBinaryData, isInRuns},
        {"0c 8a 01 00 03 00 00 00", TypeMismatchExpected,
         "(IsPrimitiveStoreType(elementStoreType))"},
        // Tables: lists of sort columns that differ in length, an order that is none, a special
        // order, more than the bytes bear out; columns that are none, or unlike.
        {"10 00 01 01 01 01 00", InvalidBinaryData, "", corruptSort},
        {"10 00 01 01 01 01 01 000000 04000000", InvalidBinaryData, "", corruptSort},
        {"10 00 01 01 01 0c 01 01", InvalidBinaryData, "", corruptSort},
        {"10 00 04 ffffffff0f 01 04 ffffffff0f 000000 01000000", InvalidBinaryData, "",
         corruptSort},
        {"10 01 01 00 01 00 01 0d 01 05 00", TableColumnNotArray, ""},
        {"10 01 01 00 01 00 01 4c 01 01", ProtocolStateMismatch, ""},
        // Ends of what is there.
        {"0c 02 01 02 0000 01000000", BufferReadOutOfBounds, isShort},
        {"0c 0f 01 ffffffff0f 00", BufferReadOutOfBounds, isShort},
        {"06 00", InvalidStringIndex, isString},
        {"06 03", InvalidStringIndex, isString},
        // A host's function that gives nothing.
        {"8b 02 02 01 ff", InvalidBinaryData, "(value) != nullptr"},
    };
    for (const RefusedData& refused : cases) {
        SCOPED_TRACE(refused.value);
        const bool isNamed = !refused.condition.empty();
        EXPECT_TRUE(test::FailsAs({refused.error, refused.details, isNamed, refused.condition},
                                  [&] { ReadData("01 01 " + refused.value); }));
    }
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "",
                            "(m_type == BinaryKeySetType::NoSpecialKeys || m_type == "
                            "BinaryKeySetType::WithSpecialKeys)",
                            ReadData("01 01 0e 01 01 03 00"));
    EXPECT_LUM_PLAIN_ERROR(OutOfRange, "Value exceeds maximum legal value for lumsize_t",
                           ReadData("01 01 0c 01 03 02 0101 02 0000 02 00 ffffffff 01000000"));
    EXPECT_THROW(ReadData("01 01 8b 01 02 00"), std::out_of_range);
}

// What looks odd and is taken as it stands.
TEST_F(BinaryValueRefusalTest, TakenAsItStands) {
    const std::pair<std::string, std::string> cases[] = {
        // The first of two members under a name.
        {"02 01 01 01 01 02 000000 05000000", "{v = true}"},
        // Bytes of columns of Bool; only single ones become 0 or 1.
        {"01 01 01 07", "{v = true}"},
        // A key set that says it has special keys but has none of them. Kinds without a name in a
        // column: nobody looks before they are printed.
        {"01 01 0e 01 01 02 01 01 01 00", "{v = K<b,b>: true=true}"},
    };
    for (const auto& [data, text] : cases) {
        EXPECT_EQ(test::TextOf(ReadData(data)->GetValue(KeyPath())), text);
    }
    const auto store = ReadData("01 01 0c 01 09 02 0201 02 00ff");
    const auto& array = store->GetValue(KeyPath::ParseString(L"v"))->AsTypedArray<unsigned char>();
    EXPECT_EQ(array.GetValue(0), 2);
    EXPECT_TRUE(array.IsSpecial(1));
}

// As deep as the limit goes, on a stack that deeper recursion would overflow.
TEST_F(BinaryValueRefusalTest, Nesting) {
    const struct {
        std::string data;
        unsigned int values;
    } levels[] = {
        {"01 01 0f ", 1},                // A key map under a name,
        {"01 01 0c 0f 01 01 ", 2},       // an array of key maps under a name,
        {"01 01 0e 01 0f 01 01 01 ", 2}  // key maps in a key set.
    };
    constexpr unsigned int kLimit = 256;
    for (const auto& level : levels) {
        for (const unsigned int depth : {kLimit / level.values, kLimit / level.values + 1, 3000u}) {
            SCOPED_TRACE(level.data + std::to_string(depth));
            const std::string data = test::Repeat(level.data, depth) + "00";
            test::OnSmallStack([&] {
                if (depth * level.values <= kLimit) {
                    EXPECT_EQ(ReadData(data)->GetValue(KeyPath())->GetCount(), 1u);
                } else {
                    EXPECT_LUM_REPORT(InvalidBinaryData, "", "(m_level < kMaxNestingLevels)",
                                      ReadData(data));
                }
            });
        }
    }
}

SV ColumnOfHandles(const Type* elementType, std::vector<SV> elements) {
    return factory::MakeArray(elementType, std::move(elements), SortSpecOrder::UNKNOWN);
}

TEST_F(BinaryValueRefusalTest, Writing) {
    using enum LumError;
    const Type* const bytesType = ExternalType::Get(test::kBytesKindId);
    const Type* const columnType = ArrayType::Get(BoolType::Get());
    const SV bytes = test::MakeBytesValue({1});
    const SV kindsOfNothing = factory::MakeArray<SV>(
        bytesType, std::make_unique<std::vector<SV>>(1), nullptr,
        std::make_unique<std::vector<SpecialKind>>(1, SpecialKind::Null), SortSpecOrder::UNKNOWN);
    const std::string isNull = "(value) != nullptr";
    const std::string isSpecial = "!(value->IsSpecial())";
    const std::tuple<SV, LumError, std::string> cases[] = {
        {ColumnOfHandles(bytesType, {bytes, factory::MakeSpecial(bytesType, SpecialKind::Null)}),
         CollectionArraySpecials, isSpecial},
        {ColumnOfHandles(columnType, {factory::MakeSpecial(columnType, SpecialKind::Null)}),
         CollectionArraySpecials, isSpecial},
        {ColumnOfHandles(bytesType, {bytes, nullptr}), NullSerializedValue, isNull},
        {kindsOfNothing, NullSerializedValue, isNull},
        {factory::MakeTuple(LumTuple(TupleType::Get({bytesType}))), NullSerializedValue, isNull},
        {ColumnOfHandles(IntType::Get32(), {factory::MakeInt32(1)}), NotTypedArray, ""},
        {test::ColumnOf("i: 1")->AsArray().WithIndices({1, 0}, SortSpecOrder::ASC), OutOfBounds,
         ""},
    };
    for (const auto& [value, error, condition] : cases) {
        const auto store = factory::MakeDataStore(test::MakeStoreOf(value));
        EXPECT_TRUE(test::FailsAs({error, "", !condition.empty(), condition},
                                  [&] { test::WriteStore(*store); }));
    }
}

}  // namespace
}  // namespace lum::core
