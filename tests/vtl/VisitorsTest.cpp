#include "lum/core/vtl/Visitors.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "lum/core/serialize/VtlSerializer.h"
#include "lum/core/store/ValueFactory.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/vtl/Programs.h"

namespace lum::core {
namespace {

using factory::MakeInt32;
using test::Key;
using test::Keys;
using test::List;

// Two levels below a statement, and a second statement; the function of the innermost one has keys
// around a literal.
std::vector<TransformSpec> MakeProgram() {
    const auto function = FunctionSpec::Make(
        L"f", {ValueSpec(Key("k1")), ValueSpec(MakeInt32(7)), ValueSpec(Key("k2"))});
    return List(
        TransformSpec(OperatorType::Case, Keys({"i1", "i2"}), Keys({"o1", "o2"}), nullptr,
                      List(TransformSpec(
                          OperatorType::When, Keys({"i3"}), Keys({"o3"}), nullptr,
                          List(TransformSpec(OperatorType::Map, Keys({"i4"}), Key("o4"), function)),
                          nullptr)),
                      nullptr),
        TransformSpec(OperatorType::Copy, Keys({"i5"}), Keys({"o5"})));
}

std::string TextOf(const std::vector<TransformSpec>& transforms) {
    return TransformsToString(transforms, /*includeComments=*/true).toStdString();
}

const char* const kProgramText =
    "i1 i2 -> case -> o1 o2\n  i3 -> when -> o3\n    i4 -> map (f k1 :7:i k2) -> o4\n"
    "i5 -> copy -> o5\n";
const char* const kRewrittenText =
    "i1_ i2_ -> case -> o1# o2#\n  i3_ -> when -> o3#\n    i4_ -> map (f k1_ :7:i k2_) -> o4#\n"
    "i5_ -> copy -> o5#\n";
const char* const kRewrittenTopText =
    "i1_ i2_ -> case -> o1# o2#\n  i3 -> when -> o3\n    i4 -> map (f k1 :7:i k2) -> o4\n"
    "i5_ -> copy -> o5#\n";

// What callbacks were called with, in order, each behind the letter of its callback.
class Calls {
public:
    std::function<void(const TransformSpec&)> Transform() {
        return [this](const TransformSpec& transform) {
            Note('t', transform.GetOutputs().empty() ? KeyPath() : transform.GetOutputs()[0]);
        };
    }
    std::function<void(const KeyPath&)> Visit(char letter) {
        return [this, letter](const KeyPath& key) { Note(letter, key); };
    }
    std::function<void(KeyPath&)> Overwrite(char letter) {
        return [this, letter](KeyPath& key) { key = Changed(letter, key); };
    }
    std::function<KeyPath(const KeyPath&)> Rewrite(char letter) {
        return [this, letter](const KeyPath& key) { return Changed(letter, key); };
    }

    std::string Take() { return std::exchange(m_text, std::string()); }

private:
    void Note(char letter, const KeyPath& key) {
        m_text += (m_text.empty() ? "" : " ") + std::string(1, letter) + ":" +
                  key.ToString().toStdString();
    }
    KeyPath Changed(char letter, const KeyPath& key) {
        Note(letter, key);
        return KeyPath({key.GetLeaf().GetValue() + TStringCore(letter == 'o' ? L"#" : L"_")});
    }

