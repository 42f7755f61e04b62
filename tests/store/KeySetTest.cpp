#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "core/main/store/UnorderedMapUtil.h"
#include "core/main/store/ValueKeySet.h"
#include "lum/core/serialize/FormatPrimitive.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/KeySetAdapter.h"
#include "lum/core/store/KeySetFactory.h"
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
using test::TextOf;
using test::TypeOf;

class KeySetTest : public testing::Test {
    const test::CollatorPoolGuard m_pool{std::make_shared<test::FoldingCollatorPool>()};
};

testing::AssertionResult HasNoSuchKey(const std::function<void()>& statement) {
    try {
        statement();
    } catch (const std::out_of_range& e) {
        return e.what() == std::string("invalid unordered_map<K, T> key")
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << e.what();
    }
    return testing::AssertionFailure() << "nothing was thrown";
}

template <typename K, typename V>
std::unique_ptr<MapContainer<K, V>> Values(const Type* keyType) {
    return MakeMapContainer<K, V>(keyType, 0);
}

template <typename V>
std::unique_ptr<MapContainer<SpecialKind, V>> Specials() {
    return std::make_unique<MapContainer<SpecialKind, V>>();
}

std::unique_ptr<MapContainer<RIndirectString, SV>> Strings(const Collation& hashed,
                                                           const Collation& compared) {
    return std::make_unique<MapContainer<RIndirectString, SV>>(0, CollatorHash(hashed),
                                                               CollatorEqualTo(compared));
}

TEST_F(KeySetTest, ConstructionChecks) {
    const Collation root;
    const Collation fold(RInternString(L"fold"));
    const Type* const i = IntType::Get32();
    const Type* const l = IntType::Get64();
    const Type* const s = StringType::Get();
    const char kKey[] = "(StorageTypeTraits<StorageK>::IsMatchingType(m_type->GetKeyType()))";
    const char kElement[] =
        "(StorageTypeTraits<StorageV>::IsMatchingType(m_type->GetElementType()))";
    const struct {
        const char* name;
        std::function<SV()> make;
        LumError error;
        const char* condition;
    } cases[] = {
        {"no key type",
         [&] { return MakeKeySet<unsigned, SV>(nullptr, nullptr, nullptr, nullptr); },
         LumError::IllegalKeyType, "(keyType) != nullptr"},
        {"arrays as keys",
         [&] { return MakeKeySet<SV, SV>(ArrayType::Get(i), i, nullptr, nullptr); },
         LumError::IllegalKeyType, "(IsStoreTypeSupportedInKeySetAsKey(keyType->GetStoreType()))"},
        {"key sets in a key set",
         [&] { return MakeKeySet<unsigned, SV>(i, KeySetType::Get(i, i), nullptr, nullptr); },
         LumError::IllegalElementType,
         "(IsStoreTypeSupportedInKeySet(elementType->GetStoreType()))"},
        {"no values, before all that follows",
         [&] { return MakeKeySet<unsigned, unsigned>(l, l, nullptr, nullptr); },
         LumError::NullArray, "(m_values) != nullptr"},
        {"no specials",
         [&] {
             return MakeKeySet<unsigned, unsigned>(l, l, Values<unsigned, unsigned>(i), nullptr);
         },
         LumError::NullSpecials, "(m_specials) != nullptr"},
        {"wrong storage of keys",
         [&] {
             return MakeKeySet<unsigned, unsigned>(l, l, Values<unsigned, unsigned>(i),
                                                   Specials<unsigned>());
         },
         LumError::TypeMismatchExpected, kKey},
        {"strings for numbers",
         [&] { return MakeKeySet<RIndirectString, SV>(i, i, Strings(root, root), Specials<SV>()); },
         LumError::TypeMismatchExpected, kKey},
        {"wrong storage of elements, before the collations",
         [&] {
             return MakeKeySet<RIndirectString, unsigned>(StringType::Get(fold), l,
                                                          Values<RIndirectString, unsigned>(s),
                                                          Specials<unsigned>());
         },
         LumError::TypeMismatchExpected, kElement},
        {"hash of another collation",
         [&] { return MakeKeySet<RIndirectString, SV>(s, i, Strings(fold, root), Specials<SV>()); },
         LumError::CollationMismatch, "(c == set.hash_function().GetCollation())"},
        {"equality of another collation",
         [&] { return MakeKeySet<RIndirectString, SV>(s, i, Strings(root, fold), Specials<SV>()); },
         LumError::CollationMismatch, "(c == set.key_eq().GetCollation())"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_TRUE(test::FailsAs({c.error, "", true, c.condition}, [&] { c.make(); }));
    }
}

// The containers are taken over, not copied, and shared with clones.
TEST_F(KeySetTest, ClonesShareTheirContainers) {
    auto values = Values<unsigned, RIndirectString>(IntType::Get32());
    auto specials = Specials<RIndirectString>();
    const RIndirectString* const one = &values->emplace(1, L"one").first->second;
    const RIndirectString* const null =
        &specials->emplace(SpecialKind::Null, L"none").first->second;
    SV value = MakeKeySet<unsigned, RIndirectString>(IntType::Get32(), StringType::Get(),
                                                     std::move(values), std::move(specials));
    const SV clone = value->Clone();
    value.reset();
    const auto& keySet = clone->AsDictionary<unsigned, RIndirectString>();
    EXPECT_EQ(&keySet.GetValue(1), one);
    EXPECT_EQ(&keySet.GetValueForSpecialKey(SpecialKind::Null), null);
    EXPECT_EQ(TextOf(clone), "K<i,s<ROOT>>: !Null=none 1=one");
    const auto& elements = clone->AsUniformCollection().GetStoreValueIterable();
    EXPECT_EQ(TextOf(elements.begin()->Dereference()), "one");
}

// All pairs of storage types ----------------------------------------------------------------------

// Cells that differ as keys, in ascending order, and one that is no key.
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
    {"P{i,s}", "(1 a) (1 b) (2!Null '')", "(1 A)"},
    {"i", "-7 0 5 9", "6", true},
};

