#include "tests/serialize/GoldenPayloads.h"

#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"
#include "tests/support/PayloadBytes.h"

namespace lum::test {
namespace {

using core::ArrayType;
using core::ArrayView;
using core::BinaryKeySetType;
using core::BinaryListType;
using core::BinaryProtocolCreator;
using core::IntType;
using core::SortSpecOrder;
using core::SpecialKind;
using core::TStringCore;

constexpr unsigned short kKindId = 61;

void AppendWord(std::vector<unsigned char>& bytes, std::size_t word) {
    for (int i = 0; i < 4; ++i) {
        bytes.push_back(static_cast<unsigned char>(word >> 8 * i));
    }
}

void PadTo8(std::vector<unsigned char>& bytes) {
    while (bytes.size() % 8 != 0) {
        bytes.push_back(0);
    }
}

void Key(BinaryProtocolCreator& creator, const wchar_t* name, const core::Type* type,
         bool isSpecial = false) {
    creator.AppendKey(TStringCore(name));
    creator.AppendKeyType(type, isSpecial);
}

template <typename T>
void Segment(BinaryProtocolCreator& creator, const std::vector<T>& values) {
    creator.BeginListData(core::LumSizeCastSafe(values.size()));
    creator.AppendArray(ArrayView<const T>(values));
    creator.EndListData();
}

void WriteOneInt(BinaryProtocolCreator& creator) {
    creator.BeginDictionaryType(1);
    Key(creator, L"a", IntType::Get32());
    creator.AppendData(5);
    creator.EndDictionaryType();
}

void WriteSortedArray(BinaryProtocolCreator& creator) {
    creator.BeginDictionaryType(1);
    Key(creator, L"a", ArrayType::Get(IntType::Get32()));
    creator.BeginListType(BinaryListType::Array(/*hasSpecials=*/true, SortSpecOrder::ASC));
    Segment<int>(creator, {1, 7});
    Segment<SpecialKind>(creator, {SpecialKind::Normal, SpecialKind::Null});
    creator.EndListType();
    creator.EndDictionaryType();
}

void WriteScalars(BinaryProtocolCreator& creator) {
    creator.BeginDictionaryType(7);
    Key(creator, L"b", core::BoolType::Get());
    creator.AppendData(true);
    Key(creator, L"l", IntType::Get64());
    creator.AppendData(core::int64{-2});
    Key(creator, L"r", core::RealType::Get32(9, -2));
    creator.AppendData(1.5f);
    Key(creator, L"n", core::RealType::Get64(), /*isSpecial=*/true);
    creator.AppendData(SpecialKind::Null);
    Key(creator, L"d", core::DateType::Get());
    creator.AppendData(core::LumDateTime::FromValue(0x0102030405060708));
    Key(creator, L"c", core::ColorType::Get());
    creator.AppendData(core::LumColor::FromInt32(0x7F112233));
    Key(creator, L"s", core::StringType::Get());
    creator.AppendData(TStringCore(L"b"));
    creator.EndDictionaryType();
}

void WriteNested(BinaryProtocolCreator& creator) {
    creator.BeginDictionaryType(2);
    Key(creator, L"m", core::KeyMapType::Get({}));
    WriteOneInt(creator);
    Key(creator, L"x", core::ExternalType::Get(kKindId));
    creator.BeginListType(BinaryListType::ByteBlob);
    Segment<unsigned char>(creator, {0xCA, 0xFE});
    creator.EndListType();
    creator.EndDictionaryType();
}

void WriteTable(BinaryProtocolCreator& creator) {
    creator.BeginDictionaryType(1);
    Key(creator, L"t", core::TableType::Get({}));
    creator.BeginTableType(1);
    creator.BeginListType(BinaryListType::ArrayNoSpecials);
    creator.BeginListData(1);
    creator.AppendData(TStringCore(L"a"));
    creator.EndListData();
    creator.EndListType();
    creator.BeginListType(BinaryListType::ArrayNoSpecials);
    Segment<int>(creator, {1});
    creator.EndListType();
    Key(creator, L"a", ArrayType::Get(IntType::Get32()));
    creator.BeginListType(BinaryListType::ArrayNoSpecials);
    Segment<int>(creator, {5});
    creator.EndListType();
    creator.EndTableType();
    creator.EndDictionaryType();
}

void WriteKeySet(BinaryProtocolCreator& creator) {
    creator.BeginDictionaryType(1);
    Key(creator, L"k", core::KeySetType::Get(core::StringType::Get(), core::BoolType::Get()));
    creator.BeginKeySetType(BinaryKeySetType::WithSpecialKeys);
    creator.BeginListData(1);
    creator.AppendKey(TStringCore(L"x"));
    creator.AppendData(static_cast<unsigned char>(1));
    creator.EndListData();
    creator.BeginListData(1);
    creator.AppendKey(SpecialKind::Null);
    creator.AppendData(static_cast<unsigned char>(0));
    creator.EndListData();
    creator.EndKeySetType();
    creator.EndDictionaryType();
}

void WriteTupleKeys(BinaryProtocolCreator& creator) {
    creator.BeginDictionaryType(1);
    const core::Type* const key = core::TupleType::Get({core::BoolType::Get()});
    Key(creator, L"k", core::KeySetType::Get(key, core::KeyMapType::Get({})));
    creator.BeginKeySetType(BinaryKeySetType::NoSpecialKeys);
    creator.BeginListData(1);
    creator.BeginListType(BinaryListType::TupleNoSpecials);
    creator.BeginListData(1);
    creator.AppendData(false);
    creator.EndListData();
    creator.EndListType();
    creator.BeginDictionaryType(0);
    creator.EndDictionaryType();
    creator.EndListData();
    creator.EndKeySetType();
    creator.EndDictionaryType();
}

void WriteTuple(BinaryProtocolCreator& creator) {
    creator.BeginDictionaryType(1);
    Key(creator, L"p", core::TupleType::Get({IntType::Get32(), core::BoolType::Get()}));
    creator.BeginListType(BinaryListType::TupleWithSpecials);
    Segment<SpecialKind>(creator, {SpecialKind::Normal, SpecialKind::Null});
    creator.BeginListData(1);
    creator.AppendData(7);
    creator.EndListData();
    creator.EndListType();
    creator.EndDictionaryType();
}

void WriteSets(BinaryProtocolCreator& creator) {
    creator.BeginDictionaryType(2);
    Key(creator, L"i", core::SetType::Get(IntType::Get64()));
    creator.BeginListType(BinaryListType::SetWithSpecials);
    creator.BeginListData(1);
    creator.AppendData(core::int64{-1});
    creator.EndListData();
    creator.BeginListData(1);
    creator.AppendData(SpecialKind::Missing);
    creator.EndListData();
    creator.EndListType();
    const core::Collation fold(core::RInternString(L"fold"));
    Key(creator, L"f", core::SetType::Get(core::StringType::Get(fold)));
    creator.BeginListType(BinaryListType::SetNoSpecials);
    creator.BeginListData(0);
    creator.EndListData();
    creator.EndListType();
    creator.EndDictionaryType();
}

void WriteConstants(BinaryProtocolCreator& creator) {
    creator.BeginDictionaryType(2);
    Key(creator, L"a", ArrayType::Get(core::StringType::Get()));
    creator.BeginListType(BinaryListType::ConstantArrayNoSpecials);
    creator.BeginListData(1000);
    creator.AppendData(TStringCore(L"b"));
    creator.EndListData();
    creator.EndListType();
    Key(creator, L"b", ArrayType::Get(core::DateType::Get()));
    creator.BeginListType(BinaryListType::ConstantArrayWithSpecials);
    creator.BeginListData(0);
    creator.AppendData(SpecialKind::Normal);
    creator.EndListData();
    creator.EndListType();
    creator.EndDictionaryType();
}

void WriteComposite(BinaryProtocolCreator& creator) {
    creator.BeginDictionaryType(1);
    Key(creator, L"a", ArrayType::Get(core::BoolType::Get()));
    creator.BeginListType(BinaryListType::CompositeArray(/*hasIndices=*/true, SortSpecOrder::DESC));
    creator.BeginListData(2);
    creator.AppendData(static_cast<unsigned char>(1));
    creator.AppendData(static_cast<unsigned char>(0));
    creator.EndListData();
    creator.BeginListData(2);
    creator.AppendData(SpecialKind::Normal);
    creator.AppendData(SpecialKind::Null);
    creator.EndListData();
    creator.BeginListData(2);
    creator.AppendData(3u);
    creator.AppendData(1u);
    creator.EndListData();
    Segment<unsigned int>(creator, {3, 0});
    creator.EndListType();
    creator.EndDictionaryType();
}

void WriteArrays(BinaryProtocolCreator& creator) {
    creator.BeginDictionaryType(3);
    Key(creator, L"e", ArrayType::Get(IntType::Get64()));
    creator.BeginListType(BinaryListType::ArrayNoSpecials);
    Segment<core::uint64>(creator, {});
    creator.EndListType();
    Key(creator, L"l", ArrayType::Get(core::RealType::Get64()));
    creator.BeginListType(BinaryListType::ArrayNoSpecials);
    Segment<core::uint64>(creator, {0x3FF0000000000000});
    creator.EndListType();
    Key(creator, L"p", ArrayType::Get(ArrayType::Get(core::StringType::Get())));
    creator.BeginListType(BinaryListType::ArrayNoSpecials);
    creator.BeginListData(1);
    creator.BeginListType(BinaryListType::ArrayNoSpecials);
    creator.BeginListData(2);
    creator.AppendStrings(std::vector<core::RIndirectString>{L"p", L""});
    creator.EndListData();
    creator.EndListType();
    creator.EndListData();
    creator.EndListType();
    creator.EndDictionaryType();
}

}  // namespace

// Kept apart from the creator's own way of laying a payload out.
std::vector<unsigned char> GoldenPayload::GetBytes() const {
    const bool isBase128 = (flags & 2) != 0;
    std::vector<unsigned char> bytes = FromHex("01000000");
    AppendWord(bytes, flags);
    for (const unsigned char byte : FromHex(isBase128 ? "012f0000" : "01000000 2f000000")) {
        bytes.push_back(byte);
    }
    const auto roundUp = [](std::size_t length) { return (length + 7) / 8 * 8; };
    std::vector<unsigned char> offsets = FromHex("01000000");
    std::string text;
    for (const std::string& string : strings) {
        AppendWord(offsets, text.size());
        text += string;
    }
    const std::size_t headerEnd = roundUp(bytes.size() + 20);
    const std::size_t textPosition = roundUp(headerEnd + offsets.size());
    if (strings.empty()) {
        for (const std::size_t word :
             {std::size_t{0}, std::size_t{0}, std::size_t{0}, std::size_t{0}, headerEnd}) {
            AppendWord(bytes, word);
        }
    } else {
        for (const std::size_t word : {headerEnd, offsets.size(), textPosition, text.size(),
                                       roundUp(textPosition + text.size())}) {
            AppendWord(bytes, word);
        }
        PadTo8(bytes);
        bytes.insert(bytes.end(), offsets.begin(), offsets.end());
        PadTo8(bytes);
        bytes.insert(bytes.end(), text.begin(), text.end());
    }
    PadTo8(bytes);
    const std::vector<unsigned char> dataBytes = FromHex(data);
    bytes.insert(bytes.end(), dataBytes.begin(), dataBytes.end());
    return bytes;
}

void RegisterGoldenKind() {
    core::RegisterExternalType(
        kKindId, L"kind", [](const core::ValueExternal&) { return std::vector<unsigned char>(); },
        [](const ArrayView<const unsigned char>&) { return nullptr; });
}

const std::vector<GoldenPayload>& GetGoldenPayloads() {
    const auto writeEmpty = [](BinaryProtocolCreator& creator) {
        creator.BeginDictionaryType(0);
        creator.EndDictionaryType();
    };
    static const std::vector<GoldenPayload> s_payloads = {
        {"EmptyPlain", 0, {}, "00000000", writeEmpty},
        {"EmptyWithSums", 1, {}, "00000000 0df0", writeEmpty},
        {"EmptyBase128", 2, {}, "00", writeEmpty},
        {"EmptyBase128WithSums", 3, {}, "00 00 0df0", writeEmpty},
        {"OneIntPlain", 0, {"a"}, "01000000 01000000 02 000000 05000000", WriteOneInt},
        {"OneIntWithSums", 1, {"a"}, "01000000 01000000 02 000000 05000000 0df0", WriteOneInt},
        {"OneIntBase128", 2, {"a"}, "01 01 02 00 05000000", WriteOneInt},
        {"OneIntBase128WithSums", 3, {"a"}, "01 01 02 00 05000000 0df0", WriteOneInt},
        {"SortedArrayPlain",
         0,
         {"a"},
         "01000000 01000000 0c 02 29 00 02000000 01000000 07000000 02000000 00 01",
         WriteSortedArray},
        {"SortedArrayWithSums",
         1,
         {"a"},
         "01000000 01000000 0c 02 29 00 02000000 01000000 07000000 02000000 00 01 0df0 0df0",
         WriteSortedArray},
        {"SortedArrayBase128",
         2,
         {"a"},
         "01 01 0c 02 29 02 0000 01000000 07000000 02 00 01",
         WriteSortedArray},
        {"SortedArrayBase128WithSums",
         3,
         {"a"},
         "01 01 0c 02 29 02 0000 01000000 07000000 02 00 01 00 0df0 0df0",
         WriteSortedArray},
        {"ScalarsBase128",
         2,
         {"b", "l", "r", "n", "d", "c", "s"},
         "07 01 01 01 02 03 0000 feffffff ffffffff 03 84 09 fe 0000c03f 04 45 01 05 07 000000"
         "08070605 04030201 06 09 0000 3322117f 07 06 01",
         WriteScalars},
        {"ScalarsPlain",
         0,
         {"b", "l", "r", "n", "d", "c", "s"},
         "07000000 01000000 01 01 0000 02000000 03 000000 00000000 feffffff ffffffff"
         "03000000 84 09 fe 00 0000c03f 04000000 45 01 0000 05000000 07 000000"
         "00000000 08070605 04030201 06000000 09 000000 3322117f 07000000 06 000000 01000000",
         WriteScalars},
        {"NestedBase128WithSums",
         3,
         {"m", "a", "x", "kind"},
         "02 01 0f 01 02 02 0000 05000000 0df0 03 8b 04 02 02 ca fe 00 0df0 0df0",
         WriteNested},
        {"NestedPlain",
         0,
         {"m", "a", "x", "kind"},
         "02000000 01000000 0f 000000 01000000 02000000 02 000000 05000000"
         "03000000 8b 000000 04000000 02 000000 02000000 ca fe",
         WriteNested},
        {"TableBase128",
         2,
         {"t", "a"},
         "01 01 10 01 01 01 02 01 01 000000 01000000 02 0c 02 01 01 000000 05000000",
         WriteTable},
        {"TableWithSums",
         1,
         {"t", "a"},
         "01000000 01000000 10 000000 01000000 01 000000 01000000 02000000 0df0"
         "01 00 01000000 01000000 0df0 0000 02000000 0c 02 01 00 01000000 05000000 0df0 0df0 0df0",
         WriteTable},
        {"KeySetBase128", 2, {"k", "x"}, "01 01 0e 06 01 02 01 02 01 01 01 00", WriteKeySet},
        {"KeySetWithSums",
         1,
         {"k", "x"},
         "01000000 01000000 0e 06 01 02 01000000 02000000 01 000000 01000000 01 00 0df0 0df0",
         WriteKeySet},
        {"TupleKeysBase128WithSums",
         3,
         {"k"},
         "01 01 0e 8a 01 00 0f 01 01 06 01 00 0df0 00 00 0df0 0df0 0df0",
         WriteTupleKeys},
        {"TupleBase128", 2, {"p"}, "01 01 8a 02 01 00 0e 02 00 01 01 00 07000000", WriteTuple},
        {"TuplePlain",
         0,
         {"p"},
         "01000000 01000000 8a 02 01 00 0e 000000 02000000 00 01 0000 01000000 07000000",
         WriteTuple},
        {"SetsBase128",
         2,
         {"i", "f", "fold"},
         "02 01 0d 03 0d 01 0000 ffffffff ffffffff 01 09 02 0d 86 03 05 00",
         WriteSets},
        {"ConstantsBase128",
         2,
         {"a", "b"},
         "02 01 0c 06 04 e807 02 02 0c 07 0c 00 00",
         WriteConstants},
        {"ConstantsPlain",
         0,
         {"a", "b"},
         "02000000 01000000 0c 06 04 00 e8030000 02000000 02000000 0c 07 0c 00 00000000 00",
         WriteConstants},
        {"CompositeBase128",
         2,
         {"a"},
         "01 01 0c 01 53 02 01 00 02 00 01 02 03000000 01000000 02 000000 03000000 00000000",
         WriteComposite},
        {"ArraysBase128",
         2,
         {"e", "l", "p", ""},
         "03 01 0c 03 01 00 02 0c 05 01 01 0000000000 00000000 0000f03f"
         "03 0c 0c 06 01 01 01 02 03 04",
         WriteArrays},
    };
    return s_payloads;
}

}  // namespace lum::test
