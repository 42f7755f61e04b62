#include "lum/core/vtl/TransformSpec.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "lum/core/serialize/FormatPrimitive.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/vtl/GraphEdge.h"
#include "lum/core/vtl/OperatorTypeText.h"
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

std::string TextOf(const std::vector<KeyPath>& keys) {
    std::string text;
    for (const KeyPath& key : keys) {
        text += (text.empty() ? "" : " ") + (key.IsEmpty() ? "''" : key.ToString().toStdString());
    }
    return text;
}

std::string TextOf(const FunctionSpec& function) {
    std::string text = function.GetName().GetValue().toStdString() + "(";
    const char* before = "";
    for (const ValueSpec& argument : function.GetArgs()) {
        text +=
            before + (argument.IsKey() ? argument.GetKeyPath().ToString()
                                       : TStringCore(L"=") + FormatPrimitive(*argument.GetValue()))
                         .toStdString();
        before = " ";
    }
    return text + ")";
}

// Every part that is not empty, such as "map in[a] out[b] f(a =1) value[1] below[...] //comment".
std::string TextOf(const TransformSpec& transform) {
    std::string text = OperatorTypeToString(transform.GetOperatorType()).toStdString();
    if (!transform.GetInputs().empty()) {
        text += " in[" + TextOf(transform.GetInputs()) + "]";
    }
    if (!transform.GetOutputs().empty()) {
        text += " out[" + TextOf(transform.GetOutputs()) + "]";
    }
    if (transform.GetFunctionSpec()) {
        text += " " + TextOf(*transform.GetFunctionSpec());
    }
    if (transform.GetValue()) {
        text += " value[" + FormatPrimitive(*transform.GetValue()).toStdString() + "]";
    }
    for (const TransformSpec& child : transform.GetChildTransforms()) {
        text += " below[" + TextOf(child) + "]";
    }
    if (!transform.GetComment().isEmpty()) {
        text += " //" + transform.GetComment().toStdString();
    }
    return text;
}

// ValueSpec ---------------------------------------------------------------------------------------

TEST(ValueSpecTest, HoldsAKeyOrALiteral) {
    const SV value = MakeInt32(1);
    ValueSpec literal(value);
    EXPECT_FALSE(literal.IsKey());
    EXPECT_EQ(literal.GetValue(), value);
    EXPECT_LUM_REPORT(ValueSpecHoldsValue, "", "(m_keyPath) != nullptr", literal.GetKeyPath());
    EXPECT_LUM_REPORT(ValueSpecHoldsValue, "", "(m_keyPath) != nullptr",
                      std::as_const(literal).GetKeyPath());

    ValueSpec key(Key("a/b"));
    EXPECT_TRUE(key.IsKey());
    EXPECT_EQ(key.GetKeyPath(), Key("a/b"));
    EXPECT_LUM_REPORT(ValueSpecHoldsKey, "", "(m_value) != nullptr", key.GetValue());

    ValueSpec none;
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "", "(m_value) != nullptr", none.IsKey());
    EXPECT_LUM_REPORT(ValueSpecHoldsKey, "", "(m_value) != nullptr", none.GetValue());
    EXPECT_LUM_REPORT(ValueSpecHoldsValue, "", "(m_keyPath) != nullptr", none.GetKeyPath());
}

TEST(ValueSpecTest, NeedsAValueOrAKey) {
    EXPECT_LUM_REPORT(ValueSpecHoldsKey, "", "(m_value) != nullptr", ValueSpec(SV()));
    // A path counts as empty where its last name is.
    for (const KeyPath& empty : {KeyPath(), Key("a/''")}) {
        EXPECT_LUM_REPORT(ValueSpecHoldsValue, "", "!(path.IsEmpty())", ValueSpec(empty));
    }
}

TEST(ValueSpecTest, CopiesShareLiteralsAndOwnTheirKeys) {
    const ValueSpec literal(MakeInt32(1));
    ValueSpec key(Key("a"));
    ValueSpec copy(key);
    copy.GetKeyPath() = Key("b");
    EXPECT_EQ(key.GetKeyPath(), Key("a"));

    copy = literal;
    EXPECT_FALSE(copy.IsKey());
    EXPECT_EQ(copy.GetValue(), literal.GetValue());
    copy = key;
    EXPECT_TRUE(copy.IsKey());
    copy = *&copy;
    EXPECT_EQ(copy.GetKeyPath(), Key("a"));
    EXPECT_LUM_REPORT(ValueSpecHoldsKey, "", "(m_value) != nullptr", copy.GetValue());
}

