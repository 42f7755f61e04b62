#include "lum/core/store/KeyPathPrefixTreeMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "lum/core/types/ScalarTypes.h"
#include "tests/support/Random.h"
#include "tests/support/SmallStack.h"

namespace lum::core {
namespace {

using Tree = KeyPathPrefixTreeMap<int, 0>;

static_assert(std::is_nothrow_move_constructible_v<Tree>);
static_assert(!std::is_copy_constructible_v<Tree> && !std::is_move_assignable_v<Tree> &&
              !std::is_convertible_v<int, Tree>);

using Names = std::vector<std::string>;

KeyPath PathOf(const Names& names) {
    std::vector<KeySegment> segments;
    for (const std::string& name : names) {
        segments.emplace_back(TStringCore::fromUtf8(name), nullptr);
    }
    return KeyPath(std::move(segments));
}

Names NamesOf(const KeyPath& path) {
    Names names;
    for (const KeySegment& segment : path.GetSegments()) {
        names.push_back(segment.GetSegment().GetValue().toStdString());
    }
    return names;
}

std::vector<Names> NamesOf(const std::vector<KeyPath>& paths) {
    std::vector<Names> lists;
    for (const KeyPath& path : paths) {
        lists.push_back(NamesOf(path));
    }
    return lists;
}

Names Prefix(const Names& names, std::size_t count) {
    return Names(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(count));
}

// The slow and obvious form of the tree: a list of all its nodes in the order in which they came.
class NodeList {
public:
    struct Node {
        Names names;
        int value;
        const Tree* place;  // Where the tree says that it is.
    };

    NodeList(int value, const Tree* root) { m_nodes.push_back({{}, value, root}); }

    Node* Find(const Names& names) {
        const auto found = std::find_if(m_nodes.begin(), m_nodes.end(),
                                        [&](const Node& node) { return node.names == names; });
        return found == m_nodes.end() ? nullptr : &*found;
    }

    bool Insert(const Names& names, int value) {
        if (Find(names) != nullptr) {
            return false;
        }
        for (std::size_t count = 1; count < names.size(); ++count) {
            if (Find(Prefix(names, count)) == nullptr) {
                m_nodes.push_back({Prefix(names, count), 0, nullptr});
            }
        }
        m_nodes.push_back({names, value, nullptr});
        return true;
    }

    std::vector<Names> Children(const Names& names) const {
        std::vector<Names> children;
        for (const Node& node : m_nodes) {
            if (node.names.size() == names.size() + 1 &&
                Prefix(node.names, names.size()) == names) {
                children.push_back(node.names);
            }
        }
        return children;
    }

    // Those above `names`, root first, with at least `from` segments.
    std::vector<Names> Above(const Names& names, std::size_t from, int value) {
        std::vector<Names> above;
        for (std::size_t count = from; count < names.size(); ++count) {
            const Node* const node = Find(Prefix(names, count));
            if (node != nullptr && node->value == value) {
                above.push_back(node->names);
            }
        }
        return above;
    }

