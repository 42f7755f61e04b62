#pragma once

#include <type_traits>
#include <utility>

#include "lum/core/functions/FunctorLoops.h"
#include "lum/core/functions/IBinaryFunctor.h"

LUM_VECTORIZE_BEGIN
namespace lum::core {

/// Holds a plain function, Out(const In1&, const In2&) or with inputs by value, for
/// LumBinaryFunctor.
template <FunctionElement In1, FunctionElement In2, FunctionElement Out, auto kFunction>
struct LumBinaryFunctorGenerator {
    Out operator()(const In1& input1, const In2& input2) const { return kFunction(input1, input2); }
};

/// Holds a plain function, ElementWithKind<Out>(const In1&, SpecialKind, const In2&, SpecialKind)
/// or with inputs by value, for LumBinarySpecialFunctor.
template <FunctionElement In1, FunctionElement In2, FunctionElement Out, auto kFunction>
struct LumBinarySpecialFunctorGenerator {
    ElementWithKind<Out> operator()(const In1& input1, SpecialKind kind1, const In2& input2,
                                    SpecialKind kind2) const {
        return kFunction(input1, kind1, input2, kind2);
    }
};

/// The regular functor of what a generator computes: Out operator()(const In1&, const In2&), const
/// where it has no state. A generator that knows a quicker way to the same results can have
///
///     void ApplyColumns(const CellT<In1>*, const CellT<In2>*, CellT<Out>*, uint64 count) const
///     template <bool kForward, bool kEmit>
///     void FoldColumn(Out& accumulator, const CellT<In2>*, CellT<Out>*, uint64 count) const
///
/// which then stand in for the loops over elements.
template <FunctionElement In1, FunctionElement In2, FunctionElement Out, typename Generator>
class LumBinaryFunctor final : public IBinaryFunctor<In1, In2, Out> {
public:
    using IBinaryFunctor<In1, In2, Out>::ApplyRaw;
    using IBinaryFunctor<In1, In2, Out>::FoldRaw;

    template <typename... Arguments>
    explicit LumBinaryFunctor(Arguments&&... arguments)
        : m_generator(std::forward<Arguments>(arguments)...) {}

    void ApplyRaw(const ConstRawDataView& inputs1, const ConstRawDataView& inputs2,
                  const RawDataView& outputs) override {
        ApplyVector(inputs1.ViewAs<CellT<In1>>(), inputs2.ViewAs<CellT<In2>>(),
                    outputs.ViewAs<CellT<Out>>());
    }
    void FoldRaw(const RawDataView& accumulator, const ConstRawDataView& inputs,
                 const RawDataView& outputs, FoldDirection direction) override {
        Fold(accumulator.ViewAs<CellT<Out>>()[0], inputs.ViewAs<CellT<In2>>(),
             outputs.ViewAs<CellT<Out>>(), direction);
    }

    Out Apply(const In1& input1, const In2& input2) override { return m_generator(input1, input2); }

    void ApplyVector(ArrayView<const CellT<In1>> inputs1, ArrayView<const CellT<In2>> inputs2,
                     ArrayView<CellT<Out>> outputs) override {
        LUM_CHECK(inputs1.GetSize() == outputs.GetSize(), LumError::VectorFunctionSize);
        LUM_CHECK(inputs2.GetSize() == outputs.GetSize(), LumError::VectorFunctionSize);
        detail::RunLoop<detail::kHavePlainCells<In1, In2, Out>, kIsStateless>(
            m_generator,
            [from1 = inputs1.GetData(), from2 = inputs2.GetData(), to = outputs.GetData(),
             count = outputs.GetSize()](auto& generator) LUM_ALWAYS_INLINE {
                if constexpr (requires { generator.ApplyColumns(from1, from2, to, count); }) {
                    generator.ApplyColumns(from1, from2, to, count);
                } else {
                    for (uint64 index = 0; index < count; ++index) {
                        Cell<Out>::Store(to[index], generator(Cell<In1>::Load(from1[index]),
                                                              Cell<In2>::Load(from2[index])));
                    }
                }
            });
    }

