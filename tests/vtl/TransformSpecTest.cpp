#include "lum/core/vtl/TransformSpec.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "lum/core/serialize/VtlSerializer.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/vtl/GraphEdge.h"
#include "lum/core/vtl/SortSpecTypes.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/vtl/Programs.h"

namespace lum::core {
namespace {

using factory::MakeInt32;
using test::Key;
using test::Keys;
using test::List;

// Vectors of either would otherwise copy whole programs when they grow.
static_assert(std::is_nothrow_move_constructible_v<TransformSpec>);
static_assert(std::is_nothrow_move_constructible_v<ValueSpec>);

// Every part of it; a comment stands in front.
std::string TextOf(const TransformSpec& transform) {
    return TransformToString(transform).toStdString();
}

TEST(ValueSpecTest, HoldsAKeyOrALiteral) {
    ValueSpec literal(MakeInt32(1));
    EXPECT_FALSE(literal.IsKey());
    EXPECT_LUM_REPORT(ValueSpecHoldsValue, "", "(m_keyPath) != nullptr", literal.GetKeyPath());
    EXPECT_LUM_REPORT(ValueSpecHoldsValue, "", "(m_keyPath) != nullptr",
                      std::as_const(literal).GetKeyPath());

    const ValueSpec key(Key("a"));
    EXPECT_TRUE(key.IsKey());
    EXPECT_LUM_REPORT(ValueSpecHoldsKey, "", "(m_value) != nullptr", key.GetValue());

    const ValueSpec none;
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "", "(m_value) != nullptr", none.IsKey());
    EXPECT_LUM_REPORT(ValueSpecHoldsKey, "", "(m_value) != nullptr", none.GetValue());
    EXPECT_LUM_REPORT(ValueSpecHoldsValue, "", "(m_keyPath) != nullptr", none.GetKeyPath());

