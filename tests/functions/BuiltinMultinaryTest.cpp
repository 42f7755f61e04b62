#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "lum/core/functions/FunctionFactories.h"
#include "lum/core/functions/FunctionNames.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueUtil.h"
#include "tests/functions/FunctionTable.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core::functions_test {
namespace {

using namespace FunctionNames;
using Values = std::vector<SV>;

/// A function of values that gives its result as text.
using Function = std::function<std::string(const Values&)>;

template <typename Out>
Function Showing(std::function<Out(const Values&)> function) {
    return [=](const Values& values) -> std::string {
        const Out value = function(values);
        if constexpr (std::is_floating_point_v<Out>) {
            // Which of two NaN a sum keeps is for the processor to say.
            return std::isnan(value) ? "NaN" : Column<Out>::Show(value);
        } else {
            return std::to_string(value);
        }
    };
}

/// What a function gives or how it fails, as text.
std::string OutcomeOf(const Function& function, const Values& values) {
    try {
        return function(values);
    } catch (const LumException& e) {
        return "error " + std::to_string(static_cast<int>(e.GetError())) + " " +
               e.GetDetails().toStdString();
    }
}

class BuiltinMultinaryTest : public testing::Test {
protected:
    template <typename Out>
    MultinaryFunction<Out> Get(const wchar_t* name, const Types& types) {
        const RegisteredFunctions& entry = m_registry->GetMultinaryFunctions().GetFunctions(
            FunctionKey(name, types, FunctionKey::ArgContainer::Vector));
        EXPECT_TRUE(entry.IsStateful());
        EXPECT_FALSE(entry.IsCreator());
        return GetMultinaryFunction<Out>(entry);
    }

    /// The function gives what the model does, or fails alike, for each of `inputs`; with another
    /// number of values it fails with its name.
    template <typename Out>
    void Check(const wchar_t* name, const Types& types, const std::vector<Values>& inputs,
               std::function<Out(const Values&)> model) {
        Types queryTypes = types;
        for (VariableTypeRef& type : queryTypes) {
            type = type.IsAnyType() ? VariableTypeRef(ColorType::Get()) : type;
        }
        const MultinaryFunction<Out> function = Get<Out>(name, queryTypes);
        ASSERT_NE(function, nullptr);
        CheckOutcomes(name, types.size(), inputs, Showing<Out>(function),
                      Showing<Out>(std::move(model)));
    }
    static void CheckOutcomes(const wchar_t* name, std::size_t inputCount,
                              const std::vector<Values>& inputs, const Function& function,
                              const Function& model) {
        for (const Values& values : inputs) {
            EXPECT_EQ(OutcomeOf(function, values), OutcomeOf(model, values))
                << name << " of " << testing::PrintToString(values);
        }
        const test::ExpectedFailure refusal{
            inputCount == 2 ? LumError::FunctionNeedsTwoInputs : LumError::OneInputNeeded,
            TStringCore(name).toStdString()};
        for (const std::size_t count : {0U, 1U, 2U, 3U}) {
            if (count != inputCount) {
                const Values values(count, inputs[0][0]);
                EXPECT_TRUE(test::FailsAs(refusal, [&] { function(values); }));
            }
        }
    }

    /// A function of two numbers, over all pairs of edges that `accepts` lets through.
    template <typename T>
    void CheckNumbers(
        const wchar_t* name, const std::function<T(T, T)>& model,
        const std::function<bool(T, T)>& accepts = [](T, T) { return true; }) {
        const VariableTypeRef type = TypeFor<T>();
        std::vector<Values> inputs;
        for (const T first : Column<T>::EdgeCells()) {
            for (const T second : Column<T>::EdgeCells()) {
                if (accepts(first, second)) {
                    inputs.push_back({MakeStoreValue<T>(type.Get(), first),
                                      MakeStoreValue<T>(type.Get(), second)});
                }
            }
        }
        Check<T>(name, {type, type}, inputs, [&](const Values& values) {
            return model(FetchStoreValue<T>(values[0]), FetchStoreValue<T>(values[1]));
        });
    }