    void Fold(CellT<Out>& accumulator, ArrayView<const CellT<In2>> inputs,
              ArrayView<CellT<Out>> outputs, FoldDirection direction) override {
        LUM_CHECK(inputs.GetSize() == outputs.GetSize() || outputs.IsEmpty(),
                  LumError::VectorFunctionSize);
        if constexpr (std::is_same_v<In1, Out>) {
            detail::ChooseFold(direction, !outputs.IsEmpty(), [&]<bool kForward, bool kEmit>() {
                FoldTo<kForward, kEmit>(accumulator, inputs, outputs.GetData());
            });
        } else {
            LUM_FAIL(LumError::NotImplemented);
        }
    }

private:
    static constexpr bool kIsStateless =
        std::is_invocable_v<const Generator&, const In1&, const In2&>;

    template <bool kForward, bool kEmit>
    void FoldTo(CellT<Out>& accumulator, ArrayView<const CellT<In2>> inputs, CellT<Out>* outputs) {
        if (inputs.IsEmpty()) {
            return;  // Not even the byte of a Bool changes.
        }
        constexpr bool kIsWide = detail::kFoldsSideBySide<In2, Out, kForward, kEmit>;
        detail::RunLoop<kIsWide, kIsStateless>(
            m_generator, [cell = &accumulator, from = inputs.GetData(), to = outputs,
                          count = inputs.GetSize()](auto& generator) LUM_ALWAYS_INLINE {
                detail::FoldAccumulator<Out> value(*cell);
                if constexpr (requires {
                                  generator.template FoldColumn<kForward, kEmit>(value.Get(), from,
                                                                                 to, count);
                              }) {
                    generator.template FoldColumn<kForward, kEmit>(value.Get(), from, to, count);
                } else {
                    detail::FoldElements<In2, Out, kForward, kEmit>(generator, value.Get(), from,
                                                                    to, count);
                }
            });
    }

    Generator m_generator;
};

/// The special functor of what a generator computes: ElementWithKind<Out> operator()(const In1&,
/// SpecialKind, const In2&, SpecialKind), const where it has no state. A generator that knows a
/// quicker way to the same results can have
///
///     template <bool kForward, bool kEmit>
///     void FoldColumn(Out& accumulator, SpecialKind& accumulatorSpecial, const CellT<In2>*,
///                     const SpecialKind*, CellT<Out>*, SpecialKind*, uint64 count) const
///
/// which then stands in for the loop over elements.
template <FunctionElement In1, FunctionElement In2, FunctionElement Out, typename Generator>
class LumBinarySpecialFunctor final : public IBinarySpecialFunctor<In1, In2, Out> {
public:
    using IBinarySpecialFunctor<In1, In2, Out>::ApplyRaw;
    using IBinarySpecialFunctor<In1, In2, Out>::FoldRaw;

    template <typename... Arguments>
    explicit LumBinarySpecialFunctor(Arguments&&... arguments)
        : m_generator(std::forward<Arguments>(arguments)...) {}

    void ApplyRaw(const ConstRawDataView& inputs1, const ConstRawDataView& specialInputs1,
                  const ConstRawDataView& inputs2, const ConstRawDataView& specialInputs2,
                  const RawDataView& outputs, const RawDataView& specialOutputs) override {
        ApplyVector(inputs1.ViewAs<CellT<In1>>(), specialInputs1.ViewAs<SpecialKind>(),
                    inputs2.ViewAs<CellT<In2>>(), specialInputs2.ViewAs<SpecialKind>(),
                    outputs.ViewAs<CellT<Out>>(), specialOutputs.ViewAs<SpecialKind>());
    }
    void FoldRaw(const RawDataView& accumulator, const RawDataView& accumulatorSpecial,
                 const ConstRawDataView& inputs, const ConstRawDataView& specialInputs,
                 const RawDataView& outputs, const RawDataView& specialOutputs,
                 FoldDirection direction) override {
        Fold(accumulator.ViewAs<CellT<Out>>()[0], accumulatorSpecial.ViewAs<SpecialKind>()[0],
             inputs.ViewAs<CellT<In2>>(), specialInputs.ViewAs<SpecialKind>(),
             outputs.ViewAs<CellT<Out>>(), specialOutputs.ViewAs<SpecialKind>(), direction);
    }

    ElementWithKind<Out> Apply(const In1& input1, SpecialKind kind1, const In2& input2,
                               SpecialKind kind2) override {
        return m_generator(input1, kind1, input2, kind2);
    }

