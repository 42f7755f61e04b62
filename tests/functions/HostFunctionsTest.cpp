#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <stdexcept>

#include "lum/core/functions/RegisterFunction.h"
#include "lum/core/functions/SpecialRules.h"
#include "tests/functions/FunctionTable.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core::functions_test {
namespace {

using enum SpecialKind;
using ArgContainer = FunctionKey::ArgContainer;

// A function of each shape, as a host would write them.

double ToCelsius(const double& fahrenheit) {
    return (fahrenheit - 32) / 1.8;
}

ElementWithKind<double> Half(const double& value, SpecialKind kind) {
    return OrNull(value / 2, kind == Normal);
}

class Scale {
public:
    explicit Scale(const std::vector<SV>& values)
        : m_factor(FetchStoreValue<long long>(values.at(0))) {}
    long long operator()(int element) const { return element * m_factor; }

private:
    long long m_factor;
};

class RunningTotal {
public:
    ElementWithKind<int> operator()(int element, SpecialKind kind) {
        m_total = kind == Normal ? Wrapping(m_total, element, std::plus<>()) : m_total;
        return {m_total, kind};
    }

private:
    int m_total = 0;
};

// Fails in the middle of a column.
RIndirectString Repeat(const RIndirectString& text, const int& count) {
    if (count < 0) {
        throw std::runtime_error("negative count");
    }
    TStringCore result;
    for (int i = 0; i < count; ++i) {
        result += text.GetRString();
    }
    return result;
}

bool IsLonger(const RIndirectString& text, int length) noexcept {
    return static_cast<int>(text->view().size()) > length;
}

ElementWithKind<int> LastNormal(const int& last, SpecialKind lastKind, const int& element,
                                SpecialKind kind) {
    return kind == Normal ? ElementWithKind<int>(element, Normal)
                          : ElementWithKind<int>(last, lastKind);
}

double Largest(const std::vector<SV>& values) {
    double largest = 0;
    for (const SV& value : values) {
        largest = std::max(largest, FetchStoreValue<double>(value));
    }
    return largest;
}

class HostFunctionsTest : public testing::Test {
protected:
    const std::unique_ptr<FunctionRegistry> m_registry = FunctionRegistry::Make();
    RegistryOfUnaryFunctions& m_unary = m_registry->GetUnaryFunctions();
    RegistryOfBinaryFunctions& m_binary = m_registry->GetBinaryFunctions();
    const Type* const m_int = IntType::Get32();
    const Type* const m_long = IntType::Get64();
    const Type* const m_real = RealType::Get64();
    const Type* const m_text = StringType::Get();
    const FunctionKey m_textAndInt{L"f", m_text, m_int, ArgContainer::Separate};
};

// What a table knows of a function is all that it looks like: its own types, whether it is a
// creator, whether it has state.
TEST_F(HostFunctionsTest, EveryShapeRunsAsItLooks) {
    const test::CollatorPoolGuard pool;
    FunctionTable unary;
    // One key for both forms.
    RegisterFunction<ToCelsius>(m_unary, FunctionKey(L"f", m_real), m_real);
    unary.Add(
        L"f", [](double x) { return ToCelsius(x); }, Options{.isAnyNaN = true});
    RegisterFunction<Half>(m_unary, FunctionKey(L"f", m_real), m_real);
    unary.Add(
        L"f", [](double x, SpecialKind kind) { return Half(x, kind); }, Options{.isAnyNaN = true});
    RegisterFunction<Scale>(m_unary, FunctionKey(L"scale", m_int), m_long, {m_long});
    const std::vector<SV> factor = {MakeStoreValue(m_long, 3000000000LL)};
    unary.AddCreator(L"scale", {m_long}, {MakeUse<long long(int)>(factor, Scale(factor))});
    RegisterFunction<RunningTotal>(m_unary, FunctionKey(L"total", m_int), m_int);
    unary.Add(L"total", RunningTotal(), Options{.isStateful = true});
    unary.ExpectToBe(m_unary, *m_registry);
    unary.Check(*m_registry);

    FunctionTable binary;
    RegisterFunction<IsLonger>(m_binary, m_textAndInt, BoolType::Get());
    binary.Add(L"f", std::function<bool(RIndirectString, int)>(IsLonger));
    const FunctionKey twoInts(L"last", m_int, m_int, ArgContainer::Separate);
    RegisterFunction<LastNormal>(m_binary, twoInts, m_int);
    binary.Add(L"last",
               std::function<ElementWithKind<int>(int, SpecialKind, int, SpecialKind)>(LastNormal));
    binary.ExpectToBe(m_binary, *m_registry);
    binary.Check(*m_registry);

    RegistryOfMultinaryFunctions& multinary = m_registry->GetMultinaryFunctions();
    const FunctionKey two(L"largest", m_real, m_real, ArgContainer::Vector);
    RegisterFunction<Largest>(multinary, two, m_real);
    const auto largest = GetMultinaryFunction<double>(multinary.GetFunctions(two));
    ASSERT_NE(largest, nullptr);
    EXPECT_EQ(largest({MakeStoreValue(m_real, 1.5), MakeStoreValue(m_real, 2.5)}), 2.5);
}

TEST_F(HostFunctionsTest, NoFoldFromATextToABool) {
    RegisterFunction<IsLonger>(m_binary, m_textAndInt, BoolType::Get());
    const auto functor = m_binary.GetRawFunctions(m_textAndInt).GetRegularFactory()();
    unsigned char accumulator = 7;
    auto& isLonger = As<IBinaryFunctor<RIndirectString, int, bool>>(functor);
    EXPECT_LUM_ERROR(NotImplemented, "",
                     isLonger.Fold(accumulator, {}, {}, FoldDirection::Forward));
    EXPECT_EQ(accumulator, 7);
}

// A fold of handles, whose function fails: the accumulator and what was written stand.
TEST_F(HostFunctionsTest, FoldThatFails) {
    RegisterFunction<Repeat>(m_binary, m_textAndInt, m_text);
    const auto functor = m_binary.GetRawFunctions(m_textAndInt).GetRegularFactory()();
    auto& repeat = As<IBinaryFunctor<RIndirectString, int, RIndirectString>>(functor);
    const std::vector<int> counts = {2, 3, -1, 2};
    std::vector<RIndirectString> outputs(4, L"-");
    RIndirectString text = L"ab";
    EXPECT_THROW(repeat.Fold(text, counts, outputs, FoldDirection::Forward), std::runtime_error);
    EXPECT_EQ(text, RIndirectString(L"abababababab"));
    EXPECT_EQ(outputs, (std::vector<RIndirectString>{L"abab", text, L"-", L"-"}));
    text = L"x";
    EXPECT_THROW(repeat.Fold(text, counts, {}, FoldDirection::Backward), std::runtime_error);
    EXPECT_EQ(text, RIndirectString(L"xx"));
    EXPECT_THROW(repeat.ApplyVector(outputs, counts, outputs), std::runtime_error);
    EXPECT_EQ(outputs[1], RIndirectString(L"abababababababababababababababababab"));
    EXPECT_EQ(outputs[3], RIndirectString(L"-"));
}

TEST_F(HostFunctionsTest, RefusedRegistrations) {
    const FunctionKey one(L"f", m_real);
    const FunctionKey two(L"f", m_real, m_real, ArgContainer::Separate);
    const FunctionKey ints(L"f", m_int);
    constexpr OptionalTypeRef kNoType = OptionalTypeRef::NoType;

    // The number of inputs is looked at first, then their types, then the output.
    EXPECT_LUM_ERROR(UnaryInputCount, "f", RegisterFunction<ToCelsius>(m_unary, two, m_int));
    EXPECT_LUM_ERROR(FunctionInputMismatch, "f", RegisterFunction<ToCelsius>(m_unary, ints, m_int));
    EXPECT_LUM_ERROR(FunctionOutputMismatch, "f", RegisterFunction<ToCelsius>(m_unary, one, m_int));
    EXPECT_LUM_ERROR(EmptyOutputType, "f", RegisterFunction<ToCelsius>(m_unary, one, kNoType));
    EXPECT_LUM_ERROR(
        FunctionInputMismatch, "f",
        RegisterFunction<ToCelsius>(m_unary, FunctionKey(L"f", VariableTypeRef::AnyType), m_real));
    EXPECT_LUM_ERROR(FunctionInputMismatch, "f",
                     RegisterFunction<Half>(m_unary, FunctionKey(L"f", RealType::Get32()), m_real));
    EXPECT_LUM_ERROR(FunctionOutputMismatch, "f",
                     RegisterFunction<Scale>(m_unary, ints, m_int, {m_long}));

    EXPECT_LUM_ERROR(BinaryInputCount, "f", RegisterFunction<IsLonger>(m_binary, ints, m_int));
    const FunctionKey swapped(L"f", m_int, m_text, ArgContainer::Separate);
    EXPECT_LUM_ERROR(FunctionInputMismatch, "f",
                     RegisterFunction<IsLonger>(m_binary, swapped, BoolType::Get()));
    EXPECT_LUM_ERROR(FunctionOutputMismatch, "f",
                     RegisterFunction<IsLonger>(m_binary, m_textAndInt, m_int));
    EXPECT_LUM_ERROR(
        FunctionOutputMismatch, "f",
        RegisterFunction<Largest>(m_registry->GetMultinaryFunctions(), one, RealType::Get32()));
    m_registry->VisitFunctions([](const FunctionKey& key, const FunctionInfo&) {
        ADD_FAILURE() << key.ToString().toStdString();
    });
}

}  // namespace
}  // namespace lum::core::functions_test