std::vector<SV> CellsOf(const Side& side, const char* cells) {
    const SV column = ColumnOf(std::string(side.type) + ": " + cells);
    std::vector<SV> boxed;
    for (lumsize_t i = 0; i < column->GetCount(); ++i) {
        boxed.push_back(column->AsArray().GetElement(i));
    }
    return boxed;
}

std::string SortedTexts(const BoxedEntries& entries) {
    std::vector<std::string> texts;
    for (const auto& [key, element] : entries.normal) {
        texts.push_back(TextOf(key) + "=" + TextOf(element) + " ");
    }
    for (const auto& [kind, element] : entries.special) {
        texts.push_back(TextOf(kind) + "=" + TextOf(element) + " ");
    }
    std::sort(texts.begin(), texts.end());
    std::string all;
    for (const std::string& text : texts) {
        all += text;
    }
    return all;
}

// A key set, and beside it its entries in plain vectors that are searched from the front.
struct Pair {
    Pair(const Side& keySide, const Side& elementSide, bool hasSpecialKeys)
        : keys(keySide),
          handles(keySide.isHandle ? elementSide.isHandle ? HandleSides::Both : HandleSides::Keys
                  : elementSide.isHandle ? HandleSides::Elements
                                         : HandleSides::None),
          keyType(TypeOf(keySide.type)),
          elementType(TypeOf(elementSide.type)),
          absent(CellsOf(keySide, keySide.absent)[0]) {
        const std::vector<SV> elements = CellsOf(elementSide, elementSide.cells);
        for (const SV& key : CellsOf(keySide, keySide.cells)) {
            model.normal.emplace_back(key, elements[model.normal.size() % elements.size()]);
        }
        if (hasSpecialKeys) {
            model.special = {{SpecialKind::Null, elements.back()}, {SpecialKind::All, elements[0]}};
        }
        value = test::MakeKeySetOf(keyType, elementType, model, handles);
    }

    template <typename F>
    void Dispatch(const F& function) const {
        test::DispatchKeySet(keyType, elementType, handles, function);
    }

    const Side& keys;
    const HandleSides handles;
    const Type* const keyType;
    const Type* const elementType;
    const SV absent;
    BoxedEntries model;
    SV value;
};

