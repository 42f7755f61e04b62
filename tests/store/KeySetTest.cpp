#include <gtest/gtest.h>

#include <bit>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "core/main/store/UnorderedMapUtil.h"
#include "lum/core/serialize/FormatPrimitive.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/KeySetAdapter.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/KeySets.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

using factory::MakeKeySet;
using test::BoxedEntries;
using test::ColumnOf;
using test::HandleSides;
using test::KeySetOf;
using test::StoredKeySet;
using test::TextOf;
using test::TypeOf;

class KeySetTest : public testing::Test {
    const test::CollatorPoolGuard m_pool{std::make_shared<test::FoldingCollatorPool>()};
};

template <typename K, typename V>
auto Values(const Type* keyType) {
    return MakeMapContainer<K, V>(keyType, 0);
}

template <typename V>
auto Specials() {
    return std::make_unique<MapContainer<SpecialKind, V>>();
}

TEST_F(KeySetTest, ConstructionChecks) {
    const Collation root;
    const Collation fold(RInternString(L"fold"));
    const Type* const i = IntType::Get32();
    const Type* const l = IntType::Get64();
    const Type* const s = StringType::Get();
    const auto ints = [&] { return Values<unsigned, unsigned>(i); };
    const auto texts = [](const Collation& hashed, const Collation& compared) {
        return std::make_unique<MapContainer<RIndirectString, SV>>(0, CollatorHash(hashed),
                                                                   CollatorEqualTo(compared));
    };
    const char kKey[] = "(StorageTypeTraits<StorageK>::IsMatchingType(m_type->GetKeyType()))";
    const char kElement[] =
        "(StorageTypeTraits<StorageV>::IsMatchingType(m_type->GetElementType()))";
    // In the order in which they are made.
    EXPECT_LUM_REPORT(IllegalKeyType, "", "(keyType) != nullptr",
                      MakeKeySet<unsigned, SV>(nullptr, nullptr, nullptr, nullptr));
    EXPECT_LUM_REPORT(NullArray, "", "(m_values) != nullptr",
                      MakeKeySet<unsigned, unsigned>(l, l, nullptr, nullptr));
    EXPECT_LUM_REPORT(NullSpecials, "", "(m_specials) != nullptr",
                      MakeKeySet<unsigned, unsigned>(l, l, ints(), nullptr));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kKey,
                      MakeKeySet<unsigned, unsigned>(l, l, ints(), Specials<unsigned>()));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kKey,
                      MakeKeySet<RIndirectString, SV>(i, i, texts(root, root), Specials<SV>()));
    EXPECT_LUM_REPORT(
        TypeMismatchExpected, "", kElement,
        MakeKeySet<RIndirectString, unsigned>(
            StringType::Get(fold), l, Values<RIndirectString, unsigned>(s), Specials<unsigned>()));
    EXPECT_LUM_REPORT(CollationMismatch, "", "(c == set.hash_function().GetCollation())",
                      MakeKeySet<RIndirectString, SV>(s, i, texts(fold, root), Specials<SV>()));
    EXPECT_LUM_REPORT(CollationMismatch, "", "(c == set.key_eq().GetCollation())",
                      MakeKeySet<RIndirectString, SV>(s, i, texts(root, fold), Specials<SV>()));
}

TEST_F(KeySetTest, ContainersAreTakenOver) {
    auto values = Values<unsigned, unsigned>(IntType::Get32());
    const unsigned* const one = &values->emplace(1, 7).first->second;
    const SV value = MakeKeySet<unsigned, unsigned>(IntType::Get32(), IntType::Get32(),
                                                    std::move(values), Specials<unsigned>());
    const SV clone = value->Clone();
    const auto& keySet = clone->AsDictionary<unsigned, unsigned>();
    EXPECT_EQ(&keySet.GetValue(1), one);
    EXPECT_EQ(TextOf(KeySetOf("i: 1 -", "s: one none")), "K<i,s<ROOT>>: !Null=none 1=one");
}

// Each storage as keys and as elements
// -------------------------------------------------------------

