#include "lum/core/store/KeyPathPrefixTreeMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <ostream>
#include <type_traits>
#include <utility>
#include <vector>

#include "lum/core/types/ScalarTypes.h"
#include "tests/support/Random.h"
#include "tests/support/SmallStack.h"

namespace lum::core {

void PrintTo(const KeyPath& path, std::ostream* stream) {
    *stream << '/' << path.ToString().toStdString();
}

namespace {

using Tree = KeyPathPrefixTreeMap<int, 0>;
using Paths = std::vector<KeyPath>;

static_assert(std::is_nothrow_move_constructible_v<Tree>);
static_assert(!std::is_copy_constructible_v<Tree> && !std::is_move_assignable_v<Tree> &&
              !std::is_convertible_v<int, Tree>);

// The slow and obvious form of the tree: a list of all its nodes in the order in which they came.
class NodeList {
public:
    struct Node {
        KeyPath path;
        int value;
        const Tree* place;  // Where the tree says that it is.
    };

    NodeList(int value, const Tree* root) { m_nodes.push_back({KeyPath(), value, root}); }

    Node* Find(const KeyPath& path) {
        const auto found = std::find_if(m_nodes.begin(), m_nodes.end(),
                                        [&](const Node& node) { return node.path == path; });
        return found == m_nodes.end() ? nullptr : &*found;
    }

    bool Insert(const KeyPath& path, int value) {
        if (Find(path) != nullptr) {
            return false;
        }
        Insert(path.GetParent(), 0);
        m_nodes.push_back({path, value, nullptr});
        return true;
    }

    template <typename Predicate>
    Paths Where(const Predicate& predicate) const {
        Paths found;
        for (const Node& node : m_nodes) {
            if (predicate(node)) {
                found.push_back(node.path);
            }
        }
        return found;
    }

    Paths Children(const KeyPath& path) const {
        return Where([&](const Node& node) {
            return node.path.GetCount() == path.GetCount() + 1 && path.IsPrefixOf(node.path);
        });
    }

    // Those on the way to `path` that have at least `from` segments, downwards.
    Paths Along(const KeyPath& path, std::size_t from, int value) const {
        return Where([&](const Node& node) {
            return node.path.GetCount() >= from && node.path.IsPrefixOf(path) &&
                   node.value == value;
        });
    }

    Paths Below(const KeyPath& path, int value, bool isWithinFound) {
        Paths below;
        const Paths children = Children(path);
        for (auto child = children.rbegin(); child != children.rend(); ++child) {
            const bool isFound = Find(*child)->value == value;
            if (isFound) {
                below.push_back(*child);
            }
            if (!isFound || isWithinFound) {
                const Paths more = Below(*child, value, isWithinFound);
                below.insert(below.end(), more.begin(), more.end());
            }
        }
        return below;
    }

