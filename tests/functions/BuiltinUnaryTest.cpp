#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <functional>
#include <optional>

#include "lum/core/store/StoreValue.h"
#include "tests/functions/FunctionTable.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/LumErrorMatchers.h"

namespace lum::core::functions_test {
namespace {

using enum SpecialKind;
using namespace FunctionNames;
template <typename T>
using Result = ElementWithKind<T>;

// The rule of most special forms: zero of the kind Null, unless the element is normal.
template <typename T>
Result<T> NullUnless(bool isNormal, T value) {
    return isNormal ? Result<T>(value, Normal) : Result<T>(T(), Null);
}

template <typename T>
std::vector<T> Constants() {
    if constexpr (std::is_integral_v<T>) {
        return {0, 1, -3, std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()};
    } else {
        return {0, -T{0}, 1, T(-2.5), std::numeric_limits<T>::infinity()};
    }
}

template <typename T>
bool IsMember(const T& element, const std::vector<CellT<T>>& members) {
    CellT<T> cell{};
    Cell<T>::Store(cell, element);
    return std::any_of(members.begin(), members.end(), [&](const CellT<T>& member) {
        return Column<CellT<T>>::AreSame(member, cell);
    });
}

// Members that columns have, and others: reals are told apart by their bits.
template <typename T>
std::vector<std::vector<CellT<T>>> Sets() {
    const std::vector<CellT<T>>& edges = EdgeCells<CellT<T>>();
    if constexpr (std::is_same_v<T, bool>) {
        return {{}, {1}, {0}, {0, 1}};
    } else {
        return {{}, {edges[1]}, {edges[0], edges[2], edges[3], edges[edges.size() - 1]}, edges};
    }
}

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

void AddFilters(FunctionTable& table) {
    const auto addSpecialFilters = [&]<typename T>(const Options& options) {
        table.Add(
            FILTER_NULL_AND_MISSING,
            [](T, SpecialKind kind) {
                return Result<bool>(!(kind == Null || kind == Missing), Normal);
            },
            options);
        table.Add(
            KEEP_ONLY_NORMAL,
            [](T, SpecialKind kind) { return Result<bool>(kind == Normal, Normal); }, options);
    };
    ForTypes<int, long long, float, double, LumDateTime>(
        [&]<typename T>() { addSpecialFilters.template operator()<T>(Options()); });
    addSpecialFilters.template operator()<LumDateTime>(Options{.dateType = DateType::Get()});

    ForTypes<bool, int, long long, float, double, RIndirectString>(
        [&]<typename T>() { table.AddWithSet<T>(KEEP_ONLY, Sets<T>(), IsMember<T>); });
    table.Add(KEEP_ONLY_TRUE, [](bool element) { return element; });
    table.Add(KEEP_ONLY_FALSE, [](bool element) { return !element; });
    ForTypes<RIndirectString, int, long long, SV>([&]<typename T>() {
        table.AddCreator<bool(T)>(KEEP_ONLY_FIRST, {}, {{{}, IsRepeated<T>()}},
                                  Options{.isStateful = true});
    });
}

void AddArithmetic(FunctionTable& table) {
    ForTypes<float, double>([&]<typename T>() {
        table.Add(ABS, [](T x) { return std::copysign(x, T{1}); });
        // Only some processors make a signalling NaN a quiet one here.
        table.Add(
            FLOOR, [](T x) { return std::floor(x); }, Options{.isAnyNaN = true});
    });
    ForTypes<int, long long, float, double>([&]<typename T>() {
        table.Add(INC, [](T x) { return Wrapping(x, T{1}, std::plus<>()); });
        table.Add(DEC, [](T x) { return Wrapping(x, T{1}, std::minus<>()); });
        table.Add(NEGATE, [](T x) {
            if constexpr (std::is_integral_v<T>) {
                return Wrapping(T{0}, x, std::minus<>());
            } else {
                return std::copysign(x, std::signbit(x) ? T{1} : T{-1});
            }
        });
        table.AddWithConstant<T(T), T>(ADD_CONSTANT, Constants<T>(), [](T x, T constant) {
            return Wrapping(x, constant, std::plus<>());
        });
        table.AddWithConstant<T(T), T>(MULTIPLY_CONSTANT, Constants<T>(), [](T x, T constant) {
            return Wrapping(x, constant, std::multiplies<>());
        });
        table.AddWithConstant<T(T), T>(DIVIDE_CONSTANT, {1, 2, -7, std::numeric_limits<T>::max()},
                                       [](T x, T constant) { return T(x / constant); });
    });
}

void AddComparisons(FunctionTable& table) {
    const auto addBoth = [&]<typename T>(const wchar_t* name, auto compare) {
        table.AddWithConstant<bool(T), T>(name, Constants<T>(), compare);
        table.AddWithConstant<Result<bool>(T, SpecialKind), T>(
            name, Constants<T>(), [=](T x, SpecialKind kind, T constant) {
                return NullUnless(kind == Normal, bool{compare(x, constant)});
            });
    };
    ForTypes<int, long long, float, double>([&]<typename T>() {
        addBoth.template operator()<T>(LESS_THAN, std::less<T>());
        addBoth.template operator()<T>(GREATER_THAN, std::greater<T>());
    });
    addBoth.template operator()<int>(EQUAL_TO_VALUE, std::equal_to<int>());
    table.AddWithConstant<bool(long long), long long>(EQUAL_TO_VALUE, Constants<long long>(),
                                                      std::equal_to<>());
    table.AddWithConstant<bool(RIndirectString), RIndirectString>(
        EQUAL_TO_VALUE, {L"", L"a", L"\u00e4"},
        [](const RIndirectString& x, const RIndirectString& constant) {
            return x.toStdString() == constant.toStdString();
        });

    const auto keepKind = [](const auto& x, SpecialKind kind, const auto& constant) {
        return Result<bool>(kind == Normal && x >= constant, kind);
    };
    ForTypes<int, long long, float, double>([&]<typename T>() {
        table.AddWithConstant<Result<bool>(T, SpecialKind), T>(GREATER_THAN_OR_EQUAL,
                                                               Constants<T>(), keepKind);
    });
    table.AddWithConstant<Result<bool>(LumDateTime, SpecialKind), LumDateTime>(
        GREATER_THAN_OR_EQUAL, EdgeCells<LumDateTime>(), keepKind);

    ForTypes<int, long long, float, double, RIndirectString>([&]<typename T>() {
        table.AddWithSet<T>(IS_IN_SET, Sets<T>(), IsMember<T>);
        table.AddWithSet<T>(IS_NOT_IN_SET, Sets<T>(), std::not_fn(IsMember<T>));
    });
}

void AddMaps(FunctionTable& table) {
    ForTypes<int, long long, float, double, RIndirectString>([&]<typename T>() {
        table.Add(NORMALIZE, [](T x, SpecialKind kind) {
            return Result<T>(kind == Normal ? x : T(), Normal);
        });
    });
    ForTypes<bool, int, long long, float, double, LumDateTime>(
        [&]<typename T>() { table.Add(ASSIGN, [](T x) { return x; }); });
    table.Add(
        ASSIGN, [](LumDateTime x) { return x; }, Options{.dateType = DateType::Get()});

    const auto addReal = [&]<typename In, typename Out>(const wchar_t* name, auto accepts,
                                                        auto function) {
        table.Add(name, [=](In x, SpecialKind kind) {
            return NullUnless(kind == Normal && accepts(x),
                              static_cast<Out>(function(static_cast<Out>(x))));
        });
    };
    const auto isAny = [](auto) { return true; };
    const auto isPositive = [](auto x) { return x > 0; };
    const auto isNotNegative = [](auto x) { return !(x < 0); };
    ForTypes<double, long long>([&]<typename T>() {
        addReal.template operator()<T, double>(LN, isPositive,
                                               [](double x) { return std::log(x); });
        addReal.template operator()<T, double>(SYMLOG, isAny,
                                               [](double x) { return std::asinh(x); });
        addReal.template operator()<T, double>(SQRT, isNotNegative,
                                               [](double x) { return std::sqrt(x); });
    });
    ForTypes<float, int>([&]<typename T>() {
        addReal.template operator()<T, float>(SQRT, isNotNegative,
                                              [](float x) { return std::sqrt(x); });
    });
    addReal.template operator()<double, double>(EXP, isAny, [](double x) { return std::exp(x); });
    addReal.template operator()<double, double>(SYMLOGINV, isAny,
                                                [](double x) { return std::sinh(x); });
}

// Integers keep their low bits, reals are cut; a real that does not fit gives the lowest integer.
template <typename In, typename Out>
Out Convert(In x) {
    if constexpr (std::is_integral_v<Out> && std::is_floating_point_v<In>) {
        const long double whole = std::trunc(static_cast<long double>(x));
        const bool fits = whole >= static_cast<long double>(std::numeric_limits<Out>::lowest()) &&
                          whole <= static_cast<long double>(std::numeric_limits<Out>::max());
        return fits ? static_cast<Out>(whole) : std::numeric_limits<Out>::lowest();
    } else {
        return static_cast<Out>(x);
    }
}

std::chrono::year_month_day CalendarDay(LumDateTime date, int daysLater = 0) {
    constexpr long long kJulianDayOf1970 = 2440588;
    const auto julianDay = static_cast<long long>(date.GetValue() / LumDateTime::kTicksPerDay) + 1;
    return std::chrono::sys_days(std::chrono::days(julianDay - kJulianDayOf1970 + daysLater));
}

// The year of a week is that of its Thursday, and so is the week's number.
std::pair<int, int> YearAndWeek(LumDateTime date) {
    const auto weekday = std::chrono::weekday(CalendarDay(date)).iso_encoding();
    const auto thursday = CalendarDay(date, 4 - static_cast<int>(weekday));
    const std::chrono::sys_days first = thursday.year() / std::chrono::January / 1;
    const auto day = (std::chrono::sys_days(thursday) - first).count();
    return {static_cast<int>(thursday.year()), static_cast<int>(day / 7 + 1)};
}

void AddConversions(FunctionTable& table) {
    const auto add = [&]<typename In, typename Out>(const wchar_t* name) {
        table.Add(name, Convert<In, Out>);
    };
    const auto addSpecial = [&]<typename In, typename Out>(const wchar_t* name) {
        table.Add(name, [](In x, SpecialKind kind) {
            return Result<Out>(Convert<In, Out>(x), kind == Normal ? Normal : Null);
        });
    };
    ForTypes<long long, float, double>([&]<typename T>() { add.operator()<T, int>(TO_INT32); });
    ForTypes<int, float, double>([&]<typename T>() { add.operator()<T, long long>(TO_INT64); });
    ForTypes<int, long long, double>([&]<typename T>() { add.operator()<T, float>(TO_REAL32); });
    ForTypes<int, long long, float, double>(
        [&]<typename T>() { add.operator()<T, double>(TO_REAL64); });
    addSpecial.operator()<double, float>(TO_REAL32);
    ForTypes<bool, long long, double>(
        [&]<typename T>() { addSpecial.operator()<T, double>(TO_REAL64); });

    table.Add(TO_REAL64, [](LumDateTime x) { return x.ToDouble(); });
    table.Add(TO_REAL64, [](LumDateTime x, SpecialKind kind) {
        return NullUnless(kind == Normal, x.ToDouble());
    });
    table.Add(TO_DATETIME, [](double x) { return LumDateTime::FromDouble(x); });
    table.Add(TO_COLOR, [](int x) { return LumColor::FromInt32(x); });
    table.Add(TO_COLOR,
              [](long long x) { return LumColor::FromInt32(Convert<long long, int>(x)); });

    const Options dates{.domain = Domain::GregorianDates};
    table.Add(
        GET_MONTH,
        [](LumDateTime x) {
            return static_cast<int>(static_cast<unsigned>(CalendarDay(x).month()));
        },
        dates);
    table.Add(
        GET_YEAR, [](LumDateTime x) { return static_cast<int>(CalendarDay(x).year()); }, dates);
    table.Add(
        GET_ISO_WEEK, [](LumDateTime x) { return YearAndWeek(x).second; }, dates);
    table.Add(
        GET_ISO_YEAR, [](LumDateTime x) { return YearAndWeek(x).first; }, dates);
}

class BuiltinUnaryTest : public testing::Test {
protected:
    const test::CollatorPoolGuard m_pool{std::make_shared<test::FoldingCollatorPool>()};
    const std::unique_ptr<FunctionRegistry> m_registry = MakeBuiltinRegistry();
};

TEST_F(BuiltinUnaryTest, HasTheseFunctionsAndNoOthers) {
    FunctionTable table;
    AddFilters(table);
    AddArithmetic(table);
    AddComparisons(table);
    AddMaps(table);
    AddConversions(table);
    table.ExpectToBe(m_registry->GetUnaryFunctions(), *m_registry);
}

TEST_F(BuiltinUnaryTest, Filters) {
    FunctionTable table;
    AddFilters(table);
    table.Check(*m_registry);
}

TEST_F(BuiltinUnaryTest, Arithmetic) {
    FunctionTable table;
    AddArithmetic(table);
    table.Check(*m_registry);
}

TEST_F(BuiltinUnaryTest, Comparisons) {
    FunctionTable table;
    AddComparisons(table);
    table.Check(*m_registry);
}

TEST_F(BuiltinUnaryTest, Maps) {
    FunctionTable table;
    AddMaps(table);
    table.Check(*m_registry);
}

TEST_F(BuiltinUnaryTest, Conversions) {
    FunctionTable table;
    AddConversions(table);
    table.Check(*m_registry);
}

// What a filter of repetitions saw last is its own, and stays when a comparison fails.
TEST_F(BuiltinUnaryTest, RepetitionsOfCollections) {
    const auto make =
        m_registry->GetUnaryFunctions()
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