// Cells that differ as keys, and one that is no key.
struct Side {
    const char* type;
    const char* cells;
    const char* absent;
    bool isHandle = false;
};
const Side kSides[] = {
    {"b", "true", "false"},
    {"i", "-7 0 5 2147483647", "6"},
    {"f", "-1.5 -0 0 nan", "1.5"},
    {"c", "ff000000 00000000 0000ff00", "00000001"},
    {"l", "-7 0 5 9223372036854775807", "6"},
    {"r", "-1.5 -0 0 nan", "1.5"},
    {"d", "1999-12-31 2024-03-01", "2024-03-02"},
    {"t", "2024-03-01 2024-03-01T09:05:00.2500", "2024-03-01T09:05:00"},
    {"s", "'' A a 'longer than a handle'", "b"},
    {"P{i,s}", "(1 a) (1!Null a) (1 b) (2!Null '')", "(1 A)"},
    {"i", "-7 0 5 9", "6", true},
};

std::vector<SV> CellsOf(const Side& side, const char* cells) {
    const SV column = ColumnOf(std::string(side.type) + ": " + cells);
    const auto& iterable = column->AsArray().GetStoreValueIterable();
    std::vector<SV> boxed;
    for (auto it = iterable.begin()->Clone(); *it != iterable.end(); it->Advance()) {
        boxed.push_back(it->Dereference());
    }
    return boxed;
}

void CheckTexts(const SV& value, const Side& side, const BoxedEntries& model) {
    const IStoreCollection& collection = value->AsCollection();
    const bool isRow = side.type[0] == 'P';
    const bool hasText = !side.isHandle && !isRow;
    for (const auto& [key, element] : model.normal) {
        const RInternString text = isRow ? TStringCore(L"[1,'a']") : FormatPrimitive(*key);
        SCOPED_TRACE(text.GetValue().toStdString());
        EXPECT_EQ(collection.HasKey(text), hasText);
        EXPECT_EQ(TextOf(collection.TryGetValue(text)), hasText ? TextOf(element) : "null");
        if (hasText) {
            EXPECT_EQ(TextOf(collection.GetValue(text)), TextOf(element));
        } else {
            EXPECT_LUM_REPORT(NotImplemented, "", "", collection.GetValue(text));
        }
    }
    if (hasText) {
        const RInternString text = FormatPrimitive(*CellsOf(side, side.absent)[0]);
        EXPECT_FALSE(collection.HasKey(text));
        EXPECT_EQ(collection.TryGetValue(text), nullptr);
        EXPECT_NO_SUCH_KEY(collection.GetValue(text));
    }
    EXPECT_FALSE(collection.HasKey(L"Null"));  // There is no text for a special key.
}

// Each element once, in the order of the entries.
void CheckWalk(const SV& value, const Type* elementType,
               const std::vector<std::pair<std::string, std::string>>& entries) {
    const IUniformCollection& uniform = value->AsUniformCollection();
    EXPECT_EQ(uniform.GetType(), value->GetType());
    EXPECT_EQ(uniform.GetElementType(), elementType);
    EXPECT_EQ(uniform.GetCount(), entries.size());
    EXPECT_FALSE(uniform.IsConstant() || uniform.HasSpecialValues());
    const auto& iterable = uniform.GetStoreValueIterable();
    const auto it = iterable.begin()->Clone();
    for (const auto& [key, element] : entries) {
        ASSERT_TRUE(*it != iterable.end());
        EXPECT_EQ(it->Dereference()->GetType(), elementType);
        EXPECT_EQ(TextOf(it->Dereference()), element);
        it->Advance();
    }
    EXPECT_FALSE(*it != iterable.end());
}

// What a key set answers to typed keys, in text.
struct Answers {
    std::tuple<const Type*, lumsize_t, lumsize_t, bool> facts;  // Key type, counts, special keys.
    std::map<std::string, std::string> reads;
    std::vector<std::pair<std::string, std::string>> entries;
};

