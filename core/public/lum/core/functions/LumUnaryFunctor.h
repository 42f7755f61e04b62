#pragma once

#include <type_traits>
#include <utility>

#include "lum/core/functions/FunctorLoops.h"
#include "lum/core/functions/IUnaryFunctor.h"

LUM_VECTORIZE_BEGIN
namespace lum::core {

/// Holds a plain function, Out(const In&) or Out(In), for LumUnaryFunctor.
template <FunctionElement In, FunctionElement Out, auto kFunction>
struct LumUnaryFunctorGenerator {
    Out operator()(const In& input) const { return kFunction(input); }
};

/// Holds a plain function, ElementWithKind<Out>(const In&, SpecialKind) or the same with In by
/// value, for LumUnarySpecialFunctor.
template <FunctionElement In, FunctionElement Out, auto kFunction>
struct LumUnarySpecialFunctorGenerator {
    ElementWithKind<Out> operator()(const In& input, SpecialKind kind) const {
        return kFunction(input, kind);
    }
};

/// The regular functor of what a generator computes: Out operator()(const In&), const where it has
/// no state. A generator that knows a quicker way to the same results can have
///
///     void ApplyColumn(const CellT<In>*, CellT<Out>*, uint64 count) const
///
/// which then stands in for the loop over elements.
template <FunctionElement In, FunctionElement Out, typename Generator>
class LumUnaryFunctor final : public IUnaryFunctor<In, Out> {
public:
    using IUnaryFunctor<In, Out>::ApplyRaw;

    template <typename... Arguments>
    explicit LumUnaryFunctor(Arguments&&... arguments)
        : m_generator(std::forward<Arguments>(arguments)...) {}

    void ApplyRaw(const ConstRawDataView& inputs, const RawDataView& outputs) override {
        ApplyVector(inputs.ViewAs<CellT<In>>(), outputs.ViewAs<CellT<Out>>());
    }

    Out Apply(const In& input) override { return m_generator(input); }

    void ApplyVector(ArrayView<const CellT<In>> inputs, ArrayView<CellT<Out>> outputs) override {
        LUM_CHECK(inputs.GetSize() == outputs.GetSize(), LumError::VectorFunctionSize);
        detail::RunLoop<detail::kHavePlainCells<In, Out>, kIsStateless>(
            m_generator, [from = inputs.GetData(), to = outputs.GetData(),
                          count = inputs.GetSize()](auto& generator) LUM_ALWAYS_INLINE {
                if constexpr (requires { generator.ApplyColumn(from, to, count); }) {
                    generator.ApplyColumn(from, to, count);
                } else {
                    for (uint64 index = 0; index < count; ++index) {
                        Cell<Out>::Store(to[index], generator(Cell<In>::Load(from[index])));
                    }
                }
            });
    }

private:
    static constexpr bool kIsStateless = std::is_invocable_v<const Generator&, const In&>;

    Generator m_generator;
};

/// The special functor of what a generator computes: ElementWithKind<Out> operator()(const In&,
/// SpecialKind), const where it has no state. A generator that knows a quicker way to the same
/// results can have
///
///     void ApplyColumns(const CellT<In>*, const SpecialKind*, CellT<Out>*, SpecialKind*,
///                       uint64 count) const
///
/// which then stands in for the loop over elements.
template <FunctionElement In, FunctionElement Out, typename Generator>
class LumUnarySpecialFunctor final : public IUnarySpecialFunctor<In, Out> {
public:
    using IUnarySpecialFunctor<In, Out>::ApplyRaw;

    template <typename... Arguments>
    explicit LumUnarySpecialFunctor(Arguments&&... arguments)
        : m_generator(std::forward<Arguments>(arguments)...) {}

    void ApplyRaw(const ConstRawDataView& inputs, const ConstRawDataView& specialInputs,
                  const RawDataView& outputs, const RawDataView& specialOutputs) override {
        ApplyVector(inputs.ViewAs<CellT<In>>(), specialInputs.ViewAs<SpecialKind>(),
                    outputs.ViewAs<CellT<Out>>(), specialOutputs.ViewAs<SpecialKind>());
    }

    ElementWithKind<Out> Apply(const In& input, SpecialKind kind) override {
        return m_generator(input, kind);
    }

    void ApplyVector(ArrayView<const CellT<In>> inputs, ArrayView<const SpecialKind> specialInputs,
                     ArrayView<CellT<Out>> outputs,
                     ArrayView<SpecialKind> specialOutputs) override {
        LUM_CHECK(inputs.GetSize() == specialInputs.GetSize(), LumError::VectorFunctionSize);
        LUM_CHECK(outputs.GetSize() == specialOutputs.GetSize(), LumError::VectorFunctionSize);
        LUM_CHECK(inputs.GetSize() == outputs.GetSize(), LumError::VectorFunctionSize);
        detail::RunLoop<detail::kHavePlainCells<In, Out>, kIsStateless>(
            m_generator, [from = inputs.GetData(), fromKinds = specialInputs.GetData(),
                          to = outputs.GetData(), toKinds = specialOutputs.GetData(),
                          count = inputs.GetSize()](auto& generator) LUM_ALWAYS_INLINE {
                if constexpr (requires {
                                  generator.ApplyColumns(from, fromKinds, to, toKinds, count);
                              }) {
                    generator.ApplyColumns(from, fromKinds, to, toKinds, count);
                } else {
                    LUM_VECTORIZE_LOOP
                    for (uint64 index = 0; index < count; ++index) {
                        auto [value, kind] =
                            generator(Cell<In>::Load(from[index]), fromKinds[index]);
                        Cell<Out>::Store(to[index], std::move(value));
                        toKinds[index] = kind;
                    }
                }
            });
    }

private:
    static constexpr bool kIsStateless =
        std::is_invocable_v<const Generator&, const In&, SpecialKind>;

    Generator m_generator;
};

}  // namespace lum::core
LUM_VECTORIZE_END