void ForEachPair(const std::function<void(const Pair&)>& check) {
    for (const Side& keys : kSides) {
        for (const Side& elements : kSides) {
            for (const bool hasSpecialKeys : {false, true}) {
                SCOPED_TRACE(std::string(keys.type) + (keys.isHandle ? " as SV" : "") + " to " +
                             elements.type + (elements.isHandle ? " as SV" : "") +
                             (hasSpecialKeys ? ", special keys" : ""));
                check(Pair(keys, elements, hasSpecialKeys));
            }
        }
    }
}

// What a typed dictionary answers, boxed: the one place where a test is made for each pair.
struct TypedAnswers {
    lumsize_t count;
    lumsize_t specialCount;
    bool hasSpecialKeys;
    const Type* keyType;
    std::function<bool(const SV&)> hasKey;
    std::function<bool(SpecialKind)> hasSpecialKey;
    std::function<SV(const SV&)> getValue;
    std::function<SV(SpecialKind)> getValueForSpecialKey;
};

TypedAnswers AnswersOf(const Pair& pair) {
    TypedAnswers answers;
    pair.Dispatch([&]<typename K, typename V>(StorageTag<K>, StorageTag<V>) {
        const auto* const keySet = &pair.value->AsDictionary<K, V>();
        const Type* const type = pair.elementType;
        answers = {keySet->GetCount(),
                   keySet->GetSpecialKeyCount(),
                   keySet->HasSpecialKeys(),
                   keySet->GetKeyType(),
                   [keySet](const SV& key) { return keySet->HasKey(FetchStoreValue<K>(key)); },
                   [keySet](SpecialKind kind) { return keySet->HasSpecialKey(kind); },
                   [keySet, type](const SV& key) {
                       return MakeStoreValueFromStorageType<V>(
                           type, keySet->GetValue(FetchStoreValue<K>(key)));
                   },
                   [keySet, type](SpecialKind kind) {
                       return MakeStoreValueFromStorageType<V>(type,
                                                               keySet->GetValueForSpecialKey(kind));
                   }};
    });
    return answers;
}

TEST_F(KeySetTest, TypedKeysOfAllPairs) {
    ForEachPair([](const Pair& pair) {
        const TypedAnswers answers = AnswersOf(pair);
        const std::size_t specialCount = pair.model.special.size();
        EXPECT_EQ(answers.count, pair.model.normal.size() + specialCount);
        EXPECT_EQ(answers.specialCount, specialCount);
        EXPECT_EQ(answers.hasSpecialKeys, specialCount != 0);
        EXPECT_EQ(answers.keyType, pair.keyType);
        for (const auto& [key, element] : pair.model.normal) {
            EXPECT_TRUE(answers.hasKey(key));
            EXPECT_EQ(TextOf(answers.getValue(key)), TextOf(element));
        }
        for (const auto& [kind, element] : pair.model.special) {
            EXPECT_EQ(TextOf(answers.getValueForSpecialKey(kind)), TextOf(element));
        }
        EXPECT_EQ(answers.hasSpecialKey(SpecialKind::Null), specialCount != 0);
        EXPECT_FALSE(answers.hasSpecialKey(SpecialKind::Missing));
        EXPECT_FALSE(answers.hasKey(pair.absent));
        EXPECT_TRUE(HasNoSuchKey([&] { answers.getValue(pair.absent); }));
        EXPECT_TRUE(HasNoSuchKey([&] { answers.getValueForSpecialKey(SpecialKind::Missing); }));
        EXPECT_EQ(SortedTexts(test::EntriesOf(*pair.value, pair.handles)), SortedTexts(pair.model));
    });
}

TEST_F(KeySetTest, ValuesOfAllPairs) {
    ForEachPair([](const Pair& pair) {
        const IUniformCollection& uniform = pair.value->AsUniformCollection();
        EXPECT_EQ(pair.value->GetType(), KeySetType::Get(pair.keyType, pair.elementType));
        EXPECT_EQ(uniform.GetType(), pair.value->GetType());
        EXPECT_EQ(uniform.GetElementType(), pair.elementType);
        EXPECT_EQ(pair.value->GetCount(), pair.model.normal.size() + pair.model.special.size());
        EXPECT_EQ(uniform.GetCount(), pair.value->GetCount());
        EXPECT_FALSE(uniform.IsConstant() || uniform.HasSpecialValues());
        const SV clone = pair.value->Clone();
        EXPECT_EQ(SortedTexts(test::EntriesOf(*clone, pair.handles)), SortedTexts(pair.model));
    });
    const SV value = KeySetOf("i: 1", "s: a");
    EXPECT_EQ(value->GetHashValue(), 0u);
    EXPECT_LUM_ERROR(IllegalComparison, "", value->Compare(*value->Clone()));
    EXPECT_LUM_ERROR(ExpectedKeyMap, "KeySet", value->AsKeyMap());
    EXPECT_LUM_ERROR(CollectionNotMutable, "", value->AsMutableCollection());
}