// The one place that is made for each pair of storages.
template <StorageType K, StorageType V>
Answers AnswersOf(const SV& value, const std::vector<SV>& keys) {
    const auto& keySet = value->AsDictionary<K, V>();
    const auto textOf = [&](const V& element) {
        const Type* const type = value->AsUniformCollection().GetElementType();
        return TextOf(MakeStoreValueFromStorageType<V>(type, element));
    };
    Answers answers{{keySet.GetKeyType(), keySet.GetCount(), keySet.GetSpecialKeyCount(),
                     keySet.HasSpecialKeys()},
                    {},
                    {}};
    for (const SV& boxed : keys) {
        const K key = FetchStoreValue<K>(boxed);
        if (keySet.HasKey(key)) {
            answers.reads[TextOf(boxed)] = textOf(keySet.GetValue(key));
        } else {
            EXPECT_NO_SUCH_KEY(keySet.GetValue(key));
        }
    }
    for (const SpecialKind kind : {SpecialKind::Null, SpecialKind::All, SpecialKind::Missing}) {
        if (keySet.HasSpecialKey(kind)) {
            answers.reads[TextOf(kind)] = textOf(keySet.GetValueForSpecialKey(kind));
        } else {
            EXPECT_NO_SUCH_KEY(keySet.GetValueForSpecialKey(kind));
        }
    }
    for (const auto& [key, element] : keySet.GetEntries()) {
        const SV boxed = MakeStoreValueFromStorageType<K>(keySet.GetKeyType(), key);
        answers.entries.emplace_back(TextOf(boxed), textOf(element));
    }
    for (const auto& [kind, element] : keySet.GetSpecialEntries()) {
        answers.entries.emplace_back(TextOf(kind), textOf(element));
    }
    return answers;
}

void CheckPair(const Side& keySide, const Side& elementSide,
               Answers (*answersOf)(const SV&, const std::vector<SV>&)) {
    SCOPED_TRACE(testing::Message() << keySide.type << " to " << elementSide.type);
    const Type* const keyType = TypeOf(keySide.type);
    const Type* const elementType = TypeOf(elementSide.type);
    std::vector<SV> keys = CellsOf(keySide, keySide.cells);
    const std::vector<SV> elements = CellsOf(elementSide, elementSide.cells);
    BoxedEntries model;
    std::map<std::string, std::string> expected;
    for (const SV& key : keys) {
        model.normal.emplace_back(key, elements[model.normal.size() % elements.size()]);
        expected[TextOf(key)] = TextOf(model.normal.back().second);
    }
    keys.push_back(CellsOf(keySide, keySide.absent)[0]);
    for (const bool hasSpecialKeys : {false, true}) {
        if (hasSpecialKeys) {
            model.special = {{SpecialKind::Null, elements.back()}, {SpecialKind::All, elements[0]}};
            expected["!Null"] = TextOf(elements.back());
            expected["!All"] = TextOf(elements[0]);
        }
        const HandleSides handles = keySide.isHandle       ? HandleSides::Keys
                                    : elementSide.isHandle ? HandleSides::Elements
                                                           : HandleSides::None;
        const SV value = test::MakeKeySetOf(keyType, elementType, model, handles)->Clone();
        const Answers answers = answersOf(value, keys);
        EXPECT_EQ(value->GetType(), KeySetType::Get(keyType, elementType));
        EXPECT_EQ(answers.facts,
                  std::tuple(keyType, expected.size(), model.special.size(), hasSpecialKeys));
        EXPECT_EQ(answers.reads, expected);
        EXPECT_EQ(answers.entries.size(), expected.size());
        EXPECT_EQ(std::map(answers.entries.begin(), answers.entries.end()), expected);
        CheckWalk(value, elementType, answers.entries);
        CheckTexts(value, keySide, model);
    }
}

TEST_F(KeySetTest, AnswersAsItsEntries) {
    const Side& ints = kSides[1];
    for (const Side& side : kSides) {
        const StoreType storage =
            side.isHandle ? StoreType::Array : TypeOf(side.type)->GetStoreType();
        DispatchStorage(storage, [&]<typename T>(StorageTag<T>) {
            CheckPair(side, ints, AnswersOf<T, unsigned>);
            CheckPair(ints, side, AnswersOf<unsigned, T>);
        });
    }
    EXPECT_LUM_ERROR(ExpectedKeyMap, "KeySet", KeySetOf("i: 1", "s: a")->AsKeyMap());
}

