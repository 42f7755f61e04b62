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

struct GoldenValue {
    const char* name;
    SV value;
    /// What stands behind its key, in the words of GoldenBytes.
    std::string data;
};

std::vector<GoldenValue> GetGoldenValues() {
    return {
        {"Bool", factory::MakeBool(true), "01 01"},
        {"Int32", factory::MakeInt32(-2), "02 4: feffffff"},
        {"Int64", factory::MakeInt64(-2), "03 8: feffffffffffffff"},
        {"Real32", factory::MakeReal32(1.5f, 9, -2), "84 09fe 4: 0000c03f"},
        {"Real64", factory::MakeReal64(-0.0), "05 8: 0000000000000080"},
        {"String", factory::MakeString(L"\u00e4"), "06 '\u00e4'"},
        {"StringOfCollation", factory::MakeString(L"v", Fold()), "86 'fold' 'v'"},
        {"Date", factory::MakeDate(LumDateTime::FromValue(0x0102030405060708)),
         "07 8: 0807060504030201"},
        {"DateTime", factory::MakeDateTime(LumDateTime::FromValue(9)), "08 8: 0900000000000000"},
        {"Color", factory::MakeColor(0x7F112233), "09 4: 3322117f"},
        {"Special", factory::MakeSpecial(RealType::Get64(), SpecialKind::Null), "45 01"},
        {"SpecialColumn",
         factory::MakeSpecial(ArrayType::Get(BoolType::Get()), SpecialKind::Missing), "4c01 09"},
        {"Row", MakeRow("P{i,s}: 7 x"), "8a020600 06 #2 4: 07000000 'x' ;"},
        {"RowWithSpecials", MakeRow("P{i,b,s}: 7 true!Null x"),
         "8a02010600 0e #3 000100 #2 4: 07000000 'x' ;"},
        {"RowOfSpecials", MakeRow("P{l,b}: 7!All -"), "8a030100 0e #2 0201 #0 ;"},
        {"RowOfNone", factory::MakeTuple(LumTuple()), "0a 06 #0 ;"},
        {"External", MakeBytesValue({0xCA, 0xFE}), "8b 'bytes' 02 #2 cafe ;"},
        {"Bools", ColumnOf("b: true false"), "0c01 01 #2 0100 ;"},
        {"Empty", ColumnOf("l:", SortSpecOrder::DESC), "0c03 41 #0 ;"},
        {"EmptyWithKinds", ColumnOf("l!:"), "0c03 09 #0 #0 ;"},
        {"Int32sWithKinds", ColumnOf("i: 1 7!Null", SortSpecOrder::ASC),
         "0c02 29 #2 4: 01000000 07000000 #2 0001 ;"},
        {"Indexed", ColumnOf("i: 1 7!Null 5")->AsArray().WithIndices({2, 1, 2}, SortSpecOrder::ASC),
         "0c02 29 #3 4: 05000000 07000000 05000000 #3 000100 ;"},
        {"IndexedWithoutKinds",
         ColumnOf("i: 1 7 5")->AsArray().WithIndices({2, 0}, SortSpecOrder::ASC),
         "0c02 21 #2 4: 05000000 01000000 ;"},
        {"Slice", ColumnOf("l: 1 7 5")->AsArray().GetRange(1, 2, 1),
         "0c03 01 #2 8: 0700000000000000 0500000000000000 ;"},
        {"Real64s", ColumnOf("r: 1"), "0c05 01 #1 8: 000000000000f03f ;"},
        {"Strings", ColumnOf("s: b v b"), "0c06 01 #3 'b' 'v' 'b' ;"},
        {"StringsWithKinds", ColumnOf("s: b -"), "0c06 09 #2 'b' '' #2 0001 ;"},
        {"Rows", ColumnOf("P{i,b}: (3 -) (4 true)"),
         "0c8a020100 01 #2 0e #2 0001 #1 4: 03000000 ; 06 #2 4: 04000000 01 ; ;"},
        {"Columns",
         MakeHandles(ArrayType::Get(BoolType::Get()), {ColumnOf("b: true"), ColumnOf("b:")}),
         "0c0c01 01 #2 01 #1 01 ; 01 #0 ; ;"},
        {"Externals", MakeHandles(ExternalType::Get(kBytesKindId), {MakeBytesValue({5})}),
         "0c8b 'bytes' 01 #1 02 #1 05 ; ;"},
        {"Constant",
         factory::MakeConstantArray<RIndirectString>(StringType::Get(), RIndirectString(L"b"),
                                                     1000000),
         "0c06 04 #1000000 'b' ;"},
        {"ConstantSpecial",
         factory::MakeConstantArray<unsigned long long>(DateType::Get(), 4294967295,
                                                        SpecialKind::NoAccess),
         "0c07 0c #4294967295 05 ;"},
        {"ConstantEmpty", factory::MakeConstantArray<unsigned int>(IntType::Get32(), 5u, 0),
         "0c02 04 #0 4: 00000000 ;"},
        {"Composite", MakeRuns(nullptr, SortSpecOrder::UNKNOWN),
         "0c01 03 #2 0100 #2 0001 #2 4: 03000000 01000000 ;"},
        {"CompositeWithIndices",
         MakeRuns(std::make_unique<std::vector<unsigned int>>(std::vector<unsigned int>{3, 0}),
                  SortSpecOrder::DESC),
         "0c01 53 #2 0100 #2 0001 #2 4: 03000000 01000000 #2 4: 03000000 00000000 ;"},
        {"CompositeOfStrings",
         MakeCompositeArray<RIndirectString>(StringType::Get(),
                                             {{RIndirectString(L"b"), SpecialKind::Normal, 2},
                                              {RIndirectString(L"b"), SpecialKind::Normal, 0}},
                                             nullptr, SortSpecOrder::UNKNOWN),
         "0c06 03 #2 'b' 'b' #2 0000 #2 4: 02000000 00000000 ;"},
        {"Set", SetOf("l: -1 !Missing"), "0d03 0d #1 8: ffffffffffffffff #1 09 ;"},
        {"SetOfStrings", SetOf("s: b"), "0d06 05 #1 'b' ;"},
        {"SetOfRows", SetOf("P{b}: (true)"), "0d8a0100 05 #1 06 #1 01 ; ;"},
        {"KeySet", KeySetOf("s: x !Null", "b: true false"), "0e0601 02 #1 'x' 01 #1 01 00 ;"},
        {"KeySetOfInt64", KeySetOf("l: 5", "f: 1.5"),
         "0e0304 01 #1 8: 0500000000000000 0000c03f ;"},
        {"KeySetOfRows", KeySetOf("P{b}: (false)", "s: x"), "0e8a010006 01 #1 06 #1 00 ; 'x' ;"},
        {"KeyMap", MakeMap(L"n", factory::MakeKeyMap(nullptr)), "0f #1 'n' 0f #0 ; ;"},
        {"Table",
         factory::MakeTable(IStoreTable::Columns{{RInternString(L"x"), ColumnOf("i: 5")}},
                            {{RInternString(L"x"), SortSpecOrder::DESC}}),
         "10 #1 01 #1 'x' ; 01 #1 4: 02000000 ; 'x' 0c02 01 #1 4: 05000000 ; ;"},
        {"TableEmpty", factory::MakeTable(IStoreTable::Columns(), {}), "10 #0 01 #0 ; 01 #0 ; ;"},
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
            check(golden.value, flags, GoldenBytes(flags, "#1 'v' " + golden.data + " ;"));
        }
    }
}

}  // namespace lum::test
