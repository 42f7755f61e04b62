#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/functions/FunctionRegistryMap.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/Random.h"

namespace lum::core {
namespace {

using ArgContainer = FunctionKey::ArgContainer;
using Types = TypeRefVec<VariableTypeRef>;

constexpr VariableTypeRef kAny = VariableTypeRef::AnyType;
constexpr int kNothing = -1;
constexpr int kAmbiguous = -2;

/// The number of the entry that a query finds, kNothing or kAmbiguous, by the rules read aloud.
int FindSlowly(const std::vector<FunctionKey>& keys, const FunctionKey& query) {
    int best = kNothing;
    int bestScore = std::numeric_limits<int>::max();
    for (std::size_t k = 0; k < keys.size(); ++k) {
        const FunctionKey& key = keys[k];
        const std::size_t count = query.GetInputTypes().size();
        if (key.GetName().GetValue() != query.GetName().GetValue() ||
            key.GetInputArgContainer() != query.GetInputArgContainer() ||
            key.GetInputTypes().size() != count) {
            continue;
        }
        int score = 0;
        for (std::size_t i = 0; i < count && score >= 0; ++i) {
            const Type* const asked = query.GetInputTypes()[i];
            const Type* const offered = key.GetInputTypes()[i];
            if (asked == offered || (asked != nullptr && offered != nullptr &&
                                     asked->GetStoreType() == offered->GetStoreType())) {
                continue;
            }
            const bool mayBeAny = offered == nullptr && asked != nullptr &&
                                  (key.GetInputArgContainer() == ArgContainer::Vector ||
                                   IsCollectionStoreType(asked->GetStoreType()));
            score = mayBeAny ? score + 1 : -1;
        }
        if (score < 0) {
            continue;
        }
        if (score == bestScore) {
            return kAmbiguous;
        }
        if (score < bestScore) {
            best = static_cast<int>(k);
            bestScore = score;
        }
    }
    return best;
}

std::unique_ptr<FunctionRegistryMap<int>> MakeMap(const std::vector<FunctionKey>& keys) {
    auto map = std::make_unique<FunctionRegistryMap<int>>();
    for (std::size_t k = 0; k < keys.size(); ++k) {
        map->Insert(FunctionKey(keys[k]), static_cast<int>(k));
    }
    return map;
}

void ExpectFinds(const FunctionRegistryMap<int>& map, const FunctionKey& query, int expected) {
    const int* const found = map.TryFind(query);
    if (expected >= 0) {
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(*found, expected);
        EXPECT_EQ(&map.Find(query), found);
        return;
    }
    EXPECT_EQ(found, nullptr);
    const std::string text = query.ToString().toStdString();
    if (expected == kAmbiguous) {
        EXPECT_LUM_ERROR(AmbiguousOverload, text, map.Find(query));
    } else {
        EXPECT_LUM_ERROR(FunctionNotFound, text, map.Find(query));
    }
}

TEST(OverloadChoiceTest, Rules) {
    const Type* const i = IntType::Get32();
    const Type* const l = IntType::Get64();
    const Type* const ints = ArrayType::Get(i);
    const Type* const longs = ArrayType::Get(l);
    const Type* const tuple = TupleType::Get({i});
    const Type* const real = RealType::Get64();
    const Types nine(9, i);
    Types nineWithLong = nine;
    nineWithLong.back() = l;
    constexpr ArgContainer kSeparate = ArgContainer::Separate;
    constexpr ArgContainer kVector = ArgContainer::Vector;
    const struct {
        const char* name;
        ArgContainer container;
        std::vector<Types> overloads;
        Types query;
        int expected;
    } cases[] = {
        {"TypeBeforeWildCard", kVector, {{kAny}, {i}}, {i}, 1},
        {"WildCardTakesScalarsOfVectors", kVector, {{kAny}}, {i}, 0},
        {"WildCardTakesNoSeparateScalar", kSeparate, {{kAny}}, {i}, kNothing},
        {"WildCardTakesSeparateCollection", kSeparate, {{kAny}}, {ints}, 0},
        {"WildCardTakesSeparateTuple", kSeparate, {{kAny}}, {tuple}, 0},
        {"TwoWildCards", kVector, {{kAny}, {kAny}}, {i}, kAmbiguous},
        {"TieBeforeTheBest", kVector, {{kAny, i}, {i, kAny}, {i, i}}, {i, i}, kAmbiguous},
        {"TieBehindTheBest", kVector, {{i, i}, {kAny, i}, {i, kAny}}, {i, i}, 0},
        {"TieWithALesserBest", kVector, {{kAny, kAny}, {kAny, i}, {kAny, kAny}}, {i, i}, 1},
        {"ElementTypesDoNotCount", kSeparate, {{ints}, {longs}}, {longs}, kAmbiguous},
        {"PrecisionDoesNotCount", kSeparate, {{real}}, {RealType::Get64(9, 2)}, 0},
        {"NoPromotion", kSeparate, {{l}, {real}}, {i}, kNothing},
        {"AnyTypeFindsOnlyItself", kVector, {{i}, {kAny}}, {kAny}, 1},
        {"AnyTypeFindsNoType", kVector, {{i}}, {kAny}, kNothing},
        {"OtherCount", kVector, {{i}, {i, i, i}}, {i, i}, kNothing},
        {"NoInputs", kVector, {{i}, {}}, {}, 1},
        {"ManyInputsDifferAtTheEnd", kSeparate, {nineWithLong, nine}, nine, 1},
        {"ManyInputsDifferEverywhere", kSeparate, {nineWithLong}, nine, kNothing},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        std::vector<FunctionKey> keys;
        for (const Types& types : row.overloads) {
            keys.emplace_back(L"f", types, row.container);
        }
        const FunctionKey query(L"f", row.query, row.container);
        ExpectFinds(*MakeMap(keys), query, row.expected);
        EXPECT_EQ(FindSlowly(keys, query), row.expected);
    }
}

FunctionKey RandomKey(test::Random& random) {
    static const Type* const i = IntType::Get32();
    static const RInternString kNames[] = {L"f", L"g"};
    static const std::size_t kCounts[] = {0, 1, 1, 1, 2, 2, 2, 3, 8, 9};
    static const VariableTypeRef kTypes[] = {kAny,
                                             kAny,
                                             i,
                                             IntType::Get64(),
                                             RealType::Get64(),
                                             RealType::Get64(7, 3),
                                             StringType::Get(),
                                             ColorType::Get(),
                                             ArrayType::Get(i),
                                             ArrayType::Get(RealType::Get64()),
                                             SetType::Get(i),
                                             TupleType::Get({i, i}),
                                             KeyMapType::Get({})};
    const std::size_t count = random.OneOf(kCounts);
    // Long keys differ in one or two places, or no query would ever fit one.
    Types types(count, i);
    const std::size_t changes = count > 3 ? random.Below(3) : count;
    for (std::size_t k = 0; k < changes; ++k) {
        types[count > 3 ? random.Below(count) : k] = random.OneOf(kTypes);
    }
    return FunctionKey(random.OneOf(kNames), types,
                       random.Below(2) == 0 ? ArgContainer::Separate : ArgContainer::Vector);
}

TEST(OverloadChoiceTest, AgreesWithTheModel) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    int outcomes[3] = {};
    for (int round = 0; round < 200; ++round) {
        std::vector<FunctionKey> keys;
        const std::size_t count = random.Below(120);
        for (std::size_t k = 0; k < count; ++k) {
            keys.push_back(RandomKey(random));
        }
        const auto map = MakeMap(keys);
        for (int q = 0; q < 50; ++q) {
            const FunctionKey query = RandomKey(random);
            SCOPED_TRACE(query.ToString().toStdString());
            const int expected = FindSlowly(keys, query);
            ++outcomes[expected < 0 ? -expected : 0];
            const int* const found = map->TryFind(query);
            ASSERT_EQ(found != nullptr, expected >= 0);
            ASSERT_TRUE(found == nullptr || *found == expected);
        }
    }
    // Each outcome is met often, or the queries would not test the choice.
    for (const int outcome : outcomes) {
        EXPECT_GT(outcome, 500);
    }
}

TEST(OverloadChoiceTest, ReferencesStayAndOrderIsThatOfInsertion) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    FunctionRegistryMap<int> map;
    std::vector<std::pair<const FunctionKey*, const int*>> inserted;
    for (int k = 0; k < 2000; ++k) {
        const auto [key, mapped] = map.Insert(RandomKey(random), int{k});
        inserted.emplace_back(&key, &mapped);
    }
    std::vector<std::pair<const FunctionKey*, const int*>> visited;
    map.ForEach([&](const FunctionKey& key, const int& mapped) {
        EXPECT_EQ(mapped, static_cast<int>(visited.size()));
        visited.emplace_back(&key, &mapped);
    });
    EXPECT_EQ(visited, inserted);
    EXPECT_EQ(map.GetCount(), inserted.size());
    for (const auto& [key, mapped] : inserted) {
        const int* const exact = map.FindExact(*key);
        ASSERT_NE(exact, nullptr);
        EXPECT_LE(*exact, *mapped);
        EXPECT_TRUE(inserted[static_cast<std::size_t>(*exact)].first->AreKeysExactlyEqual(*key));
    }
}

}  // namespace
}  // namespace lum::core
