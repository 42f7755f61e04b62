#include "lum/core/store/KeyPath.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstddef>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "lum/core/types/ScalarTypes.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/Random.h"

namespace lum::core {
namespace {

// A move that left an empty list behind would break the next use of the source.
static_assert(std::is_nothrow_copy_constructible_v<KeyPath> &&
              std::is_nothrow_move_constructible_v<KeyPath> &&
              std::is_nothrow_copy_assignable_v<KeyPath> &&
              std::is_nothrow_move_assignable_v<KeyPath>);

using Names = std::vector<std::u16string>;

KeyPath MakePath(const Names& names) {
    std::vector<KeySegment> segments;
    for (const std::u16string& name : names) {
        segments.emplace_back(TStringCore(name), nullptr);
    }
    return KeyPath(std::move(segments));
}

Names NamesOf(const KeyPath& path) {
    Names names;
    for (const KeySegment& segment : path.GetSegments()) {
        names.emplace_back(segment.GetSegment().GetValue().view());
    }
    return names;
}

bool IsShared(const KeyPath& a, const KeyPath& b) {
    return &a.GetSegments() == &b.GetSegments();
}

TEST(KeyPathTest, Constructors) {
    const KeySegment typed(L"a", IntType::Get32());
    EXPECT_EQ(NamesOf(KeyPath()), Names());
    EXPECT_EQ(NamesOf(KeyPath(RInternString(L"a"))), Names{u"a"});
    EXPECT_EQ(NamesOf(KeyPath({L"a", L"b"})), (Names{u"a", u"b"}));
    EXPECT_FALSE(KeyPath({L"a", L"b"}).GetLeafSegment().HasType());
    EXPECT_TRUE(KeyPath(typed).GetLeafSegment().TypeAwareEquals(typed));

    std::vector<KeySegment> segments{typed, typed};
    const KeySegment* const first = segments.data();
    EXPECT_EQ(KeyPath(std::move(segments)).GetSegments().data(), first);
}

TEST(KeyPathTest, SharesItsSegments) {
    const KeyPath path = MakePath({u"a", u"b"});
    KeyPath source = path;
    const KeyPath moved = std::move(source);
    EXPECT_TRUE(IsShared(source, path));  // NOLINT(bugprone-use-after-move): it is still whole.
    KeyPath assigned;
    assigned = std::move(source);
    EXPECT_TRUE(IsShared(source, path));  // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(IsShared(moved, path));
    EXPECT_TRUE(IsShared(assigned, path));
    assigned = *&assigned;
    EXPECT_TRUE(IsShared(assigned, path));

    const KeyPath one = MakePath({u"a"});
    EXPECT_TRUE(IsShared(KeyPath(), KeyPath::Empty()));
    EXPECT_TRUE(IsShared(one.GetParent(), KeyPath::Empty()));
    EXPECT_TRUE(IsShared(one.GetTail(), KeyPath::Empty()));
    EXPECT_TRUE(IsShared(KeyPath().Add(path), path));
    EXPECT_FALSE(IsShared(path.Add(KeyPath()), path));
    EXPECT_EQ(path.Add(KeyPath()), path);
}

// Only the last name decides; a path that counts as empty gives way to what is added as a path.
TEST(KeyPathTest, EmptyByTheLeaf) {
    const struct {
        Names names;
        bool isEmpty;
        Names withPath;  // Of adding the path b.
    } cases[] = {
        {{}, true, {u"b"}},
        {{u""}, true, {u"b"}},
        {{u"a", u""}, true, {u"b"}},
        {{u"a"}, false, {u"a", u"b"}},
        {{u"", u"a"}, false, {u"", u"a", u"b"}},
    };
    const KeyPath other({L"b"});
    for (const auto& test : cases) {
        const KeyPath path = MakePath(test.names);
        EXPECT_EQ(path.IsEmpty(), test.isEmpty);
        EXPECT_EQ(path.GetCount(), test.names.size());
        EXPECT_EQ(NamesOf(path.Add(other)), test.withPath);
        EXPECT_EQ(path.Add(RInternString(L"b")).GetCount(), test.names.size() + 1);
    }
}

TEST(KeyPathTest, Parts) {
    const KeySegment typed(L"b", IntType::Get32());
    const KeyPath path = KeyPath({L"a"}).Add(typed).Add(RInternString(L""));
    EXPECT_EQ(path.GetLeaf(), L"");
    EXPECT_EQ(NamesOf(path.GetParent()), (Names{u"a", u"b"}));
    EXPECT_TRUE(path.GetParent().GetLeafSegment().TypeAwareEquals(typed));
    EXPECT_EQ(NamesOf(path.GetTail()), (Names{u"b", u""}));
    EXPECT_TRUE(path.GetTail().GetSegments().front().TypeAwareEquals(typed));

    const char* const condition = "!(m_segments->empty())";
    EXPECT_LUM_REPORT(EmptyKeyPath, "", condition, KeyPath().GetLeaf());
    EXPECT_LUM_REPORT(EmptyKeyPath, "", condition, KeyPath().GetLeafSegment());
    EXPECT_LUM_REPORT(EmptyKeyPath, "", condition, KeyPath().GetParent());
    EXPECT_LUM_REPORT(EmptyKeyPath, "", condition, KeyPath().GetTail());
    EXPECT_LUM_REPORT(EmptyKeyPath, "", condition, KeyPath().AddVersion(1));
}

TEST(KeyPathTest, Versions) {
    const KeyPath path = KeyPath({L"a"}).Add(KeySegment(L"b", IntType::Get32()));
    const KeyPath once = path.AddVersion(3);
    EXPECT_EQ(NamesOf(once), (Names{u"a", u"b#3"}));
    EXPECT_EQ(once.GetLeafSegment().GetType(), IntType::Get32());
    EXPECT_EQ(NamesOf(once.AddVersion(4294967295)), (Names{u"a", u"b#3#4294967295"}));
    EXPECT_EQ(NamesOf(path), (Names{u"a", u"b"}));
}

TEST(KeyPathTest, TypesTakeNoPart) {
    const KeySegment segments[] = {
        {L"a", nullptr}, {L"a", IntType::Get32()}, {L"a", BoolType::Get()}};
    for (const KeySegment& left : segments) {
        for (const KeySegment& right : segments) {
            EXPECT_TRUE(left == right && KeyPath(left) == KeyPath(right));
            EXPECT_EQ(std::hash<KeySegment>()(left), std::hash<KeySegment>()(right));
            EXPECT_EQ(std::hash<KeyPath>()(KeyPath(left)), std::hash<KeyPath>()(KeyPath(right)));
            EXPECT_FALSE(KeyPath::Compare()(KeyPath(left), KeyPath(right)));

            const bool isSame = &left == &right;
            EXPECT_EQ(left.TypeAwareEquals(right), isSame);
            EXPECT_EQ(left.GetTypeAwareHashValue() == right.GetTypeAwareHashValue(), isSame);
        }
    }
    EXPECT_FALSE(segments[0].TypeAwareEquals(KeySegment(L"b", nullptr)));
}

TEST(KeyPathTest, HashesAreAsDefined) {
    EXPECT_EQ(KeyPath().GetHashValue(), 0u);
    const KeyPath path = MakePath({u"hash", u"of", u"three"});
    uint64 expected = 0;
    for (const KeySegment& segment : path.GetSegments()) {
        const uint64 id = segment.GetSegment().GetStringId();
        expected ^= (expected >> 2) + id + (expected << 6) + 0x9e3779b9;
    }
    const KeyPath early = path;
    EXPECT_EQ(path.GetHashValue(), expected);
    EXPECT_EQ(early.GetHashValue(), expected);
    EXPECT_EQ(KeyPath(path).GetHashValue(), expected);

    const KeySegment typed(L"hash", IntType::Get64());
    uint64 typeHash = 0xcbf29ce484222325;
    for (const unsigned char byte :
         std::bit_cast<std::array<unsigned char, 8>>(static_cast<const Type*>(IntType::Get64()))) {
        typeHash = (typeHash ^ byte) * 0x100000001b3;
    }
    const uint64 id = typed.GetSegment().GetStringId();
    EXPECT_EQ(typed.GetHashValue(), id);
    EXPECT_EQ(typed.GetTypeAwareHashValue(), (typeHash + (id << 6) + 0x9e3779b9 + (id >> 2)) ^ id);
}

TEST(KeyPathTest, UnissuedIdsAreNamesOfTheirOwn) {
    // Their text is empty.
    const KeyPath unissued(RInternString(uint64{1} << 40));
    EXPECT_FALSE(KeyPath::Compare()(unissued, MakePath({u""})));
    EXPECT_FALSE(KeyPath::Compare()(MakePath({u""}), unissued));
    EXPECT_NE(unissued, MakePath({u""}));
}

bool IsPrefix(const Names& a, const Names& b) {
    return a.size() <= b.size() &&
           Names(b.begin(), b.begin() + static_cast<std::ptrdiff_t>(a.size())) == a;
}

// Names are compared unit by unit, so that those above U+FFFF, which are pairs, stand before some
// single units; and by text, not in the order in which they were first used.
TEST(KeyPathTest, RelationsAgainstLists) {
    const char16_t* const alphabet[] = {u"",      u"order-z",      u"order-b",
                                        u"order", u"\xD83D\xDE00", u"\xFF21"};
    for (const char16_t* const name : alphabet) {
        MakePath({name});
    }
    test::Random random;
    SCOPED_TRACE(random.Trace());
    std::vector<Names> lists(80);
    for (Names& list : lists) {
        for (auto left = random.Below(5); left > 0; --left) {
            list.emplace_back(random.OneOf(alphabet));
        }
    }
    for (const Names& left : lists) {
        for (const Names& right : lists) {
            const KeyPath a = MakePath(left);
            const KeyPath b = MakePath(right);
            ASSERT_EQ(a == b, left == right);
            ASSERT_EQ(a != b, left != right);
            ASSERT_TRUE(a != b || a.GetHashValue() == b.GetHashValue());
            ASSERT_EQ(a.IsPrefixOf(b), IsPrefix(left, right));
            // Not about the ends of paths, in spite of the name.
            ASSERT_EQ(a.IsSuffixOf(b), IsPrefix(right, left));
            ASSERT_EQ(KeyPath::Compare()(a, b),
                      left.size() != right.size() ? left.size() < right.size() : left < right);
        }
    }
}

}  // namespace
}  // namespace lum::core
