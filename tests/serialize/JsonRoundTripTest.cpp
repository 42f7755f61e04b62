// Random stores through JSON and back: as values, by types, and as text.

#include <gtest/gtest.h>

#include <string>
#include <unordered_map>
#include <utility>

#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/TupleType.h"
#include "tests/serialize/SerializeTest.h"
#include "tests/support/ColumnText.h"
#include "tests/support/KeySets.h"

namespace lum::core {
namespace {

using test::TypeOf;

class JsonRoundTripTest : public test::SerializeTest {
protected:
    test::Random m_random;
};

// A value as text, without the sign that tells room for kinds: what has no special cell comes back
// without it.
std::string TextOf(const SV& value) {
    std::string text = test::TextOf(value);
    for (std::size_t at = text.find("!:"); at != std::string::npos; at = text.find("!:", at)) {
        text.erase(at, 1);
    }
    return text;
}

void ExpectRoundTrip(const SV& first) {
    const TStringCore json = SerializeValue(*first);
    const SV second = StoreValueParser::MakeKeyMap(json);
    ASSERT_EQ(SerializeValue(*second), json);
    ASSERT_EQ(second->GetType(), first->GetType()) << json;
    // Below a special member of a row the text has no placeholder.
    if (!json.contains(L"P{")) {
        ASSERT_EQ(TextOf(second), TextOf(first)) << json;
    }
    const auto store = factory::MakeDataStore(second->Clone());
    const TStringCore readable = SerializeDataStore(*store, JsonOptions());
    ASSERT_EQ(SerializeDataStoreCompact(*StoreValueParser::MakeDataStore(readable)), json);
    const auto throughPayload = test::ReadStore(test::WriteStore(*store));
    ASSERT_EQ(SerializeDataStoreCompact(*throughPayload), json);
}

TEST_F(JsonRoundTripTest, RandomStores) {
    SCOPED_TRACE(m_random.Trace());
    for (int i = 0; i < 2000; ++i) {
        ExpectRoundTrip(test::MakeRandomStore(m_random, /*depth=*/2));
    }
}

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

// In all the places where a text may stand, of which keys may hold zeros.
TEST_F(JsonRoundTripTest, Texts) {
    SCOPED_TRACE(m_random.Trace());
    for (int i = 0; i < 2000; ++i) {
        const TStringCore text = MakeText(m_random, i % 10 == 0 ? 1000 : 20);
        const TStringCore name = MakeText(m_random, 8) + L"x";
        const SV value = factory::MakeString(text);
        LumTuple row(&TypeOf("P{s}")->As<TupleType>());
        row.SetNthString(0, RIndirectString(text));
        test::BoxedEntries entries;
        entries.normal = {{factory::MakeString(name + TStringCore(1, u'\0') + name), value}};
        ExpectRoundTrip(factory::MakeKeyMap(std::unordered_map<RInternString, SV>{
            {name, value},
            {L"column", factory::MakeArray<RIndirectString>(TypeOf("s"), {text, name, text},
                                                            SortSpecOrder::UNORD)},
            {L"entries", test::MakeKeySetOf(TypeOf("s"), TypeOf("s"), entries)},
            {L"deeper", factory::MakeKeyMap({{name, value}})}}));
        ExpectRoundTrip(factory::MakeKeyMap({{L"row", factory::MakeTuple(std::move(row))}}));
    }
}

}  // namespace
}  // namespace lum::core
