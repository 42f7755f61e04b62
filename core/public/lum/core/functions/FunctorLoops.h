#pragma once

#include <type_traits>
#include <utility>

#include "lum/core/Check.h"
#include "lum/core/functions/ElementTypes.h"
#include "lum/core/functions/IBinaryFunctor.h"
#include "lum/core/functions/InstructionSet.h"
#include "lum/core/store/ArrayView.h"
#include "lum/core/utility/LumSize.h"

/// The loops that functors share. A generator is the object that holds a function; its call
/// operator is inlined into the loop.

namespace lum::core::detail {

template <typename... Elements>
inline constexpr bool kHavePlainCells = (std::is_trivially_copyable_v<CellT<Elements>> && ...);

/// The folds that can be worth wider instructions: each step of the others waits for the last one.
template <typename In, typename Out, bool kForward, bool kEmit>
inline constexpr bool kFoldsSideBySide = kHavePlainCells<In, Out>&& kForward && !kEmit;

/// Runs `loop` over `generator`. A generator without state that is cheap to copy is copied, so that
/// the compiler sees that no output overlaps the constant in it. Columns of plain cells are worth
/// the choice of an instruction set.
template <bool kIsPlain, bool kIsStateless, typename Generator, typename Loop>
LUM_ALWAYS_INLINE inline void RunLoop(Generator& generator, const Loop& loop) {
    constexpr std::size_t kMostCopied = 64;  // Bytes; what is larger is no matter of registers.
    if constexpr (!kIsStateless || !std::is_trivially_copyable_v<Generator> ||
                  sizeof(Generator) > kMostCopied) {
        loop(generator);
    } else if constexpr (kIsPlain) {
        RunOnBestInstructionSet([loop, copy = generator]() LUM_ALWAYS_INLINE { loop(copy); });
    } else {
        const Generator copy = generator;
        loop(copy);
    }
}

/// Keeps the accumulator of a fold in a local variable, which no output overlaps, and stores it
/// back at the end, also when an element function throws.
template <FunctionElement T>
class FoldAccumulator {
public:
    explicit FoldAccumulator(CellT<T>& cell) : m_cell(cell), m_value(Cell<T>::Load(cell)) {}
    FoldAccumulator(const FoldAccumulator&) = delete;
    FoldAccumulator& operator=(const FoldAccumulator&) = delete;
    ~FoldAccumulator() { Cell<T>::Store(m_cell, std::move(m_value)); }

    T& Get() noexcept { return m_value; }

private:
    CellT<T>& m_cell;
    T m_value;
};

/// The same for the accumulator's kind.
class FoldKind {
public:
    explicit FoldKind(SpecialKind& cell) noexcept : m_cell(cell), m_kind(cell) {}
    FoldKind(const FoldKind&) = delete;
    FoldKind& operator=(const FoldKind&) = delete;
    ~FoldKind() { m_cell = m_kind; }

    SpecialKind& Get() noexcept { return m_kind; }

private:
    SpecialKind& m_cell;
    SpecialKind m_kind;
};

/// Calls `step` with each index of `count`, from the first or from the last.
template <bool kForward, typename Step>
LUM_ALWAYS_INLINE inline void ForEachIndex(uint64 count, Step step) {
    for (uint64 index = 0; index < count; ++index) {
        step(kForward ? index : count - 1 - index);
    }
}

/// The fold of a regular function, an element at a time.
template <FunctionElement In, FunctionElement Out, bool kForward, bool kEmit, typename Generator>
LUM_ALWAYS_INLINE inline void FoldElements(Generator& generator, Out& accumulator,
                                           const CellT<In>* inputs, CellT<Out>* outputs,
                                           uint64 count) {
    ForEachIndex<kForward>(count, [&](uint64 index) LUM_ALWAYS_INLINE {
        accumulator = generator(accumulator, Cell<In>::Load(inputs[index]));
        if constexpr (kEmit) {
            Cell<Out>::Store(outputs[index], accumulator);
        }
    });
}

/// The fold of a special function, an element at a time.
template <FunctionElement In, FunctionElement Out, bool kForward, bool kEmit, typename Generator>
LUM_ALWAYS_INLINE inline void FoldSpecialElements(Generator& generator, Out& accumulator,
                                                  SpecialKind& accumulatorSpecial,
                                                  const CellT<In>* inputs,
                                                  const SpecialKind* specialInputs,
                                                  CellT<Out>* outputs, SpecialKind* specialOutputs,
                                                  uint64 count) {
    ForEachIndex<kForward>(count, [&](uint64 index) LUM_ALWAYS_INLINE {
        auto [value, kind] = generator(accumulator, accumulatorSpecial,
                                       Cell<In>::Load(inputs[index]), specialInputs[index]);
        accumulator = std::move(value);
        accumulatorSpecial = kind;
        if constexpr (kEmit) {
            Cell<Out>::Store(outputs[index], accumulator);
            specialOutputs[index] = kind;
        }
    });
}

/// Turns the direction, and whether there are outputs, into template arguments of `fold`.
template <typename Fold>
LUM_ALWAYS_INLINE inline void ChooseFold(FoldDirection direction, bool hasOutputs, Fold fold) {
    if (direction == FoldDirection::Forward) {
        hasOutputs ? fold.template operator()<true, true>()
                   : fold.template operator()<true, false>();
    } else {
        hasOutputs ? fold.template operator()<false, true>()
                   : fold.template operator()<false, false>();
    }
}

}  // namespace lum::core::detail
