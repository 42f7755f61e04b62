#include <gtest/gtest.h>

#include <optional>

#include "lum/core/store/StoreValue.h"
#include "tests/functions/BuiltinTables.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core::functions_test {

using enum SpecialKind;
using namespace FunctionNames;

namespace {

template <typename T>
struct IsRepeated {
    bool operator()(const T& element) {
        const bool isFirst = !last.has_value() || !AreEqual(*last, element);
        if (isFirst) {
            last = element;
        }
        return isFirst;
    }
    static bool AreEqual(const T& a, const T& b) {
        if constexpr (std::is_same_v<T, SV>) {
            return a == nullptr || b == nullptr ? a == b : a->IsEqual(*b);
        } else {
            return a == b;
        }
    }
    std::optional<T> last;
};

}  // namespace

void AddFilters(FunctionTable& table) {
    const auto addSpecialFilters = [&]<typename T>(const Options& options) {
        table.Add(
            FILTER_NULL_AND_MISSING,
            [](T, SpecialKind kind) {
                return ElementWithKind<bool>(!(kind == Null || kind == Missing), Normal);
            },
            options);
        table.Add(
            KEEP_ONLY_NORMAL,
            [](T, SpecialKind kind) { return ElementWithKind<bool>(kind == Normal, Normal); },
            options);
    };
    ForTypes<int, long long, float, double, LumDateTime>(
        [&]<typename T>() { addSpecialFilters.template operator()<T>(Options()); });
    addSpecialFilters.template operator()<LumDateTime>(Options{.dateType = DateType::Get()});

    table.Add(KEEP_ONLY_TRUE, [](bool element) { return element; });
    table.Add(KEEP_ONLY_FALSE, [](bool element) { return !element; });
    ForTypes<RIndirectString, int, long long, SV>([&]<typename T>() {
        table.AddCreator(KEEP_ONLY_FIRST, {}, {MakeUse<bool(T)>({}, IsRepeated<T>())},
                         Options{.isStateful = true});
    });
}

namespace {

// What a filter of repetitions saw last is its own, and stays when a comparison fails.
TEST(BuiltinFilters, RepetitionsOfCollections) {
    const auto registry = MakeBuiltinRegistry();
    const auto make =
        registry->GetUnaryFunctions()
            .GetRawFunctions(FunctionKey(KEEP_ONLY_FIRST, SetType::Get(BoolType::Get())))
            .GetRegularCreatorFactory();
    const auto functor = make({});
    auto& filter = As<IUnaryFunctor<SV, bool>>(functor);
    const SV array = test::ColumnOf("i: 1 2");
    const SV number = MakeStoreValue(IntType::Get32(), 1);
    EXPECT_TRUE(filter.Apply(array));
    // Arrays cannot be compared.
    EXPECT_LUM_ERROR(IllegalComparison, "", filter.Apply(test::ColumnOf("i: 1 2")));
    EXPECT_TRUE(filter.Apply(number));
    const auto other = make({});
    EXPECT_TRUE((As<IUnaryFunctor<SV, bool>>(other).Apply(number)));
}

}  // namespace
}  // namespace lum::core::functions_test