// Each element once, as many under normal keys first as there are.
TEST_F(KeySetTest, WalksOfAllPairs) {
    ForEachPair([](const Pair& pair) {
        const BoxedEntries stored = test::EntriesOf(*pair.value, pair.handles);
        std::vector<std::string> expected;
        for (const auto& [key, element] : stored.normal) {
            expected.push_back(TextOf(element));
        }
        for (const auto& [kind, element] : stored.special) {
            expected.push_back(TextOf(element));
        }
        const auto& elements = pair.value->AsUniformCollection().GetStoreValueIterable();
        std::vector<std::string> found;
        const auto it = elements.begin()->Clone();
        for (; *it != elements.end(); it->Advance()) {
            EXPECT_EQ(*it != elements.begin(), !found.empty());
            EXPECT_EQ(it->Dereference()->GetType(), pair.elementType);
            found.push_back(TextOf(it->Dereference()));
        }
        EXPECT_EQ(found, expected);
    });
}

TEST_F(KeySetTest, TextKeysOfAllPairs) {
    ForEachPair([](const Pair& pair) {
        const IStoreCollection& collection = pair.value->AsCollection();
        const bool hasText = !pair.keys.isHandle && !pair.keyType->Is(StoreType::Tuple);
        const auto textOfKey = [&](const SV& key) {
            return hasText || pair.keys.isHandle ? FormatPrimitive(*key) : TStringCore(L"[1,'a']");
        };
        for (const auto& [key, element] : pair.model.normal) {
            const RInternString text = textOfKey(key);
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
            const RInternString text = textOfKey(pair.absent);
            EXPECT_FALSE(collection.HasKey(text));
            EXPECT_EQ(collection.TryGetValue(text), nullptr);
            EXPECT_TRUE(HasNoSuchKey([&] { collection.GetValue(text); }));
        }
        EXPECT_FALSE(collection.HasKey(L"Null"));  // There is no text for a special key.
    });
}

// What is no text of a key: the reader's own failure, or the plain answer that there is no such
// key.
TEST_F(KeySetTest, TextsThatAreNoKeys) {
    const struct {
        const char* keys;
        const wchar_t* text;
        LumError error;
    } cases[] = {
        {"b: true", L"1", LumError::CannotParseBool},
        {"i: 5", L"five", LumError::CannotParseInt32},
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
        const SV keySet = KeySetOf(c.keys, "i: 1");
        const IStoreCollection& collection = keySet->AsCollection();
        EXPECT_TRUE(test::FailsAs({c.error, ""}, [&] { collection.GetValue(c.text); }));
        const test::LogCapture log;
        EXPECT_EQ(collection.TryGetValue(c.text), nullptr);
        EXPECT_FALSE(collection.HasKey(c.text));
        EXPECT_TRUE(log.GetLines().empty());
    }
    // Strings are taken as they stand.
    const SV strings = KeySetOf("s: '''q''' ''", "i: 1 2");
    EXPECT_EQ(TextOf(strings->AsCollection().GetValue(L"'q'")), "1");
    EXPECT_EQ(TextOf(strings->AsCollection().GetValue(L"")), "2");
    EXPECT_FALSE(strings->AsCollection().HasKey(L"q"));
}

// Keys that are one, and keys that are two
// ---------------------------------------------------------

