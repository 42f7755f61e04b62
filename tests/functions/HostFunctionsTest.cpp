#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <vector>

#include "lum/core/functions/FunctionRegistry.h"
#include "lum/core/functions/RegisterFunction.h"
#include "lum/core/functions/SpecialRules.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
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
        m_total += kind == Normal ? element : 0;
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
};

TEST_F(HostFunctionsTest, RegularAndSpecialForm) {
    // One key for both forms.
    RegisterFunction<ToCelsius>(m_unary, FunctionKey(L"f", m_real), m_real);
    RegisterFunction<Half>(m_unary, FunctionKey(L"f", m_real), m_real);
    const LumRawUnaryFunctions functions = m_unary.GetRawFunctions(FunctionKey(L"f", m_real));
    EXPECT_FALSE(functions.IsCreator());
    EXPECT_FALSE(functions.IsStateful());

    const auto regular = functions.GetRegularFactory()();
    auto& toCelsius = dynamic_cast<IUnaryFunctor<double, double>&>(*regular);
    const std::vector<double> inputs = {32, 212, -40};
    std::vector<double> outputs(3);
    toCelsius.ApplyVector(inputs, outputs);
    EXPECT_EQ(outputs, (std::vector<double>{0, 100, -40}));

    const auto special = functions.GetSpecialFactory()();
    auto& half = dynamic_cast<IUnarySpecialFunctor<double, double>&>(*special);
    const std::vector<SpecialKind> kinds = {Normal, Missing, Normal};
    std::vector<SpecialKind> outputKinds(3);
    half.ApplyVector(inputs, kinds, outputs, outputKinds);
    EXPECT_EQ(outputs, (std::vector<double>{16, 0, -20}));
    EXPECT_EQ(outputKinds, (std::vector<SpecialKind>{Normal, Null, Normal}));
}

TEST_F(HostFunctionsTest, CreatorAndState) {
    RegisterFunction<Scale>(m_unary, FunctionKey(L"scale", m_int), m_long, {m_long});
    RegisterFunction<RunningTotal>(m_unary, FunctionKey(L"total", m_int), m_int);
    EXPECT_EQ(m_registry->GetFunction(FunctionKey(L"scale", m_int)),
              FunctionInfo({m_long}, m_long, /*isCreator=*/true, /*isStateful=*/false));
    EXPECT_FALSE(m_registry->GetFunction(FunctionKey(L"scale", m_int)).IsStateful());
    EXPECT_TRUE(m_registry->GetFunction(FunctionKey(L"total", m_int)).IsStateful());
    EXPECT_FALSE(m_registry->GetFunction(FunctionKey(L"total", m_int)).IsCreator());

    const std::vector<int> inputs = {1, -2, 3};
    const auto make =
        m_unary.GetRawFunctions(FunctionKey(L"scale", m_int)).GetRegularCreatorFactory();
    const auto scale = make({MakeStoreValue(m_long, 3000000000LL)});
    std::vector<long long> scaled(3);
    dynamic_cast<IUnaryFunctor<int, long long>&>(*scale).ApplyVector(inputs, scaled);
    EXPECT_EQ(scaled, (std::vector<long long>{3000000000LL, -6000000000LL, 9000000000LL}));
    EXPECT_THROW(make({}), std::out_of_range);

    const auto factory = m_unary.GetRawFunctions(FunctionKey(L"total", m_int)).GetSpecialFactory();
    const auto total = factory();
    auto& typed = dynamic_cast<IUnarySpecialFunctor<int, int>&>(*total);
    const std::vector<SpecialKind> kinds = {Normal, Normal, Null};
    std::vector<int> totals(3);
    std::vector<SpecialKind> totalKinds(3);
    typed.ApplyVector(inputs, kinds, totals, totalKinds);
    EXPECT_EQ(totals, (std::vector<int>{1, -1, -1}));
    EXPECT_EQ(totalKinds, kinds);
    // The state goes on from call to call, and another functor has its own.
    EXPECT_EQ(typed.Apply(5, Normal).first, 4);
    EXPECT_EQ((dynamic_cast<IUnarySpecialFunctor<int, int>&>(*factory()).Apply(5, Normal).first),
              5);
}