    void ApplyVector(ArrayView<const CellT<In1>> inputs1,
                     ArrayView<const SpecialKind> specialInputs1,
                     ArrayView<const CellT<In2>> inputs2,
                     ArrayView<const SpecialKind> specialInputs2, ArrayView<CellT<Out>> outputs,
                     ArrayView<SpecialKind> specialOutputs) override {
        LUM_CHECK(inputs1.GetSize() == specialInputs1.GetSize(), LumError::VectorFunctionSize);
        LUM_CHECK(inputs2.GetSize() == specialInputs2.GetSize(), LumError::VectorFunctionSize);
        LUM_CHECK(outputs.GetSize() == specialOutputs.GetSize(), LumError::VectorFunctionSize);
        LUM_CHECK(inputs1.GetSize() == outputs.GetSize(), LumError::VectorFunctionSize);
        LUM_CHECK(inputs2.GetSize() == outputs.GetSize(), LumError::VectorFunctionSize);
        detail::RunLoop<detail::kHavePlainCells<In1, In2, Out>, kIsStateless>(
            m_generator, [from1 = inputs1.GetData(), kinds1 = specialInputs1.GetData(),
                          from2 = inputs2.GetData(), kinds2 = specialInputs2.GetData(),
                          to = outputs.GetData(), toKinds = specialOutputs.GetData(),
                          count = outputs.GetSize()](auto& generator) LUM_ALWAYS_INLINE {
                LUM_VECTORIZE_LOOP
                for (uint64 index = 0; index < count; ++index) {
                    auto [value, kind] = generator(Cell<In1>::Load(from1[index]), kinds1[index],
                                                   Cell<In2>::Load(from2[index]), kinds2[index]);
                    Cell<Out>::Store(to[index], std::move(value));
                    toKinds[index] = kind;
                }
            });
    }

    void Fold(CellT<Out>& accumulator, SpecialKind& accumulatorSpecial,
              ArrayView<const CellT<In2>> inputs, ArrayView<const SpecialKind> specialInputs,
              ArrayView<CellT<Out>> outputs, ArrayView<SpecialKind> specialOutputs,
              FoldDirection direction) override {
        LUM_CHECK(inputs.GetSize() == specialInputs.GetSize(), LumError::VectorFunctionSize);
        LUM_CHECK(outputs.GetSize() == specialOutputs.GetSize(), LumError::VectorFunctionSize);
        LUM_CHECK(inputs.GetSize() == outputs.GetSize() || outputs.IsEmpty(),
                  LumError::VectorFunctionSize);
        if constexpr (std::is_same_v<In1, Out>) {
            detail::ChooseFold(direction, !outputs.IsEmpty(), [&]<bool kForward, bool kEmit>() {
                FoldTo<kForward, kEmit>(accumulator, accumulatorSpecial, inputs,
                                        specialInputs.GetData(), outputs.GetData(),
                                        specialOutputs.GetData());
            });
        } else {
            LUM_FAIL(LumError::NotImplemented);
        }
    }

private:
    static constexpr bool kIsStateless =
        std::is_invocable_v<const Generator&, const In1&, SpecialKind, const In2&, SpecialKind>;

    template <bool kForward, bool kEmit>
    void FoldTo(CellT<Out>& accumulator, SpecialKind& accumulatorSpecial,
                ArrayView<const CellT<In2>> inputs, const SpecialKind* specialInputs,
                CellT<Out>* outputs, SpecialKind* specialOutputs) {
        if (inputs.IsEmpty()) {
            return;  // Not even the byte of a Bool changes.
        }
        constexpr bool kIsWide = detail::kFoldsSideBySide<In2, Out, kForward, kEmit>;
        detail::RunLoop<kIsWide, kIsStateless>(
            m_generator,
            [cell = &accumulator, kindCell = &accumulatorSpecial, from = inputs.GetData(),
             kinds = specialInputs, to = outputs, toKinds = specialOutputs,
             count = inputs.GetSize()](auto& generator) LUM_ALWAYS_INLINE {
                detail::FoldAccumulator<Out> value(*cell);
                detail::FoldKind kind(*kindCell);
                if constexpr (requires {
                                  generator.template FoldColumn<kForward, kEmit>(
                                      value.Get(), kind.Get(), from, kinds, to, toKinds, count);
                              }) {
                    generator.template FoldColumn<kForward, kEmit>(value.Get(), kind.Get(), from,
                                                                   kinds, to, toKinds, count);
                } else {
                    detail::FoldSpecialElements<In2, Out, kForward, kEmit>(
                        generator, value.Get(), kind.Get(), from, kinds, to, toKinds, count);
                }
            });
    }

    Generator m_generator;
};

}  // namespace lum::core
LUM_VECTORIZE_END