// FunctionSpec ------------------------------------------------------------------------------------

TEST(FunctionSpecTest, Make) {
    const KeyPath a = Key("a"), b = Key("b"), c = Key("c"), d = Key("d");
    const std::vector<ValueSpec> args{ValueSpec(a), ValueSpec(MakeInt32(1))};
    const std::pair<std::shared_ptr<FunctionSpec>, const char*> cases[] = {
        {FunctionSpec::Make(L""), "()"},
        {FunctionSpec::Make(L"f"), "f()"},
        {FunctionSpec::Make(L"f", MakeInt32(1)), "f(=1)"},
        {FunctionSpec::Make(L"f", std::vector<KeyPath>{b, a}), "f(b a)"},
        {FunctionSpec::Make(L"f", {b, a}), "f(b a)"},
        {FunctionSpec::Make(L"f", std::vector<KeyPath>()), "f()"},
        {FunctionSpec::Make(L"f", args), "f(a =1)"},
        {FunctionSpec::Make(L"f", a), "f(a)"},
        {FunctionSpec::Make(L"f", a, b), "f(a b)"},
        {FunctionSpec::Make(L"f", a, b, c), "f(a b c)"},
        {FunctionSpec::Make(L"f", a, b, c, d), "f(a b c d)"},
    };
    for (const auto& [function, expected] : cases) {
        EXPECT_EQ(TextOf(*function), expected);
    }

    std::vector<ValueSpec> taken = args;
    const ValueSpec* const first = taken.data();
    EXPECT_EQ(FunctionSpec::Make(L"f", std::move(taken))->GetArgs().data(), first);
}

TEST(FunctionSpecTest, MakeRefusesEmptyArguments) {
    EXPECT_LUM_REPORT(ValueSpecHoldsKey, "", "(m_value) != nullptr",
                      FunctionSpec::Make(L"f", SV()));
    const KeyPath a = Key("a"), empty;
    const std::function<void()> cases[] = {
        [&] { FunctionSpec::Make(L"f", empty); },
        [&] {
            FunctionSpec::Make(L"f", std::vector<KeyPath>{a, empty});
        },
        [&] { FunctionSpec::Make(L"f", a, a, a, empty); },
    };
    for (const std::function<void()>& make : cases) {
        EXPECT_LUM_REPORT(ValueSpecHoldsValue, "", "!(path.IsEmpty())", make());
    }
}

// TransformSpec -----------------------------------------------------------------------------------

TransformSpec MakeWhole() {
    return TransformSpec(OperatorType::Case, Keys({"a", "b"}), Keys({"c"}),
                         FunctionSpec::Make(L"f", Key("k")), List(TransformSpec(L" below")),
                         MakeInt32(1), L" whole");
}

