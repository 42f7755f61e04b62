#include "lum/core/functions/InstructionSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <tuple>
#include <vector>

#include "core/main/functions/Arithmetic.h"
#include "core/main/functions/FoldKernels.h"
#include "core/main/functions/NullOutOfDomain.h"
#include "tests/functions/FunctionColumns.h"

#ifdef __x86_64__

namespace lum::core::functions_test {
namespace {

// The tables of functions run with the best instructions of the processor at hand; here the loops
// that are written for them run with both sets.
class InstructionSetTest : public testing::Test {
protected:
    void SetUp() override {
        if (!detail::kHasAvx2) {
            GTEST_SKIP() << "the processor has one instruction set";
        }
    }

    // `run(execute)` computes cells by execute(loop).
    template <typename Run>
    static void ExpectAgreement(const Run& run, bool isAnyNaN = false) {
        const auto baseline = run([](auto loop) { loop(); });
        const auto best = run([](auto loop) { detail::RunWithAvx2(loop); });
        ASSERT_EQ(baseline.size(), best.size());
        for (std::size_t i = 0; i < best.size(); ++i) {
            using Cell = std::remove_cvref_t<decltype(best[0])>;
            ASSERT_TRUE(Column<Cell>::AreSame(baseline[i], best[i], isAnyNaN))
                << "at " << i << " of " << best.size() << ": " << Column<Cell>::Show(baseline[i])
                << " and " << Column<Cell>::Show(best[i]);
        }
    }

    test::Random m_random;
};

TEST_F(InstructionSetTest, Folds) {
    SCOPED_TRACE(m_random.Trace());
    ForTypes<int, long long, float, double>([&]<typename T>() {
        ForEachColumn(m_random, [&](lumsize_t count, Palette palette) {
            const std::vector<SpecialKind> kinds = AnyKinds(m_random, count);
            const std::vector<T> cells = Column<T>::AnyCells(m_random, kinds, palette);
            const T first = Column<T>::AnyCell(m_random, palette);
            const auto checkSpecial = [&](auto generator, bool isAnyNaN) {
                ExpectAgreement(
                    [&](auto execute) {
                        T accumulator = first;
                        SpecialKind kind = SpecialKind::Missing;
                        execute([&]() LUM_ALWAYS_INLINE {
                            generator.template FoldColumn<true, false>(
                                accumulator, kind, cells.data(), kinds.data(), nullptr, nullptr,
                                cells.size());
                        });
                        return std::vector<T>{accumulator};
                    },
                    isAnyNaN);
            };
            checkSpecial(SumOfNormal<T>(), /*isAnyNaN=*/true);
            checkSpecial(BestOfNormal<T, BestOf::Least>(), /*isAnyNaN=*/false);
            checkSpecial(BestOfNormal<T, BestOf::Greatest>(), /*isAnyNaN=*/false);
            if constexpr (std::is_floating_point_v<T>) {
                const auto check = [&](auto generator) {
                    ExpectAgreement([&](auto execute) {
                        T accumulator = first;
                        execute([&]() LUM_ALWAYS_INLINE {
                            generator.template FoldColumn<true, false>(accumulator, cells.data(),
                                                                       nullptr, cells.size());
                        });
                        return std::vector<T>{accumulator};
                    });
                };
                check(BestElement<T, BestOf::Least>());
                check(BestElement<T, BestOf::Greatest>());
            }
        });
    });
}

TEST_F(InstructionSetTest, RealFunctions) {
    SCOPED_TRACE(m_random.Trace());
    ForEachColumn(m_random, [&](lumsize_t count, Palette palette) {
        const std::vector<SpecialKind> kinds = AnyKinds(m_random, count);
        const std::vector<double> cells = Column<double>::AnyCells(m_random, kinds, palette);
        const auto check = [&]<typename Function>() {
            const NullOutOfDomain<double, double, Function> generator;
            ExpectAgreement([&](auto execute) {
                std::vector<double> outputs(count);
                std::vector<SpecialKind> outputKinds(count);
                execute([&]() LUM_ALWAYS_INLINE {
                    if constexpr (requires { generator.ApplyColumns({}, {}, {}, {}, 0); }) {
                        generator.ApplyColumns(cells.data(), kinds.data(), outputs.data(),
                                               outputKinds.data(), count);
                    } else {
                        for (lumsize_t i = 0; i < count; ++i) {
                            std::tie(outputs[i], outputKinds[i]) = generator(cells[i], kinds[i]);
                        }
                    }
                });
                return outputs;
            });
        };
        check.template operator()<NaturalLogarithm>();
        check.template operator()<InverseHyperbolicSine>();
        check.template operator()<HyperbolicSine>();
        check.template operator()<Exponential>();
        check.template operator()<SquareRoot>();
    });
}

TEST_F(InstructionSetTest, FloorOfSignallingNaN) {
    ForTypes<float, double>([&]<typename T>() {
        const std::vector<T> cells(100, std::numeric_limits<T>::signaling_NaN());
        ExpectAgreement([&](auto execute) {
            std::vector<T> outputs(cells.size());
            execute([&]() LUM_ALWAYS_INLINE {
                std::transform(cells.begin(), cells.end(), outputs.begin(), Floor<T>);
            });
            return outputs;
        });
    });
}

}  // namespace
}  // namespace lum::core::functions_test

#endif
