#include <functional>

#include "tests/functions/BuiltinTables.h"

namespace lum::core::functions_test {

using enum SpecialKind;
using namespace FunctionNames;

void AddComparisons(FunctionTable& table) {
    const auto addBoth = [&]<typename T>(const wchar_t* name, auto compare) {
        table.AddWithConstant<bool(T), T>(name, Constants<T>(), compare);
        table.AddWithConstant<ElementWithKind<bool>(T, SpecialKind), T>(
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
        return ElementWithKind<bool>(kind == Normal && x >= constant, kind);
    };
    ForTypes<int, long long, float, double>([&]<typename T>() {
        table.AddWithConstant<ElementWithKind<bool>(T, SpecialKind), T>(GREATER_THAN_OR_EQUAL,
                                                                        Constants<T>(), keepKind);
    });
    table.AddWithConstant<ElementWithKind<bool>(LumDateTime, SpecialKind), LumDateTime>(
        GREATER_THAN_OR_EQUAL, Column<LumDateTime>::EdgeCells(), keepKind);
}

}  // namespace lum::core::functions_test