    std::vector<Names> Below(const Names& names, int value, bool isWithinFound) {
        std::vector<Names> below;
        const std::vector<Names> children = Children(names);
        for (auto child = children.rbegin(); child != children.rend(); ++child) {
            const bool isFound = Find(*child)->value == value;
            if (isFound) {
                below.push_back(*child);
            }
            if (!isFound || isWithinFound) {
                const std::vector<Names> more = Below(*child, value, isWithinFound);
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
Names RandomNames(test::Random& random) {
    Names names;
    for (std::size_t left = random.Below(6); left > 0; --left) {
        const std::size_t limit = names.empty() ? 60 : 3;
        names.push_back("n" + std::to_string(random.Below(limit)));
    }
    return names;
}

void ExpectSameAnswers(Tree& tree, NodeList& list, test::Random& random) {
    for (const NodeList::Node& node : list.GetNodes()) {
        const Tree* const place = std::as_const(tree).Find(PathOf(node.names));
        ASSERT_TRUE(place != nullptr && place == tree.Find(PathOf(node.names)));
        // Nodes stay where they are.
        ASSERT_TRUE(node.place == nullptr || node.place == place);
        ASSERT_EQ(place->GetValue(), node.value);
        ASSERT_EQ(NamesOf(place->GetKeyPath()), node.names);
        ASSERT_EQ(NamesOf(place->GetChildren()), list.Children(node.names));
        const Tree* const parent =
            node.names.empty() ? nullptr : tree.Find(PathOf(node.names).GetParent());
        ASSERT_EQ(place->GetParent(), parent);

        const int value = static_cast<int>(random.Below(4));
        std::vector<Names> above = list.Above(node.names, 0, value);
        std::reverse(above.begin(), above.end());
        const std::vector<Names> below = list.Below(node.names, value, true);
        ASSERT_EQ(NamesOf(place->GetAncestorsWithValue(value)), above);
        ASSERT_EQ(place->HasAncestorWithValue(value), !above.empty());
        ASSERT_EQ(NamesOf(place->GetDescendantsWithValue(value)), below);
        ASSERT_EQ(place->HasDescendantWithValue(value), !below.empty());
        ASSERT_EQ(NamesOf(place->GetEldersOfDescendantsWithValue(value)),
                  list.Below(node.names, value, false));

        // A path from this node on, which mostly leads out of the tree somewhere.
        const Names more = RandomNames(random);
        Names whole = node.names;
        whole.insert(whole.end(), more.begin(), more.end());
        std::vector<Names> relations = list.Above(whole, node.names.size() + 1, value);
        const NodeList::Node* const end = list.Find(whole);
        ASSERT_EQ(place->Find(PathOf(more)) != nullptr, end != nullptr);
        if (!more.empty() && end != nullptr && end->value == value) {
            relations.push_back(whole);
        }
        ASSERT_EQ(place->HasAncestorWithValue(PathOf(more), value), !relations.empty());
        if (end != nullptr) {
            const std::vector<Names> rest = list.Below(whole, value, true);
            relations.insert(relations.end(), rest.begin(), rest.end());
        }
        ASSERT_EQ(NamesOf(place->FindRelationsWithValue(PathOf(more), value)), relations);
    }
}

TEST(KeyPathPrefixTreeMapTest, RandomAgainstAList) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    for (int round = 0; round < 4; ++round) {
        auto tree = std::make_unique<Tree>(round);
        NodeList list(round, tree.get());
        for (int step = 0; step < 240; ++step) {
            const Names names = RandomNames(random);
            const int value = static_cast<int>(random.Below(4));
            const bool isNew = list.Insert(names, value);
            const bool assigns = random.Below(4) == 0;
            const auto inserted = assigns ? tree->InsertOrAssign(PathOf(names), value)
                                          : tree->Insert(PathOf(names), value);
            NodeList::Node& node = *list.Find(names);
            if (assigns) {
                node.value = value;
            }
            ASSERT_EQ(inserted.second, isNew);
            ASSERT_TRUE(node.place == nullptr || node.place == inserted.first);
            node.place = inserted.first;
            if (step == 120) {
                tree = std::make_unique<Tree>(std::move(*tree));
                list.Find({})->place = tree.get();
            }
            if (step % 60 == 59) {
                ASSERT_NO_FATAL_FAILURE(ExpectSameAnswers(*tree, list, random));
            }
        }
    }
}

TEST(KeyPathPrefixTreeMapTest, CopyFrom) {
    Tree source(7);
    source.Insert(PathOf({"a", "b"}), 1);
    source.Insert(PathOf({"c"}), 2);
    Tree tree;
    tree.Insert(PathOf({"c"}), 3);
    tree.CopyFrom(source, {PathOf({"a", "b"}), PathOf({"c"}), PathOf({"d"}), KeyPath()});
    EXPECT_EQ(tree.Find(PathOf({"a", "b"}))->GetValue(), 1);
    EXPECT_EQ(tree.Find(PathOf({"a"}))->GetValue(), 0);  // Only leads there.
    EXPECT_EQ(tree.Find(PathOf({"c"}))->GetValue(), 3);  // Was there before.
    EXPECT_EQ(tree.Find(PathOf({"d"})), nullptr);
    EXPECT_EQ(tree.GetValue(), 0);

    tree.CopyFrom(*tree.Find(PathOf({"a"})), {PathOf({"b"})});
    EXPECT_EQ(tree.Find(PathOf({"b"}))->GetValue(), 1);
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
    tree.Insert(PathOf({"a", "b", "c"}), 1);
    Tree* const source = tree.Find(PathOf({"a", "b"}));
    {
        const Tree moved(std::move(*source));
        EXPECT_EQ(moved.Find(PathOf({"c"}))->GetParent(), &moved);
        EXPECT_EQ(NamesOf(moved.Find(PathOf({"c"}))->GetKeyPath()), (Names{"a", "b", "c"}));
        EXPECT_TRUE(moved.HasAncestorWithValue(5));
    }
    EXPECT_EQ(tree.Find(PathOf({"a", "b"})), source);
    EXPECT_TRUE(tree.Insert(PathOf({"a", "b", "c"}), 2).second);
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
    tree.Insert(PathOf({"a"}), 1);
    for (const Names& names : {Names{"a", "b", "c"}, Names{"x", "y", "z"}}) {
        for (std::size_t enough = 0; enough < names.size() - 1; ++enough) {
            left = enough;
            EXPECT_THROW(tree.Insert(PathOf(names), 2), std::bad_alloc);
            left = enough;
            EXPECT_THROW(tree.InsertOrAssign(PathOf(names), 2), std::bad_alloc);
        }
    }
    EXPECT_EQ(NamesOf(tree.GetDescendantsWithValue(0)), std::vector<Names>());
    EXPECT_EQ(NamesOf(tree.GetDescendantsWithValue(1)), std::vector<Names>{{"a"}});
    EXPECT_FALSE(tree.HasDescendantWithValue(2));
    left = 2;
    EXPECT_TRUE(tree.Insert(PathOf({"a", "b", "c"}), 2).second);
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
        EXPECT_EQ(tree.GetDescendantsWithValue(1), std::vector<KeyPath>{path});
        EXPECT_EQ(tree.GetEldersOfDescendantsWithValue(2), std::vector<KeyPath>{sibling});
        EXPECT_EQ(tree.FindRelationsWithValue(path, 1), std::vector<KeyPath>{path});
        EXPECT_FALSE(end->HasAncestorWithValue(1));
        EXPECT_FALSE(tree.HasAncestorWithValue(sibling, 1));
        EXPECT_FALSE(tree.HasDescendantWithValue(3));
        Tree copy;
        copy.CopyFrom(tree, {path, sibling});
        EXPECT_EQ(copy.Find(sibling)->GetValue(), 2);
    });
}

}  // namespace
}  // namespace lum::core