TEST_F(KeySetTest, StringsAreKeysUnderTheirCollation) {
    const Type* const fold = StringType::Get(Collation(RInternString(L"fold")));
    BoxedEntries entries;
    for (const wchar_t* const key : {L"a", L"A", L"b"}) {
        entries.normal.emplace_back(factory::MakeString(key), factory::MakeString(key));
    }
    const SV folding = test::MakeKeySetOf(fold, StringType::Get(), entries);
    const SV exact = test::MakeKeySetOf(StringType::Get(), StringType::Get(), entries);
    EXPECT_EQ(folding->GetCount(), 2u);
    EXPECT_EQ(exact->GetCount(), 3u);
    const auto& keySet = folding->AsDictionary<RIndirectString, RIndirectString>();
    EXPECT_EQ(TextOf(folding->AsCollection().GetValue(L"B")), "b");
    EXPECT_EQ(keySet.GetValue(L"A"), RIndirectString(L"a"));
    EXPECT_FALSE(exact->AsCollection().HasKey(L"B"));
    EXPECT_EQ(keySet.GetKeyType(), fold);

    // The collators were found when the container was made.
    const test::CollatorPoolGuard noPool(nullptr);
    EXPECT_TRUE(keySet.HasKey(L"B"));
}

TEST_F(KeySetTest, NumbersAreKeysByTheirBits) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double otherNan = std::bit_cast<double>(std::bit_cast<unsigned long long>(nan) + 1);
    BoxedEntries entries;
    for (const double key : {0.0, -0.0, nan, otherNan, nan}) {
        entries.normal.emplace_back(factory::MakeReal64(key),
                                    factory::MakeInt32(static_cast<int>(entries.normal.size())));
    }
    const SV value = test::MakeKeySetOf(RealType::Get64(), IntType::Get32(), entries);
    const auto& keySet = value->AsDictionary<unsigned long long, unsigned>();
    EXPECT_EQ(keySet.GetCount(), 4u);
    EXPECT_EQ(keySet.GetValue(std::bit_cast<unsigned long long>(-0.0)), 1u);
    EXPECT_EQ(keySet.GetValue(std::bit_cast<unsigned long long>(nan)), 2u);
    EXPECT_EQ(keySet.GetValue(std::bit_cast<unsigned long long>(otherNan)), 3u);
    EXPECT_EQ(TextOf(value->AsCollection().GetValue(L"-0")), "1");
}

TEST_F(KeySetTest, HandlesAreKeysByTheirValues) {
    const SV five = factory::MakeInt32(5);
    BoxedEntries entries;
    entries.normal = {{five, factory::MakeBool(true)},
                      {factory::MakeInt32(5), factory::MakeBool(false)},
                      {factory::MakeInt64(5), factory::MakeBool(false)}};
    const SV value =
        test::MakeKeySetOf(IntType::Get32(), BoolType::Get(), entries, HandleSides::Keys);
    const auto& keySet = value->AsDictionary<SV, unsigned char>();
    EXPECT_EQ(keySet.GetCount(), 2u);
    EXPECT_EQ(keySet.GetValue(factory::MakeInt32(5)), 1);
    EXPECT_EQ(keySet.GetValue(factory::MakeInt64(5)), 0);
    EXPECT_FALSE(keySet.HasKey(nullptr));
}

TEST_F(KeySetTest, RowsAreKeysByTheirMembers) {
    const SV value = KeySetOf("P{i,s}: (1 a) (1!Null a) (2 a) (1 a)", "i: 1 2 3 4");
    const auto& keySet = value->AsDictionary<LumTuple, unsigned>();
    EXPECT_EQ(keySet.GetCount(), 3u);
    EXPECT_EQ(keySet.GetValue(test::RowOf("P{i,s}: 1 a")), 1u);
    EXPECT_EQ(keySet.GetValue(test::RowOf("P{i,s}: 1!Null a")), 2u);
    EXPECT_FALSE(keySet.HasKey(test::RowOf("P{i,s}: 1 b")));
}

// Special keys may be what a container from outside brought along.
TEST_F(KeySetTest, AnyKindMayBeASpecialKey) {
    const SpecialKind unknown = static_cast<SpecialKind>(200);
    BoxedEntries entries;
    entries.special = {{SpecialKind::Normal, factory::MakeInt32(1)},
                       {unknown, factory::MakeInt32(2)}};
    const SV value = test::MakeKeySetOf(BoolType::Get(), IntType::Get32(), entries);
    const auto& keySet = value->AsDictionary<unsigned char, unsigned>();
    EXPECT_EQ(keySet.GetValueForSpecialKey(SpecialKind::Normal), 1u);
    EXPECT_EQ(keySet.GetValueForSpecialKey(unknown), 2u);
    EXPECT_FALSE(keySet.HasSpecialKey(SpecialKind::Null));
    EXPECT_EQ(value->GetCount(), 2u);
}

