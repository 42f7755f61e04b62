// Random stores through JSON and back: as values, by types, and as text.

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/KeySets.h"
#include "tests/support/Random.h"
#include "tests/support/RandomColumns.h"

namespace lum::core {
namespace {

using test::TypeOf;

// Text of any units but zeros, lone surrogates, and what is read otherwise than it is written: a
// bare word with blanks around it, which an end in "!" prevents.
TStringCore MakeText(test::Random& random, std::size_t maxLength) {
    static const TStringCore s_pieces[] = {
        L"a",      L"Null",   L"'",          L"\\", L"\n", L" ",  L"\"", L"\u0001", L"\u007f",
        L"\u00e4", L"\u20ac", L"\U0001F600", L"/",  L"12", L"//", L"{",  L"\ufeff", L"\uffff",
    };
    TStringCore text;
    while (text.length() < maxLength && random.Below(8) != 0) {
        text += random.OneOf(s_pieces);
    }
    const bool hasBlanks = text.contains(L" ") || text.contains(L"\n");
    return hasBlanks ? text + L"!" : text;
}

double MakeReal(test::Random& random) {
    const double reals[] = {-0.0,
                            std::numeric_limits<double>::denorm_min(),
                            std::numeric_limits<double>::max(),
                            -std::numeric_limits<double>::infinity(),
                            1e15,
                            0.1};
    return random.Below(2) == 0 ? random.OneOf(reals) : std::bit_cast<double>(random.Bits());
}

LumDateTime MakeMoment(test::Random& random) {
    const LumDateTime moments[] = {
        LumDateTime(400, 1, 1, 0, 0, 0, 0), LumDateTime(23829, 12, 31, 23, 59, 59, 9999),
        LumDateTime(1582, 10, 15, 0, 0, 0, 1), LumDateTime(2024, 2, 29, 12, 0, 0, 0)};
    return random.OneOf(moments);
}

SV MakeScalar(test::Random& random) {
    const auto special = static_cast<SpecialKind>(1 + random.Below(kSpecialKindCount - 1));
    switch (random.Below(12)) {
        case 0:
            return factory::MakeBool(random.Below(2) != 0);
        case 1:
            return factory::MakeInt32(static_cast<int>(random.Bits()));
        case 2:
            return factory::MakeInt64(std::bit_cast<int64>(random.Bits()));
        case 3:
            return factory::MakeReal32(0.5f, 7, 2);
        case 4:
            return factory::MakeReal64(MakeReal(random));
        case 5:
            return factory::MakeDate(LumDateTime(400, 1, 1, 0, 0, 0, 0));
        case 6:
            return factory::MakeDateTime(MakeMoment(random));
        case 7:
            return factory::MakeColor(static_cast<int>(random.Bits()));
        case 8:
            return factory::MakeSpecial(TypeOf("P{i,s}"), special);
        case 9:
            return factory::MakeSpecial(ArrayType::Get(TypeOf("s")), special);
        case 10:
            return factory::MakeString(MakeText(random, 1000));
        default:
            return factory::MakeString(MakeText(random, 3));
    }
}

// Extremes that the columns of the test support have not.
SV MakeColumn(test::Random& random, lumsize_t count) {
    switch (random.Below(4)) {
        case 0: {
            std::vector<unsigned long long> cells;
            for (lumsize_t i = 0; i < count; ++i) {
                cells.push_back(std::bit_cast<unsigned long long>(MakeReal(random)));
            }
            return factory::MakeArray(TypeOf("r"), std::move(cells), SortSpecOrder::UNORD);
        }
        case 1: {
            std::vector<unsigned long long> cells;
            for (lumsize_t i = 0; i < count; ++i) {
                cells.push_back(MakeMoment(random).GetValue());
            }
            return factory::MakeArray(TypeOf("t"), std::move(cells), SortSpecOrder::UNORD);
        }
        case 2: {
            std::vector<RIndirectString> cells;
            for (lumsize_t i = 0; i < count; ++i) {
                cells.emplace_back(MakeText(random, 20));
            }
            return factory::MakeArray(TypeOf("s"), std::move(cells), SortSpecOrder::UNORD);
        }
        default: {
            const std::vector<const Type*> types = test::GetElementTypes();
            return test::MakeRandomColumn(random, types[random.Below(types.size())], count);
        }
    }
}

SV MakeTable(test::Random& random) {
    std::unordered_map<RInternString, SV> columns;
    const auto rows = static_cast<lumsize_t>(random.Below(4));
    for (std::size_t i = random.Below(4); i > 0; --i) {
        columns.emplace(MakeText(random, 5) + L"x", MakeColumn(random, rows));
    }
    return factory::MakeTable(std::move(columns), {});
}

SV MakeSet(test::Random& random) {
    const char* const types[] = {"b", "i", "l", "r", "s", "d", "t", "c"};
    const auto count = static_cast<lumsize_t>(random.Below(6));
    return test::MakeRandomColumn(random, TypeOf(random.OneOf(types)), count)
        ->AsArray()
        .ToSet(/*includeSpecials=*/true);
}

// Keys of text may hold zeros. Left out are the lowest Int64, which has no text of its own, reals
// that print alike, and rows, whose strings are unescaped twice.
SV MakeKeySet(test::Random& random) {
    test::BoxedEntries entries;
    const Type* const elementType = TypeOf(random.Below(2) == 0 ? "r" : "P{i,s}");
    const auto makeElement = [&]() -> SV {
        if (elementType->Is(StoreType::Real64)) {
            return factory::MakeReal64(MakeReal(random));
        }
        LumTuple row(&elementType->As<TupleType>());
        row.SetNthInt32(0, static_cast<int>(random.Bits()));
        row.SetNthString(1, RIndirectString(MakeText(random, 10)));
        return factory::MakeTuple(std::move(row));
    };
    const char* const keyTypes[] = {"s", "l", "t", "r", "c", "b"};
    const Type* const keyType = TypeOf(random.OneOf(keyTypes));
    for (std::size_t i = random.Below(5); i > 0; --i) {
        SV key;
        switch (keyType->GetStoreType()) {
            case StoreType::String:
                key = factory::MakeString(MakeText(random, 10) + TStringCore(1, u'\0') +
                                          MakeText(random, 3));
                break;
            case StoreType::Int64:
                key = factory::MakeInt64(std::bit_cast<int64>(random.Bits() | 1));
                break;
            case StoreType::DateTime:
                key = factory::MakeDateTime(MakeMoment(random));
                break;
            case StoreType::Real64:
                key = factory::MakeReal64(random.Below(4) == 0 ? -0.0 : 1.5);
                break;
            case StoreType::Color:
                key = factory::MakeColor(static_cast<int>(random.Bits()));
                break;
            default:
                key = factory::MakeBool(random.Below(2) != 0);
        }
        entries.normal.emplace_back(std::move(key), makeElement());
    }
    for (std::size_t i = random.Below(3); i > 0; --i) {
        entries.special.emplace_back(static_cast<SpecialKind>(i), makeElement());
    }
    return test::MakeKeySetOf(keyType, elementType, entries);
}

SV MakeMap(test::Random& random, int depth);

SV MakeValue(test::Random& random, int depth) {
    switch (random.Below(depth == 0 ? 5 : 8)) {
        case 0:
            return MakeColumn(random, static_cast<lumsize_t>(random.Below(5)));
        case 1:
            return MakeSet(random);
        case 2:
            return MakeKeySet(random);
        case 3:
            return MakeTable(random);
        case 4:
            return MakeScalar(random);
        case 5: {
            std::vector<SV> cells;
            for (std::size_t i = random.Below(3); i > 0; --i) {
                cells.push_back(MakeMap(random, 0));
            }
            return factory::MakeArray(KeyMapType::Get({}), std::move(cells), SortSpecOrder::UNORD);
        }
        default:
            return MakeMap(random, depth - 1);
    }
}

SV MakeMap(test::Random& random, int depth) {
    std::unordered_map<RInternString, SV> members;
    for (std::size_t i = random.Below(6); i > 0; --i) {
        members.emplace(MakeText(random, 8) + L"x", MakeValue(random, depth));
    }
    return factory::MakeKeyMap(std::move(members));
}

SV ThroughText(const TStringCore& json) {
    return StoreValueParser::MakeKeyMap(json);
}

// A value as text, without the sign that tells room for kinds: what has no special cell comes back
// without it.
std::string TextOf(const SV& value) {
    std::string text = test::TextOf(value);
    for (std::size_t at = text.find("!:"); at != std::string::npos; at = text.find("!:", at)) {
        text.erase(at, 1);
    }
    return text;
}

// Below a special member of a row the text has no placeholder.
bool HasRows(const StoreValue& value) {
    return SerializeValue(value).contains(L"P{");
}

TEST(JsonRoundTripTest, RandomStores) {
    const test::CollatorPoolGuard pool;
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (int i = 0; i < 2000; ++i) {
        const SV first = MakeMap(random, /*depth=*/2);
        const TStringCore json = SerializeValue(*first);
        const SV second = ThroughText(json);
        ASSERT_EQ(SerializeValue(*second), json);
        ASSERT_EQ(second->GetType(), first->GetType()) << json;
        if (!HasRows(*first)) {
            ASSERT_EQ(TextOf(second), TextOf(first)) << json;
        }
        const auto store = factory::MakeDataStore(second->Clone());
        const TStringCore readable = SerializeDataStore(*store, JsonOptions());
        ASSERT_EQ(SerializeDataStoreCompact(*StoreValueParser::MakeDataStore(readable)), json);
    }
}

// The forms that a column has in memory all have one text, and come back plain.
TEST(JsonRoundTripTest, FormsOfColumns) {
    const test::CollatorPoolGuard pool;
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (const Type* const type : test::GetElementTypes()) {
        const SV column = test::MakeRandomColumn(random, type, 7);
        const SV indexed = column->AsArray().WithIndices({6, 0, 0, 3}, SortSpecOrder::UNORD);
        std::unordered_map<RInternString, SV> members;
        members.emplace(RInternString(L"a"), indexed);
        const TStringCore json = SerializeValue(*factory::MakeKeyMap(std::move(members)));
        const SV read = ThroughText(json)->AsKeyMap().GetValue(L"a");
        EXPECT_EQ(read->GetType(), column->GetType());
        EXPECT_FALSE(read->AsArray().HasIndices());
        if (!type->Is(StoreType::Tuple)) {
            EXPECT_EQ(TextOf(read), TextOf(indexed));
        }
    }
}

}  // namespace
}  // namespace lum::core