TEST(TransformSpecTest, Constructors) {
    const std::vector<KeyPath> inputs = Keys({"a", "b"});
    const std::vector<KeyPath> outputs = Keys({"c", "d"});
    const std::shared_ptr<FunctionSpec> function = FunctionSpec::Make(L"f");
    const KeyPath none;
    const auto children = [] { return List(TransformSpec(L"1"), TransformSpec(L"2")); };
    const auto op = OperatorType::When;
    const std::pair<TransformSpec, const char*> cases[] = {
        {TransformSpec(L" text"), "noOp // text"},
        {MakeWhole(), "case in[a b] out[c] f(k) value[1] below[noOp // below] // whole"},
        {TransformSpec(op, inputs, outputs), "when in[a b] out[c d]"},
        {TransformSpec(op, inputs, outputs, function, children(), MakeInt32(2)),
         "when in[a b] out[c d] f() value[2] below[noOp //1] below[noOp //2]"},
        {TransformSpec(op, inputs, Key("o"), children()),
         "when in[a b] out[o] below[noOp //1] below[noOp //2]"},
        {TransformSpec(op, inputs, Key("o"), children(), L"why"),
         "when in[a b] out[o] below[noOp //1] below[noOp //2] //why"},
        {TransformSpec(op, inputs, Key("o"), function), "when in[a b] out[o] f()"},
        {TransformSpec(op, Key("i"), Key("o"), function, MakeInt32(3)),
         "when in[i] out[o] f() value[3]"},
        // Empty keys: only the last form leaves them out.
        {TransformSpec(op, inputs, none, children(), L"why"),
         "when in[a b] out[''] below[noOp //1] below[noOp //2] //why"},
        {TransformSpec(op, inputs, none, function), "when in[a b] out[''] f()"},
        {TransformSpec(op, none, none, function, nullptr), "when f()"},
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
    copy.GetComment() += L"!";
    EXPECT_EQ(TextOf(copy), "case out[x] below[noOp //changed] // whole!");
    EXPECT_EQ(TextOf(source), before);
}

TEST(TransformSpecTest, AssignmentAndMoves) {
    TransformSpec target(L"old");
    const TransformSpec source = MakeWhole();
    target = source;
    EXPECT_EQ(TextOf(target), TextOf(source));
    EXPECT_NE(target.GetInputs().data(), source.GetInputs().data());
    target = *&target;
    EXPECT_EQ(TextOf(target), TextOf(source));

    const KeyPath* const inputs = target.GetInputs().data();
    TransformSpec taken(std::move(target));
    EXPECT_EQ(taken.GetInputs().data(), inputs);
    target = source;  // What was moved from may be assigned to.
    EXPECT_EQ(TextOf(target), TextOf(source));

    std::vector<TransformSpec> list = List(TransformSpec(L"1"), TransformSpec(L"2"), taken);
    list.erase(list.begin());
    EXPECT_EQ(TextOf(list[1]), TextOf(source));
}

TEST(TransformSpecTest, CollectAllInputs) {
    const auto function = FunctionSpec::Make(
        L"f", {ValueSpec(Key("c")), ValueSpec(MakeInt32(1)), ValueSpec(Key("d"))});
    const TransformSpec child(OperatorType::Map, Keys({"x"}), Keys({"y"}));
    const TransformSpec whole(OperatorType::When, Keys({"a", "b"}), Keys({"o"}), function,
                              List(child), MakeInt32(2));
    EXPECT_EQ(TextOf(whole.CollectAllInputs()), "a b c d");
    EXPECT_EQ(TextOf(child.CollectAllInputs()), "x");
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "", "(m_value) != nullptr",
                            TransformSpec(OperatorType::Map, {}, {},
                                          FunctionSpec::Make(L"f", {ValueSpec()}), {}, nullptr)
                                .CollectAllInputs());
}

// The neighbours ----------------------------------------------------------------------------------

TEST(GraphEdgeTest, ConstructorsAndEquality) {
    const GraphEdge edge(Key("a"), 3, {4, 5}, BufferType::I);
    EXPECT_EQ(edge.bufferType, BufferType::I);
    EXPECT_EQ(edge.sourceId, 3u);
    EXPECT_EQ(edge.sinkIds, (std::vector<lumsize_t>{4, 5}));
    EXPECT_EQ(edge.key, Key("a"));
    EXPECT_TRUE(edge.HasSource());
    EXPECT_EQ(edge, GraphEdge(3, {4, 5}, Key("a"), BufferType::I));
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
    EXPECT_EQ(loose.sourceId, GraphEdge::NullSourceId);
    EXPECT_EQ(loose, GraphEdge(0xFFFFFFFF, {}, Key("a"), BufferType::C));
    static_assert(sizeof(BufferType) == 4 && static_cast<int>(BufferType::I) == 1);
}

TEST(SortSpecTypesTest, Texts) {
    EXPECT_EQ(SortSpecOrderToString(SortSpecOrder::UNKNOWN), L"UNKNOWN");
    EXPECT_EQ(SortSpecOrderToString(SortSpecOrder::ASC), L"ASC");
    EXPECT_EQ(SortSpecOrderToString(SortSpecOrder::DESC), L"DESC");
    EXPECT_EQ(SortSpecOrderToString(SortSpecOrder::UNORD), L"UNORD");
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "Unknown sort order", "",
                            SortSpecOrderToString(static_cast<SortSpecOrder>(4)));
}

}  // namespace
}  // namespace lum::core