    EXPECT_LUM_REPORT(ValueSpecHoldsKey, "", "(m_value) != nullptr", ValueSpec(SV()));
    // A path counts as empty where its last name is.
    for (const KeyPath& empty : {KeyPath(), Key("a/''")}) {
        EXPECT_LUM_REPORT(ValueSpecHoldsValue, "", "!(path.IsEmpty())", ValueSpec(empty));
    }
}

TEST(ValueSpecTest, CopiesShareLiteralsAndOwnTheirKeys) {
    const ValueSpec literal(MakeInt32(1));
    const ValueSpec key(Key("a"));
    ValueSpec copy(key);
    copy.GetKeyPath() = Key("b");
    EXPECT_EQ(key.GetKeyPath(), Key("a"));

    copy = literal;
    EXPECT_FALSE(copy.IsKey());
    EXPECT_EQ(copy.GetValue(), literal.GetValue());
    copy = key;
    copy = *&copy;
    EXPECT_EQ(copy.GetKeyPath(), Key("a"));
    EXPECT_LUM_REPORT(ValueSpecHoldsKey, "", "(m_value) != nullptr", copy.GetValue());
}

TEST(FunctionSpecTest, Make) {
    const KeyPath a = Key("a"), b = Key("b"), c = Key("c"), d = Key("d"), empty;
    const std::vector<ValueSpec> args{ValueSpec(a), ValueSpec(MakeInt32(1))};
    const std::pair<std::shared_ptr<FunctionSpec>, const char*> cases[] = {
        {FunctionSpec::Make(L"f"), "f"},
        {FunctionSpec::Make(L"f", MakeInt32(1)), "f :1:i"},
        {FunctionSpec::Make(L"f", std::vector<KeyPath>{b, a}), "f b a"},
        {FunctionSpec::Make(L"f", args), "f a :1:i"},
        {FunctionSpec::Make(L"f", a), "f a"},
        {FunctionSpec::Make(L"f", a, b), "f a b"},
        {FunctionSpec::Make(L"f", a, b, c), "f a b c"},
        {FunctionSpec::Make(L"f", a, b, c, d), "f a b c d"},
    };
    for (const auto& [function, expected] : cases) {
        EXPECT_EQ(FunctionToString(*function).toStdString(), expected);
    }
    std::vector<ValueSpec> taken = args;
    const ValueSpec* const first = taken.data();
    EXPECT_EQ(FunctionSpec::Make(L"f", std::move(taken))->GetArgs().data(), first);

    EXPECT_LUM_REPORT(ValueSpecHoldsKey, "", "(m_value) != nullptr",
                      FunctionSpec::Make(L"f", SV()));
    EXPECT_LUM_REPORT(ValueSpecHoldsValue, "", "!(path.IsEmpty())",
                      FunctionSpec::Make(L"f", std::vector<KeyPath>{a, empty}));
    EXPECT_LUM_REPORT(ValueSpecHoldsValue, "", "!(path.IsEmpty())",
                      FunctionSpec::Make(L"f", a, a, a, empty));
}

TransformSpec MakeWhole() {
    return TransformSpec(OperatorType::Case, Keys({"a", "b"}), Keys({"c"}),
                         FunctionSpec::Make(L"f", Key("k")), List(TransformSpec(L" below")),
                         MakeInt32(1), L"whole ");
}

TEST(TransformSpecTest, Constructors) {
    const std::vector<KeyPath> inputs = Keys({"a", "b"});
    const std::shared_ptr<FunctionSpec> function = FunctionSpec::Make(L"f");
    const KeyPath none;
    const auto children = [] { return List(TransformSpec(L"1"), TransformSpec(L"2")); };
    const auto op = OperatorType::When;
    const std::pair<TransformSpec, const char*> cases[] = {
        {TransformSpec(L" text"), "// text"},
        {MakeWhole(), "//whole a b -> case :1 (f k) -> c\n  // below"},
        {TransformSpec(op, inputs, Keys({"c", "d"})), "a b -> when -> c d"},
        {TransformSpec(op, inputs, Keys({"c", "d"}), function, children(), MakeInt32(2)),
         "a b -> when :2 (f) -> c d\n  //1\n  //2"},
        {TransformSpec(op, inputs, Key("o"), children()), "a b -> when -> o\n  //1\n  //2"},
        {TransformSpec(op, inputs, Key("o"), children(), L"why "),
         "//why a b -> when -> o\n  //1\n  //2"},
        {TransformSpec(op, inputs, Key("o"), function), "a b -> when (f) -> o"},
        {TransformSpec(op, Key("i"), Key("o"), function, MakeInt32(3)), "i -> when :3 (f) -> o"},
        // Empty keys: only the last form leaves them out.
        {TransformSpec(op, inputs, none, children(), L""), "a b -> when -> \n  //1\n  //2"},
        {TransformSpec(op, inputs, none, function), "a b -> when (f) -> "},
        {TransformSpec(op, none, none, function, nullptr), "-> when (f) ->"},
    };
    for (const auto& [transform, expected] : cases) {
        EXPECT_EQ(TextOf(transform), expected);
    }
}

TEST(TransformSpecTest, CopiesOwnAllButFunctionAndLiteral) {
    const TransformSpec source = MakeWhole();
    const std::string before = TextOf(source);
    TransformSpec copy(source);
    EXPECT_EQ(TextOf(copy), before);
    EXPECT_EQ(copy.GetFunctionSpec(), source.GetFunctionSpec());
    EXPECT_EQ(copy.GetValue(), source.GetValue());

    copy.GetInputs().clear();
    copy.GetOutputs()[0] = Key("x");
    copy.GetFunctionSpec() = nullptr;
    copy.GetChildTransforms()[0].GetComment() = L"changed";
    copy.GetValue() = nullptr;
    copy.GetComment() += L"! ";
    EXPECT_EQ(TextOf(copy), "//whole ! -> case -> x\n  //changed");
    EXPECT_EQ(TextOf(source), before);

    copy = source;
    copy = *&copy;
    EXPECT_EQ(TextOf(copy), before);
    const KeyPath* const inputs = copy.GetInputs().data();
    EXPECT_NE(inputs, source.GetInputs().data());
    const TransformSpec taken(std::move(copy));
    EXPECT_EQ(taken.GetInputs().data(), inputs);
    copy = source;  // What was moved from may be assigned to.
    EXPECT_EQ(TextOf(copy), before);
}

TEST(TransformSpecTest, CollectAllInputs) {
    const TransformSpec whole = test::Program("a b -> when (f c :1:i d) -> o\n  x -> copy -> y")[0];
    EXPECT_EQ(whole.CollectAllInputs(), Keys({"a", "b", "c", "d"}));
    EXPECT_EQ(whole.GetChildTransforms()[0].CollectAllInputs(), Keys({"x"}));
    const TransformSpec bad(OperatorType::Map, Key("a"), Key("b"),
                            FunctionSpec::Make(L"f", std::vector<ValueSpec>(1)), nullptr);
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "", "(m_value) != nullptr", bad.CollectAllInputs());
}

TEST(GraphEdgeTest, ConstructorsAndEquality) {
    const GraphEdge edge(Key("a"), 3, {4, 5}, BufferType::I);
    EXPECT_TRUE(edge.HasSource());
    EXPECT_EQ(edge, GraphEdge(3, {4, 5}, Key("a:i"), BufferType::I));
    const GraphEdge others[] = {
        {Key("b"), 3, {4, 5}, BufferType::I}, {Key("a"), 2, {4, 5}, BufferType::I},
        {Key("a"), 3, {5, 4}, BufferType::I}, {Key("a"), 3, {4}, BufferType::I},
        {Key("a"), 3, {4, 5}, BufferType::C},
    };
    for (const GraphEdge& other : others) {
        EXPECT_NE(edge, other);
    }
    const GraphEdge loose(Key("a"), BufferType::C);
    EXPECT_FALSE(loose.HasSource());
    EXPECT_EQ(loose, GraphEdge(0xFFFFFFFF, {}, Key("a"), BufferType::C));
    static_assert(sizeof(BufferType) == 4 && static_cast<int>(BufferType::I) == 1);
}

TEST(SortSpecTypesTest, Texts) {
    std::string texts;
    for (const SortSpecOrder order :
         {SortSpecOrder::UNKNOWN, SortSpecOrder::ASC, SortSpecOrder::DESC, SortSpecOrder::UNORD}) {
        texts += SortSpecOrderToString(order).toStdString() + " ";
    }
    EXPECT_EQ(texts, "UNKNOWN ASC DESC UNORD ");
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "Unknown sort order", "",
                            SortSpecOrderToString(static_cast<SortSpecOrder>(4)));
}

}  // namespace
}  // namespace lum::core