    std::vector<Node>& GetNodes() { return m_nodes; }

private:
    std::vector<Node> m_nodes;
};

// Many different names at the first level, so that finding them takes an index, and few below.
KeyPath RandomPath(test::Random& random) {
    KeyPath path;
    for (std::size_t left = random.Below(6); left > 0; --left) {
        const std::size_t limit = path.IsEmpty() ? 60 : 3;
        path = path.Add(RInternString(L"n" + TStringCore::number(random.Below(limit))));
    }
    return path;
}

void ExpectSameAnswers(Tree& tree, NodeList& list, test::Random& random) {
    for (const auto& [path, ownValue, formerPlace] : list.GetNodes()) {
        const Tree* const place = std::as_const(tree).Find(path);
        ASSERT_TRUE(place != nullptr && place == tree.Find(path));
        // Nodes stay where they are.
        ASSERT_TRUE(formerPlace == nullptr || formerPlace == place);
        ASSERT_EQ(place->GetValue(), ownValue);
        ASSERT_EQ(place->GetKeyPath(), path);
        ASSERT_EQ(place->GetChildren(), list.Children(path));
        ASSERT_EQ(place->GetParent(), path.IsEmpty() ? nullptr : tree.Find(path.GetParent()));

        const int value = static_cast<int>(random.Below(4));
        Paths above = path.IsEmpty() ? Paths() : list.Along(path.GetParent(), 0, value);
        std::reverse(above.begin(), above.end());
        const Paths below = list.Below(path, value, true);
        ASSERT_EQ(place->GetAncestorsWithValue(value), above);
        ASSERT_EQ(place->HasAncestorWithValue(value), !above.empty());
        ASSERT_EQ(place->GetDescendantsWithValue(value), below);
        ASSERT_EQ(place->HasDescendantWithValue(value), !below.empty());
        ASSERT_EQ(place->GetEldersOfDescendantsWithValue(value), list.Below(path, value, false));

        // A path from this node on, which mostly leads out of the tree somewhere.
        const KeyPath more = RandomPath(random);
        const KeyPath whole = path.Add(more);
        const NodeList::Node* const end = list.Find(whole);
        ASSERT_EQ(place->Find(more) != nullptr, end != nullptr);
        Paths relations = list.Along(whole, path.GetCount() + 1, value);
        ASSERT_EQ(place->HasAncestorWithValue(more, value), !relations.empty());
        if (end != nullptr) {
            const Paths rest = list.Below(whole, value, true);
            relations.insert(relations.end(), rest.begin(), rest.end());
        }
        ASSERT_EQ(place->FindRelationsWithValue(more, value), relations);
    }
}

TEST(KeyPathPrefixTreeMapTest, RandomAgainstAList) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (int round = 0; round < 4; ++round) {
        auto tree = std::make_unique<Tree>(round);
        NodeList list(round, tree.get());
        for (int step = 0; step < 240; ++step) {
            const KeyPath path = RandomPath(random);
            const int value = static_cast<int>(random.Below(4));
            const bool isNew = list.Insert(path, value);
            const bool assigns = random.Below(4) == 0;
            const auto inserted =
                assigns ? tree->InsertOrAssign(path, value) : tree->Insert(path, value);
            NodeList::Node& node = *list.Find(path);
            if (assigns) {
                node.value = value;
            }
            ASSERT_EQ(inserted.second, isNew);
            ASSERT_TRUE(node.place == nullptr || node.place == inserted.first);
            node.place = inserted.first;
            if (step == 120) {
                tree = std::make_unique<Tree>(std::move(*tree));
                list.Find(KeyPath())->place = tree.get();
            }
            if (step % 60 == 59) {
                ASSERT_NO_FATAL_FAILURE(ExpectSameAnswers(*tree, list, random));
            }
        }
    }
}

TEST(KeyPathPrefixTreeMapTest, CopyFrom) {
    Tree source(7);
    source.Insert(KeyPath({L"a", L"b"}), 1);
    source.Insert(KeyPath({L"c"}), 2);
    Tree tree;
    tree.Insert(KeyPath({L"c"}), 3);
    tree.CopyFrom(source, {KeyPath({L"a", L"b"}), KeyPath({L"c"}), KeyPath({L"d"}), KeyPath()});
    EXPECT_EQ(tree.Find(KeyPath({L"a", L"b"}))->GetValue(), 1);
    EXPECT_EQ(tree.Find(KeyPath({L"a"}))->GetValue(), 0);  // Only leads there.
    EXPECT_EQ(tree.Find(KeyPath({L"c"}))->GetValue(), 3);  // Was there before.
    EXPECT_EQ(tree.Find(KeyPath({L"d"})), nullptr);
    EXPECT_EQ(tree.GetValue(), 0);

    tree.CopyFrom(*tree.Find(KeyPath({L"a"})), {KeyPath({L"b"})});
    EXPECT_EQ(tree.Find(KeyPath({L"b"}))->GetValue(), 1);
}

TEST(KeyPathPrefixTreeMapTest, TheFirstTypesStay) {
    const KeySegment typed(L"a", IntType::Get32());
    Tree tree;
    Tree* const node = tree.Insert(KeyPath(typed).Add(RInternString(L"b")), 1).first;
    const KeySegment other(L"b", BoolType::Get());
    EXPECT_EQ(tree.InsertOrAssign(KeyPath({L"a"}).Add(other), 2), std::pair(node, false));
    const KeyPath path = node->GetKeyPath();
    EXPECT_TRUE(path.GetSegments()[0].TypeAwareEquals(typed));
    EXPECT_FALSE(path.GetSegments()[1].HasType());
    EXPECT_EQ(&tree.GetKeyPath().GetSegments(), &KeyPath::Empty().GetSegments());
}

TEST(KeyPathPrefixTreeMapTest, MovedOutOfTheMiddle) {
    Tree tree(5);
    tree.Insert(KeyPath({L"a", L"b", L"c"}), 1);
    Tree* const source = tree.Find(KeyPath({L"a", L"b"}));
    {
        const Tree moved(std::move(*source));
        EXPECT_EQ(moved.Find(KeyPath({L"c"}))->GetParent(), &moved);
        EXPECT_EQ(moved.Find(KeyPath({L"c"}))->GetKeyPath(), KeyPath({L"a", L"b", L"c"}));
        EXPECT_TRUE(moved.HasAncestorWithValue(5));
    }
    EXPECT_EQ(tree.Find(KeyPath({L"a", L"b"})), source);
    EXPECT_TRUE(tree.Insert(KeyPath({L"a", L"b", L"c"}), 2).second);
}

// Names whose numbers are far apart and no longer spread by the order of first use.
TEST(KeyPathPrefixTreeMapTest, ManyChildren) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    std::vector<KeyPath> paths;
    Tree tree;
    for (int i = 0; i < 3000; ++i) {
        paths.emplace_back(RInternString(uint64{random.Bits()}));
        ASSERT_TRUE(tree.Insert(paths.back(), i).second);
        ASSERT_FALSE(tree.Insert(paths[random.Below(paths.size())], -1).second);
        ASSERT_EQ(tree.Find(KeyPath(RInternString(uint64{random.Bits()}))), nullptr);
    }
    for (int i = 0; i < 3000; ++i) {
        ASSERT_EQ(tree.Find(paths[static_cast<std::size_t>(i)])->GetValue(), i);
    }
    EXPECT_EQ(tree.GetChildren(), paths);
}

