#include "lum/core/vtl/Visitors.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "lum/core/serialize/VtlSerializer.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/vtl/Programs.h"

namespace lum::core {
namespace {

using test::Key;
using test::Keys;
using test::List;
using test::Program;

using Transforms = std::vector<TransformSpec>;

std::string TextOf(const Transforms& program) {
    return TransformsToString(program, /*includeComments=*/true).toStdString();
}

// Two levels below a statement, and a second statement; the function of the innermost one has keys
// around a literal.
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

TEST(VisitorsTest, AllGoThroughKeysInOneOrder) {
    for (const bool recurse : {true, false}) {
        const char* const expectedCalls = recurse ? kKeyCalls : kTopKeyCalls;
        const char* const expectedText = recurse ? kRewrittenText : kRewrittenTopText;
        Transforms program = Program(kProgramText);
        Calls calls;
        Visitors::PreOrderVisit(nullptr, calls.Visit('o'), calls.Visit('i'), program, recurse);
        EXPECT_EQ(calls.Take(), expectedCalls);

        const Transforms rewritten =
            Visitors::RewriteKeys(calls.Rewrite('o'), calls.Rewrite('i'), program, recurse);
        EXPECT_EQ(calls.Take(), expectedCalls);
        EXPECT_EQ(TextOf(rewritten), expectedText);
        EXPECT_EQ(TextOf(program), kProgramText);

        Visitors::OverwriteKeys(calls.Overwrite('o'), calls.Overwrite('i'), program, recurse);
        EXPECT_EQ(calls.Take(), expectedCalls);
        EXPECT_EQ(TextOf(program), expectedText);
    }
}

TEST(VisitorsTest, CallbacksMayBeMissing) {
    Transforms program = Program(kProgramText);
    Calls calls;
    Visitors::PreOrderVisit(calls.Transform(), calls.Visit('o'), nullptr, program,
                            /*recurse=*/true);
    EXPECT_EQ(calls.Take(), "t:o4 o:o4 t:o3 o:o3 t:o1 o:o1 o:o2 t:o5 o:o5");
    Visitors::PreOrderVisit(nullptr, nullptr, calls.Visit('i'), program[0], /*recurse=*/false);
    EXPECT_EQ(calls.Take(), "i:i1 i:i2");
    Visitors::OverwriteKeys(nullptr, calls.Overwrite('i'), program[0], /*recurse=*/true);
    EXPECT_EQ(calls.Take(), "i:i4 i:k1 i:k2 i:i3 i:i1 i:i2");
}

TEST(VisitorsTest, OverwriteKeysReplacesFunctions) {
    Transforms program =
        Program("i -> map (f k) -> o\ni -> map (g :1:i) -> o\ni -> map (h) -> o\n");
    const Transforms before = program;
    const std::shared_ptr<FunctionSpec> function = program[0].GetFunctionSpec();
    Calls calls;
    Visitors::OverwriteKeys(calls.Overwrite('o'), nullptr, program, /*recurse=*/true);
    EXPECT_EQ(program[0].GetFunctionSpec(), function);

    // A failure within the arguments leaves the function whole.
    const auto failAtKey = [](KeyPath& key) {
        if (key == Key("k")) {
            throw std::runtime_error("no");
        }
    };
    EXPECT_THROW(Visitors::OverwriteKeys(nullptr, failAtKey, program, /*recurse=*/true),
                 std::runtime_error);
    EXPECT_EQ(program[0].GetFunctionSpec(), function);

    Visitors::OverwriteKeys(nullptr, calls.Overwrite('i'), program, /*recurse=*/true);
    EXPECT_EQ(TextOf(program),
              "i_ -> map (f k_) -> o#\ni_ -> map (g :1:i) -> o#\ni_ -> map (h) -> o#\n");
    EXPECT_EQ(FunctionToString(*function), L"f k");  // Others may share it.
    for (std::size_t i = 0; i < program.size(); ++i) {
        EXPECT_NE(program[i].GetFunctionSpec(), before[i].GetFunctionSpec());
    }
}

TEST(VisitorsTest, RewriteKeysDropsCommentsButThoseOfNoOps) {
    Transforms program = Program("-> constant :1:i -> o\ni -> copy -> o\n");
    TransformSpec noOp(OperatorType::NoOp, Keys({"i"}), Keys({"o"}),
                       FunctionSpec::Make(L"f", Key("k")), List(program[1]), nullptr, L" kept");
    program[1] = noOp;
    program[0].GetComment() = L" dropped";
    Calls calls;
    const Transforms rewritten =
        Visitors::RewriteKeys(calls.Rewrite('o'), calls.Rewrite('i'), program, /*recurse=*/true);
    EXPECT_EQ(calls.Take(), "o:o");
    EXPECT_EQ(TextOf(rewritten), "-> constant :1:i -> o#\n// kept\n  i -> copy -> o\n");
    EXPECT_EQ(rewritten[0].GetValue(), program[0].GetValue());
    EXPECT_EQ(rewritten[1].GetInputs(), Keys({"i"}));
    EXPECT_EQ(rewritten[1].GetFunctionSpec(), noOp.GetFunctionSpec());
}

TEST(VisitorsTest, RewriteKeysNeedsItsCallbacks) {
    Calls calls;
    const Transforms program = Program(kProgramText);
    EXPECT_THROW(Visitors::RewriteKeys(nullptr, calls.Rewrite('i'), program, /*recurse=*/true),
                 std::bad_function_call);
    EXPECT_EQ(calls.Take(), "");
    EXPECT_THROW(Visitors::RewriteKeys(calls.Rewrite('o'), nullptr, program, /*recurse=*/true),
                 std::bad_function_call);
    EXPECT_EQ(calls.Take(), "o:o4");
    EXPECT_NO_THROW(Visitors::RewriteKeys(nullptr, nullptr, Program("// c\n-> copy ->\n"),
                                          /*recurse=*/true));
    EXPECT_LUM_REPORT(ValueSpecHoldsValue, "", "!(path.IsEmpty())",
                      Visitors::RewriteKeys(
                          calls.Rewrite('o'), [](const KeyPath&) { return KeyPath(); }, program,
                          /*recurse=*/true));
}

}  // namespace
}  // namespace lum::core
