#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "tests/functions/FunctionTable.h"

namespace lum::core::functions_test {
namespace {

// What holds for every function of the registry, whatever it computes. Numbers here are without
// NaN and zeros, where minima differ by form and quotients fail.
template <typename Cell>
std::vector<Cell> PlainCells(test::Random& random, lumsize_t count) {
    std::vector<Cell> cells = AnyCells<Cell>(random, count, Palette::Tame);
    for (Cell& cell : cells) {
        if constexpr (std::is_arithmetic_v<Cell>) {
            cell = cell == 0 || cell == static_cast<Cell>(-1) ? Cell{1} : cell;
        }
    }
    return cells;
}

template <FunctionElement In, FunctionElement Out>
void CheckFolds(IRawBinaryFunctor& functor, bool isSpecial, lumsize_t count, test::Random& random) {
    auto cells = PlainCells<CellT<In>>(random, count);
    auto kinds = AnyKinds(random, count);
    const auto first = PlainCells<CellT<Out>>(random, 1);
    const std::vector<SpecialKind> firstKind = {AnyKind(random)};
    // The outputs, and behind them the accumulator.
    const auto fold = [&](FoldDirection direction, bool hasOutputs) {
        ColumnWithKinds<In> input(random, cells, kinds);
        ColumnWithKinds<Out> last(random, first, firstKind);
        ColumnWithKinds<Out> output(random, std::vector<CellT<Out>>(hasOutputs ? count : 0),
                                    std::vector<SpecialKind>(hasOutputs ? count : 0));
        if (isSpecial) {
            functor.FoldRaw(last.cells.View(), last.kinds.View(), input.cells.PayloadView(),
                            input.kinds.PayloadView(), output.cells.View(), output.kinds.View(),
                            direction);
        } else {
            functor.FoldRaw(last.cells.View(), input.cells.PayloadView(), output.cells.View(),
                            direction);
        }
        std::vector<std::pair<CellT<Out>, SpecialKind>> results;
        for (ColumnWithKinds<Out>* const column : {&output, &last}) {
            for (uint64 i = 0; i < column->cells.Cells().GetSize(); ++i) {
                results.emplace_back(column->cells.Cells()[i], column->kinds.Cells()[i]);
            }
        }
        return results;
    };

    const auto left = fold(FoldDirection::Forward, /*hasOutputs=*/true);
    EXPECT_EQ(left.back(), fold(FoldDirection::Forward, /*hasOutputs=*/false).back());
    auto right = fold(FoldDirection::Backward, /*hasOutputs=*/true);
    EXPECT_EQ(right.back(), fold(FoldDirection::Backward, /*hasOutputs=*/false).back());
    if (count != 0) {
        EXPECT_EQ(left.back().first, left[count - 1].first);
        EXPECT_EQ(right.back().first, right.front().first);
    }
    std::reverse(cells.begin(), cells.end());
    std::reverse(kinds.begin(), kinds.end());
    std::reverse(right.begin(), right.end() - 1);
    EXPECT_EQ(right, fold(FoldDirection::Forward, /*hasOutputs=*/true));
}

template <FunctionElement In, FunctionElement Out>
void CheckFolds(const LumRawBinaryFunctions& functions, test::Random& random) {
    for (const lumsize_t count : {0U, 1U, 2U, 33U, 300U, 1100U}) {
        for (const bool isSpecial : {false, true}) {
            const auto make =
                isSpecial ? functions.GetSpecialFactory() : functions.GetRegularFactory();
            if (make != nullptr) {
                CheckFolds<In, Out>(*make(), isSpecial, count, random);
            }
        }
    }
}

TEST(FunctorLawsTest, FoldsOfEveryFunction) {
    const auto registry = MakeBuiltinRegistry();
    test::Random random;
    SCOPED_TRACE(random.Trace());
    int functionCount = 0;
    registry->GetBinaryFunctions().VisitFunctions(
        [&](const FunctionKey& key, const RegisteredFunctions& entry) {
            SCOPED_TRACE(key.ToString().toStdString());
            const LumRawBinaryFunctions functions(entry);
            ForTypes<bool, int, long long, float, double, LumDateTime, RIndirectString>(
                [&]<typename T>() {
                    if (key.GetInputTypes()[1] == TypeFor<T>()) {
                        ++functionCount;
                        key.GetInputTypes()[0] == key.GetInputTypes()[1]
                            ? CheckFolds<T, T>(functions, random)
                            : CheckFolds<T, int>(functions, random);
                    }
                });
        });
    EXPECT_GT(functionCount, 50);
}

// A column without specials may go through either form.
template <FunctionElement T>
void CheckFormsAgree(const LumRawBinaryFunctions& functions, test::Random& random) {
    const auto regular = functions.GetRegularFactory()();
    const auto special = functions.GetSpecialFactory()();
    for (const lumsize_t count : {0U, 1U, 35U, 300U, 1100U}) {
        const std::vector<SpecialKind> kinds(count, SpecialKind::Normal);
        ColumnWithKinds<T> first(random, PlainCells<T>(random, count), kinds);
        ColumnWithKinds<T> second(random, PlainCells<T>(random, count), kinds);
        ColumnWithKinds<T> plain(random, count);
        ColumnWithKinds<T> output(random, count);
        regular->ApplyRaw(first.cells.View(), second.cells.View(), plain.cells.View());
        special->ApplyRaw(first.cells.View(), first.kinds.View(), second.cells.View(),
                          second.kinds.View(), output.cells.View(), output.kinds.View());
        const ArrayView<T> expected = plain.cells.Cells();
        output.cells.Expect("forms", std::vector<T>(expected.begin(), expected.end()));
        output.kinds.Expect("forms", kinds);
    }
}

TEST(FunctorLawsTest, FormsAgreeWithoutSpecials) {
    const auto registry = MakeBuiltinRegistry();
    test::Random random;
    SCOPED_TRACE(random.Trace());
    int functionCount = 0;
    registry->GetBinaryFunctions().VisitFunctions(
        [&](const FunctionKey& key, const RegisteredFunctions& entry) {
            if (!entry.HasFunction() || !entry.HasSpecialFunction()) {
                return;
            }
            SCOPED_TRACE(key.ToString().toStdString());
            ForTypes<int, long long, float, double>([&]<typename T>() {
                if (key.GetInputTypes()[0] == TypeFor<T>()) {
                    ++functionCount;
                    CheckFormsAgree<T>(LumRawBinaryFunctions(entry), random);
                }
            });
        });
    EXPECT_EQ(functionCount, 7 * 4);
}

}  // namespace
}  // namespace lum::core::functions_test