    std::string m_text;
};

// The order of calls that all three keep; PreOrderVisit also shows transforms.
const char* const kKeyCalls = "o:o4 i:i4 i:k1 i:k2 o:o3 i:i3 o:o1 o:o2 i:i1 i:i2 o:o5 i:i5";
const char* const kTopKeyCalls = "o:o1 o:o2 i:i1 i:i2 o:o5 i:i5";

// PreOrderVisit -----------------------------------------------------------------------------------

TEST(VisitorsTest, PreOrderVisitShowsWhatIsBelowFirst) {
    const std::vector<TransformSpec> program = MakeProgram();
    Calls calls;
    Visitors::PreOrderVisit(calls.Transform(), calls.Visit('o'), calls.Visit('i'), program,
                            /*recurse=*/true);
    EXPECT_EQ(calls.Take(),
              "t:o4 o:o4 i:i4 i:k1 i:k2 t:o3 o:o3 i:i3 t:o1 o:o1 o:o2 i:i1 i:i2 t:o5 o:o5 i:i5");
    Visitors::PreOrderVisit(nullptr, calls.Visit('o'), calls.Visit('i'), program,
                            /*recurse=*/false);
    EXPECT_EQ(calls.Take(), kTopKeyCalls);
    Visitors::PreOrderVisit(calls.Transform(), nullptr, nullptr, program, /*recurse=*/true);
    EXPECT_EQ(calls.Take(), "t:o4 t:o3 t:o1 t:o5");
    Visitors::PreOrderVisit(nullptr, calls.Visit('o'), nullptr, program[0], /*recurse=*/true);
    EXPECT_EQ(calls.Take(), "o:o4 o:o3 o:o1 o:o2");
    Visitors::PreOrderVisit(nullptr, nullptr, calls.Visit('i'), program[0], /*recurse=*/false);
    EXPECT_EQ(calls.Take(), "i:i1 i:i2");
}

// OverwriteKeys -----------------------------------------------------------------------------------

TEST(VisitorsTest, OverwriteKeysChangesInPlace) {
    std::vector<TransformSpec> program = MakeProgram();
    Calls calls;
    Visitors::OverwriteKeys(calls.Overwrite('o'), calls.Overwrite('i'), program, /*recurse=*/true);
    EXPECT_EQ(calls.Take(), kKeyCalls);
    EXPECT_EQ(TextOf(program), kRewrittenText);

    program = MakeProgram();
    Visitors::OverwriteKeys(calls.Overwrite('o'), calls.Overwrite('i'), program,
                            /*recurse=*/false);
    EXPECT_EQ(calls.Take(), kTopKeyCalls);
    EXPECT_EQ(TextOf(program), kRewrittenTopText);

    program = MakeProgram();
    Visitors::OverwriteKeys(nullptr, calls.Overwrite('i'), program[0], /*recurse=*/true);
    EXPECT_EQ(calls.Take(), "i:i4 i:k1 i:k2 i:i3 i:i1 i:i2");
}

TEST(VisitorsTest, OverwriteKeysReplacesFunctions) {
    const std::shared_ptr<FunctionSpec> function = FunctionSpec::Make(L"f", Key("k"));
    const std::shared_ptr<FunctionSpec> withoutKey = FunctionSpec::Make(L"g", MakeInt32(1));
    TransformSpec transform(OperatorType::Map, Keys({"i"}), Key("o"), function);
    TransformSpec sibling = transform;
    TransformSpec literal(OperatorType::Map, Keys({"i"}), Key("o"), withoutKey);
    Calls calls;

    Visitors::OverwriteKeys(calls.Overwrite('o'), nullptr, transform, /*recurse=*/true);
    EXPECT_EQ(transform.GetFunctionSpec(), function);
    Visitors::OverwriteKeys(nullptr, calls.Overwrite('i'), transform, /*recurse=*/true);
    EXPECT_EQ(FunctionToString(*transform.GetFunctionSpec()), L"f k_");
    EXPECT_EQ(sibling.GetFunctionSpec(), function);
    EXPECT_EQ(FunctionToString(*function), L"f k");

    Visitors::OverwriteKeys(nullptr, calls.Overwrite('i'), literal, /*recurse=*/true);
    EXPECT_NE(literal.GetFunctionSpec(), withoutKey);
    EXPECT_EQ(FunctionToString(*literal.GetFunctionSpec()), L"g :1:i");

    // A failure within the arguments leaves the function whole.
    const auto failAtKey = [](KeyPath& key) {
        if (key == Key("k")) {
            throw std::runtime_error("no");
        }
    };
    EXPECT_THROW(Visitors::OverwriteKeys(nullptr, failAtKey, sibling, /*recurse=*/true),
                 std::runtime_error);
    EXPECT_EQ(sibling.GetFunctionSpec(), function);
}

// RewriteKeys -------------------------------------------------------------------------------------

TEST(VisitorsTest, RewriteKeysMakesANewList) {
    const std::vector<TransformSpec> program = MakeProgram();
    Calls calls;
    const auto rewritten = Visitors::RewriteKeys(calls.Rewrite('o'), calls.Rewrite('i'), program,
                                                 /*recurse=*/true);
    EXPECT_EQ(calls.Take(), kKeyCalls);
    EXPECT_EQ(TextOf(rewritten), kRewrittenText);
    EXPECT_EQ(TextOf(Visitors::RewriteKeys(calls.Rewrite('o'), calls.Rewrite('i'), program,
                                           /*recurse=*/false)),
              kRewrittenTopText);
    EXPECT_EQ(calls.Take(), kTopKeyCalls);
    EXPECT_EQ(TextOf(program), kProgramText);
}

TEST(VisitorsTest, RewriteKeysDropsCommentsButThoseOfNoOps) {
    const SV value = MakeInt32(1);
    const std::vector<TransformSpec> program = List(
        TransformSpec(
            OperatorType::NoOp, Keys({"i"}), Keys({"o"}), FunctionSpec::Make(L"f", Key("k")),
            List(TransformSpec(OperatorType::Copy, Keys({"i"}), Keys({"o"}))), nullptr, L" kept"),
        TransformSpec(OperatorType::Copy, Keys({"i"}), Keys({"o"}), nullptr,
                      std::vector<TransformSpec>(), value, L" dropped"));
    Calls calls;
    const auto rewritten = Visitors::RewriteKeys(calls.Rewrite('o'), calls.Rewrite('i'), program,
                                                 /*recurse=*/true);
    EXPECT_EQ(calls.Take(), "o:o i:i");
    EXPECT_EQ(TextOf(rewritten), "// kept\n  i -> copy -> o\ni_ -> copy :1 -> o#\n");
    EXPECT_EQ(rewritten[0].GetInputs(), Keys({"i"}));
    EXPECT_EQ(rewritten[0].GetFunctionSpec(), program[0].GetFunctionSpec());
    EXPECT_EQ(rewritten[1].GetValue(), value);
}

TEST(VisitorsTest, RewriteKeysNeedsItsCallbacks) {
    Calls calls;
    const std::vector<TransformSpec> program = MakeProgram();
    const auto rewrite = [&](const std::vector<TransformSpec>& list, bool withOutputs,
                             bool withInputs) {
        return Visitors::RewriteKeys(withOutputs ? calls.Rewrite('o') : nullptr,
                                     withInputs ? calls.Rewrite('i') : nullptr, list,
                                     /*recurse=*/true);
    };
    EXPECT_THROW(rewrite(program, false, true), std::bad_function_call);
    EXPECT_EQ(calls.Take(), "");
    EXPECT_THROW(rewrite(program, true, false), std::bad_function_call);
    EXPECT_EQ(calls.Take(), "o:o4");
    EXPECT_NO_THROW(rewrite(List(TransformSpec(L"c"), TransformSpec(OperatorType::Copy, {}, {})),
                            false, false));
    EXPECT_LUM_REPORT(ValueSpecHoldsValue, "", "!(path.IsEmpty())",
                      Visitors::RewriteKeys(
                          calls.Rewrite('o'), [](const KeyPath&) { return KeyPath(); }, program,
                          /*recurse=*/true));
}

}  // namespace
}  // namespace lum::core
