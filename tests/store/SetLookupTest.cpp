// Look-ups in sets, which those of numbers and of strings answer from tables of their own once they
// were asked much.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/Random.h"

namespace lum::core {
namespace {

using Bytes = std::vector<unsigned char>;

template <typename T>
SV SetOf(const std::vector<T>& members) {
    return factory::MakeSet<T>(sizeof(T) == 4 ? IntType::Get32() : IntType::Get64(),
                               std::make_unique<SetContainer<T>>(members.begin(), members.end()),
                               nullptr);
}

/// Asks for few values, for many, for so many that the set makes its table, and for few again.
/// There are at least 2,000, and twice as many as members.
template <typename T>
void ExpectSameAnswers(const SV& value, const std::vector<T>& wanted) {
    const ITypedSet<T>& set = value->AsTypedSet<T>();
    Bytes expected;
    std::transform(wanted.begin(), wanted.end(), std::back_inserter(expected),
                   [&](T element) { return set.Contains(element) ? 1 : 0; });
    const std::size_t few = 3;
    const std::size_t all = wanted.size();
    for (const std::size_t count : {few, all, all, all, all, all, few}) {
        Bytes out(count + 1, 9);
        set.ContainsEach({wanted.data(), count}, out);
        EXPECT_EQ(out.back(), 9);
        out.pop_back();
        EXPECT_EQ(out, Bytes(expected.begin(), expected.begin() + static_cast<long>(count)));
    }
}

template <typename T>
void CheckSetOfSize(std::size_t size, test::Random& random) {
    SCOPED_TRACE(testing::Message() << sizeof(T) * 8 << " bits, " << size << " members");
    const T spread = random.Below(2) == 0 ? T{1} << (sizeof(T) * 6) : T{1};
    std::vector<T> members;
    for (std::size_t i = 0; i < size; ++i) {
        members.push_back(random.Below(2) == 0 ? static_cast<T>(i * spread)
                                               : static_cast<T>(random.Bits()));
    }
    // The first numbers, which fill room in a table, are members at times and at times not.
    std::vector<T> wanted{0, 1, 2, 3, static_cast<T>(~T{0})};
    wanted.resize(std::max<std::size_t>(2000, 2 * size));
    for (std::size_t i = 5; i < wanted.size(); ++i) {
        wanted[i] = size != 0 && random.Below(2) == 0 ? members[random.Below(size)]
                                                      : static_cast<T>(random.Bits());
    }
    ExpectSameAnswers(SetOf(members), wanted);
}

TEST(SetLookupTest, AnswersAsContainsDoes) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (const std::size_t size : {0u, 1u, 2u, 5u, 64u, 1000u, 3000u, 20000u, 40000u}) {
        CheckSetOfSize<unsigned>(size, random);
        CheckSetOfSize<unsigned long long>(size, random);
    }
}

unsigned long long InverseOf(unsigned long long odd) {
    unsigned long long inverse = odd;
    for (int i = 0; i < 6; ++i) {
        inverse *= 2 - odd * inverse;
    }
    return inverse;
}

/// Numbers that a table would put into one place: the hash of the table backwards.
std::vector<unsigned long long> CollidingNumbers(unsigned long long count) {
    std::vector<unsigned long long> numbers;
    for (unsigned long long low = 0; low < count; ++low) {
        unsigned long long hash = (0x5A5ull << 52 | low) * InverseOf(0xD6E8FEB86659FD93ull);
        hash ^= hash >> 32;
        numbers.push_back(hash * InverseOf(0x9E3779B97F4A7C15ull));
    }
    return numbers;
}

TEST(SetLookupTest, NumbersMadeToCollide) {
    // Few of them overflow into the places behind their own, many leave the set without a table.
    for (const unsigned long long count : {6u, 40u, 2000u}) {
        SCOPED_TRACE(count);
        std::vector<unsigned long long> members = CollidingNumbers(2 * count);
        std::vector<unsigned long long> wanted = members;
        wanted.resize(5000);
        members.resize(count);
        ExpectSameAnswers(SetOf(members), wanted);
    }
}

/// Texts that stand in their object and texts that do not, of which some differ in case alone.
RIndirectString MakeText(test::Random& random, std::size_t variety) {
    const std::size_t seed = random.Below(variety);
    const char16_t first = random.Below(2) == 0 ? u'a' : u'A';
    std::u16string units(seed % 40, static_cast<char16_t>(first + seed % 26));
    if (units.size() > 3) {
        units[units.size() / 2] = static_cast<char16_t>(seed);
    }
    return TStringCore(units);
}

/// As many look-ups, alone and together, as pass the moment at which a set makes a table.
void ExpectStringsAreFound(const Type* type, std::size_t size, test::Random& random) {
    SetContainer<RIndirectString> members(0, CollatorHash(type->As<StringType>().GetCollation()),
                                          CollatorEqualTo(type->As<StringType>().GetCollation()));
    for (std::size_t i = 0; i < size; ++i) {
        members.insert(MakeText(random, 4 * size));
    }
    std::vector<RIndirectString> wanted;
    Bytes expected;
    for (std::size_t i = 0; i < size + 600; ++i) {
        wanted.push_back(MakeText(random, 4 * size + 1));
        expected.push_back(members.count(wanted.back()) != 0 ? 1 : 0);
    }
    const SV value = factory::MakeSet<RIndirectString>(
        type, std::make_unique<SetContainer<RIndirectString>>(members), nullptr);
    const auto& set = value->AsTypedSet<RIndirectString>();
    for (int round = 0; round < 4; ++round) {
        Bytes each;
        std::transform(wanted.begin(), wanted.end(), std::back_inserter(each),
                       [&](const RIndirectString& text) { return set.Contains(text) ? 1 : 0; });
        EXPECT_EQ(each, expected);
        Bytes together(wanted.size());
        set.ContainsEach(wanted, together);
        EXPECT_EQ(together, expected);
    }
}

TEST(SetLookupTest, StringsByTheirCollation) {
    const test::CollatorPoolGuard pool(std::make_shared<test::FoldingCollatorPool>());
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (const RInternString& locale : {RInternString(L"ROOT"), RInternString(L"fold")}) {
        SCOPED_TRACE(locale.GetValue().toStdString());
        for (const std::size_t size : {0u, 1u, 500u, 5000u}) {
            ExpectStringsAreFound(StringType::Get(Collation(locale)), size, random);
        }
    }
}

TEST(SetLookupTest, OtherMembersAreFoundOneByOne) {
    Bytes out(2);
    const Bytes cells{1, 0};
    test::SetOf("b: true")->AsTypedSet<unsigned char>().ContainsEach(cells, out);
    EXPECT_EQ(out, (Bytes{1, 0}));
}

TEST(SetLookupTest, RoomForAllAnswersIsNeeded) {
    const std::vector<unsigned> wanted{1, 1};
    Bytes out(1, 9);
    EXPECT_LUM_REPORT(OutOfBounds, "", "(out.GetSize() >= values.GetSize())",
                      test::SetOf("i: 1")->AsTypedSet<unsigned>().ContainsEach(wanted, out));
    EXPECT_EQ(out, Bytes{9});
}

}  // namespace
}  // namespace lum::core
