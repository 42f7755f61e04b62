#include <functional>

#include "tests/functions/BuiltinTables.h"

namespace lum::core::functions_test {

using enum SpecialKind;
using namespace FunctionNames;

template <typename T, typename Condition>
void AddCount(FunctionTable& table, const wchar_t* name, Condition counts) {
    table.Add(name, [=](int a, SpecialKind kindOfA, T x, SpecialKind kindOfX) {
        return ElementWithKind<int>(counts(x, kindOfX) ? Wrapping(a, 1, std::plus<>()) : a,
                                    kindOfA);
    });
}

void AddCounts(FunctionTable& table) {
    ForTypes<int, long long, float, double, RIndirectString, LumDateTime, bool, SV>(
        [&]<typename T>() {
            table.Add(COUNT_ALL, [](int a, T) { return Wrapping(a, 1, std::plus<>()); });
        });
    ForTypes<int, long long, float, double>([&]<typename T>() {
        AddCount<T>(table, COUNT, [](T, SpecialKind kind) { return kind == Normal; });
        AddCount<T>(table, COUNT_NEGATIVES,
                    [](T x, SpecialKind kind) { return kind == Normal && x < 0; });
    });
    ForTypes<int, long long, float, double, RIndirectString, LumDateTime, bool>([&]<typename T>() {
        AddCount<T>(table, COUNT_SPECIALS,
                    [](const T&, SpecialKind kind) { return kind != Normal; });
        AddCount<T>(table, COUNT_NULLS, [](const T&, SpecialKind kind) { return kind == Null; });
    });
}

}  // namespace lum::core::functions_test