    const std::unique_ptr<FunctionRegistry> m_registry = MakeBuiltinRegistry();
};

TEST_F(BuiltinMultinaryTest, HasTheseFunctionsAndNoOthers) {
    std::vector<std::string> held;
    m_registry->GetMultinaryFunctions().VisitFunctions(
        [&](const FunctionKey& key, const RegisteredFunctions& entry) {
            EXPECT_EQ(entry.GetOutputType(), m_registry->GetFunction(key).GetOutputType());
            EXPECT_FALSE(entry.HasSpecialFunction());
            held.push_back(Describe(key, m_registry->GetFunction(key), /*isSpecial=*/false));
        });
    const std::string r = RealType::Get32()->ToString().toStdString();
    const std::string d = RealType::Get64()->ToString().toStdString();
    const struct {
        std::vector<const char*> names;
        std::vector<std::string> types;
    } ofTwo[] = {{{"+", "-"}, {"i", "l", r, d}},
                 {{"*", "/"}, {"i", "l", d}},
                 {{"min", "max"}, {"l", d}},
                 {{"==", "!=", "<", "<=", ">", ">="}, {"AnyType"}},
                 {{"and"}, {"b"}}};
    std::vector<std::string> expected;
    for (const auto& [names, types] : ofTwo) {
        for (const char* const name : names) {
            for (const std::string& type : types) {
                expected.push_back(name + ("(vector {" + type) + ", " + type + "}) -> " +
                                   (type == "AnyType" ? "b" : type) + " regular");
            }
        }
    }
    expected.push_back("isTrue(vector {AnyType}) -> b regular");
    expected.push_back("isFalse(vector {AnyType}) -> b regular");
    EXPECT_THAT(held, testing::UnorderedElementsAreArray(expected));

    std::size_t count = 0;
    m_registry->VisitFunctions([&](const FunctionKey&, const FunctionInfo&) { ++count; });
    const auto countOf = [](const auto& functions) {
        std::size_t own = 0;
        functions.VisitFunctions([&](const FunctionKey&, const RegisteredFunctions&) { ++own; });
        return own;
    };
    EXPECT_EQ(count, held.size() + countOf(m_registry->GetUnaryFunctions()) +
                         countOf(m_registry->GetBinaryFunctions()));
}

TEST_F(BuiltinMultinaryTest, Arithmetic) {
    ForTypes<int, long long, float, double>([&]<typename T>() {
        CheckNumbers<T>(ADD, [](T a, T b) { return Wrapping(a, b, std::plus<>()); });
        CheckNumbers<T>(SUBTRACT, [](T a, T b) { return Wrapping(a, b, std::minus<>()); });
    });
    ForTypes<int, long long, double>([&]<typename T>() {
        CheckNumbers<T>(MULTIPLY, [](T a, T b) { return Wrapping(a, b, std::multiplies<>()); });
        // Zero divides reals here.
        CheckNumbers<T>(
            DIVIDE, [](T a, T b) { return T(a / b); },
            [](T, T b) { return std::is_floating_point_v<T> || (b != 0 && b != -1); });
    });
}

TEST_F(BuiltinMultinaryTest, MinimaAndMaximaAreFuzzy) {
    ForTypes<long long, double>([&]<typename T>() {
        const auto choose = [](bool isFirst, T a, T b) { return isFirst ? a : b; };
        const auto box = [](T number) { return MakeStoreValue<T>(TypeFor<T>().Get(), number); };
        CheckNumbers<T>(MIN,
                        [&](T a, T b) { return choose(box(a)->FuzzyIsLessThan(*box(b)), a, b); });
        CheckNumbers<T>(
            MAX, [&](T a, T b) { return choose(box(a)->FuzzyIsGreaterThan(*box(b)), a, b); });
    });
    const Type* const real = RealType::Get64();
    const double next = std::nextafter(1.0, 2.0);
    const Values nearlyEqual = {MakeStoreValue(real, 1.0), MakeStoreValue(real, next)};
    EXPECT_EQ(Get<double>(MIN, {real, real})(nearlyEqual), next);
    EXPECT_EQ(Get<double>(MAX, {real, real})({nearlyEqual[1], nearlyEqual[0]}), 1.0);
}

TEST_F(BuiltinMultinaryTest, Comparisons) {
    const Values values = {
        MakeStoreValue(IntType::Get32(), 1),
        MakeStoreValue(IntType::Get64(), 1LL),
        MakeStoreValue(RealType::Get64(), 1.0),
        MakeStoreValue(RealType::Get64(), std::nextafter(1.0, 2.0)),
        MakeStoreValue(RealType::Get32(), 2.5F),
        MakeStoreValue(RealType::Get64(), std::numeric_limits<double>::quiet_NaN()),
        MakeStoreValue(BoolType::Get(), true),
        MakeStoreValue<RIndirectString>(StringType::Get(), L"1"),
        test::ColumnOf("i: 1 2")->AsArray().GetElement(1),
        test::ColumnOf("i: 1!Null -")->AsArray().GetElement(0),
        test::ColumnOf("i: 1 2"),
    };
    std::vector<Values> pairs;
    for (const SV& first : values) {
        for (const SV& second : values) {
            pairs.push_back({first, second});
        }
    }
    const auto check = [&](const wchar_t* name, auto compare) {
        Check<bool>(name, {VariableTypeRef::AnyType, VariableTypeRef::AnyType}, pairs,
                    [&](const Values& two) { return compare(*two[0], *two[1]); });
    };
    using Value = const StoreValue&;
    const auto isEqual = [](Value a, Value b) { return a.FuzzyIsEqual(b); };
    const auto isLess = [](Value a, Value b) { return a.FuzzyIsLessThan(b); };
    check(EQUAL_TO, isEqual);
    check(NOT_EQUAL_TO, std::not_fn(isEqual));
    check(LESS_THAN, isLess);
    check(LESS_THAN_OR_EQUAL, [&](Value a, Value b) { return isLess(a, b) || isEqual(a, b); });
    check(GREATER_THAN, [&](Value a, Value b) { return isLess(b, a); });
    check(GREATER_THAN_OR_EQUAL, [&](Value a, Value b) { return isLess(b, a) || isEqual(a, b); });

    const auto compare = [&](const wchar_t* name, std::size_t first, std::size_t second) {
        return Get<bool>(name,
                         {IntType::Get32(), StringType::Get()})({values[first], values[second]});
    };
    EXPECT_TRUE(compare(EQUAL_TO, 0, 2) && compare(EQUAL_TO, 2, 3) && compare(LESS_THAN, 0, 4));
    EXPECT_FALSE(compare(LESS_THAN, 2, 3) || compare(EQUAL_TO, 0, 6));
    EXPECT_THROW(compare(LESS_THAN, 0, 6), LumRuntimeException);
}

TEST_F(BuiltinMultinaryTest, Bools) {
    const SV yes = MakeStoreValue(BoolType::Get(), true);
    const SV no = MakeStoreValue(BoolType::Get(), false);
    const SV number = MakeStoreValue(IntType::Get32(), 1);
    const auto fetch = [](const SV& value) { return FetchStoreValue<bool>(value); };
    // What stands behind false is not looked at, be it a number or nothing at all.
    Check<bool>(
        AND, {BoolType::Get(), BoolType::Get()},
        {{yes, yes}, {yes, no}, {no, yes}, {no, number}, {no, SV()}, {yes, number}, {number, yes}},
        [&](const Values& two) { return fetch(two[0]) && fetch(two[1]); });
    Check<bool>(IS_TRUE, {VariableTypeRef::AnyType}, {{yes}, {no}, {number}},
                [&](const Values& one) { return fetch(one[0]); });
    Check<bool>(IS_FALSE, {VariableTypeRef::AnyType}, {{yes}, {no}, {number}},
                [&](const Values& one) { return !fetch(one[0]); });
}

TEST_F(BuiltinMultinaryTest, RefuseNothing) {
    const Types longs = {IntType::Get64(), IntType::Get64()};
    const SV number = MakeStoreValue(IntType::Get64(), 1LL);
    for (const wchar_t* const name : {EQUAL_TO, LESS_THAN}) {
        EXPECT_LUM_ERROR(NullArgument, "", Get<bool>(name, longs)({number, nullptr}));
    }
    for (const wchar_t* const name : {MIN, ADD}) {
        EXPECT_LUM_ERROR(NullArgument, "", Get<long long>(name, longs)({nullptr, number}));
    }
}

}  // namespace
}  // namespace lum::core::functions_test