TEST_F(HostFunctionsTest, UnlikeInputs) {
    const FunctionKey key(L"longer", m_text, m_int, ArgContainer::Separate);
    RegisterFunction<IsLonger>(m_binary, key, BoolType::Get());
    const auto functor = m_binary.GetRawFunctions(key).GetRegularFactory()();
    auto& isLonger = dynamic_cast<IBinaryFunctor<RIndirectString, int, bool>&>(*functor);
    const std::vector<RIndirectString> texts = {L"", L"abc"};
    const std::vector<int> lengths = {0, 2};
    std::vector<unsigned char> outputs(2, 7);
    isLonger.ApplyVector(texts, lengths, outputs);
    EXPECT_EQ(outputs, (std::vector<unsigned char>{0, 1}));
    // A text is no Bool to begin a fold with.
    unsigned char accumulator = 7;
    EXPECT_LUM_ERROR(NotImplemented, "",
                     isLonger.Fold(accumulator, lengths, {}, FoldDirection::Forward));
    EXPECT_EQ(accumulator, 7);
}

// A fold of handles, whose function fails: the accumulator and what was written stand.
TEST_F(HostFunctionsTest, FoldThatFails) {
    const FunctionKey key(L"repeat", m_text, m_int, ArgContainer::Separate);
    RegisterFunction<Repeat>(m_binary, key, m_text);
    const auto functor = m_binary.GetRawFunctions(key).GetRegularFactory()();
    auto& repeat = dynamic_cast<IBinaryFunctor<RIndirectString, int, RIndirectString>&>(*functor);
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

TEST_F(HostFunctionsTest, SpecialFoldAndFunctionOfValues) {
    const FunctionKey key(L"last", m_int, m_int, ArgContainer::Separate);
    RegisterFunction<LastNormal>(m_binary, key, m_int);
    const auto functor = m_binary.GetRawFunctions(key).GetSpecialFactory()();
    auto& last = dynamic_cast<IBinarySpecialFunctor<int, int, int>&>(*functor);
    const std::vector<int> inputs = {1, 2, 3};
    const std::vector<SpecialKind> kinds = {Null, Normal, Missing};
    int accumulator = 9;
    SpecialKind kind = Error;
    std::vector<int> outputs(3);
    std::vector<SpecialKind> outputKinds(3);
    last.Fold(accumulator, kind, inputs, kinds, outputs, outputKinds, FoldDirection::Forward);
    EXPECT_EQ(outputs, (std::vector<int>{9, 2, 2}));
    EXPECT_EQ(outputKinds, (std::vector<SpecialKind>{Error, Normal, Normal}));
    EXPECT_EQ(accumulator, 2);

    RegisterFunction<Largest>(m_registry->GetMultinaryFunctions(),
                              FunctionKey(L"largest", m_real, m_real, ArgContainer::Vector),
                              m_real);
    const auto largest =
        GetMultinaryFunction<double>(m_registry->GetMultinaryFunctions().GetFunctions(
            FunctionKey(L"largest", m_real, m_real, ArgContainer::Vector)));
    ASSERT_NE(largest, nullptr);
    EXPECT_EQ(largest({MakeStoreValue(m_real, 1.5), MakeStoreValue(m_real, 2.5)}), 2.5);
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
    const FunctionKey texts(L"f", m_text, m_int, ArgContainer::Separate);
    EXPECT_LUM_ERROR(FunctionOutputMismatch, "f",
                     RegisterFunction<IsLonger>(m_binary, texts, m_int));
    EXPECT_LUM_ERROR(
        FunctionOutputMismatch, "f",
        RegisterFunction<Largest>(m_registry->GetMultinaryFunctions(), one, RealType::Get32()));
    m_registry->VisitFunctions([](const FunctionKey& key, const FunctionInfo&) {
        ADD_FAILURE() << key.ToString().toStdString();
    });
}

}  // namespace
}  // namespace lum::core
