#include "lum/core/vtl/KeyPathPrefixTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "lum/core/store/IDataStore.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/support/SmallStack.h"
#include "tests/vtl/Programs.h"

namespace lum::core {
namespace {

using test::Key;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

static_assert(std::is_nothrow_move_constructible_v<KeyPathPrefixTree>);

std::vector<std::string> TextsOf(const std::vector<KeyPath>& paths) {
    std::vector<std::string> texts;
    for (const KeyPath& path : paths) {
        texts.push_back(path.ToString().toStdString());
    }
    return texts;
}

std::unique_ptr<KeyPathPrefixTree> TreeOf(const std::vector<std::string>& texts) {
    auto tree = KeyPathPrefixTree::Make();
    for (const std::string& text : texts) {
        tree->Add(Key(text), true);
    }
    return tree;
}

std::vector<std::string> ConcreteOf(const KeyPathPrefixTree& tree) {
    return TextsOf(tree.GetConcreteDescendants());
}

TEST(KeyPathPrefixTreeTest, AddOnlyRaises) {
    const struct {
        const char* path;
        bool concrete;
        bool isFirst;  // What is expected: new, or not concrete before.
        bool isConcrete;
    } steps[] = {
        {"a/b", true, true, true},   {"a/b", false, false, true}, {"a/b", true, false, true},
        {"a", false, true, false},   {"a", true, true, true},     {"a", true, false, true},
        {"c/d", false, true, false}, {"c/d", false, true, false}, {"c/d", true, true, true},
        {"", false, true, false},    {"", true, true, true},      {"", true, false, true},
    };
    KeyPathPrefixTree tree;
    for (const auto& step : steps) {
        const auto [node, isFirst] = tree.Add(Key(step.path), step.concrete);
        EXPECT_EQ(isFirst, step.isFirst) << step.path;
        EXPECT_EQ(node->IsConcrete(), step.isConcrete) << step.path;
        EXPECT_EQ(node, tree.Find(Key(step.path)));
        // Nodes below a tree are trees, whoever asked for them.
        EXPECT_NE(dynamic_cast<const KeyPathPrefixTree*>(
                      static_cast<const KeyPathPrefixTreeMap<bool, false>*>(node)),
                  nullptr);
    }
    // What a path leads through is left alone.
    EXPECT_TRUE(tree.Insert(Key("e/f"), true).second);
    EXPECT_FALSE(tree.Insert(Key("e"), true).second);
    EXPECT_FALSE(tree.Find(Key("e"))->IsConcrete());
    EXPECT_TRUE(tree.Add(Key("e"), true).second);
}

// The tests of the map go further.
TEST(KeyPathPrefixTreeTest, Relations) {
    const auto tree = TreeOf({"a", "a/b/c", "d/e", "d/e/f", "d/g"});
    EXPECT_THAT(TextsOf(tree->GetEldersOfDescendants()), ElementsAre("d/g", "d/e", "a"));
    EXPECT_THAT(ConcreteOf(*tree), ElementsAre("d/g", "d/e", "d/e/f", "a", "a/b/c"));
    EXPECT_THAT(TextsOf(tree->Find(Key("d/e/f"))->GetConcreteAncestors()), ElementsAre("d/e"));
    EXPECT_THAT(TextsOf(tree->FindConcreteRelations(Key("a/b"))), ElementsAre("a", "a/b/c"));
    EXPECT_TRUE(tree->HasConcreteAncestor(Key("a/x/c")));
    EXPECT_FALSE(tree->HasConcreteAncestor(Key("d")));
    EXPECT_TRUE(tree->Find(Key("a/b"))->HasConcreteAncestor());
    EXPECT_FALSE(tree->Find(Key("d/e"))->HasConcreteAncestor());
    EXPECT_TRUE(tree->Find(Key("d/e"))->HasConcreteDescendant());
    EXPECT_FALSE(tree->Find(Key("a/b/c"))->HasConcreteDescendant());
    EXPECT_EQ(tree->Find(Key("a/c")), nullptr);

    EXPECT_THAT(ConcreteOf(*KeyPathPrefixTree::Make()), ElementsAre());
    const auto other = KeyPathPrefixTree::Make(std::unordered_set<KeyPath>{Key("a/b"), Key("c")});
    EXPECT_THAT(ConcreteOf(*other), UnorderedElementsAre("a/b", "c"));
    EXPECT_FALSE(other->IsConcrete());
}

using Members = std::unordered_map<RInternString, SV>;

// Only key maps are entered, and they are concrete themselves.
TEST(KeyPathPrefixTreeTest, OfAStore) {
    const SV inner = factory::MakeKeyMap(Members{
        {L"z", factory::MakeInt32(1)},
        {L"none", factory::MakeKeyMap(Members())},
    });
    const auto store = factory::MakeDataStore(Members{
        {L"x", factory::MakeInt32(1)},
        {L"maps", factory::MakeKeyMap(Members{{L"y", inner}})},
        {L"column", test::ColumnOf("i: 1 2")},
        {L"null", factory::MakeSpecial(KeyMapType::Get({}), SpecialKind::Null)},
    });
    const auto tree = KeyPathPrefixTree::Make(*store);
    EXPECT_THAT(ConcreteOf(*tree), UnorderedElementsAre("x", "maps", "maps/y", "maps/y/z",
                                                        "maps/y/none", "column", "null"));
    EXPECT_FALSE(tree->HasDescendantWithValue(false));
    EXPECT_FALSE(tree->IsConcrete());
    store->ReleaseRoot();
    EXPECT_THAT(ConcreteOf(*KeyPathPrefixTree::Make(*store)), ElementsAre());
}

TEST(KeyPathPrefixTreeTest, OfTransforms) {
    std::vector<TransformSpec> program = test::Program(
        "// says something\nin -> case -> out/a out\n"
        "  below -> groupBy (f arguments/k :7:i) -> below/out\n");
    EXPECT_THAT(ConcreteOf(*KeyPathPrefixTree::Make(program, /*recurse=*/false)),
                ElementsAre("in", "out", "out/a"));
    const auto whole = KeyPathPrefixTree::Make(program, /*recurse=*/true);
    EXPECT_THAT(ConcreteOf(*whole),
                ElementsAre("in", "out", "out/a", "arguments/k", "below", "below/out"));
    EXPECT_FALSE(whole->IsConcrete());

    program.push_back(TransformSpec(OperatorType::Map, {}, std::vector<KeyPath>(1)));
    EXPECT_TRUE(KeyPathPrefixTree::Make(program, /*recurse=*/false)->IsConcrete());

    program.push_back(TransformSpec(OperatorType::Map, {}, Key("o"),
                                    FunctionSpec::Make(L"g", std::vector<ValueSpec>(1))));
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "", "(m_value) != nullptr",
                            KeyPathPrefixTree::Make(program, /*recurse=*/true));
}

TEST(KeyPathPrefixTreeTest, PrettyPrint) {
    const auto tree = TreeOf({"b/c", "b/'d e':i", "a"});
    EXPECT_EQ(tree->PrettyPrint(1).toStdString(),
              " Root Node:\n"
              "   Prefix Node: b\n"
              "     Concrete Node: c\n"
              "     Concrete Node: d e\n"
              "   Concrete Node: a\n");
    EXPECT_EQ(tree->Find(Key("b"))->PrettyPrint(-3).toStdString(),
              "Prefix Node: b\nConcrete Node: c\nConcrete Node: d e\n");
    EXPECT_EQ(KeyPathPrefixTree().PrettyPrint(0).toStdString(), "Root Node:\n");
}

// One path makes a chain of key maps as long as itself.
TEST(KeyPathPrefixTreeTest, LongPathsNeedNoStack) {
    const KeyPath path(std::vector<KeySegment>(100'000, KeySegment(L"a", nullptr)));
    const KeyPath printed(std::vector<KeySegment>(5'000, KeySegment(L"a", nullptr)));
    test::OnSmallStack([&] {
        const auto store = factory::MakeDataStore(Members());
        store->AddValue(path, factory::MakeInt32(1));
        const KeyPathPrefixTree moved(std::move(*KeyPathPrefixTree::Make(*store)));
        ASSERT_NE(moved.Find(path), nullptr);
        EXPECT_TRUE(moved.Find(path)->IsConcrete());

        KeyPathPrefixTree chain;
        chain.Add(printed, true);
        const TStringCore text = chain.PrettyPrint(0);
        EXPECT_EQ(std::count(text.view().begin(), text.view().end(), u'\n'), 5'001);
    });
}

}  // namespace
}  // namespace lum::core