// Walks -------------------------------------------------------------------------------------------

TEST_F(KeySetTest, WalksEnd) {
    for (const char* const keys : {"i: 1 2 - !All", "i: 1", "i: - !All", "i:"}) {
        SCOPED_TRACE(keys);
        const SV keySet = KeySetOf(keys, "s: a b c d");
        const auto& elements = keySet->AsUniformCollection().GetStoreValueIterable();
        const auto it = elements.begin()->Clone();
        EXPECT_EQ(*it != elements.end(), keySet->GetCount() != 0);
        EXPECT_FALSE(*it != nullptr);
        EXPECT_FALSE(*it != ColumnOf("s: a")->AsArray().GetStoreValueIterable().begin());
        for (lumsize_t i = 0; i < keySet->GetCount(); ++i) {
            it->Advance();
        }
        EXPECT_FALSE(*it != elements.end());
        EXPECT_LUM_REPORT(IteratorOutOfBounds, "", "", it->Dereference());
        EXPECT_LUM_REPORT(IteratorOutOfBounds, "", "", it->Advance());
        EXPECT_FALSE(*it != elements.end());
    }
    // Elements that are handles are given as they are.
    BoxedEntries entries;
    entries.normal = {{factory::MakeInt32(1), nullptr}};
    const SV value =
        test::MakeKeySetOf(IntType::Get32(), IntType::Get32(), entries, HandleSides::Elements);
    EXPECT_EQ(value->AsUniformCollection().GetStoreValueIterable().begin()->Dereference(), nullptr);
    EXPECT_TRUE(value->AsCollection().HasKey(L"1"));
    EXPECT_EQ(value->AsCollection().GetValue(L"1"), nullptr);
}

TEST_F(KeySetTest, AdaptersReadElementTypes) {
    std::vector<std::pair<LumDateTime, double>> found;
    const KeySetAdapter<LumDateTime, double> dates(KeySetOf("d: 2024-03-01 -", "r: -0.5 7"));
    for (const auto& [key, value] : dates) {
        found.emplace_back(key, value);
    }
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].first, LumDateTime(2024, 3, 1, 0, 0, 0, 0));
    EXPECT_EQ(found[0].second, -0.5);
    const auto special = dates.GetSpecialEntries();
    EXPECT_EQ(special.GetKey(), SpecialKind::Null);
    EXPECT_EQ(special.GetValue(), 7.0);
    EXPECT_TRUE(dates.GetKeySet().HasSpecialKeys());

    // Storage types are their own element types.
    const KeySetAdapter<RIndirectString, unsigned> stored(KeySetOf("s: a", "c: 00000007"));
    const auto& [text, bits] = *stored.begin();
    EXPECT_EQ(&text, &stored.GetEntries().GetKey());
    EXPECT_EQ(bits, 7u);
    auto truths = Values<unsigned char, unsigned char>(BoolType::Get());
    truths->emplace(2, 3);
    const KeySetAdapter<bool, bool> bools(MakeKeySet<unsigned char, unsigned char>(
        BoolType::Get(), BoolType::Get(), std::move(truths), Specials<unsigned char>()));
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

TEST(UnorderedMapUtilTest, NullMaps) {
    const MapContainer<unsigned, SV>* const map = nullptr;
    const MapContainer<SpecialKind, SV>* const specials = nullptr;
    EXPECT_LUM_REPORT(NullMap, "", "(map) != nullptr", UnorderedMapUtil::Contains(map, 1));
    EXPECT_LUM_REPORT(NullMap, "", "(map) != nullptr", UnorderedMapUtil::At(map, 1));
    EXPECT_LUM_REPORT(NullMap, "", "(map) != nullptr",
                      UnorderedMapUtil::Find(specials, SpecialKind::Null));
}

}  // namespace
}  // namespace lum::core
