#include "tests/serialize/GoldenValues.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <utility>

#include "core/main/store/ValueCompositeArray.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/serialize/GoldenPayloads.h"
#include "tests/support/ColumnText.h"
#include "tests/support/KeySets.h"
#include "tests/support/RandomStores.h"

namespace lum::test {
namespace {

using namespace core;

Collation Fold() {
    return Collation(RInternString(L"fold"));
}

SV MakeRow(const std::string& text) {
    return factory::MakeTuple(RowOf(text));
}

SV MakeHandles(const Type* elementType, std::vector<SV> elements) {
    return factory::MakeArray(elementType, std::move(elements), SortSpecOrder::UNKNOWN);
}

// Three times true, and a Null over false.
SV MakeRuns(std::unique_ptr<std::vector<unsigned int>> indices, SortSpecOrder order) {
    return MakeCompositeArray<unsigned char>(
        BoolType::Get(), {{1, SpecialKind::Normal, 3}, {0, SpecialKind::Null, 1}},
        std::move(indices), order);
}

SV MakeMap(const wchar_t* name, const SV& value) {
    return factory::MakeKeyMap(std::unordered_map<RInternString, SV>{{RInternString(name), value}});
}

SV MakeTable(IStoreTable::Columns columns, IStoreTable::SortColumns sortColumns) {
    return factory::MakeTable(std::move(columns), std::move(sortColumns));
}

struct GoldenValue {
    const char* name;
    SV value;
    std::vector<std::string> strings;  // Of the table.
    /// The data section of a store of the value under "v": plain, with checksums, with counts in
    /// base-128, with both.
    std::string data[4];
};

std::vector<GoldenValue> GetGoldenValues() {
    return {
        {"Bool",
         factory::MakeBool(true),
         {"v"},
         {"01000000 01000000 01 01", "01000000 01000000 01 01 0df0", "01 01 01 01",
          "01 01 01 01 0df0"}},
        {"Int32",
         factory::MakeInt32(-2),
         {"v"},
         {"01000000 01000000 02 000000 feffffff", "01000000 01000000 02 000000 feffffff 0df0",
          "01 01 02 00 feffffff", "01 01 02 00 feffffff 0df0"}},
        {"Int64",
         factory::MakeInt64(-2),
         {"v"},
         {"01000000 01000000 03 00000000000000 feffffffffffffff",
          "01000000 01000000 03 00000000000000 feffffffffffffff 0df0",
          "01 01 03 0000000000 feffffffffffffff", "01 01 03 0000000000 feffffffffffffff 0df0"}},
        {"Real32",
         factory::MakeReal32(1.5f, 9, -2),
         {"v"},
         {"01000000 01000000 84 09fe 00 0000c03f", "01000000 01000000 84 09fe 00 0000c03f 0df0",
          "01 01 84 09fe 000000 0000c03f", "01 01 84 09fe 000000 0000c03f 0df0"}},
        {"Real64",
         factory::MakeReal64(-0.0),
         {"v"},
         {"01000000 01000000 05 00000000000000 0000000000000080",
          "01000000 01000000 05 00000000000000 0000000000000080 0df0",
          "01 01 05 0000000000 0000000000000080", "01 01 05 0000000000 0000000000000080 0df0"}},
        {"String",
         factory::MakeString(L"\u00e4"),
         {"v", "\u00e4"},
         {"01000000 01000000 06 000000 02000000", "01000000 01000000 06 000000 02000000 0df0",
          "01 01 06 02", "01 01 06 02 0df0"}},
        {"StringOfCollation",
         factory::MakeString(L"v", Fold()),
         {"v", "fold"},
         {"01000000 01000000 86 000000 02000000 01000000",
          "01000000 01000000 86 000000 02000000 01000000 0df0", "01 01 86 02 01",
          "01 01 86 02 01 00 0df0"}},
        {"Date",
         factory::MakeDate(LumDateTime::FromValue(0x0102030405060708)),
         {"v"},
         {"01000000 01000000 07 00000000000000 0807060504030201",
          "01000000 01000000 07 00000000000000 0807060504030201 0df0",
          "01 01 07 0000000000 0807060504030201", "01 01 07 0000000000 0807060504030201 0df0"}},
        {"DateTime",
         factory::MakeDateTime(LumDateTime::FromValue(9)),
         {"v"},
         {"01000000 01000000 08 00000000000000 0900000000000000",
          "01000000 01000000 08 00000000000000 0900000000000000 0df0",
          "01 01 08 0000000000 0900000000000000", "01 01 08 0000000000 0900000000000000 0df0"}},
        {"Color",
         factory::MakeColor(0x7F112233),
         {"v"},
         {"01000000 01000000 09 000000 3322117f", "01000000 01000000 09 000000 3322117f 0df0",
          "01 01 09 00 3322117f", "01 01 09 00 3322117f 0df0"}},
        {"Special",
         factory::MakeSpecial(RealType::Get64(), SpecialKind::Null),
         {"v"},
         {"01000000 01000000 45 01", "01000000 01000000 45 01 0df0", "01 01 45 01",
          "01 01 45 01 0df0"}},
        {"SpecialColumn",
         factory::MakeSpecial(ArrayType::Get(BoolType::Get()), SpecialKind::Missing),
         {"v"},
         {"01000000 01000000 4c01 09", "01000000 01000000 4c01 09 00 0df0", "01 01 4c01 09",
          "01 01 4c01 09 00 0df0"}},
        {"Row",
         MakeRow("P{i,s}: 7 x"),
         {"v", "x"},
         {"01000000 01000000 8a020600 06 000000 02000000 07000000 02000000",
          "01000000 01000000 8a020600 06 000000 02000000 07000000 02000000 0df0 0df0",
          "01 01 8a020600 06 02 07000000 02", "01 01 8a020600 06 02 07000000 02 00 0df0 0df0"}},
        {"RowWithSpecials",
         MakeRow("P{i,b,s}: 7 true!Null x"),
         {"v", "x"},
         {"01000000 01000000 8a02010600 0e 0000 03000000 000100 00 02000000 07000000 02000000",
          "01000000 01000000 8a02010600 0e 0000 03000000 000100 00 02000000 07000000 02000000 0df0 "
          "0df0",
          "01 01 8a02010600 0e 03 000100 02 000000 07000000 02",
          "01 01 8a02010600 0e 03 000100 02 000000 07000000 02 00 0df0 0df0"}},
        {"RowOfSpecials",
         MakeRow("P{l,b}: 7!All -"),
         {"v"},
         {"01000000 01000000 8a030100 0e 000000 02000000 0201 0000 00000000",
          "01000000 01000000 8a030100 0e 000000 02000000 0201 0000 00000000 0df0 0df0",
          "01 01 8a030100 0e 02 0201 00", "01 01 8a030100 0e 02 0201 00 00 0df0 0df0"}},
        {"RowOfNone",
         factory::MakeTuple(LumTuple()),
         {"v"},
         {"01000000 01000000 0a 06 0000 00000000",
          "01000000 01000000 0a 06 0000 00000000 0df0 0df0", "01 01 0a 06 00",
          "01 01 0a 06 00 00 0df0 0df0"}},
        {"External",
         MakeBytesValue({0xCA, 0xFE}),
         {"v", "bytes"},
         {"01000000 01000000 8b 000000 02000000 02 000000 02000000 cafe",
          "01000000 01000000 8b 000000 02000000 02 000000 02000000 cafe 0df0 0df0",
          "01 01 8b 02 02 02 cafe", "01 01 8b 02 02 02 cafe 0df0 0df0"}},
        {"Bools",
         ColumnOf("b: true false"),
         {"v"},
         {"01000000 01000000 0c01 01 00 02000000 0100",
          "01000000 01000000 0c01 01 00 02000000 0100 0df0 0df0", "01 01 0c01 01 02 0100",
          "01 01 0c01 01 02 0100 0df0 0df0"}},
        {"Empty",
         ColumnOf("l:", SortSpecOrder::DESC),
         {"v"},
         {"01000000 01000000 0c03 41 00 00000000",
          "01000000 01000000 0c03 41 00 00000000 0df0 0df0", "01 01 0c03 41 00",
          "01 01 0c03 41 00 0df0 0df0"}},
        {"EmptyWithKinds",
         ColumnOf("l!:"),
         {"v"},
         {"01000000 01000000 0c03 09 00 00000000 00000000",
          "01000000 01000000 0c03 09 00 00000000 00000000 0df0 0df0", "01 01 0c03 09 00 00",
          "01 01 0c03 09 00 00 00 0df0 0df0"}},
        {"Int32sWithKinds",
         ColumnOf("i: 1 7!Null", SortSpecOrder::ASC),
         {"v"},
         {"01000000 01000000 0c02 29 00 02000000 01000000 07000000 02000000 0001",
          "01000000 01000000 0c02 29 00 02000000 01000000 07000000 02000000 0001 0df0 0df0",
          "01 01 0c02 29 02 0000 01000000 07000000 02 0001",
          "01 01 0c02 29 02 0000 01000000 07000000 02 0001 00 0df0 0df0"}},
        {"Indexed",
         ColumnOf("i: 1 7!Null 5")->AsArray().WithIndices({2, 1, 2}, SortSpecOrder::ASC),
         {"v"},
         {"01000000 01000000 0c02 29 00 03000000 05000000 07000000 05000000 03000000 000100",
          "01000000 01000000 0c02 29 00 03000000 05000000 07000000 05000000 03000000 000100 00 "
          "0df0 0df0",
          "01 01 0c02 29 03 0000 05000000 07000000 05000000 03 000100",
          "01 01 0c02 29 03 0000 05000000 07000000 05000000 03 000100 0df0 0df0"}},
        {"IndexedWithoutKinds",
         ColumnOf("i: 1 7 5")->AsArray().WithIndices({2, 0}, SortSpecOrder::ASC),
         {"v"},
         {"01000000 01000000 0c02 21 00 02000000 05000000 01000000",
          "01000000 01000000 0c02 21 00 02000000 05000000 01000000 0df0 0df0",
          "01 01 0c02 21 02 0000 05000000 01000000",
          "01 01 0c02 21 02 0000 05000000 01000000 0df0 0df0"}},
        {"Slice",
         ColumnOf("l: 1 7 5")->AsArray().GetRange(1, 2, 1),
         {"v"},
         {"01000000 01000000 0c03 01 00 02000000 0700000000000000 0500000000000000",
          "01000000 01000000 0c03 01 00 02000000 0700000000000000 0500000000000000 0df0 0df0",
          "01 01 0c03 01 02 0000 0700000000000000 0500000000000000",
          "01 01 0c03 01 02 0000 0700000000000000 0500000000000000 0df0 0df0"}},
        {"Real64s",
         ColumnOf("r: 1"),
         {"v"},
         {"01000000 01000000 0c05 01 00 01000000 000000000000f03f",
          "01000000 01000000 0c05 01 00 01000000 000000000000f03f 0df0 0df0",
          "01 01 0c05 01 01 0000 000000000000f03f",
          "01 01 0c05 01 01 0000 000000000000f03f 0df0 0df0"}},
        {"Strings",
         ColumnOf("s: b v b"),
         {"v", "b"},
         {"01000000 01000000 0c06 01 00 03000000 02000000 01000000 02000000",
          "01000000 01000000 0c06 01 00 03000000 02000000 01000000 02000000 0df0 0df0",
          "01 01 0c06 01 03 02 01 02", "01 01 0c06 01 03 02 01 02 00 0df0 0df0"}},
        {"StringsWithKinds",
         ColumnOf("s: b -"),
         {"v", "b", ""},
         {"01000000 01000000 0c06 09 00 02000000 02000000 03000000 02000000 0001",
          "01000000 01000000 0c06 09 00 02000000 02000000 03000000 02000000 0001 0df0 0df0",
          "01 01 0c06 09 02 02 03 02 0001", "01 01 0c06 09 02 02 03 02 0001 00 0df0 0df0"}},
        {"Rows",
         ColumnOf("P{i,b}: (3 -) (4 true)"),
         {"v"},
         {"01000000 01000000 0c8a020100 01 0000 02000000 0e 000000 02000000 0001 0000 01000000 "
          "03000000 06 000000 02000000 04000000 01",
          "01000000 01000000 0c8a020100 01 0000 02000000 0e 000000 02000000 0001 0000 01000000 "
          "03000000 0df0 06 00 02000000 04000000 01 00 0df0 0df0 0df0",
          "01 01 0c8a020100 01 02 0e 02 0001 01 0000 03000000 06 02 0000 04000000 01",
          "01 01 0c8a020100 01 02 0e 02 0001 01 0000 03000000 0df0 06 02 04000000 01 00 0df0 0df0 "
          "0df0"}},
        {"Columns",
         MakeHandles(ArrayType::Get(BoolType::Get()), {ColumnOf("b: true"), ColumnOf("b:")}),
         {"v"},
         {"01000000 01000000 0c0c01 01 02000000 01 000000 01000000 01 01 0000 00000000",
          "01000000 01000000 0c0c01 01 02000000 01 000000 01000000 01 00 0df0 01 000000 00000000 "
          "0df0 0df0 0df0",
          "01 01 0c0c01 01 02 01 01 01 01 00",
          "01 01 0c0c01 01 02 01 01 01 0df0 01 00 0df0 0df0 0df0"}},
        {"Externals",
         MakeHandles(ExternalType::Get(kBytesKindId), {MakeBytesValue({5})}),
         {"v", "bytes"},
         {"01000000 01000000 0c8b 0000 02000000 01 000000 01000000 02 000000 01000000 05",
          "01000000 01000000 0c8b 0000 02000000 01 000000 01000000 02 000000 01000000 05 00 0df0 "
          "0df0 0df0",
          "01 01 0c8b 02 01 01 02 01 05", "01 01 0c8b 02 01 01 02 01 05 0df0 0df0 0df0"}},
        {"Constant",
         factory::MakeConstantArray<RIndirectString>(StringType::Get(), RIndirectString(L"b"),
                                                     1000000),
         {"v", "b"},
         {"01000000 01000000 0c06 04 00 40420f00 02000000",
          "01000000 01000000 0c06 04 00 40420f00 02000000 0df0 0df0", "01 01 0c06 04 c0843d 02",
          "01 01 0c06 04 c0843d 02 00 0df0 0df0"}},
        {"ConstantSpecial",
         factory::MakeConstantArray<unsigned long long>(DateType::Get(), 300,
                                                        SpecialKind::NoAccess),
         {"v"},
         {"01000000 01000000 0c07 0c 00 2c010000 05",
          "01000000 01000000 0c07 0c 00 2c010000 05 00 0df0 0df0", "01 01 0c07 0c ac02 05",
          "01 01 0c07 0c ac02 05 0df0 0df0"}},
        {"ConstantEmpty",
         factory::MakeConstantArray<unsigned int>(IntType::Get32(), 5u, 0),
         {"v"},
         {"01000000 01000000 0c02 04 00 00000000 00000000",
          "01000000 01000000 0c02 04 00 00000000 00000000 0df0 0df0",
          "01 01 0c02 04 00 0000 00000000", "01 01 0c02 04 00 0000 00000000 0df0 0df0"}},
        {"Composite",
         MakeRuns(nullptr, SortSpecOrder::UNKNOWN),
         {"v"},
         {"01000000 01000000 0c01 03 00 02000000 0100 0000 02000000 0001 0000 02000000 03000000 "
          "01000000",
          "01000000 01000000 0c01 03 00 02000000 0100 0000 02000000 0001 0000 02000000 03000000 "
          "01000000 0df0 0df0",
          "01 01 0c01 03 02 0100 02 0001 02 03000000 01000000",
          "01 01 0c01 03 02 0100 02 0001 02 03000000 01000000 0df0 0df0"}},
        {"CompositeWithIndices",
         MakeRuns(std::make_unique<std::vector<unsigned int>>(std::vector<unsigned int>{3, 0}),
                  SortSpecOrder::DESC),
         {"v"},
         {"01000000 01000000 0c01 53 00 02000000 0100 0000 02000000 0001 0000 02000000 03000000 "
          "01000000 02000000 03000000 00000000",
          "01000000 01000000 0c01 53 00 02000000 0100 0000 02000000 0001 0000 02000000 03000000 "
          "01000000 02000000 03000000 00000000 0df0 0df0",
          "01 01 0c01 53 02 0100 02 0001 02 03000000 01000000 02 000000 03000000 00000000",
          "01 01 0c01 53 02 0100 02 0001 02 03000000 01000000 02 000000 03000000 00000000 0df0 "
          "0df0"}},
        {"CompositeOfStrings",
         MakeCompositeArray<RIndirectString>(StringType::Get(),
                                             {{RIndirectString(L"b"), SpecialKind::Normal, 2},
                                              {RIndirectString(L"b"), SpecialKind::Normal, 0}},
                                             nullptr, SortSpecOrder::UNKNOWN),
         {"v", "b"},
         {"01000000 01000000 0c06 03 00 02000000 02000000 02000000 02000000 0000 0000 02000000 "
          "02000000 00000000",
          "01000000 01000000 0c06 03 00 02000000 02000000 02000000 02000000 0000 0000 02000000 "
          "02000000 00000000 0df0 0df0",
          "01 01 0c06 03 02 02 02 02 0000 02 02000000 00000000",
          "01 01 0c06 03 02 02 02 02 0000 02 02000000 00000000 0df0 0df0"}},
        {"Set",
         SetOf("l: -1 !Missing"),
         {"v"},
         {"01000000 01000000 0d03 0d 00 01000000 ffffffffffffffff 01000000 09",
          "01000000 01000000 0d03 0d 00 01000000 ffffffffffffffff 01000000 09 00 0df0 0df0",
          "01 01 0d03 0d 01 0000 ffffffffffffffff 01 09",
          "01 01 0d03 0d 01 0000 ffffffffffffffff 01 09 0df0 0df0"}},
        {"SetOfStrings",
         SetOf("s: b"),
         {"v", "b"},
         {"01000000 01000000 0d06 05 00 01000000 02000000",
          "01000000 01000000 0d06 05 00 01000000 02000000 0df0 0df0", "01 01 0d06 05 01 02",
          "01 01 0d06 05 01 02 00 0df0 0df0"}},
        {"SetOfRows",
         SetOf("P{b}: (true)"),
         {"v"},
         {"01000000 01000000 0d8a0100 05 000000 01000000 06 000000 01000000 01",
          "01000000 01000000 0d8a0100 05 000000 01000000 06 000000 01000000 01 00 0df0 0df0 0df0",
          "01 01 0d8a0100 05 01 06 01 01", "01 01 0d8a0100 05 01 06 01 01 00 0df0 0df0 0df0"}},
        {"KeySet",
         KeySetOf("s: x !Null", "b: true false"),
         {"v", "x"},
         {"01000000 01000000 0e0601 02 01000000 02000000 01 000000 01000000 01 00",
          "01000000 01000000 0e0601 02 01000000 02000000 01 000000 01000000 01 00 0df0 0df0",
          "01 01 0e0601 02 01 02 01 01 01 00", "01 01 0e0601 02 01 02 01 01 01 00 0df0 0df0"}},
        {"KeySetOfInt64",
         KeySetOf("l: 5", "f: 1.5"),
         {"v"},
         {"01000000 01000000 0e0304 01 01000000 0500000000000000 0000c03f",
          "01000000 01000000 0e0304 01 01000000 0500000000000000 0000c03f 0df0 0df0",
          "01 01 0e0304 01 01 00 0500000000000000 0000c03f",
          "01 01 0e0304 01 01 00 0500000000000000 0000c03f 0df0 0df0"}},
        {"KeySetOfRows",
         KeySetOf("P{b}: (false)", "s: x"),
         {"v", "x"},
         {"01000000 01000000 0e8a010006 01 0000 01000000 06 000000 01000000 00 000000 02000000",
          "01000000 01000000 0e8a010006 01 0000 01000000 06 000000 01000000 00 00 0df0 02000000 "
          "0df0 0df0",
          "01 01 0e8a010006 01 01 06 01 00 02",
          "01 01 0e8a010006 01 01 06 01 00 0df0 02 00 0df0 0df0"}},
        {"KeyMap",
         MakeMap(L"n", factory::MakeKeyMap(nullptr)),
         {"v", "n"},
         {"01000000 01000000 0f 000000 01000000 02000000 0f 000000 00000000",
          "01000000 01000000 0f 000000 01000000 02000000 0f 000000 00000000 0df0 0df0 0df0",
          "01 01 0f 01 02 0f 00", "01 01 0f 01 02 0f 00 00 0df0 0df0 0df0"}},
        {"Table",
         MakeTable({{RInternString(L"x"), ColumnOf("i: 5")}},
                   {{RInternString(L"x"), SortSpecOrder::DESC}}),
         {"v", "x"},
         {"01000000 01000000 10 000000 01000000 01 000000 01000000 02000000 01 000000 01000000 "
          "02000000 02000000 0c02 01 00 01000000 05000000",
          "01000000 01000000 10 000000 01000000 01 000000 01000000 02000000 0df0 01 00 01000000 "
          "02000000 0df0 0000 02000000 0c02 01 00 01000000 05000000 0df0 0df0 0df0",
          "01 01 10 01 01 01 02 01 01 000000 02000000 02 0c02 01 01 000000 05000000",
          "01 01 10 01 01 01 02 00 0df0 01 01 02000000 0df0 02 0c02 01 01 00 05000000 0df0 0df0 "
          "0df0"}},
        {"TableEmpty",
         MakeTable({}, {}),
         {"v"},
         {"01000000 01000000 10 000000 00000000 01 000000 00000000 01 000000 00000000",
          "01000000 01000000 10 000000 00000000 01 000000 00000000 0df0 01 00 00000000 0df0 0df0 "
          "0df0",
          "01 01 10 00 01 00 01 00", "01 01 10 00 01 00 0df0 01 00 0df0 0df0 0df0"}},
    };
}

}  // namespace

SV MakeStoreOf(const SV& value) {
    return MakeMap(L"v", value);
}

void ForEachGoldenPayload(
    const std::function<void(const SV&, unsigned int, const std::vector<unsigned char>&)>& check) {
    for (const GoldenValue& golden : GetGoldenValues()) {
        for (unsigned int flags = 0; flags < 4; ++flags) {
            SCOPED_TRACE(golden.name + std::string(" with flags ") + std::to_string(flags));
            const GoldenPayload payload{golden.name, flags, golden.strings, golden.data[flags],
                                        nullptr};
            check(golden.value, flags, payload.GetBytes());
        }
    }
}

}  // namespace lum::test