// Runs out of memory when `left` nodes have been made.
class ScarceTree : public KeyPathPrefixTreeMap<int, 0> {
public:
    explicit ScarceTree(std::size_t& left) : m_left(left) {}

protected:
    std::unique_ptr<KeyPathPrefixTreeMap> MakeChild(const KeySegment& segment,
                                                    const KeyPathPrefixTreeMap* parent,
                                                    int value) const override {
        if (m_left == 0) {
            throw std::bad_alloc();
        }
        --m_left;
        return KeyPathPrefixTreeMap::MakeChild(segment, parent, value);
    }

private:
    std::size_t& m_left;
};

TEST(KeyPathPrefixTreeMapTest, AFailedInsertLeavesNothing) {
    std::size_t left = 1;
    ScarceTree tree(left);
    tree.Insert(KeyPath({L"a"}), 1);
    for (const KeyPath& path : {KeyPath({L"a", L"b", L"c"}), KeyPath({L"x", L"y", L"z"})}) {
        for (const std::size_t enough : {0u, 1u}) {
            left = enough;
            EXPECT_THROW(tree.Insert(path, 2), std::bad_alloc);
        }
    }
    EXPECT_FALSE(tree.HasDescendantWithValue(0));
    EXPECT_EQ(tree.GetDescendantsWithValue(1), Paths{KeyPath({L"a"})});
    EXPECT_FALSE(tree.HasDescendantWithValue(2));
    left = 2;
    EXPECT_TRUE(tree.Insert(KeyPath({L"a", L"b", L"c"}), 2).second);
}

// A path is as long as its author likes, and a thread's stack is not.
TEST(KeyPathPrefixTreeMapTest, LongPathsNeedNoStack) {
    constexpr std::size_t kLength = 100'000;
    std::vector<KeySegment> segments(kLength, KeySegment(L"a", nullptr));
    const KeyPath path(std::vector<KeySegment>{segments});
    segments.back() = KeySegment(L"b", nullptr);
    const KeyPath sibling(std::move(segments));
    test::OnSmallStack([&] {
        Tree source;
        source.Insert(path, 1);
        source.Insert(sibling, 2);
        Tree tree(std::move(source));
        EXPECT_TRUE(source.GetChildren().empty());  // NOLINT(bugprone-use-after-move)
        const Tree* const end = tree.Find(path);
        ASSERT_NE(end, nullptr);
        EXPECT_EQ(end->GetKeyPath(), path);
        EXPECT_FALSE(end->HasAncestorWithValue(1));
        EXPECT_FALSE(tree.HasAncestorWithValue(sibling, 1));
        EXPECT_FALSE(tree.HasDescendantWithValue(3));
        EXPECT_EQ(tree.GetDescendantsWithValue(1), Paths{path});
        EXPECT_EQ(tree.GetEldersOfDescendantsWithValue(2), Paths{sibling});
        EXPECT_EQ(tree.FindRelationsWithValue(path, 1), Paths{path});
        Tree copy;
        copy.CopyFrom(tree, {path, sibling});
        EXPECT_EQ(copy.Find(sibling)->GetValue(), 2);
    });
}

}  // namespace
}  // namespace lum::core
