#include "lum/core/serialize/StoreValueSerializer.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "lum/core/serialize/FormatPrimitive.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/store/SpecialKindText.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/CollectionTypes.h"
#include "tests/serialize/JsonForms.h"
#include "tests/serialize/SerializeTest.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/RandomColumns.h"

namespace lum::core {
namespace {

using namespace factory;
using test::ColumnOf;
using test::Compact;
using test::JsonCase;
using test::MakeBytesValue;
using test::RowOf;
using test::SetOf;
using test::TypeOf;

constexpr JsonSerializerType kBothForms[] = {JsonSerializerType::Compact,
                                             JsonSerializerType::Readable};

SV MapOf(std::unordered_map<RInternString, SV>&& members) {
    return MakeKeyMap(std::move(members));
}

const Type* BytesType() {
    return ExternalType::Get(test::kBytesKindId);
}

class StoreValueSerializerTest : public test::SerializeTest {};

// The text of a scalar is that of its JSON, without the quotes. For the rest see KeySetJsonTest.
TEST_F(StoreValueSerializerTest, Scalars) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const std::pair<SV, std::string> cases[] = {
        {MakeBool(true), "true"},
        {MakeInt32(std::numeric_limits<int>::min()), "-2147483648"},
        {MakeInt64(std::numeric_limits<long long>::max()), "9223372036854775807"},
        {MakeInt64(std::numeric_limits<long long>::min()), "-9223372036854775808"},
        {MakeReal32(1e9f), "1e+09"},
        {MakeReal32(-std::numeric_limits<float>::quiet_NaN()), "\"nan\""},
        {MakeReal32(-kInfinity), "\"-inf\""},
        {MakeReal64(double{kInfinity}), "\"+inf\""},
        {MakeReal64(-0.0), "-0"},
        {MakeReal64(2.5, 10, 2), "2.5"},
        {MakeString(L"Null and more"), "\"Null and more\""},
        {MakeDate(LumDateTime(2024, 3, 1, 0, 0, 0, 0)), "\"2024-03-01\""},
        {MakeDateTime(LumDateTime::DateTimeMaximum), "\"23829-12-31T23:59:59.9999\""},
        {MakeColor(255, 0, 10, 128), "\"80ff000a\""},
        {MakeSpecial(TypeOf("P{i}"), SpecialKind::ManyValues), "\"ManyValues\""},
    };
    for (const auto& [value, json] : cases) {
        EXPECT_EQ(Compact(value), json);
        EXPECT_EQ(test::Readable(value), json);
        std::string text = json;
        std::erase(text, '"');
        EXPECT_EQ(FormatPrimitive(*value).toStdString(), text);
    }
    EXPECT_EQ(FormatPrimitive(*MakeString(L"'Null'\"\n")).toStdString(), "'Null'\"\n");
    EXPECT_LUM_REPORT(InvalidStoreTypeValue, "Tuple", "",
                      FormatPrimitive(*MakeTuple(RowOf("P{i}: 1"))));
    EXPECT_LUM_REPORT(InvalidStoreTypeValue, "Array", "", FormatPrimitive(*ColumnOf("i: 1")));
    EXPECT_LUM_ERROR(InvalidDateTime, "", FormatPrimitive(*MakeDate(LumDateTime::FromValue(0))));
}

// What a reader would take for a special value or a literal is quoted, and nothing else.
TEST_F(StoreValueSerializerTest, GuardedStrings) {
    const std::pair<std::string, std::string> cases[] = {
        {"", R"("")"},
        {"Null", R"("'Null'")"},
        {"Wildcard", R"("'Wildcard'")"},
        {" Null ", R"("' Null '")"},
        {"Nullable", R"("Nullable")"},
        {"Normal", R"("Normal")"},
        {"nan", R"("nan")"},
        {"it's", R"("it's")"},
        {"'Null'", R"("'\\'Null\\''")"},
        {"'a\\b\nc\"d", R"("'\\'a\\\\b\\nc\"d'")"},
    };
    for (const auto& [text, json] : cases) {
        EXPECT_EQ(Compact(MakeString(TStringCore::fromUtf8(text))), json);
        // A member of a row follows the same rule, on its own and in a column.
        LumTuple row(&TypeOf("P{s}")->As<TupleType>());
        row.SetNthString(0, TStringCore::fromUtf8(text));
        EXPECT_EQ(Compact(MakeTuple(LumTuple(row))), "[" + json + "]");
        EXPECT_EQ(Compact(MakeConstantArray<LumTuple>(row.GetType(), row, 1)), "[[" + json + "]]");
    }
    // Behind a quote, the text ends at a zero.
    EXPECT_EQ(Compact(MakeString(TStringCore(std::u16string{u'\'', u'a', 0, u'b'}))),
              R"("'\\'a'")");
    EXPECT_EQ(Compact(MakeString(TStringCore(std::u16string{u'a', 0, u'b'}))), R"("a\u0000b")");
}

// Where a line breaks, and what stands below a kind. For the rest see ColumnsAreWrittenAsByCalls.
TEST_F(StoreValueSerializerTest, Layouts) {
    const SV nested = MakeArray<SV>(ArrayType::Get(TypeOf("i")),
                                    {ColumnOf("i: 1 2"), ColumnOf("i:"), ColumnOf("i: 3 -")},
                                    SortSpecOrder::UNKNOWN);
    const SV maps = MakeArray<SV>(KeyMapType::Get({}), {MapOf({}), MapOf({{L"a", MakeBool(true)}})},
                                  SortSpecOrder::UNKNOWN);
    const SV bytes = MakeArray<SV>(
        BytesType(),
        {MakeBytesValue({1}), MakeSpecial(BytesType(), SpecialKind::All), MakeBytesValue({2})},
        {0, 1, 2}, {SpecialKind::Normal, SpecialKind::Normal, SpecialKind::Error},
        SortSpecOrder::UNKNOWN);
    // A column may mix rows that go straight into the text with others.
    LumTuple row(TupleType::Get({BytesType(), TypeOf("s"), BytesType()}));
    row.SetNthExternal(0, MakeBytesValue({0xab}));
    row.SetNthString(1, L"Null");
    row.SetNthSpecial(2, SpecialKind::NoAccess);
    const SV rows = MakeArray<LumTuple>(row.GetType(),
                                        {RowOf("P{i}: 1"), row, RowOf("P{i,i}: 2 3"), LumTuple()},
                                        SortSpecOrder::UNKNOWN);
    const JsonCase cases[] = {
        {ColumnOf("i:"), "[]", "[ ]"},
        {ColumnOf("i: 5!All 1 -"), R"([[5,"All"],1,[0,"Null"]])",
         R"([[ 5, "All" ], 1,[ 0, "Null" ] ])"},
        {ColumnOf("s: Null '''x' -"), R"(["Null","'x",["","Null"]])",
         R"([ "Null", "'x",[ "", "Null" ] ])"},
        {ColumnOf("P{i,s}:"), "[]", "[\n\n]"},
        {rows, R"([[1],["ab","'Null'","NoAccess"],[2,3],[]])",
         "[\n    [ 1 ],\n    [ \"ab\", \"'Null'\", \"NoAccess\" ],\n    [ 2, 3 ],\n    [ ]\n]"},
        {MakeTuple(LumTuple(row)), R"(["ab","'Null'","NoAccess"])",
         R"([ "ab", "'Null'", "NoAccess" ])"},
        {nested, R"([[1,2],[],[3,[0,"Null"]]])",
         "[\n    [ 1, 2 ],\n    [ ],\n    [ 3,[ 0, \"Null\" ] ]\n]"},
        {maps, R"([{},{"a:b":true}])",
         "[\n    {\n\n    },\n    {\n        \"a:b\": true\n    }\n]"},
        {bytes, R"(["01","All",["02","Error"]])", R"([ "01", "All",[ "02", "Error" ] ])"},
        // Constants appear flat, with no trace of how they are kept.
        {MakeConstantArray<unsigned int>(TypeOf("i"), 7u, 0), "[]", "[ ]"},
        {MakeConstantArray<SV>(BytesType(), MakeBytesValue({1}), 2), R"(["01","01"])",
         R"([ "01", "01" ])"},
        {SetOf("P{i,s}: (2 a) (1 b) (1 a)"), R"([[1,"a"],[1,"b"],[2,"a"]])",
         "[\n    [ 1, \"a\" ],\n    [ 1, \"b\" ],\n    [ 2, \"a\" ]\n]"},
        {SetOf("i: 2 1 !Missing -"), R"([[1,2],["Null","Missing"]])",
         R"([[ 1, 2 ],[ "Null", "Missing" ] ])"},
        {SetOf("s: -"), R"([[],["Null"]])", R"([[ ],[ "Null" ] ])"},
    };
    test::ExpectJson(cases);
}

template <typename T>
SV SetOfValues(const Type* elementType, std::vector<T> values) {
    return MakeSet<T>(elementType, std::make_unique<SetContainer<T>>(values.begin(), values.end()),
                      nullptr);
}

TEST_F(StoreValueSerializerTest, SetsAreSorted) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<unsigned long long> reals;
    for (const double real : {nan, 2.0, -nan, -0.0, 0.0, -1e300}) {
        reals.push_back(std::bit_cast<unsigned long long>(real));
    }
    const std::pair<SV, std::string> cases[] = {
        {SetOfValues<unsigned long long>(TypeOf("r"), reals),
         R"([-1.0000000000000001e+300,-0,0,2,"nan","nan"])"},
        // By the signed number, in which opaque colours are negative.
        {SetOf("c: 00000001 ffff0000 7fffffff"), R"(["ffff0000","00000001","7fffffff"])"},
        {SetOfValues<SV>(BytesType(),
                         {MakeBytesValue({3}), MakeBytesValue({1}), MakeBytesValue({2})}),
         R"(["01","02","03"])"},
    };
    for (const auto& [set, json] : cases) {
        EXPECT_EQ(Compact(set), json);
    }
}

TEST_F(StoreValueSerializerTest, StoresByOptions) {
    const auto store = MakeDataStore(std::unordered_map<RInternString, SV>{
        {L"b", MapOf({{L"two words", MakeInt32(1)}, {L"Z", MakeColor(0, 0, 1, 128)}})},
        {L"a", ColumnOf("c: ffff0000 -")},
        {L"10", MakeSpecial(TypeOf("r"), SpecialKind::Null)},
        {L"9", MapOf({})}});
    const std::string compact =
        R"({"10:r":"Null","9:M":{},"a:A<c>":["ffff0000",["00000000","Null"]],)"
        R"("b:M{ Z:c, 'two words':i }":{"Z:c":"80000001","'two words':i":1}})";
    const std::string readable =
        "{\n"
        "    \"10:r\": \"Null\",\n"
        "    \"9:M\": {\n"
        "\n"
        "    },\n"
        "    \"a:A<c>\": [ \"ffff0000\",[ \"00000000\", \"Null\" ] ],\n"
        "    \"b:M{ Z:c, 'two words':i }\": {\n"
        "        \"Z:c\": \"80000001\",\n"
        "        \"'two words':i\": 1\n"
        "    }\n"
        "}";
    EXPECT_EQ(SerializeDataStoreCompact(*store).toStdString(), compact);
    EXPECT_EQ(SerializeDataStore(*store, JsonOptions()).toStdString(), readable);
    EXPECT_EQ(SerializeDataStore(*store, JsonOptions::SlimWebFormat()).toStdString(),
              R"({"10":"Null","9":{},"a":[-65536,[0,"Null"]],)"
              R"("b":{"Z":-2147483647,"two words":1}})");
    JsonSerializer serializer;
    SerializeDataStore(serializer, *store);
    EXPECT_EQ(serializer.Build().toStdString(), compact);

    JsonOptions options;
    options.compact = true;
    options.colorsAsIntegers = true;
    const auto colors = MakeDataStore(std::unordered_map<RInternString, SV>{
        {L"s", SetOf("c: 00000001 ffff0000")}, {L"t", MakeTuple(RowOf("P{c}: 00000010"))}});
    EXPECT_EQ(SerializeDataStore(*colors, options).toStdString(),
              R"({"s:S<c>":[-65536,1],"t:P{ c }":[16]})");
}

template <typename T>
void WritePlainArray(JsonSerializer& serializer, const StoreValue& value);

// The plain way: a call of the writer for each item, and a boxed value for each element.
void WritePlain(JsonSerializer& serializer, const SV& value, bool isElement) {
    const StoreType type = value->GetStoreType();
    if (value->IsSpecial()) {
        serializer.AppendString(SpecialKindToString(value->GetSpecialKind()));
    } else if (type == StoreType::Array) {
        DispatchStorage(value->AsArray().GetElementType()->GetStoreType(),
                        [&]<typename T>(StorageTag<T>) { WritePlainArray<T>(serializer, *value); });
    } else if (type == StoreType::Tuple) {
        const LumTuple& row = value->AsTuple();
        serializer.BeginArray(false);
        for (lumsize_t i = 0; i < row.GetCount(); ++i) {
            WritePlain(serializer, FetchStoreValueFromTuple(row, i), /*isElement=*/false);
        }
        serializer.EndArray();
    } else if (type == StoreType::String && !isElement) {
        serializer.AppendUnquotedString(SerializeValue(*value));
    } else {
        // Truth values and numbers stand as they are, but for those that JSON has no text for.
        const TStringCore text = FormatPrimitive(*value);
        if (type <= StoreType::Real64 && !text.contains(L"n")) {
            serializer.AppendUnquotedString(text);
        } else {
            serializer.AppendString(text);
        }
    }
}

template <typename T>
void WritePlainArray(JsonSerializer& serializer, const StoreValue& value) {
    const Type* const elementType = value.AsArray().GetElementType();
    const test::Cells<T> cells = test::CellsOf<T>(value);
    serializer.BeginArray(IsCollectionStoreType(elementType->GetStoreType()));
    for (std::size_t i = 0; i < cells.values.size(); ++i) {
        const SV element = MakeStoreValueFromStorageType<T>(elementType, cells.values[i]);
        const SpecialKind kind = cells.GetKind(i);
        if (kind == SpecialKind::Normal) {
            WritePlain(serializer, element, /*isElement=*/true);
        } else {
            serializer.BeginArray(false);
            WritePlain(serializer, element, /*isElement=*/true);
            serializer.AppendString(SpecialKindToString(kind));
            serializer.EndArray();
        }
    }
    serializer.EndArray();
}

void ExpectPlainText(const SV& column) {
    for (const JsonSerializerType form : kBothForms) {
        JsonSerializer plain(form);
        WritePlain(plain, column, /*isElement=*/false);
        test::ForEachForm(column, [&](const SV& inForm) {
            JsonSerializer serializer(form);
            SerializeValue(serializer, *inForm);
            EXPECT_EQ(serializer.Build(), plain.Build());
        });
    }
}

// Cells of all lengths, and short at first: the memory for a column is planned after its first
// cells, which must not show in the text.
template <typename T>
T MakeWildCell(test::Random& random, const Type* type) {
    if constexpr (std::is_same_v<T, RIndirectString>) {
        const char16_t units[] = {u'a', u'b', u' ', u'"', u'\\', u'\n', 0x20ac, 0xd800};
        const std::size_t length = random.Below(12) == 0 ? random.Below(3000) : random.Below(20);
        const bool isPlain = random.Below(3) != 0;
        TStringCore text;
        for (std::size_t i = 0; i < length; ++i) {
            text += isPlain ? u'x' : random.OneOf(units);
        }
        return text;
    } else if constexpr (std::is_same_v<T, LumTuple>) {
        return test::MakeRandomRow(random, &type->As<TupleType>());
    } else if constexpr (std::is_same_v<T, SV>) {
        return test::MakeRandomColumn(random, type->As<ArrayType>().GetElementType(), 5);
    } else if (type->Is(StoreType::Date) || type->Is(StoreType::DateTime)) {
        const unsigned long long first = LumDateTime::DateTimeMinimum.GetValue();
        const unsigned long long range = LumDateTime::DateTimeMaximum.GetValue() - first + 1;
        const unsigned long long steps[] = {1, 10000, LumDateTime::kTicksPerDay};
        const unsigned long long step = random.OneOf(steps);
        return static_cast<T>(first + random.Bits() % range / step * step);
    } else {
        return static_cast<T>(random.Bits() >> random.Below(64));  // Fewer bits, shorter numbers.
    }
}

TEST_F(StoreValueSerializerTest, ColumnsAreWrittenAsByCalls) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (const Type* const type : test::GetElementTypes()) {
        SCOPED_TRACE(type->ToString().toStdString());
        for (const lumsize_t count : {0u, 1u, 1u, 2u, 2u, 3u, 3u, 30u, 30u}) {
            ExpectPlainText(test::MakeRandomColumn(random, type, count));
        }
        ExpectPlainText(DispatchStorage(type->GetStoreType(), [&]<typename T>(StorageTag<T>) {
            std::vector<T> cells(600, MakeWildCell<T>(random, type));
            while (cells.size() < 2500) {
                cells.push_back(MakeWildCell<T>(random, type));
            }
            return MakeArray<T>(type, std::move(cells), SortSpecOrder::UNKNOWN);
        }));
    }
}

// One text a column: its memory grows with the text, and nothing is made for a cell.
TEST_F(StoreValueSerializerTest, CellsAllocateNothing) {
    constexpr lumsize_t kCount = 20000;
    const auto repeat = []<typename T>(const char* type, const T& cell) {
        return MakeArray<T>(TypeOf(type), std::vector<T>(kCount, cell), SortSpecOrder::UNKNOWN);
    };
    const SV columns[] = {
        repeat("i", 7u),
        repeat("t", LumDateTime(2024, 3, 1, 9, 5, 0, 1).GetValue()),
        repeat("s", RIndirectString(L"neither short nor \"plain\"")),
        repeat("P{i,s,t}", RowOf("P{i,s,t}: 1 'a member' 2024-03-01")),
    };
    for (const SV& column : columns) {
        for (const JsonSerializerType form : kBothForms) {
            JsonSerializer serializer(form);
            const test::AllocationCounter allocations;
            SerializeValue(serializer, *column);
            const std::size_t count = allocations.GetCount();
            EXPECT_LT(count, 30u) << column->GetType()->ToString();
        }
    }
}

// Below a special kind there may be any number; elsewhere a date that is none fails.
TEST_F(StoreValueSerializerTest, DatesOutOfRange) {
    const unsigned long long day = LumDateTime(2024, 3, 1, 0, 0, 0, 0).GetValue();
    const auto makeColumn = [day](SpecialKind kind) {
        return MakeArray<unsigned long long>(TypeOf("d"), {0, day}, {0, 1},
                                             {kind, SpecialKind::All}, SortSpecOrder::UNKNOWN);
    };
    EXPECT_EQ(Compact(makeColumn(SpecialKind::Null)),
              R"([["1900-01-01","Null"],["2024-03-01","All"]])");
    EXPECT_LUM_ERROR(InvalidDateTime, "", Compact(makeColumn(SpecialKind::Normal)));
}

// A set that says it has special elements, as none of ours can beside rows.
class SpecialRows final : public StoreValue, public IUniformCollection {
public:
    explicit SpecialRows(const Type* type) : m_type(type) {}
    const Type* GetType() const override { return m_type; }
    lumsize_t GetCount() const override { return 1; }
    std::unique_ptr<StoreValue> Clone() const override { return nullptr; }
    const IUniformCollection& AsUniformCollection() const override { return *this; }
    const Type* GetElementType() const override { return TypeOf("P{i}"); }
    bool IsConstant() const override { return false; }
    bool HasSpecialValues() const override { return true; }
    const StoreValueIterable& GetStoreValueIterable() const override {
        throw std::logic_error("nothing is to be walked");
    }

private:
    const Type* m_type;
};

TEST_F(StoreValueSerializerTest, Failures) {
    const Type* const rowType = TypeOf("P{i}");
    EXPECT_LUM_REPORT(TupleSetSpecials, "", "!(values.HasSpecialValues())",
                      SerializeValue(SpecialRows(SetType::Get(rowType))));
    EXPECT_LUM_REPORT(CollectionArraySpecials, "", "!(values.HasSpecialValues())",
                      Compact(MakeConstantArray<LumTuple>(rowType, 1, SpecialKind::Null)));
    for (const SV& withNull :
         {MakeArray<SV>(BytesType(), {MakeBytesValue({1}), nullptr}, SortSpecOrder::UNKNOWN),
          MakeConstantArray<SV>(BytesType(), 1, SpecialKind::Null),
          MakeTuple(LumTuple(TupleType::Get({BytesType()})))}) {
        EXPECT_LUM_REPORT(NullSerializedValue, "", "(value) != nullptr", Compact(withNull));
    }
    EXPECT_LUM_ERROR(
        OutOfBounds, "",
        Compact(MakeArray<unsigned int>(TypeOf("i"), {1u, 2u}, {0u, 2u}, SortSpecOrder::UNKNOWN)));
    EXPECT_LUM_ERROR(
        IllegalSpecialKind, "",
        Compact(MakeArray<unsigned char>(TypeOf("b"), {1}, {0}, {static_cast<SpecialKind>(10)},
                                         SortSpecOrder::UNKNOWN)));
    // Values that are not of the element type.
    EXPECT_LUM_ERROR(NotTypedArray, "",
                     Compact(MakeArray<SV>(TypeOf("i"), {MakeInt32(1)}, SortSpecOrder::UNKNOWN)));

    JsonSerializer full;
    full.AppendUnquotedString(L"1");
    EXPECT_LUM_ERROR(SecondRootItem, "", SerializeValue(full, *MakeInt32(2)));
}

}  // namespace
}  // namespace lum::core