// In key sets, and in sets, whose members are their keys: the reader's own failure, or the plain
// answer that there is no such key.
TEST_F(KeySetTest, TextsThatAreNoKeys) {
    const struct {
        const char* keys;
        const wchar_t* text;
        LumError error;
    } cases[] = {
        {"b: true", L"1", LumError::CannotParseBool},
        {"i: 5", L"5 5", LumError::CannotParseInt32},
        {"l: 5", L"5.5", LumError::CannotParseInt64},
        {"f: 5", L"", LumError::CannotParseReal32},
        {"r: 5", L"0x5", LumError::CannotParseReal64},
        {"d: 2024-03-01", L"2024-03", LumError::CannotParseDateTime},
        {"t: 2024-03-01", L"today", LumError::CannotParseDateTime},
        {"c: 000000ff", L"0000000ff", LumError::LongHexString},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.keys) + " asked for " + TStringCore(c.text).toStdString());
        for (const SV& value : {KeySetOf(c.keys, "i: 1"), test::SetOf(c.keys)}) {
            const IStoreCollection& collection = value->AsCollection();
            EXPECT_TRUE(test::FailsAs({c.error, ""}, [&] { collection.GetValue(c.text); }));
            const test::LogCapture log;
            EXPECT_EQ(collection.TryGetValue(c.text), nullptr);
            EXPECT_EQ(collection.HasKey(c.text), value->GetStoreType() == StoreType::Set);
            EXPECT_TRUE(log.GetLines().empty());
        }
    }
    // Strings are taken as they stand.
    const SV strings = KeySetOf("s: '''q'''", "i: 1");
    EXPECT_EQ(TextOf(strings->AsCollection().GetValue(L"'q'")), "1");
    EXPECT_FALSE(strings->AsCollection().HasKey(L"q"));
}

// Keys that are one, and keys that are two --------------------------------------------------------

TEST_F(KeySetTest, StringsAreKeysUnderTheirCollation) {
    const Type* const fold = StringType::Get(Collation(RInternString(L"fold")));
    const SV keys =
        factory::MakeArray<RIndirectString>(fold, {L"a", L"A", L"b"}, SortSpecOrder::UNKNOWN);
    const SV folding = KeySetOf(keys, ColumnOf("s: a A b"));
    const auto& keySet = folding->AsDictionary<RIndirectString, RIndirectString>();
    EXPECT_EQ(keySet.GetCount(), 2u);
    EXPECT_EQ(TextOf(folding->AsCollection().GetValue(L"B")), "b");
    EXPECT_EQ(keySet.GetValue(L"A"), RIndirectString(L"a"));

    // The collators were found when the container was made.
    const test::CollatorPoolGuard noPool(nullptr);
    EXPECT_TRUE(keySet.HasKey(L"B"));
}

TEST_F(KeySetTest, HandlesAreKeysByTheirValues) {
    const SV value = StoredKeySet<SV, unsigned char>(
        IntType::Get32(), BoolType::Get(),
        {{factory::MakeInt32(5), 1}, {factory::MakeInt32(5), 0}, {factory::MakeInt64(5), 0}});
    const auto& keySet = value->AsDictionary<SV, unsigned char>();
    EXPECT_EQ(keySet.GetCount(), 2u);
    EXPECT_EQ(keySet.GetValue(factory::MakeInt32(5)), 1);
    EXPECT_EQ(keySet.GetValue(factory::MakeInt64(5)), 0);
    EXPECT_FALSE(keySet.HasKey(nullptr));
}

// Special keys may be what a container from outside brought along.
TEST_F(KeySetTest, AnyKindMayBeASpecialKey) {
    const SpecialKind unknown = static_cast<SpecialKind>(200);
    const SV value = StoredKeySet<unsigned, unsigned>(IntType::Get32(), IntType::Get32(), {},
                                                      {{SpecialKind::Normal, 1}, {unknown, 2}});
    const auto& keySet = value->AsDictionary<unsigned, unsigned>();
    EXPECT_EQ(keySet.GetValueForSpecialKey(SpecialKind::Normal), 1u);
    EXPECT_EQ(keySet.GetValueForSpecialKey(unknown), 2u);
    EXPECT_FALSE(keySet.HasSpecialKey(SpecialKind::Null));
}

// Walks -------------------------------------------------------------------------------------------

TEST_F(KeySetTest, HandlesAreGivenAsTheyAre) {
    const SV value = StoredKeySet<unsigned, SV>(IntType::Get32(), IntType::Get32(), {{1, nullptr}});
    EXPECT_EQ(value->AsUniformCollection().GetStoreValueIterable().begin()->Dereference(), nullptr);
    EXPECT_TRUE(value->AsCollection().HasKey(L"1"));
    EXPECT_EQ(value->AsCollection().GetValue(L"1"), nullptr);
}

