#include <algorithm>
#include <functional>

#include "tests/functions/BuiltinTables.h"

namespace lum::core::functions_test {

using enum SpecialKind;
using namespace FunctionNames;

namespace {

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
    const std::vector<CellT<T>>& edges = Column<CellT<T>>::EdgeCells();
    if constexpr (std::is_same_v<T, bool>) {
        return {{}, {1}, {0}, {0, 1}};
    } else {
        return {{}, {edges[1]}, {edges[0], edges[2], edges[3], edges[edges.size() - 1]}, edges};
    }
}

}  // namespace

void AddSets(FunctionTable& table) {
    ForTypes<bool, int, long long, float, double, RIndirectString>(
        [&]<typename T>() { table.AddWithSet<T>(KEEP_ONLY, Sets<T>(), IsMember<T>); });
    ForTypes<int, long long, float, double, RIndirectString>([&]<typename T>() {
        table.AddWithSet<T>(IS_IN_SET, Sets<T>(), IsMember<T>);
        table.AddWithSet<T>(IS_NOT_IN_SET, Sets<T>(), std::not_fn(IsMember<T>));
    });
}

}  // namespace lum::core::functions_test