TEST_F(KeySetTest, AdaptersReadElementTypes) {
    const KeySetAdapter<LumDateTime, double> dates(KeySetOf("d: 2024-03-01 -", "r: -0.5 7"));
    std::vector<std::pair<LumDateTime, double>> found;
    for (const auto& [key, value] : dates) {
        found.emplace_back(key, value);
    }
    EXPECT_EQ(found, (decltype(found){{LumDateTime(2024, 3, 1, 0, 0, 0, 0), -0.5}}));
    const auto special = dates.GetSpecialEntries();
    EXPECT_EQ(special.GetKey(), SpecialKind::Null);
    EXPECT_EQ(special.GetValue(), 7.0);
    EXPECT_TRUE(dates.GetKeySet().HasSpecialKeys());
    // Storage types are their own element types.
    const KeySetAdapter<RIndirectString, unsigned> stored(KeySetOf("s: a", "c: 00000007"));
    EXPECT_EQ(&(*stored.begin()).first, &stored.GetEntries().GetKey());
    EXPECT_EQ((*stored.begin()).second, 7u);
    // Any byte but 0 is true.
    const KeySetAdapter<bool, bool> bools(
        StoredKeySet<unsigned char, unsigned char>(BoolType::Get(), BoolType::Get(), {{2, 3}}));
    EXPECT_TRUE((*bools.begin()).first && bools.begin().GetValue());

    const SV value = KeySetOf("i: 1", "l: 1");
    EXPECT_LUM_ERROR(NotKeyedCollection, "", KeySetAdapter<int, int>(value));
    EXPECT_LUM_ERROR(NotKeyedCollection, "",
                     KeySetAdapter<RIndirectString, SV>(
                         factory::MakeKeyMap(std::unordered_map<RInternString, SV>())));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", "(TypeTraits<K>::IsMatchingType(keyType))",
                      KeySetAdapter<float, double>(value));
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", "(TypeTraits<V>::IsMatchingType(elementType))",
                      KeySetAdapter<int, double>(value));
}

TEST_F(KeySetTest, CursorsAreRetyped) {
    const SV value = KeySetOf("i: -1 2 -", "c: 00000001 00000001 00000003");
    const auto& keySet = value->AsDictionary<unsigned, unsigned>();
    DictionaryCursor<unsigned, unsigned> cursor = keySet.GetEntries();
    EXPECT_EQ(cursor.GetKeyType(), IntType::Get32());
    EXPECT_EQ(cursor.GetValueType(), ColorType::Get());
    ++cursor;
    // The place is kept.
    const DictionaryCursor<int, LumColor> typed = cursor.CastKeyTo<int>().CastValueTo<LumColor>();
    EXPECT_EQ(typed.GetKey(), std::bit_cast<int>(cursor.GetKey()));
    EXPECT_EQ(typed.GetValue().AsInt32(), 1);
    EXPECT_EQ((*typed.CastKeyTo<unsigned>()).first, cursor.GetKey());

    const char kKey[] = "(TypeTraits<NewKeyType>::IsMatchingType(m_type->GetKeyType()))";
    const char kValue[] = "(TypeTraits<NewValueType>::IsMatchingType(m_type->GetElementType()))";
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kKey, cursor.CastKeyTo<LumColor>());
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kValue, cursor.CastValueTo<int>());
    DictionaryCursor<SpecialKind, unsigned> special = keySet.GetSpecialEntries();
    EXPECT_EQ(special.GetValueType(), ColorType::Get());
    EXPECT_EQ(special.CastValueTo<LumColor>().GetValue().AsInt32(), 3);
    EXPECT_LUM_REPORT(TypeMismatchExpected, "", kValue, special.CastValueTo<float>());

    ++cursor;
    ++special;
    EXPECT_TRUE(cursor.IsAtEnd() && special.IsAtEnd());
    const char kEnd[] = "(m_pos != m_values->end())";
    EXPECT_LUM_REPORT(IteratorOutOfBounds, "", kEnd, *cursor.CastKeyTo<int>());
    EXPECT_LUM_REPORT(IteratorOutOfBounds, "", kEnd, cursor.GetValue());
    EXPECT_LUM_REPORT(IteratorOutOfBounds, "", kEnd, special.GetKey());
    EXPECT_LUM_REPORT(IteratorOutOfBounds, "", kEnd, ++special);
    // Members of a key map have no type in common.
    const SV map = factory::MakeKeyMap({{L"a", value}});
    EXPECT_EQ(map->AsKeyMap().GetEntries().CastValueTo<SV>().GetValue(), value);
}

TEST(UnorderedMapUtilTest, ANullMap) {
    const MapContainer<unsigned, SV>* const map = nullptr;
    EXPECT_LUM_REPORT(NullMap, "", "(map) != nullptr", UnorderedMapUtil::Find(map, 1));
}

}  // namespace
}  // namespace lum::core
